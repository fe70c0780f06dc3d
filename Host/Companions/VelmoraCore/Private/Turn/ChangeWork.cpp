#include "Turn/ChangeWork.h"

#include <algorithm>

#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"
#include "Tools/ToolBox.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxCandidates = 20;

		/** A value of a tool's parameters is for reading; the content itself is on disk. */
		constexpr size_t MaxParameterCharacters = 200;
	}

	bool FChangeWork::FindChangeTarget(
		const std::string& Name, bool bMustExist, bool bFollowsLinks, std::string& OutPath, std::string& OutQuestion) const
	{
		FProjectPath Place;
		if (Name.empty())
		{
			if (Desk.Input.ContextFiles.size() == 1)
			{
				OutPath = Desk.Attachments.empty() ? Desk.Input.ContextFiles.front() : Desk.Attachments.front().Relative;
				return true;
			}
			OutQuestion = Desk.Input.ContextFiles.empty() ? "Which file do you mean? Name it, or attach it with @.\n"
														  : "Several files are attached. Name the one you mean.\n";
			return false;
		}
		OutPath = Desk.Files.Spell(Name);
		if (Desk.FindAttachment(Name, Place))
		{
			OutPath = Place.Relative;
			return true;
		}
		if (Desk.Files.Resolve(Name, Place))
		{
			OutPath = bFollowsLinks ? Place.Relative : OutPath;
			return true;
		}
		if (!bMustExist)
		{
			return true;
		}
		// Only a file of that very name: what merely resembles it was not meant to be changed.
		std::vector<FProjectPath> Found = Desk.Files.Find(Name, MaxCandidates);
		const std::string Last = Utf8Text::ToLower(LastPartOf(Name));
		std::erase_if(
			Found, [&Last](const FProjectPath& Path) { return Path.bIsFolder || Utf8Text::ToLower(LastPartOf(Path.Relative)) != Last; });
		if (Found.size() > 1)
		{
			OutQuestion = "Several files are called " + AnswerMarkdown::FileName(Name) + ". Which one do you mean?\n" +
				AnswerMarkdown::FileList(Found);
			return false;
		}
		if (!Found.empty())
		{
			OutPath = Found.front().Relative;
		}
		return true;
	}

	bool FChangeWork::RunChange()
	{
		const FChangeRequest& Change = Request.Change;
		if (Change.Kind == EChangeRequest::Unclear)
		{
			Desk.Fail("It was not understood which change to make.");
			return Say("I did not understand which change to make. I can do, for example:\n"
					   "- `create notes.md with \"some text\"`, also with a fenced block\n"
					   "- `write \"some text\" to notes.md`\n"
					   "- `replace \"a\" by \"b\" in notes.md`\n"
					   "- `append \"a line\" to notes.md`\n"
					   "- `delete notes.md`\n"
					   "What stands in quotes is taken to the letter. A file attached with @ may be called `it`.\n");
		}
		if (Desk.Input.IsAdvisor() || !Desk.Input.Journal)
		{
			Desk.Fail("In Advisor mode nothing on disk is changed.");
			return Say("In Advisor mode I change nothing on disk. Choose another mode in a new conversation, then ask again.\n");
		}
		const char* const Doing = Change.Kind == EChangeRequest::Delete ? "Deleting "
			: Change.Kind == EChangeRequest::Create						? "Creating "
																		: "Changing ";
		if (!Desk.BeginStep(Doing + (Change.Files.empty() ? std::string("the attached file") : Change.Files.front())))
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
				Desk.Fail(Question.substr(0, Question.find('\n')));
				return Say(Question);
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
			if (!Desk.NextPrompt.empty())
			{
				break; // The user wants something else.
			}
		}
		return Say(Text);
	}

	bool FChangeWork::AskForTool(std::string_view Tool, const FToolQuestion& Question, FPermissionAnswer& OutAnswer)
	{
		FTurnQuestion Asked;
		Asked.Tool = Tool;
		Asked.Subject = Question.Subject;
		Asked.Text = "May I change " + AnswerMarkdown::FileName(Question.Subject, 160) + " with " + std::string(Tool) +
			"?\n\nI ask since " + Question.Reason + ".\n" + Question.Details;
		OutAnswer = AskUser(Desk.Input, Desk.Control, Desk.Sink, Asked);
		Desk.NextPrompt = OutAnswer.Decision.Words;
		return OutAnswer.Decision.Kind != EDecision::Stopped;
	}

	FChangeWork::FToolCall FChangeWork::MakeCall(const std::string& Path) const
	{
		const FChangeRequest& Change = Request.Change;
		FToolCall Call;
		Call.Details = AnswerMarkdown::CodeBlock(Change.Content, AnswerMarkdown::LanguageOf(Path));
		Call.Arguments.Set("path", Path);
		switch (Change.Kind)
		{
		case EChangeRequest::Create:
			Call.Tool = "create_file";
			Call.Arguments.Set("content", Change.Content);
			break;
		case EChangeRequest::Append:
			Call.Tool = "append_to_file";
			Call.Arguments.Set("text", Change.Content);
			break;
		case EChangeRequest::Replace:
			Call.Tool = "edit_file";
			Call.Arguments.Set("old", Change.Old).Set("new", Change.Content);
			Call.Details = AnswerMarkdown::Difference(Change.Old, Change.Content);
			break;
		case EChangeRequest::Delete:
			Call.Tool = "delete_file";
			Call.Details.clear();
			break;
		case EChangeRequest::Write:
		case EChangeRequest::Unclear:
			Call.Tool = "write_file";
			Call.Arguments.Set("content", Change.Content);
			break;
		}
		return Call;
	}

	bool FChangeWork::RunChangeTool(const std::string& Path, std::string& OutAnswer)
	{
		const FToolCall Call = MakeCall(Path);

		// 1. The content itself is on disk and in the answer; the row tells the path and the beginning of the rest.
		FToolParameters Parameters = { { "path", Path } };
		for (const std::string_view Name : { "text", "old", "new" })
		{
			if (Call.Arguments.Has(Name))
			{
				Parameters.push_back({ Name, Utf8Text::Shorten(Call.Arguments.GetText(Name), MaxParameterCharacters) });
			}
		}

		// 2. The first attempt tells whether the user is to be asked; on a yes it is made again.
		FToolResult Result;
		FPermissionAnswer Answer;
		bool bIsOver = false;
		FToolBox Tools(Desk.Files, Desk.Input.Journal.get(), Desk.Input.TransactionId, Desk.CancelCheck());
		const bool bGoesOn = Desk.RunTool(Call.Tool, Parameters,
			[&]
			{
				Result = Tools.Run(Call.Tool, Call.Arguments);
				if (Result.Question)
				{
					Result.Question->Details = Call.Details;
					bIsOver = !AskForTool(Call.Tool, *Result.Question, Answer);
					if (Answer.Decision.IsAllowed())
					{
						Result = Tools.Run(Call.Tool, Call.Arguments, /*bInIsPermitted*/ true);
					}
					else
					{
						Result.Change.Problem = Answer.Why;
						Result.Sentence = "Not changed: " + Answer.Why;
					}
				}
				return FToolOutcome{ Result.bSuccess, Result.Sentence };
			});
		OutAnswer += DescribeChange(Path, Result.Change);
		return bGoesOn && !bIsOver;
	}

	std::string FChangeWork::DescribeChange(const std::string& Path, const FChangeOutcome& Outcome) const
	{
		if (!Outcome.bSuccess)
		{
			return AnswerMarkdown::FileName(Path, 160) + " was not changed: " + AnswerMarkdown::PlainText(Outcome.Problem) + ".\n";
		}
		if (Outcome.Action == EChangeAction::Deleted)
		{
			return "Deleted " + AnswerMarkdown::FileName(Outcome.Path, 160) + ".\n";
		}
		const FChangeRequest& Change = Request.Change;
		const FProjectPath File = { Desk.Files.GetRoot() + '/' + Outcome.Path, Outcome.Path, false };
		return (Outcome.Action == EChangeAction::Created ? "Created " : "Changed ") + AnswerMarkdown::FileLink(File, Outcome.FirstLine) +
			" as follows.\n" +
			(Outcome.FirstLine > 0							 ? AnswerMarkdown::Difference(Outcome.OldLines, Outcome.NewLines)
					: Change.Kind == EChangeRequest::Replace ? AnswerMarkdown::Difference(Change.Old, Change.Content)
					: Change.Content.empty()				 ? std::string("It is empty.\n")
											 : AnswerMarkdown::CodeBlock(Change.Content, AnswerMarkdown::LanguageOf(Outcome.Path)));
	}
}
