#include "Agent/TurnRunner.h"

#include <algorithm>

#include "Agent/AnswerMarkdown.h"
#include "Agent/Utf8Text.h"
#include "Changes/ChangeTools.h"
#include "Host/HostFileNames.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxCandidates = 20;

		/** A value of a tool's parameters is for reading; the content itself is on disk. */
		constexpr size_t MaxParameterCharacters = 200;

		/** How a name reads in a user's prompt, which holds replacement characters for the bytes that are no text. */
		std::string NameInWords(std::string_view Bytes)
		{
			return Utf8Text::FromString(HostFileNameFromBytes(Bytes));
		}

		std::string_view LastPartOf(std::string_view Path)
		{
			return Path.substr(Path.find_last_of("/\\") + 1);
		}
	}

	bool FTurnRunner::FindAttachment(const std::string& Name, FProjectPath& OutPath) const
	{
		const auto Found = std::find_if(Attachments.begin(), Attachments.end(),
			[&Name](const FProjectPath& File)
			{
				const std::string Relative = NameInWords(File.Relative);
				return !Name.empty() && (Relative == Name || LastPartOf(Relative) == Name || NameInWords(File.Absolute) == Name);
			});
		if (Found == Attachments.end())
		{
			return false;
		}
		OutPath = *Found;
		return true;
	}

	bool FTurnRunner::FindChangeTarget(
		const std::string& Name, bool bMustExist, bool bFollowsLinks, std::string& OutPath, std::string& OutQuestion) const
	{
		FProjectPath Place;
		if (Name.empty())
		{
			if (Input.ContextFiles.size() == 1)
			{
				OutPath = Attachments.empty() ? Input.ContextFiles.front() : Attachments.front().Relative;
				return true;
			}
			OutQuestion = Input.ContextFiles.empty() ? "Which file do you mean? Name it, or attach it with @.\n"
													 : "Several files are attached. Name the one you mean.\n";
			return false;
		}
		OutPath = Name;
		std::replace(OutPath.begin(), OutPath.end(), '\\', '/');
		if (FindAttachment(Name, Place))
		{
			OutPath = Place.Relative;
			return true;
		}
		if (Files.Resolve(Name, Place))
		{
			OutPath = bFollowsLinks ? Place.Relative : OutPath;
			return true;
		}
		if (!bMustExist)
		{
			return true;
		}
		// Only a file of that very name: what merely resembles it was not meant to be changed.
		std::vector<FProjectPath> Found = Files.Find(Name, MaxCandidates);
		const std::string Last = Utf8Text::ToLower(LastPartOf(Name));
		std::erase_if(
			Found, [&Last](const FProjectPath& Path) { return Path.bIsFolder || Utf8Text::ToLower(LastPartOf(Path.Relative)) != Last; });
		if (Found.size() > 1)
		{
			OutQuestion = "Several files are called " + AnswerMarkdown::InlineCode(Name) + ". Which one do you mean?\n";
			for (const FProjectPath& Path : Found)
			{
				OutQuestion += "- " + AnswerMarkdown::FileLink(Path) + '\n';
			}
			return false;
		}
		if (!Found.empty())
		{
			OutPath = Found.front().Relative;
		}
		return true;
	}

	bool FTurnRunner::RunChange()
	{
		const FChangeRequest& Change = Request.Change;
		if (Change.Kind == EChangeRequest::Unclear)
		{
			bHasFailed = true;
			Answer("I did not understand which change to make. I can do, for example:\n"
				   "- `create notes.md with \"some text\"`, also with a fenced block\n"
				   "- `write \"some text\" to notes.md`\n"
				   "- `replace \"a\" by \"b\" in notes.md`\n"
				   "- `append \"a line\" to notes.md`\n"
				   "- `delete notes.md`\n"
				   "What stands in quotes is taken to the letter. A file attached with @ may be called `it`.\n");
			return true;
		}
		if (Input.bIsAdvisor || !Input.Journal)
		{
			bHasFailed = true;
			Answer("In Advisor mode I change nothing on disk. Choose another mode in a new conversation, then ask again.\n");
			return true;
		}
		if (!BeginStep("Changing " + (Change.Files.empty() ? std::string("the attached file") : Change.Files.front())))
		{
			return false;
		}

		const bool bIsDeletion = Change.Kind == EChangeRequest::Delete;
		const std::vector<std::string> Names = Change.Files.empty() ? std::vector<std::string>{ std::string() } : Change.Files;
		std::vector<std::string> Paths;
		for (const std::string& Name : Names)
		{
			std::string Path;
			std::string Question;
			if (!FindChangeTarget(Name, bIsDeletion || Change.Kind == EChangeRequest::Replace, !bIsDeletion, Path, Question))
			{
				bHasFailed = true;
				Answer(Question);
				return true;
			}
			Paths.push_back(Path);
		}
		std::string Text;
		for (const std::string& Path : Paths)
		{
			if (!RunChangeTool(Path, Text))
			{
				return false;
			}
		}
		Answer(Text);
		return true;
	}

	bool FTurnRunner::RunChangeTool(const std::string& Path, std::string& OutAnswer)
	{
		const FChangeRequest& Change = Request.Change;
		FChangeTools Tools(Input.ProjectFolder, *Input.Journal, Input.TransactionId);
		Tools.SetCancelCheck(CancelCheck());

		FParameters Parameters = { { "path", Path } };
		const char* ToolName = "write_file";
		const char* Operation = "modify";
		std::function<FChangeOutcome()> Work;
		switch (Change.Kind)
		{
		case EChangeRequest::Create:
			ToolName = "create_file";
			Operation = "create";
			Work = [&] { return Tools.CreateFile(Path, Change.Content); };
			break;
		case EChangeRequest::Append:
			Parameters.push_back({ "append", Utf8Text::Shorten(Change.Content, MaxParameterCharacters) });
			Work = [&] { return Tools.AppendToFile(Path, Change.Content); };
			break;
		case EChangeRequest::Replace:
			ToolName = "edit_file";
			Parameters.push_back({ "old", Utf8Text::Shorten(Change.Old, MaxParameterCharacters) });
			Parameters.push_back({ "new", Utf8Text::Shorten(Change.Content, MaxParameterCharacters) });
			Work = [&] { return Tools.EditFile(Path, Change.Old, Change.Content); };
			break;
		case EChangeRequest::Delete:
			ToolName = "delete_file";
			Operation = "delete";
			Work = [&] { return Tools.DeleteFile(Path); };
			break;
		case EChangeRequest::Write:
		case EChangeRequest::Unclear:
			Work = [&] { return Tools.WriteFile(Path, Change.Content); };
			break;
		}

		FChangeOutcome Outcome;
		const bool bGoesOn = RunTool(ToolName, Operation, "File", Parameters,
			[&]
			{
				Outcome = Work();
				return FToolOutcome{ Outcome.bSuccess, Outcome.Sentence };
			});
		if (!bGoesOn)
		{
			return false;
		}
		if (!Outcome.bSuccess)
		{
			OutAnswer += AnswerMarkdown::InlineCode(Path, 160) + " was not changed: " + AnswerMarkdown::PlainText(Outcome.Problem) + ".\n";
			return true;
		}
		const FProjectPath File = { Files.GetRoot() + '/' + Outcome.Path, Outcome.Path, false };
		if (Outcome.Action == EChangeAction::Deleted)
		{
			OutAnswer += "Deleted " + AnswerMarkdown::InlineCode(Outcome.Path, 160) + ".\n";
			return true;
		}
		OutAnswer +=
			(Outcome.Action == EChangeAction::Created ? "Created " : "Changed ") + AnswerMarkdown::FileLink(File) + " as follows.\n";
		if (Change.Kind == EChangeRequest::Replace)
		{
			std::string Difference;
			for (const auto& [Text, Mark] :
				{ std::pair(std::string_view(Change.Old), "- "), std::pair(std::string_view(Change.Content), "+ ") })
			{
				for (const std::string_view Line : Utf8Text::SplitLines(Text))
				{
					Difference += Mark + std::string(Line) + '\n';
				}
			}
			OutAnswer += AnswerMarkdown::CodeBlock(Difference, "diff");
		}
		else if (Change.Content.empty())
		{
			OutAnswer += "It is empty.\n";
		}
		else
		{
			OutAnswer += AnswerMarkdown::CodeBlock(Change.Content, AnswerMarkdown::LanguageOf(Outcome.Path));
		}
		return true;
	}
}
