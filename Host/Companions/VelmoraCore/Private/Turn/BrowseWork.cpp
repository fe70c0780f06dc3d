#include "Turn/BrowseWork.h"

#include <algorithm>

#include "Text/Utf8Text.h"
#include "Tools/ProjectSummary.h"
#include "Turn/AnswerMarkdown.h"
#include "Turn/SearchWork.h"

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
		constexpr size_t MaxListedKinds = 10;

		std::string KindTable(const FFolderCount& Count)
		{
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
			std::string Text = Utf8Text::Count(Count.Files, "file", "files") + " in " +
				Utf8Text::Count(Count.Folders, "folder", "folders") + ", " + Utf8Text::Count(Count.Lines, "line", "lines") + " of text.";
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
			return Entry.Path.bIsFolder ? "- " + AnswerMarkdown::InlineCode(Entry.Name + '/', 100) + ' ' +
					Utf8Text::Count(Entry.FilesInside, "file", "files") + '\n'
										: "- " + AnswerMarkdown::FileLink(Entry.Path) + '\n';
		}

		std::string DisplayName(const FProjectPath& Path)
		{
			const std::string& Full = Path.Relative.empty() ? Path.Absolute : Path.Relative;
			const size_t Slash = Full.rfind('/');
			return Slash == std::string::npos || Slash + 1 == Full.size() ? Full : Full.substr(Slash + 1);
		}
	}

	bool FBrowseWork::RunShow()
	{
		if (Request.Target.empty())
		{
			if (!Desk.Attachments.empty())
			{
				return Desk.Attachments.size() == 1 ? AnswerFile(Desk.Attachments.front()) : AnswerAttachments(Desk.Attachments);
			}
			Desk.Answer("Which file should I show? For example: `show README.md`\n");
			return true;
		}
		if (Request.Target.find_first_of("*?") != std::string::npos)
		{
			return AnswerPattern(Request.Target);
		}
		FProjectPath Attached;
		if (Desk.FindAttachment(Request.Target, Attached))
		{
			return AnswerFile(Attached);
		}
		if (Desk.Attachments.size() > 1)
		{
			const std::vector<FProjectPath> Named = Desk.FindNamedAttachments(Request.Target);
			if (!Named.empty())
			{
				return AnswerAttachments(Named);
			}
		}
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
		std::string Text;
		if (Found.empty())
		{
			const bool bIsOutside = Request.Target.front() == '/' && Desk.Files.IsOutside(Request.Target);
			Text = bIsOutside ? AnswerMarkdown::InlineCode(Request.Target) + " lies outside the project, so I do not open it.\n"
							  : "There is no file " + AnswerMarkdown::InlineCode(Request.Target) + " in the project.\n";
			Text += "I looked below " + AnswerMarkdown::InlineCode(Desk.Files.GetRoot(), 160) + "\n";
		}
		else
		{
			Text = "Several names fit " + AnswerMarkdown::InlineCode(Request.Target) + ". Which one do you mean?\n";
			for (const FProjectPath& Path : Found)
			{
				Text += "- " + AnswerMarkdown::FileLink(Path) + '\n';
			}
		}
		Desk.Answer(Text);
		return true;
	}

	bool FBrowseWork::AnswerFile(const FProjectPath& File)
	{
		if (File.bIsFolder)
		{
			return AnswerFolder(File);
		}
		if (Desk.StepCount == 0 && !Desk.BeginStep("Reading " + File.Relative))
		{
			return false;
		}
		FProjectText Content;
		if (!Desk.RunReadTool(File, Request.FirstLine, Request.LastLine, Content))
		{
			return false;
		}
		if (!Content.IsValid())
		{
			Desk.Answer(AnswerMarkdown::FileLink(File) + " cannot be shown: " + Content.Problem + ".\n");
			return true;
		}
		const std::vector<std::string_view> Lines = Utf8Text::SplitLines(Content.Text);
		const int Count = static_cast<int>(Lines.size());
		if (Count == 0)
		{
			Desk.Answer(AnswerMarkdown::FileLink(File) + " is empty.\n");
			return true;
		}
		int First = std::max(Request.FirstLine, 1);
		int Last = Request.FirstLine > 0 ? Request.LastLine : DefaultShownLines;
		if (Request.TailLines > 0)
		{
			First = std::max(1, Count - Request.TailLines + 1);
			Last = Count;
		}
		if (First > Count)
		{
			Desk.Answer(AnswerMarkdown::FileLink(File) + " has only " + Utf8Text::Count(Lines.size(), "line", "lines") + ".\n");
			return true;
		}
		Last = std::min({ Last, Count, First + MaxShownLines - 1 });

		std::string Body;
		for (int Line = First; Line <= Last; ++Line)
		{
			Body += std::string(Lines[Line - 1]) + '\n';
		}
		const bool bIsWhole = First == 1 && Last == Count;
		const std::string Range = bIsWhole
			? Utf8Text::Count(Lines.size(), "line", "lines")
			: "lines " + std::to_string(First) + " to " + std::to_string(Last) + " of " + std::to_string(Count);
		Desk.Answer(AnswerMarkdown::FileLink(File, First > 1 ? First : 0) + ' ' + Range + '\n' +
			AnswerMarkdown::CodeBlock(Body, AnswerMarkdown::LanguageOf(File.Relative)));
		return true;
	}

	bool FBrowseWork::AnswerDescription(const FProjectPath& File)
	{
		if (File.bIsFolder)
		{
			return AnswerFolder(File);
		}
		std::string Text;
		if (!Desk.BeginStep("Reading " + File.Relative) || !DescribeFile(File, Text))
		{
			return false;
		}
		Desk.Answer(Text);
		return true;
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
		std::string Body;
		for (size_t Line = 0; Line < std::min<size_t>(Lines.size(), 30); ++Line)
		{
			Body += std::string(Lines[Line]) + '\n';
		}
		if (!Body.empty())
		{
			OutAnswer += Lines.size() > 30 ? "**Its first 30 lines**\n" : "**Its text**\n";
			OutAnswer += AnswerMarkdown::CodeBlock(Body, AnswerMarkdown::LanguageOf(File.Relative));
		}
		return true;
	}

	bool FBrowseWork::RunList()
	{
		if (Request.Target.find_first_of("*?") != std::string::npos)
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
		std::string Text = Found.empty() ? "There is no folder " + AnswerMarkdown::InlineCode(Request.Target) +
				" in the project.\nI looked below " + AnswerMarkdown::InlineCode(Desk.Files.GetRoot(), 160) + "\n"
										 : "These names fit " + AnswerMarkdown::InlineCode(Request.Target) + ":\n";
		for (const FProjectPath& Path : Found)
		{
			Text += "- " + AnswerMarkdown::FileLink(Path) + '\n';
		}
		Desk.Answer(Text);
		return true;
	}

	bool FBrowseWork::AnswerFolder(const FProjectPath& Folder)
	{
		std::vector<FListedEntry> Entries;
		bool bIsReadable = true;
		const std::string Name = DisplayName(Folder);
		if (Desk.StepCount == 0 && !Desk.BeginStep("Listing " + Name))
		{
			return false;
		}
		const bool bIsAlive = Desk.RunTool("list_directory",
			{ { "display_text", Name }, { "path", Folder.Relative.empty() ? std::string(".") : Folder.Relative } },
			[&]
			{
				bIsReadable = ListFolder(Desk.Files, Folder, Desk.CancelCheck(), Entries);
				return FToolOutcome{ bIsReadable,
					bIsReadable ? Utf8Text::Count(Entries.size(), "entry", "entries") : std::string("Not read") };
			});
		if (!bIsAlive)
		{
			return false;
		}
		std::string Text = AnswerMarkdown::InlineCode(Folder.Relative.empty() ? Folder.Absolute : Folder.Relative + '/', 160);
		if (!bIsReadable)
		{
			Desk.Answer(Text + " cannot be read. Check that it still exists and that you may look into it.\n");
			return true;
		}
		if (Entries.empty())
		{
			Desk.Answer(Text + " is empty, or holds only what is ignored (version control, build output, saved data).\n");
			return true;
		}
		Text += " has " + Utf8Text::Count(Entries.size(), "entry", "entries") + ".\n";
		for (size_t Index = 0; Index < std::min(Entries.size(), MaxListedEntries); ++Index)
		{
			Text += FolderItem(Entries[Index]);
		}
		if (Entries.size() > MaxListedEntries)
		{
			Text += Utf8Text::Count(Entries.size() - MaxListedEntries, "more entry is", "more entries are") + " not listed.\n";
		}
		Desk.Answer(Text);
		return true;
	}

	bool FBrowseWork::AnswerPattern(const std::string& Pattern)
	{
		std::vector<FProjectPath> Found;
		if (!Desk.BeginStep("Looking for files like " + Pattern))
		{
			return false;
		}
		const bool bIsAlive = Desk.RunTool("find_file", { { "display_text", Pattern }, { "name", Pattern } },
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
			? "No file is called like " + AnswerMarkdown::InlineCode(Pattern) + "\nI looked below " +
				AnswerMarkdown::InlineCode(Desk.Files.GetRoot(), 160) + "\n"
			: Utf8Text::Count(Found.size(), "file is", "files are") + " called like " + AnswerMarkdown::InlineCode(Pattern) + "\n";
		for (size_t Index = 0; Index < std::min(Found.size(), MaxListedEntries); ++Index)
		{
			Text += "- " + AnswerMarkdown::FileLink(Found[Index]) + '\n';
		}
		if (Found.size() > MaxListedEntries)
		{
			Text += Utf8Text::Count(Found.size() - MaxListedEntries, "more file is", "more files are") + " not listed.\n";
		}
		Desk.Answer(Text);
		return true;
	}

	bool FBrowseWork::RunCount()
	{
		if (Request.Target.find_first_of("*?") != std::string::npos)
		{
			return AnswerPattern(Request.Target);
		}
		// "how many lines does X have", "how many files are in Source": the place is one of the words.
		FProjectPath Place = Desk.GetProjectPath();
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
				Place = Candidate;
				break;
			}
		}
		const std::string Name = DisplayName(Place);
		if (!Desk.BeginStep("Counting " + Name))
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
			Desk.Answer(AnswerMarkdown::FileLink(Place) +
				(Content.IsValid() ? " has " + Utf8Text::Count(Utf8Text::SplitLines(Content.Text).size(), "line", "lines")
								   : " was not counted: " + Content.Problem) +
				".\n");
			return true;
		}
		FFolderCount Count;
		const bool bIsAlive = Desk.RunTool("count_lines",
			{ { "display_text", Name }, { "path", Place.Relative.empty() ? std::string(".") : Place.Relative } },
			[&]
			{
				Count = CountFolder(Desk.Files, Place, Desk.CancelCheck());
				return FToolOutcome{ true,
					Utf8Text::Count(Count.Files, "file", "files") + ", " + Utf8Text::Count(Count.Lines, "line", "lines") };
			});
		if (!bIsAlive)
		{
			return false;
		}
		Desk.Answer(AnswerMarkdown::InlineCode(Place.Relative.empty() ? Place.Absolute : Place.Relative + '/', 160) + "\n" +
			CountSentence(Count) + "\n" + (Count.Kinds.empty() ? std::string() : KindTable(Count)));
		return true;
	}

	bool FBrowseWork::RunSummarise()
	{
		const FProjectPath Project = Desk.GetProjectPath();
		const std::string Name = DisplayName(Project);
		FFolderCount Count;
		std::vector<FListedEntry> Entries;
		FReadmeText Readme;
		if (!Desk.BeginStep("Looking through " + Name))
		{
			return false;
		}
		const bool bIsCounted = Desk.RunTool("count_lines", { { "display_text", Name }, { "path", "." } },
			[&]
			{
				Count = CountFolder(Desk.Files, Project, Desk.CancelCheck());
				return FToolOutcome{ true,
					Utf8Text::Count(Count.Files, "file", "files") + ", " + Utf8Text::Count(Count.Lines, "line", "lines") };
			});
		const bool bIsListed = bIsCounted &&
			Desk.RunTool("list_directory", { { "display_text", Name }, { "path", "." } },
				[&]
				{
					const bool bIsReadable = ListFolder(Desk.Files, Project, Desk.CancelCheck(), Entries);
					return FToolOutcome{ bIsReadable,
						bIsReadable ? Utf8Text::Count(Entries.size(), "entry", "entries") : std::string("Not read") };
				});
		if (!bIsListed)
		{
			return false;
		}
		const bool bHasReadme = std::any_of(Entries.begin(), Entries.end(),
			[](const FListedEntry& Entry) { return Utf8Text::StartsWith(Utf8Text::ToLower(Entry.Name), "readme"); });
		if (bHasReadme)
		{
			const bool bIsRead = Desk.RunTool("read_file", { { "path", "README" } },
				[&]
				{
					Readme = ReadReadme(Desk.Files);
					return FToolOutcome{ true, Readme.Title.empty() ? std::string("No heading in it") : Readme.Title };
				});
			if (!bIsRead)
			{
				return false;
			}
		}

		const std::string Title = AnswerMarkdown::PlainText(Readme.Title.empty() ? Name : Readme.Title);
		std::string Text = "## " + (Title.empty() ? std::string("Project") : Title) + '\n';
		if (!Desk.Input.Behaviour.ProjectDescription.empty())
		{
			Text += AnswerMarkdown::PlainText(Utf8Text::Shorten(Desk.Input.Behaviour.ProjectDescription, 600)) + '\n';
		}
		if (!Readme.FirstLine.empty())
		{
			Text += AnswerMarkdown::PlainText(Utf8Text::Shorten(Readme.FirstLine, 600)) + '\n';
		}
		Text += CountSentence(Count) + '\n';
		if (!Count.Kinds.empty())
		{
			Text += KindTable(Count);
		}
		if (!Entries.empty())
		{
			Text += "**At the top**\n";
			for (size_t Index = 0; Index < std::min<size_t>(Entries.size(), 25); ++Index)
			{
				Text += FolderItem(Entries[Index]);
			}
			if (Entries.size() > 25)
			{
				Text += Utf8Text::Count(Entries.size() - 25, "more entry is", "more entries are") + " not listed.\n";
			}
		}
		Desk.Answer(Text);
		return true;
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
		Desk.Answer(Text);
		return true;
	}
}
