#include "FileCache/IgnoreRules.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Host/FileDescriptor.h"

// Ignore files as the common version control reads them. Patterns come from the project, so they are data: whatever one
// says, matching takes no more than its length times the path's, and a pattern that cannot be read matches nothing.
// Nearly all patterns are a name or an ending ("Saved", "*.obj"), and each path meets all of them. So a pattern is sorted
// by its shape once, and only what needs it goes through tokens.

namespace Velmora
{
	namespace
	{
		using FByteSet = std::bitset<256>;

		struct FNamedSet
		{
			std::string_view Name;
			bool (*Contains)(unsigned char);
		};

		bool IsBetween(unsigned char Byte, unsigned char Low, unsigned char High)
		{
			return Byte >= Low && Byte <= High;
		}

		// ASCII on purpose: ignore files mean the same in every locale.
		bool IsDigitByte(unsigned char Byte)
		{
			return IsBetween(Byte, '0', '9');
		}
		bool IsLowerByte(unsigned char Byte)
		{
			return IsBetween(Byte, 'a', 'z');
		}
		bool IsUpperByte(unsigned char Byte)
		{
			return IsBetween(Byte, 'A', 'Z');
		}
		bool IsAlphaByte(unsigned char Byte)
		{
			return IsLowerByte(Byte) || IsUpperByte(Byte);
		}
		bool IsAlnumByte(unsigned char Byte)
		{
			return IsAlphaByte(Byte) || IsDigitByte(Byte);
		}
		bool IsGraphByte(unsigned char Byte)
		{
			return IsBetween(Byte, 0x21, 0x7E);
		}

		constexpr FNamedSet NamedSets[] = {
			{ "alnum", IsAlnumByte },
			{ "alpha", IsAlphaByte },
			{ "blank", [](unsigned char Byte) { return Byte == ' ' || Byte == '\t'; } },
			{ "cntrl", [](unsigned char Byte) { return Byte < 0x20 || Byte == 0x7F; } },
			{ "digit", IsDigitByte },
			{ "graph", IsGraphByte },
			{ "lower", IsLowerByte },
			{ "print", [](unsigned char Byte) { return IsBetween(Byte, 0x20, 0x7E); } },
			{ "punct", [](unsigned char Byte) { return IsGraphByte(Byte) && !IsAlnumByte(Byte); } },
			{ "space", [](unsigned char Byte) { return Byte == ' ' || Byte == '\t' || Byte == '\n' || Byte == '\r'; } },
			{ "upper", IsUpperByte },
			{ "xdigit", [](unsigned char Byte) { return IsDigitByte(Byte) || IsBetween(Byte, 'a', 'f') || IsBetween(Byte, 'A', 'F'); } },
		};

		bool AddNamedSet(std::string_view Name, FByteSet& Set)
		{
			for (const FNamedSet& Named : NamedSets)
			{
				if (Named.Name == Name)
				{
					for (size_t Byte = 0; Byte < Set.size(); ++Byte)
					{
						Set[Byte] = Set[Byte] || Named.Contains(static_cast<unsigned char>(Byte));
					}
					return true;
				}
			}
			return false;
		}

		/**
		 * Reads what stands at At in a set and adds it: a range's end, a named class, or one byte. Previous is the byte that a range
		 * may start from, -1 for none. False when the set is broken, and the pattern with it.
		 */
		bool AddSetMember(std::string_view Pattern, size_t& At, int& Previous, FByteSet& Set)
		{
			// 1. The end of a range. A '-' before the closing bracket, or with nothing to start from, is a byte like any other.
			if (Pattern[At] == '-' && Previous >= 0 && At + 1 < Pattern.size() && Pattern[At + 1] != ']')
			{
				At += Pattern[At + 1] == '\\' ? 2 : 1;
				if (At >= Pattern.size())
				{
					return false;
				}
				for (int Byte = Previous; Byte <= static_cast<unsigned char>(Pattern[At]); ++Byte)
				{
					Set.set(static_cast<size_t>(Byte));
				}
				Previous = -1;
				++At;
				return true;
			}
			// 2. A named class. Without the second colon "[:" is two bytes.
			if (Pattern.substr(At, 2) == "[:")
			{
				const size_t Close = Pattern.find(']', At + 2);
				if (Close == std::string_view::npos)
				{
					return false;
				}
				if (Close > At + 2 && Pattern[Close - 1] == ':')
				{
					Previous = -1;
					const size_t Name = std::exchange(At, Close + 1) + 2;
					return AddNamedSet(Pattern.substr(Name, Close - Name - 1), Set);
				}
			}
			// 3. One byte, escaped or not.
			At += Pattern[At] == '\\' ? 1 : 0;
			if (At >= Pattern.size())
			{
				return false;
			}
			Previous = static_cast<unsigned char>(Pattern[At]);
			Set.set(static_cast<size_t>(Previous));
			++At;
			return true;
		}

		/** Blanks at the end count only behind a backslash. */
		std::string_view WithoutTrailingBlanks(std::string_view Line)
		{
			size_t Length = 0;
			for (size_t Index = 0; Index < Line.size(); ++Index)
			{
				if (Line[Index] == '\\')
				{
					Index = std::min(Index + 1, Line.size() - 1);
					Length = Index + 1;
				}
				else if (Line[Index] != ' ')
				{
					Length = Index + 1;
				}
			}
			return Line.substr(0, Length);
		}
	}

	FIgnoreGlob::FIgnoreGlob(std::string_view Pattern, bool bIsPath)
	{
		const size_t FixedLength = std::min(Pattern.find_first_of("*?[\\"), Pattern.size());
		if (FixedLength == Pattern.size())
		{
			Shape = Pattern.empty() ? EShape::Never : EShape::Literal;
			Fixed = Pattern;
			return;
		}
		if (!bIsPath && Pattern[0] == '*' && Pattern.find_first_of("*?[\\", 1) == std::string_view::npos)
		{
			Shape = EShape::Suffix;
			Fixed = Pattern.substr(1);
			return;
		}
		// The literal start is compared first and the wildcards behind it then stand at a start of their own, which
		// makes a difference for "a**/b": the two stars reach over folders.
		Fixed = Pattern.substr(0, FixedLength);
		Shape = Compile(Pattern.substr(FixedLength), bIsPath) ? EShape::Tokens : EShape::Never;
	}

	// One token for each thing to match. Two stars are wide only between slashes; elsewhere they are one star.
	bool FIgnoreGlob::Compile(std::string_view Pattern, bool bIsPath)
	{
		for (size_t Index = 0; Index < Pattern.size();)
		{
			const char Byte = Pattern[Index];
			if (Byte == '*')
			{
				const size_t End = std::min(Pattern.find_first_not_of('*', Index), Pattern.size());
				const std::string_view Rest = Pattern.substr(End);
				const bool bStandsAlone =
					(Index == 0 || Pattern[Index - 1] == '/') && (Rest.empty() || Rest[0] == '/' || Rest.substr(0, 2) == "\\/");
				const bool bIsWide = bIsPath && End - Index >= 2 && bStandsAlone;
				const bool bTakesSlash = bIsWide && !Rest.empty() && Rest[0] == '/';
				Tokens.push_back({ bTakesSlash ? EToken::Folders : bIsWide ? EToken::Anything : EToken::Star });
				Index = bTakesSlash ? End + 1 : End;
			}
			else if (Byte == '?')
			{
				Tokens.push_back({ EToken::AnyByte });
				++Index;
			}
			else if (Byte == '[')
			{
				if (!CompileSet(Pattern, Index, bIsPath))
				{
					return false;
				}
			}
			else
			{
				Index += Byte == '\\' ? 1 : 0;
				if (Index == Pattern.size())
				{
					return false;
				}
				Tokens.push_back({ EToken::Byte, static_cast<unsigned char>(Pattern[Index]) });
				++Index;
			}
		}
		return true;
	}

	bool FIgnoreGlob::CompileSet(std::string_view Pattern, size_t& Index, bool bIsPath)
	{
		FByteSet Set;
		size_t At = Index + 1;
		const bool bNegated = At < Pattern.size() && (Pattern[At] == '!' || Pattern[At] == '^');
		At += bNegated ? 1 : 0;
		int Previous = -1; // What a range may start from.
		for (bool bFirst = true; bFirst || At >= Pattern.size() || Pattern[At] != ']'; bFirst = false)
		{
			if (At >= Pattern.size() || !AddSetMember(Pattern, At, Previous, Set))
			{
				return false;
			}
		}
		if (bNegated)
		{
			Set.flip();
		}
		if (bIsPath)
		{
			Set.reset('/');
		}
		Tokens.push_back({ EToken::Set, 0, static_cast<uint16_t>(Sets.size()) });
		Sets.push_back(Set);
		Index = At + 1;
		return Sets.size() < 0xFFFF;
	}

	bool FIgnoreGlob::Matches(std::string_view Text) const
	{
		switch (Shape)
		{
		case EShape::Literal:
			return Text == Fixed;
		case EShape::Suffix:
			return Text.size() >= Fixed.size() && Text.substr(Text.size() - Fixed.size()) == Fixed;
		case EShape::Tokens:
			return Text.substr(0, Fixed.size()) == Fixed && MatchesTokens(Text.substr(Fixed.size()));
		default:
			return false;
		}
	}

	// The set of a path's pattern has no slash in it; see CompileSet.
	bool FIgnoreGlob::MatchesOne(const FToken& Token, unsigned char Byte) const
	{
		switch (Token.Kind)
		{
		case EToken::Byte:
			return Byte == Token.Byte;
		case EToken::AnyByte:
			return Byte != '/';
		default:
			return Sets[Token.SetIndex][Byte];
		}
	}

	bool FIgnoreGlob::MatchesTokens(std::string_view Text) const
	{
		FRetry Retry;
		size_t Token = 0, At = 0;
		for (;;)
		{
			if (Token == Tokens.size() && At == Text.size())
			{
				return true;
			}
			const EToken Kind = Token < Tokens.size() ? Tokens[Token].Kind : EToken::Byte;
			if (Kind == EToken::Star)
			{
				Retry.StarToken = ++Token;
				Retry.StarAt = At;
			}
			else if (Kind == EToken::Anything || Kind == EToken::Folders)
			{
				Retry.WideToken = ++Token;
				Retry.WideAt = At;
				Retry.StarToken = FRetry::None;
			}
			else if (Token < Tokens.size() && At < Text.size() && MatchesOne(Tokens[Token], static_cast<unsigned char>(Text[At])))
			{
				++Token;
				++At;
			}
			else if (!TakeMore(Text, Retry, Token, At))
			{
				return false;
			}
		}
	}

	bool FIgnoreGlob::TakeMore(std::string_view Text, FRetry& Retry, size_t& Token, size_t& At) const
	{
		// 1. The star takes a byte more, but never leaves its folder.
		if (Retry.StarToken != FRetry::None && Retry.StarAt < Text.size() && Text[Retry.StarAt] != '/')
		{
			At = ++Retry.StarAt;
			Token = Retry.StarToken;
			return true;
		}
		// 2. Else the wide wildcard takes a byte more; one that stands for folders takes whole ones.
		if (Retry.WideToken == FRetry::None || Retry.WideAt == Text.size())
		{
			return false;
		}
		if (Tokens[Retry.WideToken - 1].Kind == EToken::Folders)
		{
			const size_t Slash = Text.find('/', Retry.WideAt);
			if (Slash == std::string_view::npos)
			{
				return false;
			}
			Retry.WideAt = Slash;
		}
		At = ++Retry.WideAt;
		Token = Retry.WideToken;
		Retry.StarToken = FRetry::None;
		return true;
	}

	FIgnoreFile::FIgnoreFile(std::string InText)
		: Text(std::move(InText))
	{
		std::string_view Rest = Text;
		if (Rest.substr(0, 3) == "\xEF\xBB\xBF")
		{
			Rest.remove_prefix(3);
		}
		while (!Rest.empty())
		{
			const size_t End = Rest.find('\n');
			std::string_view Line = Rest.substr(0, End);
			Rest.remove_prefix(End == std::string_view::npos ? Rest.size() : End + 1);
			if (!Line.empty() && Line.back() == '\r')
			{
				Line.remove_suffix(1);
			}
			AddLine(Line.substr(0, Line.find('\0')));
		}
	}

	// 1. Comments and blanks. 2. "!" takes files back in. 3. A slash at the end means folders alone. 4. A slash elsewhere ties
	// the pattern to the file's own folder; without one it holds for names at any depth.
	void FIgnoreFile::AddLine(std::string_view Line)
	{
		if (Line.empty() || Line[0] == '#')
		{
			return;
		}
		Line = WithoutTrailingBlanks(Line);
		const bool bKeeps = !Line.empty() && Line[0] == '!';
		Line.remove_prefix(bKeeps ? 1 : 0);
		const bool bFoldersOnly = !Line.empty() && Line.back() == '/';
		Line.remove_suffix(bFoldersOnly ? 1 : 0);
		if (Line.empty())
		{
			return;
		}
		const bool bIsPath = Line.find('/') != std::string_view::npos;
		Line.remove_prefix(Line[0] == '/' ? 1 : 0);
		Lines.push_back({ FIgnoreGlob(Line, bIsPath), bKeeps, bFoldersOnly, bIsPath });
	}

	// The last line that matches decides.
	EIgnoreVerdict FIgnoreFile::Judge(std::string_view Path, bool bIsFolder) const
	{
		const size_t Slash = Path.rfind('/');
		const std::string_view Name = Slash == std::string_view::npos ? Path : Path.substr(Slash + 1);
		for (auto Line = Lines.rbegin(); Line != Lines.rend(); ++Line)
		{
			if ((bIsFolder || !Line->bFoldersOnly) && Line->Glob.Matches(Line->bIsPath ? Path : Name))
			{
				return Line->bKeeps ? EIgnoreVerdict::Keep : EIgnoreVerdict::Ignore;
			}
		}
		return EIgnoreVerdict::None;
	}

	// The nearest file that says anything decides. That a folder above is ignored is not looked at here: it was never entered.
	bool IsIgnored(const FIgnoreScope* Scope, std::string_view ProjectPath, bool bIsFolder)
	{
		for (; Scope != nullptr; Scope = Scope->Above.get())
		{
			const EIgnoreVerdict Verdict = Scope->File.Judge(ProjectPath.substr(Scope->FolderLength), bIsFolder);
			if (Verdict != EIgnoreVerdict::None)
			{
				return Verdict == EIgnoreVerdict::Ignore;
			}
		}
		return false;
	}

	bool ReadIgnoreFile(int Folder, std::string& OutText)
	{
		OutText.clear();
		// Non-blocking, so that opening a pipe of that name does not wait for its writer.
		const FFileDescriptor File = FFileDescriptor::OpenAt(Folder, IgnoreFileName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
		struct stat Status = {};
		return File.IsOpen() && fstat(File.Get(), &Status) == 0 && S_ISREG(Status.st_mode) && File.Read(OutText, MaxIgnoreFileBytes + 1) &&
			OutText.size() <= MaxIgnoreFileBytes;
	}
}
