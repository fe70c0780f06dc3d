#pragma once

#include <bitset>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	/** The ignore file that folders of a project may hold. */
	constexpr const char* IgnoreFileName = ".gitignore";

	/** Larger ignore files are not read. In bytes. */
	constexpr size_t MaxIgnoreFileBytes = 4 * 1024 * 1024;

	/** One wildcard pattern, compiled. No pattern makes matching explode: it never goes back further than to its last star. */
	class FIgnoreGlob
	{
	public:
		/** A pattern that can never match, such as one with an open bracket, gives a glob that never does. */
		FIgnoreGlob(std::string_view Pattern, bool bIsPath);

		bool Matches(std::string_view Text) const;

	private:
		enum class EToken : uint8_t
		{
			Byte, // Exactly that byte.
			AnyByte, // Any byte but '/'.
			Set, // A byte of a bracket expression.
			Star, // Any run without '/'.
			Anything, // Any run.
			Folders // Nothing, or any run that ends with '/'.
		};

		struct FToken
		{
			EToken Kind;
			unsigned char Byte = 0;
			uint16_t SetIndex = 0;
		};

		/** What most patterns are, told without a walk over tokens. */
		enum class EShape : uint8_t
		{
			Never,
			Literal, // No wildcard at all.
			Suffix, // A star and a literal; names only.
			Tokens
		};

		/**
		 * Where a mismatch goes back to. Only the last star and the last wide wildcard are worth another try: a star ends within its
		 * folder, and an earlier wide one that takes more leaves no more to the later one.
		 */
		struct FRetry
		{
			static constexpr size_t None = std::string_view::npos;

			/** The token after it, and where in the text what it takes ends. */
			size_t StarToken = None, StarAt = 0;
			size_t WideToken = None, WideAt = 0;
		};

		bool Compile(std::string_view Pattern, bool bIsPath);
		bool CompileSet(std::string_view Pattern, size_t& Index, bool bIsPath);
		bool MatchesOne(const FToken& Token, unsigned char Byte) const;
		bool MatchesTokens(std::string_view Text) const;

		/** After a mismatch: lets a wildcard take more and sets Token and At to what follows it. False when none can. */
		bool TakeMore(std::string_view Text, FRetry& Retry, size_t& Token, size_t& At) const;

		EShape Shape = EShape::Never;

		/** The literal start of the pattern, or what follows the star. */
		std::string Fixed;
		std::vector<FToken> Tokens;
		std::vector<std::bitset<256>> Sets;
	};

	enum class EIgnoreVerdict : uint8_t
	{
		None, // No line speaks of the path.
		Ignore,
		Keep // A line with '!' takes it back.
	};

	/** The lines of one ignore file, with git's meaning. Immutable. */
	class FIgnoreFile
	{
	public:
		explicit FIgnoreFile(std::string InText);

		const std::string& GetText() const { return Text; }

		/** The verdict of the last line that matches. The path is below the file's folder, without a leading '/'. Letter case counts. */
		EIgnoreVerdict Judge(std::string_view Path, bool bIsFolder) const;

	private:
		struct FLine
		{
			FIgnoreGlob Glob;
			bool bKeeps;
			bool bFoldersOnly;

			/** Compared with the path below the file's folder, else with the name alone. */
			bool bIsPath;
		};

		void AddLine(std::string_view Line);

		std::string Text;
		std::vector<FLine> Lines;
	};

	/** The ignore files that hold in a folder: one, and those of the folders above. Immutable. */
	struct FIgnoreScope
	{
		std::shared_ptr<const FIgnoreScope> Above;
		FIgnoreFile File;

		/** Bytes of a path below the project that name the file's folder, its '/' included. */
		size_t FolderLength;
	};

	/**
	 * Whether the ignore files leave a path out, the nearest file that speaks of it deciding. Scope is that of the folder that
	 * holds the path, null without any file. That none of the folders above is ignored is for the caller to know.
	 */
	bool IsIgnored(const FIgnoreScope* Scope, std::string_view ProjectPath, bool bIsFolder);

	/** The text of the ignore file in an open folder. False when there is none that can be read; links do not count. */
	bool ReadIgnoreFile(int Folder, std::string& OutText);
}
