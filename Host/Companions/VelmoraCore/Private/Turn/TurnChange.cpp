#include "Turn/LocalTurnRunner.h"

#include <algorithm>

#include "Turn/AnswerMarkdown.h"
#include "Text/Utf8Text.h"
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

		/** What goes and what comes, as a fenced block. */
		std::string MakeDifference(const FChangeRequest& Change)
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
			return AnswerMarkdown::CodeBlock(Difference, "diff");
		}

		std::string_view LastPartOf(std::string_view Path)
		{
			return Path.substr(Path.find_last_of("/\\") + 1);
		}
	}

	bool FLocalTurn::FindAttachment(const std::string& Name, FProjectPath& OutPath) const
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

	bool FLocalTurn::FindChangeTarget(
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

	bool FLocalTurn::RunChange()
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
		if (Input.IsAdvisor() || !Input.Journal)
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
			if (!NextPrompt.empty())
			{
				break; // The user wants something else.
			}
		}
		Answer(Text);
		return true;
	}

	bool FLocalTurn::AskForTool(std::string_view Tool, const FToolQuestion& Question, FPermissionAnswer& OutAnswer)
	{
		FTurnQuestion Asked;
		Asked.Tool = Tool;
		Asked.Subject = Question.Subject;
		Asked.Text = "May I change " + AnswerMarkdown::InlineCode(Question.Subject, 160) + " with " + std::string(Tool) + "? I ask since " +
			Question.Reason + ".\n" + Question.Details;
		OutAnswer = AskUser(Input, Control, Sink, Asked);
		NextPrompt = OutAnswer.Decision.Words;
		return OutAnswer.Decision.Kind != EDecision::Stopped;
	}

	bool FLocalTurn::RunChangeTool(const std::string& Path, std::string& OutAnswer)
	{
		const FChangeRequest& Change = Request.Change;
		std::string_view Tool = "write_file";
		std::string Details = AnswerMarkdown::CodeBlock(Change.Content, AnswerMarkdown::LanguageOf(Path));
		FToolArguments Arguments;
		Arguments.Set("path", Path);
		switch (Change.Kind)
		{
		case EChangeRequest::Create:
			Tool = "create_file";
			Arguments.Set("content", Change.Content);
			break;
		case EChangeRequest::Append:
			Tool = "append_to_file";
			Arguments.Set("text", Change.Content);
			break;
		case EChangeRequest::Replace:
			Tool = "edit_file";
			Arguments.Set("old", Change.Old).Set("new", Change.Content);
			Details = MakeDifference(Change);
			break;
		case EChangeRequest::Delete:
			Tool = "delete_file";
			Details.clear();
			break;
		case EChangeRequest::Write:
		case EChangeRequest::Unclear:
			Arguments.Set("content", Change.Content);
			break;
		}

		// 1. The content itself is on disk and in the answer; the row tells the path and the beginning of the rest.
		FParameters Parameters = { { "path", Path } };
		for (const std::string_view Name : { "text", "old", "new" })
		{
			if (Arguments.Has(Name))
			{
				Parameters.push_back({ Name, Utf8Text::Shorten(Arguments.GetText(Name), MaxParameterCharacters) });
			}
		}

		// 2. The first attempt tells whether the user is to be asked; on a yes it is made again.
		FToolResult Result;
		FPermissionAnswer Answer;
		bool bIsOver = false;
		FToolBox Tools(Files, Input.Journal.get(), Input.TransactionId, CancelCheck());
		const bool bGoesOn = RunTool(Tool, Parameters,
			[&]
			{
				Result = Tools.Run(Tool, Arguments);
				if (Result.Question)
				{
					Result.Question->Details = Details;
					bIsOver = !AskForTool(Tool, *Result.Question, Answer);
					if (Answer.Decision.IsAllowed())
					{
						Result = Tools.Run(Tool, Arguments, /*bInIsPermitted*/ true);
					}
					else
					{
						Result.Change.Problem = Answer.Why;
						Result.Sentence = "Not changed: " + Answer.Why;
					}
				}
				return FToolOutcome{ Result.bSuccess, Result.Sentence };
			});
		if (!bGoesOn || bIsOver)
		{
			return false;
		}
		const FChangeOutcome& Outcome = Result.Change;
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
			OutAnswer += MakeDifference(Change);
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
