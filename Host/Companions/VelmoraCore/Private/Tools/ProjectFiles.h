#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	class FProjectAccess;

	enum class EReadResult
	{
		Text,
		Binary,
		TooLarge,
		Unreadable
	};

	/** The text of a file, ready to be shown. */
	struct FProjectText
	{
		EReadResult Result = EReadResult::Text;

		/** Well-formed UTF-8 with line feeds. */
		std::string Text;

		/** Why there is no text: a clause such as "it is a binary file". */
		std::string Problem;

		bool IsValid() const { return Result == EReadResult::Text; }
	};

	/** A file or folder of the project. Both paths are bytes as on disk. */
	struct FProjectPath
	{
		std::string Absolute;

		/** Empty for the project folder itself. */
		std::string Relative;
		bool bIsFolder = false;
	};

	/**
	 * The only way from the agent to the disk: nothing outside the project is read through it, whatever links or
	 * dots a path holds. Keeps nothing but the folder and its handle, so that several threads may share one.
	 */
	class FProjectFiles
	{
	public:
		/** Files larger than this are not read. In bytes. */
		static constexpr size_t MaxFileBytes = 4 * 1024 * 1024;

		explicit FProjectFiles(std::string InRoot);

		const std::string& GetRoot() const { return Root; }

		/** The project folder exists. */
		bool IsAvailable() const;

		/** What a user may mean by a name, best first: the exact path, else every file or folder so called, else those that end or contain
		 * it. */
		std::vector<FProjectPath> Find(std::string_view Name, size_t MaxResults) const;

		/** How many that are, for the row of a tool. */
		static std::string DescribeFound(size_t Count);

		/** Existing file or folder at exactly that path, absolute or relative to the project. False when there is none or it lies outside.
		 */
		bool Resolve(std::string_view Path, FProjectPath& OutPath) const;

		/** A path as it stands on disk: backslashes are part of a name that there is, and else what sets folders apart. */
		std::string Spell(std::string_view Path) const;

		/** Whether the path is absolute and leads out of the project. */
		bool IsOutside(std::string_view Path) const;

		FProjectText Read(const std::string& AbsolutePath) const;

	private:
		std::string Root;

		/** Root with links resolved, which is what files are checked against. */
		std::string RealRoot;

		/** What is read goes through it, so that a folder replaced by a link meanwhile leads nowhere else. */
		std::shared_ptr<const FProjectAccess> Access;
	};
}
