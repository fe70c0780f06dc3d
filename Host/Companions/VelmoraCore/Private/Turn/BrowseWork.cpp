#include "Turn/BrowseWork.h"

#include <algorithm>

#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"
#include "Tools/ProjectSummary.h"
#include "Turn/SearchWork.h"

// Looking at the project: showing, listing, counting, summing up. Every look is a tool of the turn, so it shows as a row,
// and can be stopped; what comes out is put into words here. A function that gives false was stopped, and its callers
// return at once without a word.

namespace Velmora
{
	namespace
	{
		/** Beyond these the answer would be too long to be read. */
		constexpr size_t MaxDescribedAttachments = 10;

		/** How much of a file is shown when nobody says how much, and how much at most. */
		constexpr int DefaultShownLines = 120;
		constexpr int MaxShownLines = 400;
		constexpr size_t MaxListedEntries = 60;
		constexpr size_t MaxTopEntries = 25;
		constexpr size_t MaxListedKinds = 10;

		/** Nothing where there is no file. */
		std::string KindTable(const FFolderCount& Count)
		{
			if (Count.Kinds.empty())
			{
				return std::string();
			}
			std::string Text = "| Kind | Files | Lines |\n|---|--:|--:|\n";
			size_t RestFiles = 0;
			size_t RestLines = 0;
			for (size_t Index = 0; Index < Count.Kinds.size(); ++Index)
			{
				const FKindCount& Kind = Count.Kinds[Index];
				if (Index >= MaxListedKinds)
				{
					RestFiles += Kind.Files;
					RestLines += Kind.Lines;
					continue;
				}
				Text += "| " + AnswerMarkdown::TableCell(Kind.Kind) + " | " + std::to_string(Kind.Files) + " | " +
					std::to_string(Kind.Lines) + " |\n";
			}
			if (RestFiles > 0)
			{
				Text += "| other | " + std::to_string(RestFiles) + " | " + std::to_string(RestLines) + " |\n";
			}
			return Text;
		}

		std::string CountSentence(const FFolderCount& Count)
		{
			std::string Text = Count.Describe() + ".";
			if (Count.OtherFiles > 0)
			{
				Text += ' ' + Utf8Text::Count(Count.OtherFiles, "file is", "files are") +
					" binary, too large or unreadable and not counted in lines.";
			}
			if (Count.UnreadableFolders > 0)
			{
				Text += ' ' + Utf8Text::Count(Count.UnreadableFolders, "folder", "folders") + " could not be read.";
			}
			if (Count.bTruncated)
			{
				Text += " The project is larger than one count takes.";
			}
			return Text;
		}

		std::string FolderItem(const FListedEntry& Entry)
		{
			return Entry.Path.bIsFolder
				? "- " + AnswerMarkdown::FileName(Entry.Name + '/', 100) + ' ' + Utf8Text::Count(Entry.FilesInside, "file", "files") + '\n'
				: "- " + AnswerMarkdown::FileLink(Entry.Path) + '\n';
		}

		/** Up to MaxItems entries, a line each, and how many more there are. */
		std::string EntryList(const std::vector<FListedEntry>& Entries, size_t MaxItems)
		{
			std::string Text;
			for (size_t Index = 0; Index < std::min(Entries.size(), MaxItems); ++Index)
			{
				Text += FolderItem(Entries[Index]);
			}
			return Entries.size() <= MaxItems
				? Text
				: Text + Utf8Text::Count(Entries.size() - MaxItems, "more entry is", "more entries are") + " not listed.\n";
		}

		std::string FolderName(const FProjectPath& Folder)
		{
			return AnswerMarkdown::FileName(Folder.Relative.empty() ? Folder.Absolute : Folder.Relative + '/', 160);
		}

		bool IsPattern(const std::string& Target)
		{
			return Target.find_first_of("*?") != std::string::npos;
		}

		std::string DisplayName(const FProjectPath& Path)
		{
			const std::string& Full = Path.Relative.empty() ? Path.Absolute : Path.Relative;
			const size_t Slash = Full.rfind('/');
			return Slash == std::string::npos || Slash + 1 == Full.size() ? Full : Full.substr(Slash + 1);
		}

		FToolParameters FolderParameters(const FProjectPath& Folder)
		{
			return { { "display_text", DisplayName(Folder) }, { "path", Folder.Relative.empty() ? std::string(".") : Folder.Relative } };
		}
	}

	// 1. Nothing named: what is attached. 2. A pattern. 3. An attachment by its name. 4. A file or folder of the project. 5. No
	// file, but perhaps a symbol. 6. Several that fit, or none: the question back, and where was looked.
	bool FBrowseWork::RunShow()
	{
		// 1. No name: what is attached is meant.
		if (Request.Target.empty())
		{
			if (!Desk.Attachments.empty())
			{
				return Desk.Attachments.size() == 1 ? AnswerFile(Desk.Attachments.front()) : AnswerAttachments(Desk.Attachments);
			}
			return Say("Which file should I show? For example: `show README.md`\n");
		}
		// 2. Several names at once.
		if (IsPattern(Request.Target))
		{
			return AnswerPattern(Request.Target);
		}
		// 3. What is attached comes before what is in the project under the same name: the user has just pointed at it.
		FProjectPath Attached;
		if (Desk.FindAttachment(Request.Target, Attached))
		{
			return AnswerFile(Attached);
		}
		if (const std::vector<FProjectPath> Named = Desk.FindNamedAttachments(Request.Target); !Named.empty())
		{
			return AnswerAttachments(Named);
		}
		// 4. The project.
		std::vector<FProjectPath> Found;
		if (!Desk.BeginStep("Opening " + Request.Target) || !Desk.RunFindFileTool(Request.Target, Found))
		{
			return false;
		}
		if (Found.size() == 1)
		{
			return Found.front().bIsFolder ? AnswerFolder(Found.front()) : AnswerFile(Found.front());
		}
		// "show X": no file, but perhaps a symbol.
		const bool bIsWord =
			std::all_of(Request.Target.begin(), Request.Target.end(), [](char Byte) { return Utf8Text::IsWordByte(Byte) || Byte == ':'; });
		if (Found.empty() && (bIsWord || !Request.TargetInScope.empty()))
		{
			return FSearchWork(Desk, Request).RunExplain();
		}
		if (!Found.empty())
		{
			return Say("Several names fit " + AnswerMarkdown::FileName(Request.Target) + ". Which one do you mean?\n" +
				AnswerMarkdown::FileList(Found));
		}
		// 5. Nothing of that name. A path that leads out is told as such, or it would look as if it did not exist.
		const bool bIsOutside = Request.Target.front() == '/' && Desk.Files.IsOutside(Request.Target);
		return Say((bIsOutside ? AnswerMarkdown::FileName(Request.Target) + " lies outside the project, so I do not open it.\n"
							   : "There is no file " + AnswerMarkdown::FileName(Request.Target) + " in the project.\n") +
			DescribeWhere());
	}

	std::string FBrowseWork::DescribeWhere() const
	{
		return "I looked below " + AnswerMarkdown::FileName(Desk.Files.GetRoot(), 160) + "\n";
	}

	bool FBrowseWork::RunListTool(const FProjectPath& Folder, std::vector<FListedEntry>& OutEntries, bool& bOutIsReadable)
	{
		return Desk.RunTool("list_directory", FolderParameters(Folder),
			[&]
			{
				bOutIsReadable = ListFolder(Desk.Files, Folder, Desk.CancelCheck(), OutEntries);
				return FToolOutcome{ bOutIsReadable,
					bOutIsReadable ? Utf8Text::Count(OutEntries.size(), "entry", "entries") : std::string("Not read") };
			});
	}

	bool FBrowseWork::RunCountTool(const FProjectPath& Folder, FFolderCount& OutCount)
	{
		return Desk.RunTool("count_lines", FolderParameters(Folder),
			[&]
			{
				OutCount = CountFolder(Desk.Files, Folder, Desk.CancelCheck());
				return FToolOutcome{ true,
					Utf8Text::Count(OutCount.Files, "file", "files") + ", " + Utf8Text::Count(OutCount.Lines, "line", "lines") };
			});
	}

	// 1. The text. 2. Which lines were asked for. 3. No more of them than one reads.
	bool FBrowseWork::AnswerFile(const FProjectPath& File)
	{
		if (File.bIsFolder)
		{
			return AnswerFolder(File);
		}
		FProjectText Content;
		const bool bIsOwnStep = Desk.StepCount == 0;
		if ((bIsOwnStep && !Desk.BeginStep("Reading " + File.Relative)) ||
			!Desk.RunReadTool(File, Request.FirstLine, Request.LastLine, Content))
		{
			return false;
		}
		if (!Content.IsValid())
		{
			return Say(AnswerMarkdown::FileLink(File) + " cannot be shown: " + Content.Problem + ".\n");
		}
		const std::vector<std::string_view> Lines = Utf8Text::SplitLines(Content.Text);
		const int Count = static_cast<int>(Lines.size());
		if (Count == 0)
		{
			return Say(AnswerMarkdown::FileLink(File) + " is empty.\n");
		}
		int First = std::max(Request.FirstLine, 1);
		int Last = Request.FirstLine > 0 ? Request.LastLine : DefaultShownLines;
		// Counted in lines from the end, which is known only now.
		if (Request.TailLines > 0)
		{
			First = std::max(1, Count - Request.TailLines + 1);
			Last = Count;
		}
		if (First > Count)
		{
			return Say(AnswerMarkdown::FileLink(File) + " has only " + Utf8Text::Count(Lines.size(), "line", "lines") + ".\n");
		}
		Last = std::min({ Last, Count, First + MaxShownLines - 1 });

		const bool bIsWhole = First == 1 && Last == Count;
		const std::string Range = bIsWhole
			? Utf8Text::Count(Lines.size(), "line", "lines")
			: "lines " + std::to_string(First) + " to " + std::to_string(Last) + " of " + std::to_string(Count);
		return Say(AnswerMarkdown::FileLink(File, First > 1 ? First : 0) + ' ' + Range + '\n' +
			AnswerMarkdown::CodeLines(Lines, First, Last, File.Relative));
	}

	bool FBrowseWork::AnswerDescription(const FProjectPath& File)
	{
		if (File.bIsFolder)
		{
			return AnswerFolder(File);
		}
		std::string Text;
		return Desk.BeginStep("Reading " + File.Relative) && DescribeFile(File, Text) && Say(Text);
	}

	bool FBrowseWork::DescribeFile(const FProjectPath& File, std::string& OutAnswer)
	{
		FProjectText Content;
		if (!Desk.RunReadTool(File, 0, 0, Content))
		{
			return false;
		}
		if (!Content.IsValid())
		{
			OutAnswer += AnswerMarkdown::FileLink(File) + " cannot be shown: " + Content.Problem + ".\n";
			return true;
		}
		const std::vector<std::string_view> Lines = Utf8Text::SplitLines(Content.Text);
		OutAnswer += AnswerMarkdown::FileLink(File) + " has " + Utf8Text::Count(Lines.size(), "line", "lines") + ".\n";
		const std::vector<FOutlineLine> Outline = OutlineOf(Content.Text, 20);
		if (!Outline.empty())
		{
			OutAnswer += "**What stands in it**\n";
			for (const FOutlineLine& Item : Outline)
			{
				OutAnswer += "- " + AnswerMarkdown::InlineCode(Item.Text, 90) + " line " + std::to_string(Item.Line) + '\n';
			}
		}
		if (!Lines.empty())
		{
			OutAnswer += Lines.size() > 30 ? "**Its first 30 lines**\n" : "**Its text**\n";
			OutAnswer += AnswerMarkdown::CodeLines(Lines, 1, std::min(static_cast<int>(Lines.size()), 30), File.Relative);
		}
		return true;
	}

	bool FBrowseWork::RunList()
	{
		if (IsPattern(Request.Target))
		{
			return AnswerPattern(Request.Target);
		}
		if (Request.Target.empty())
		{
			return AnswerFolder(Desk.GetProjectPath());
		}
		std::vector<FProjectPath> Found;
		if (!Desk.BeginStep("Opening " + Request.Target) || !Desk.RunFindFileTool(Request.Target, Found))
		{
			return false;
		}
		// A folder is what one lists, should a file have the same name.
		const auto Folder = std::find_if(Found.begin(), Found.end(), [](const FProjectPath& Path) { return Path.bIsFolder; });
		if (Folder != Found.end())
		{
			return AnswerFolder(*Folder);
		}
		if (Found.size() == 1)
		{
			return AnswerFile(Found.front());
		}
		std::string Text = Found.empty()
			? "There is no folder " + AnswerMarkdown::FileName(Request.Target) + " in the project.\n" + DescribeWhere()
			: "These names fit " + AnswerMarkdown::FileName(Request.Target) + ":\n";
		return Say(Text + AnswerMarkdown::FileList(Found));
	}

	bool FBrowseWork::AnswerFolder(const FProjectPath& Folder)
	{
		std::vector<FListedEntry> Entries;
		bool bIsReadable = true;
		const bool bIsOwnStep = Desk.StepCount == 0;
		if ((bIsOwnStep && !Desk.BeginStep("Listing " + DisplayName(Folder))) || !RunListTool(Folder, Entries, bIsReadable))
		{
			return false;
		}
		const std::string Text = FolderName(Folder);
		if (!bIsReadable)
		{
			return Say(Text + " cannot be read. Check that it still exists and that you may look into it.\n");
		}
		if (Entries.empty())
		{
			return Say(Text + " is empty, or holds only what is ignored (version control, build output, saved data).\n");
		}
		return Say(Text + " has " + Utf8Text::Count(Entries.size(), "entry", "entries") + ".\n" + EntryList(Entries, MaxListedEntries));
	}

	bool FBrowseWork::AnswerPattern(const std::string& Pattern)
	{
		std::vector<FProjectPath> Found;
		const bool bIsAlive = Desk.BeginStep("Looking for files like " + Pattern) &&
			Desk.RunTool("find_file", { { "display_text", Pattern }, { "name", Pattern } },
				[&]
				{
					Found = ListMatching(Desk.Files, Pattern, Desk.CancelCheck());
					return FToolOutcome{ true, Utf8Text::Count(Found.size(), "file", "files") };
				});
		if (!bIsAlive)
		{
			return false;
		}
		std::string Text = Found.empty()
			? "No file is called like " + AnswerMarkdown::InlineCode(Pattern) + "\n" + DescribeWhere()
			: Utf8Text::Count(Found.size(), "file is", "files are") + " called like " + AnswerMarkdown::InlineCode(Pattern) + "\n";
		return Say(Text + AnswerMarkdown::FileList(Found, MaxListedEntries));
	}

	bool FBrowseWork::RunCount()
	{
		if (IsPattern(Request.Target))
		{
			return AnswerPattern(Request.Target);
		}
		const FProjectPath Place = FindCountedPlace();
		if (!Desk.BeginStep("Counting " + DisplayName(Place)))
		{
			return false;
		}
		if (!Place.bIsFolder)
		{
			FProjectText Content;
			if (!Desk.RunReadTool(Place, 0, 0, Content))
			{
				return false;
			}
			return Say(AnswerMarkdown::FileLink(Place) +
				(Content.IsValid() ? " has " + Utf8Text::Count(Utf8Text::SplitLines(Content.Text).size(), "line", "lines")
								   : " was not counted: " + Content.Problem) +
				".\n");
		}
		FFolderCount Count;
		if (!RunCountTool(Place, Count))
		{
			return false;
		}
		return Say(FolderName(Place) + "\n" + CountSentence(Count) + "\n" + KindTable(Count));
	}

	FProjectPath FBrowseWork::FindCountedPlace() const
	{
		// "how many lines does X have", "how many files are in Source": the place is one of the words.
		std::vector<std::string> Words = { Request.Scope, Request.Target };
		for (size_t Start = 0; Start < Request.Target.size();)
		{
			const size_t End = std::min(Request.Target.find(' ', Start), Request.Target.size());
			Words.push_back(Request.Target.substr(Start, End - Start));
			Start = End + 1;
		}
		for (const std::string& Word : Words)
		{
			FProjectPath Candidate;
			const bool bIsName =
				Desk.Files.Resolve(Word, Candidate) || (Word.find('.') != std::string::npos && Desk.FindPlace(Word, Candidate));
			if (bIsName)
			{
				return Candidate;
			}
		}
		return Desk.GetProjectPath();
	}

	// The headings of a README say more about a project than any count, where there is one.
	bool FBrowseWork::RunSummarise()
	{
		const FProjectPath Project = Desk.GetProjectPath();
		FFolderCount Count;
		std::vector<FListedEntry> Entries;
		FReadmeText Readme;
		bool bIsReadable = false;
		if (!Desk.BeginStep("Looking through " + DisplayName(Project)) || !RunCountTool(Project, Count) ||
			!RunListTool(Project, Entries, bIsReadable))
		{
			return false;
		}
		// Its words are the answer, whatever of the README can be read: a project without one is summed up too.
		const bool bHasReadme = std::any_of(Entries.begin(), Entries.end(),
			[](const FListedEntry& Entry) { return Utf8Text::StartsWith(Utf8Text::ToLower(Entry.Name), "readme"); });
		bool bIsAlive = true;
		if (bHasReadme)
		{
			bIsAlive = Desk.RunTool("read_file", { { "path", "README" } },
				[&]
				{
					Readme = ReadReadme(Desk.Files);
					return FToolOutcome{ true, Readme.Title.empty() ? std::string("No heading in it") : Readme.Title };
				});
		}
		return bIsAlive && Say(MakeSummary(Readme, Count, Entries));
	}

	std::string FBrowseWork::MakeSummary(
		const FReadmeText& Readme, const FFolderCount& Count, const std::vector<FListedEntry>& Entries) const
	{
		const std::string Name = DisplayName(Desk.GetProjectPath());
		const std::string Title = AnswerMarkdown::PlainText(Readme.Title.empty() ? Name : Readme.Title);
		std::string Text = "## " + (Title.empty() ? std::string("Project") : Title) + '\n';
		// What the user wrote in the settings comes first; it is the only sentence here that somebody wrote for this purpose.
		for (const std::string& Words : { Desk.Input.Behaviour.ProjectDescription, Readme.FirstLine })
		{
			Text += Words.empty() ? "" : AnswerMarkdown::PlainText(Utf8Text::Shorten(Words, 600)) + '\n';
		}
		Text += CountSentence(Count) + '\n';
		return Text + KindTable(Count) + (Entries.empty() ? "" : "**At the top**\n" + EntryList(Entries, MaxTopEntries));
	}

	bool FBrowseWork::AnswerAttachments(const std::vector<FProjectPath>& Named)
	{
		if (Named.size() == 1)
		{
			return AnswerDescription(Named.front());
		}
		if (!Desk.BeginStep("Reading the attached files"))
		{
			return false;
		}
		std::string Text;
		const size_t Count = std::min(Named.size(), MaxDescribedAttachments);
		for (size_t Index = 0; Index < Count; ++Index)
		{
			if (!DescribeFile(Named[Index], Text))
			{
				return false;
			}
		}
		if (Count < Named.size())
		{
			Text += Utf8Text::Count(Named.size() - Count, "more attached file was", "more attached files were") +
				" not read. Ask about fewer at a time.\n";
		}
		return Say(Text);
	}
}
