#include <algorithm>

#include "Changes/SteeringFiles.h"
#include "Host/HostFileNames.h"
#include "Host/ProjectWalk.h"
#include "Text/Utf8Text.h"
#include "Tools/ProjectSearch.h"
#include "Tools/ProjectSummary.h"
#include "Tools/SymbolLookup.h"
#include "Tools/ToolBox.h"

// The tools that leave the disk as it is.

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxListedNames = 1000;

		/** Characters of a line that a model gets to see. */
		constexpr size_t MaxLineCharacters = 1000;

		/** Names on disk are bytes; a model reads text. */
		std::string NameText(const std::string& Bytes)
		{
			return Utf8Text::FromString(HostFileNameFromBytes(Bytes));
		}

		std::string PlaceText(const std::string& Path, int Line)
		{
			return NameText(Path) + ':' + std::to_string(Line);
		}

		void Succeed(FToolResult& Result, std::string Sentence, std::string Text)
		{
			Result.bSuccess = true;
			Result.Sentence = std::move(Sentence);
			Result.Text = std::move(Text);
		}

		void Fail(FToolResult& Result, std::string Sentence)
		{
			Result.Sentence = std::move(Sentence);
			Result.Text = Result.Sentence + '.';
		}
	}

	// What the project's rules leave out and what may hold secrets is for the user to give away. A model is told that it has
	// to ask, not what stands there.
	bool FToolBox::MayRead(const FProjectPath& Place, FToolResult& OutResult) const
	{
		// What is ignored or secret is read only when the user says so: a model that was told by a file to fetch it must not get it.
		const bool bIsSecret = IsSecretName(Place.Relative);
		if (bIsPermitted || (!bIsSecret && !IsLeftOutOfProject(Files.GetRoot(), Place.Relative, Place.bIsFolder)))
		{
			return true;
		}
		OutResult.Question =
			FToolQuestion{ Place.Relative, bIsSecret ? "it may hold secrets" : "the project's ignore rules leave it out", std::string() };
		Fail(OutResult, "Not read: it needs the user's consent, since " + OutResult.Question->Reason);
		return false;
	}

	void FToolBox::ListFolderTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		FProjectPath Place;
		std::vector<FListedEntry> Entries;
		if (!FindPlace(Arguments, Place, OutResult) || !MayRead(Place, OutResult))
		{
			return;
		}
		if (!Place.bIsFolder || !ListFolder(Files, Place, IsCancelled, Entries))
		{
			return Fail(OutResult, Place.bIsFolder ? "Not read: the folder cannot be opened" : "Not listed: it is a file");
		}
		std::string Text = Entries.empty() ? "The folder is empty, or holds only what is ignored.\n" : "";
		for (size_t Index = 0; Index < std::min(Entries.size(), MaxListedNames); ++Index)
		{
			const FListedEntry& Entry = Entries[Index];
			Text += NameText(Entry.Path.Relative) +
				(Entry.Path.bIsFolder ? "/ (" + Utf8Text::Count(Entry.FilesInside, "file", "files") + ")" : std::string()) + '\n';
		}
		if (Entries.size() > MaxListedNames)
		{
			Text += '[' + Utf8Text::Count(Entries.size() - MaxListedNames, "more entry is", "more entries are") + " left out.]\n";
		}
		Succeed(OutResult, Utf8Text::Count(Entries.size(), "entry", "entries"), Text);
	}

	// 1. The lines that are asked for. 2. The text, as far as one result goes: numbered, so that the model can name a line. 3. How
	// to go on, in words that are the next call.
	void FToolBox::ReadFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		FProjectPath Place;
		// 1. Which lines; a model that asks wrongly is told how it goes.
		int First = 1;
		int Last = 0;
		if (!Arguments.GetNumber("first_line", 1, First) || !Arguments.GetNumber("last_line", 0, Last))
		{
			return Fail(OutResult, "Not read: lines are whole numbers from 1 on");
		}
		if (!FindPlace(Arguments, Place, OutResult) || !MayRead(Place, OutResult))
		{
			return;
		}
		// 2. The text.
		const FProjectText Content =
			Place.bIsFolder ? FProjectText{ EReadResult::Unreadable, "", "it is a folder" } : Files.Read(Place.Absolute);
		if (!Content.IsValid())
		{
			return Fail(OutResult, "Not read: " + Content.Problem);
		}
		const std::vector<std::string_view> Lines = Utf8Text::SplitLines(Content.Text);
		const int Count = static_cast<int>(Lines.size());
		First = std::max(First, 1);
		if (First > std::max(Count, 1))
		{
			return Fail(OutResult, "Not read: it has only " + Utf8Text::Count(Lines.size(), "line", "lines"));
		}
		// 3. Numbered lines until the result is full. The room left over is for the sentence that says how to read on.
		const int End = Last == 0 ? Count : std::min(Last, Count);
		std::string Text;
		int Line = First;
		for (; Line <= End; ++Line)
		{
			const std::string Row =
				std::to_string(Line) + '\t' + Utf8Text::Shorten(Lines[static_cast<size_t>(Line) - 1], MaxLineCharacters) + '\n';
			if (Text.size() + Row.size() > MaxResultBytes - 200)
			{
				break;
			}
			Text += Row;
		}
		if (Line <= End)
		{
			Text += "[Lines " + std::to_string(Line) + " to " + std::to_string(End) + " are left out: read on with first_line " +
				std::to_string(Line) + ".]\n";
		}
		else if (End < Count)
		{
			Text += "[The file has " + Utf8Text::Count(Lines.size(), "line", "lines") + ".]\n";
		}
		Succeed(OutResult, "Read " + Utf8Text::Count(static_cast<size_t>(std::max(0, Line - First)), "line", "lines"),
			Count == 0 ? std::string("The file is empty.\n") : Text);
	}

	// Files that may hold secrets are left out without a word, or each search would ask for consent.
	void FToolBox::SearchTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		FProjectPath Place;
		if (!FindPlace(Arguments, Place, OutResult) || !MayRead(Place, OutResult))
		{
			return;
		}
		if (Utf8Text::Trim(Arguments.GetText("term")).empty())
		{
			return Fail(OutResult, "Not searched: the text to look for is empty");
		}
		// A search of a folder must not show what reading the file would ask for, nor count it: who guesses often enough has it all.
		const FSearchResult Found = SearchProject(Files, Place, Arguments.GetText("term"), IsCancelled, IsSecretName);
		if (Found.MatchCount == 0)
		{
			return Succeed(OutResult, Found.Describe(),
				"No line holds it; " + Utf8Text::Count(Found.SearchedFiles, "text file was", "text files were") + " searched.\n");
		}
		const std::string Count = Found.CountMatches();
		std::string Text = Count + (Found.MatchCount > Found.Hits.size() ? ", the best " + std::to_string(Found.Hits.size()) : "") + ":\n";
		for (const FSearchHit& Hit : Found.Hits)
		{
			Text += PlaceText(Hit.File.Relative, Hit.Line) + ": " + Hit.Text + '\n';
		}
		if (Found.bTruncated)
		{
			Text += "[The project is larger than one search takes: name a folder.]\n";
		}
		Succeed(OutResult, Count, Text);
	}

	void FToolBox::FindFileTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		const std::vector<FProjectPath> Found = Files.Find(Arguments.GetText("name"), MaxSearchFiles);
		std::string Text;
		for (const FProjectPath& Path : Found)
		{
			Text += NameText(Path.Relative) + (Path.bIsFolder ? "/\n" : "\n");
		}
		Succeed(OutResult, FProjectFiles::DescribeFound(Found.size()),
			Found.empty() ? std::string("No file or folder has that in its name.\n") : Text);
	}

	// The project before the engine, unless only the engine has exactly that name.
	void FToolBox::FindSymbolTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		const FSymbolAnswer Answer = LookUpSymbol(Files, Arguments.GetText("name"), { Files.GetRoot(), std::string(), true });
		if (!Answer.bIsReady)
		{
			return Fail(OutResult, "The code index is not ready; search_files may help");
		}
		std::string Text;
		const auto Add = [&Text](const CodeIntel::FIndexLookup& Lookup, const std::string& Folder)
		{
			for (const CodeIntel::FIndexSymbol& Symbol : Lookup.Symbols)
			{
				Text += PlaceText(Folder + Symbol.Path, Symbol.Line) + ' ' + Symbol.Kind + ' ' + GetWholeSymbolName(Symbol) + '\n';
			}
		};
		// The engine counts only where the project has nothing of that very name: its own code is what one works on.
		const bool bIsInEngine = !Answer.Project.bIsExact && Answer.Engine.bIsExact;
		const CodeIntel::FIndexLookup& Found = bIsInEngine ? Answer.Engine : Answer.Project;
		if (!Found.bIsExact)
		{
			Text = Found.Symbols.empty() ? "No symbol has that name.\n" : "No symbol has that name; these begin so:\n";
		}
		Add(Found, bIsInEngine ? Found.Root + '/' : std::string());
		Succeed(OutResult,
			Found.bIsExact ? Utf8Text::Count(Found.Symbols.size(), "symbol", "symbols") : std::string("No symbol of that name"), Text);
	}

	void FToolBox::OutlineTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		FProjectPath Place;
		if (!FindPlace(Arguments, Place, OutResult) || !MayRead(Place, OutResult))
		{
			return;
		}
		const FFileOutline Outline =
			Place.bIsFolder ? FFileOutline{ {}, "it is a folder", false, false } : OutlineProjectFile(Files, Place);
		if (!Outline.Problem.empty())
		{
			return Fail(OutResult, "Not outlined: " + Outline.Problem);
		}
		Succeed(OutResult, Outline.CountSymbols(),
			Outline.Symbols.empty() ? std::string("Nothing is known to stand in it.\n")
									: MakeOutlineText(Outline.Symbols) + (Outline.bIsCut ? "[The rest is left out.]\n" : ""));
	}

	void FToolBox::CountTool(const FToolArguments& Arguments, FToolResult& OutResult)
	{
		FProjectPath Place;
		if (!FindPlace(Arguments, Place, OutResult) || !MayRead(Place, OutResult))
		{
			return;
		}
		if (!Place.bIsFolder)
		{
			return Fail(OutResult, "Not counted: it is a file");
		}
		const FFolderCount Count = CountFolder(Files, Place, IsCancelled);
		std::string Text;
		for (const FKindCount& Kind : Count.Kinds)
		{
			Text += NameText(Kind.Kind) + ": " + Utf8Text::Count(Kind.Files, "file", "files") + ", " +
				Utf8Text::Count(Kind.Lines, "line", "lines") + '\n';
		}
		Succeed(OutResult, Count.Describe(), Count.Describe() + '\n' + Text);
	}
}
