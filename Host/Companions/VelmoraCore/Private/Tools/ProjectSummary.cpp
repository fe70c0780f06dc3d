#include "Tools/ProjectSummary.h"

#include <algorithm>
#include <map>

#include "Text/Utf8Text.h"
#include "Host/ProjectWalk.h"

namespace Velmora
{
	namespace
	{
		std::string JoinRelative(const FProjectPath& Folder, std::string_view Relative)
		{
			return Folder.Relative.empty() ? std::string(Relative) : Folder.Relative + '/' + std::string(Relative);
		}

		std::string_view NameOf(std::string_view Path)
		{
			const size_t Slash = Path.rfind('/');
			return Slash == std::string_view::npos ? Path : Path.substr(Slash + 1);
		}

		std::string KindOf(std::string_view Path)
		{
			const std::string_view Name = NameOf(Path);
			const size_t Dot = Name.rfind('.');
			return Dot == std::string_view::npos || Dot == 0 ? std::string(Name) : Utf8Text::ToLower(Name.substr(Dot));
		}

		/** '*' for any run, '?' for one byte. Linear but for the last star, to which it comes back. */
		bool MatchesPattern(std::string_view Text, std::string_view Pattern)
		{
			size_t TextAt = 0;
			size_t PatternAt = 0;
			size_t StarAt = std::string_view::npos;
			size_t RetryAt = 0;
			while (TextAt < Text.size())
			{
				if (PatternAt < Pattern.size() && Pattern[PatternAt] == '*')
				{
					StarAt = PatternAt++;
					RetryAt = TextAt;
				}
				else if (PatternAt < Pattern.size() && (Pattern[PatternAt] == '?' || Pattern[PatternAt] == Text[TextAt]))
				{
					++PatternAt;
					++TextAt;
				}
				else if (StarAt != std::string_view::npos)
				{
					PatternAt = StarAt + 1;
					TextAt = ++RetryAt;
				}
				else
				{
					return false;
				}
			}
			return Pattern.find_first_not_of('*', PatternAt) == std::string_view::npos;
		}
	}

	std::string FFolderCount::Describe() const
	{
		return Utf8Text::Count(Files, "file", "files") + " in " + Utf8Text::Count(Folders, "folder", "folders") + ", " +
			Utf8Text::Count(Lines, "line", "lines") + " of text";
	}

	FFolderCount CountFolder(const FProjectFiles& Files, const FProjectPath& Folder, const std::function<bool()>& IsCancelled)
	{
		FFolderCount Result;
		std::map<std::string, FKindCount> Kinds;
		const FProjectWalkResult Walk = WalkProject(Files.GetRoot(), Folder.Relative,
			[&](const FProjectWalkEntry& Entry)
			{
				if (IsCancelled())
				{
					return EProjectWalkStep::Stop;
				}
				if (Entry.bIsDirectory)
				{
					++Result.Folders;
					return EProjectWalkStep::Continue;
				}
				++Result.Files;
				FKindCount& Kind = Kinds[KindOf(Entry.RelativePath)];
				++Kind.Files;
				const FProjectText Content = Files.Read(std::string(Entry.AbsolutePath));
				if (!Content.IsValid())
				{
					++Result.OtherFiles;
					return EProjectWalkStep::Continue;
				}
				const bool bHasOpenLine = !Content.Text.empty() && Content.Text.back() != '\n';
				const size_t Lines =
					static_cast<size_t>(std::count(Content.Text.begin(), Content.Text.end(), '\n')) + (bHasOpenLine ? 1 : 0);
				++Result.TextFiles;
				Result.Lines += Lines;
				Kind.Lines += Lines;
				return EProjectWalkStep::Continue;
			});
		Result.UnreadableFolders = static_cast<size_t>(Walk.UnreadableFolders);
		Result.bTruncated = Walk.bTruncated;
		for (auto& [Name, Kind] : Kinds)
		{
			Kind.Kind = Name;
			Result.Kinds.push_back(Kind);
		}
		std::stable_sort(
			Result.Kinds.begin(), Result.Kinds.end(), [](const FKindCount& A, const FKindCount& B) { return A.Files > B.Files; });
		return Result;
	}

	bool ListFolder(const FProjectFiles& Files, const FProjectPath& Folder, const std::function<bool()>& IsCancelled,
		std::vector<FListedEntry>& OutEntries)
	{
		OutEntries.clear();
		size_t CurrentFolder = 0;
		const FProjectWalkResult Walk = WalkProject(Files.GetRoot(), Folder.Relative,
			[&](const FProjectWalkEntry& Entry)
			{
				const bool bIsDirect = Entry.RelativePath.find('/') == std::string_view::npos;
				if (bIsDirect)
				{
					CurrentFolder = OutEntries.size();
					OutEntries.push_back(
						{ { std::string(Entry.AbsolutePath), JoinRelative(Folder, Entry.RelativePath), Entry.bIsDirectory },
							std::string(Entry.RelativePath), 0 });
				}
				else if (!Entry.bIsDirectory)
				{
					// A folder is met right before what is in it.
					++OutEntries[CurrentFolder].FilesInside;
				}
				return IsCancelled() ? EProjectWalkStep::Stop : EProjectWalkStep::Continue;
			});
		std::stable_sort(OutEntries.begin(), OutEntries.end(),
			[](const FListedEntry& A, const FListedEntry& B) { return A.Path.bIsFolder && !B.Path.bIsFolder; });
		// Without any entry the folder itself is the only one that was opened.
		return !OutEntries.empty() || Walk.UnreadableFolders == 0;
	}

	std::vector<FProjectPath> ListMatching(const FProjectFiles& Files, std::string_view Pattern, const std::function<bool()>& IsCancelled)
	{
		std::vector<FProjectPath> Result;
		const std::string LowerPattern = Utf8Text::ToLower(Pattern);
		const bool bWholePath = LowerPattern.find('/') != std::string::npos;
		WalkProject(Files.GetRoot(), std::string(),
			[&](const FProjectWalkEntry& Entry)
			{
				const std::string Lower = Utf8Text::ToLower(bWholePath ? Entry.RelativePath : NameOf(Entry.RelativePath));
				if (!Entry.bIsDirectory && MatchesPattern(Lower, LowerPattern))
				{
					Result.push_back({ std::string(Entry.AbsolutePath), std::string(Entry.RelativePath), false });
				}
				return IsCancelled() ? EProjectWalkStep::Stop : EProjectWalkStep::Continue;
			});
		return Result;
	}

	FReadmeText ReadReadme(const FProjectFiles& Files)
	{
		FReadmeText Result;
		for (const std::string_view Name : { "README.md", "Readme.md", "readme.md", "README.txt", "README" })
		{
			if (!Files.Resolve(Name, Result.File) || Result.File.bIsFolder)
			{
				continue;
			}
			const FProjectText Content = Files.Read(Result.File.Absolute);
			bool bIsInFence = false;
			for (const std::string_view RawLine : Utf8Text::SplitLines(Content.Text))
			{
				const std::string_view Line = Utf8Text::Trim(RawLine);
				bIsInFence = bIsInFence != Utf8Text::StartsWith(Line, "```");
				if (Line.empty() || bIsInFence || Utf8Text::StartsWith(Line, "```"))
				{
					continue;
				}
				if (Line.front() == '#' && Result.Title.empty())
				{
					Result.Title = Utf8Text::Trim(Line.substr(std::min(Line.find_first_not_of('#'), Line.size())));
				}
				// Pictures and badges say nothing in words.
				else if (Line.front() != '#' && Line.front() != '!' && Line.front() != '[' && Line.front() != '<')
				{
					Result.FirstLine = Line;
					break;
				}
			}
			break;
		}
		return Result;
	}

	std::vector<FOutlineLine> OutlineOf(std::string_view Text, size_t MaxLines)
	{
		constexpr std::string_view Openers[] = { "class ", "struct ", "enum ", "union ", "interface ", "def ", "function ", "func ", "fn ",
			"pub fn ", "pub struct ", "public class ", "template ", "#define ", "# ", "## ", "[" };
		std::vector<FOutlineLine> Result;
		int Number = 0;
		for (const std::string_view Line : Utf8Text::SplitLines(Text))
		{
			++Number;
			// One step of indentation still is the outer level of a file in one namespace.
			const std::string_view Trimmed = Utf8Text::Trim(Line);
			const size_t Indent = Line.find_first_not_of(" \t");
			const bool bIsOuter =
				Indent == 0 || (Indent == 1 && Line[0] == '\t') || (Indent != std::string_view::npos && Indent <= 4 && Line[0] == ' ');
			if (!bIsOuter || Trimmed.empty())
			{
				continue;
			}
			const bool bOpens = std::any_of(std::begin(Openers), std::end(Openers),
				[Trimmed](std::string_view Opener) { return Utf8Text::StartsWith(Trimmed, Opener); });
			const bool bIsAnnounced = Utf8Text::EndsWith(Trimmed, ";");
			const bool bIsFunction = Indent == 0 && Utf8Text::EndsWith(Trimmed, ")") && Trimmed.find(' ') != std::string_view::npos &&
				Utf8Text::IsWordByte(Trimmed.front());
			if ((bOpens && !bIsAnnounced) || bIsFunction)
			{
				Result.push_back({ Number, Utf8Text::Shorten(Trimmed, 90) });
				if (Result.size() >= MaxLines)
				{
					break;
				}
			}
		}
		return Result;
	}
}
