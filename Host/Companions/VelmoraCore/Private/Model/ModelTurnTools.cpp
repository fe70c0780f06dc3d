#include "Model/ModelTurn.h"

#include <algorithm>

#include <rapidjson/document.h>

#include "Model/Transcript.h"
#include "Text/JsonText.h"
#include "Text/Utf8Text.h"
#include "Tools/AnswerMarkdown.h"

// The calls of a model: carried out one after the other, shown as rows, their results kept for the next request.

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxGoalCharacters = 300;
		constexpr size_t MaxStepCharacters = 80;
		constexpr size_t MaxRowCharacters = 60;

		std::string_view GetFirstLine(std::string_view Text)
		{
			const std::string_view Trimmed = Utf8Text::Trim(Text);
			return Trimmed.substr(0, Trimmed.find('\n'));
		}

		/** Some models give the text of an object as one text. */
		std::string UnwrapText(const std::string& Json)
		{
			const size_t Start = Json.find_first_not_of(" \t\r\n");
			if (Start == std::string::npos || Json[Start] != '"')
			{
				return Json;
			}
			rapidjson::Document Parsed;
			Parsed.Parse<rapidjson::kParseIterativeFlag>(Json.data(), Json.size());
			return !Parsed.HasParseError() && Parsed.IsString() ? std::string(Parsed.GetString(), Parsed.GetStringLength()) : Json;
		}

		/** The front end takes a path's folders and ending away, so in other words a name is made of letters and blanks. */
		std::string MakePlainWords(std::string_view Path)
		{
			std::string Words(Path.substr(Path.find_last_of('/') + 1));
			std::replace(Words.begin(), Words.end(), '.', ' ');
			return Words;
		}

		/** What a call would write: the passage that goes and the one that comes, or all of the new text. */
		std::string ShowContent(const FToolArguments& Arguments, const std::string& Path)
		{
			if (Arguments.Has("old"))
			{
				return AnswerMarkdown::Difference(Arguments.GetText("old"), Arguments.GetText("new"));
			}
			const std::string& Text = Arguments.Has("content") ? Arguments.GetText("content") : Arguments.GetText("text");
			return Text.empty() ? std::string() : AnswerMarkdown::CodeBlock(Text, AnswerMarkdown::LanguageOf(Path));
		}

		std::string_view GetStem(std::string_view Path)
		{
			const std::string_view Name = Path.substr(Path.find_last_of('/') + 1);
			return Name.substr(0, Name.find_last_of('.'));
		}
	}

	void FModelTurn::BeginRound(int Round, const FModelReply& Reply)
	{
		// A step of the plan says for itself what goes on.
		if (Round == 1 || !Plan.IsEmpty())
		{
			return;
		}
		std::string What = Utf8Text::Shorten(GetFirstLine(Reply.Text), MaxStepCharacters);
		if (What.empty())
		{
			const FToolRow* const Row = FToolBox::Find(Reply.Calls.front().Name);
			What = !Row || FToolBox::IsReading(Row->Kind) ? "looking further"
				: Row->Kind == EToolKind::Command		  ? "running a command"
														  : "changing files";
		}
		RowNames.clear();
		Tell(ETurnReportKind::Step, "Executing step " + std::to_string(Round) + ": " + What);
	}

	void FModelTurn::TellPlan(FAgentPlan&& NewPlan)
	{
		const auto FindRunning = [](const FAgentPlan& Which)
		{
			const auto Found = std::find_if(
				Which.Steps.begin(), Which.Steps.end(), [](const FPlanStep& Step) { return Step.Status == EPlanStepStatus::Running; });
			return static_cast<size_t>(Found - Which.Steps.begin());
		};
		const size_t Before = Plan.IsEmpty() ? std::string::npos : FindRunning(Plan);
		if (NewPlan.Goal.empty())
		{
			// Said once, or left to the user's own words.
			NewPlan.Goal = Plan.Goal.empty() ? Utf8Text::Shorten(GetFirstLine(Input.Prompt), MaxGoalCharacters) : Plan.Goal;
		}
		Plan = std::move(NewPlan);
		const size_t Now = FindRunning(Plan);
		FTurnReport Report;
		Report.Kind = ETurnReportKind::Plan;
		Report.Text = TEXT("The plan has changed.");
		Report.Plan = Plan;
		Sink(std::move(Report));
		if (Now != Before && Now < Plan.Steps.size())
		{
			RowNames.clear();
			Tell(ETurnReportKind::Step,
				"Executing step " + std::to_string(Now + 1) + ": " + Utf8Text::Shorten(Plan.Steps[Now].Text, MaxStepCharacters));
		}
	}

	bool FModelTurn::RunCalls(FModelReply& Reply)
	{
		FModelMessage Said = { EModelRole::Assistant, Reply.Text, {}, {} };
		std::vector<FModelMessage> Results;
		for (const FModelCall& Call : Reply.Calls)
		{
			std::string Text;
			if (!UserWords.empty())
			{
				Text = "Not done: the user has changed the course meanwhile.";
			}
			else
			{
				FModelActivity::FRow Row = Activity.OpenCall(Call);
				if (!RunCall(Call, Text))
				{
					return false;
				}
				Row.SetResult(Text);
			}
			if (Reply.DroppedCalls > 0 && &Call == &Reply.Calls.back())
			{
				Text += "\n[" + std::to_string(Reply.DroppedCalls) + " further calls were left out; make fewer at a time.]";
			}
			FTurnReport Traffic;
			Traffic.Kind = ETurnReportKind::ToolTraffic;
			Traffic.Text = Transcript::WriteResult(Call.Id, Text);
			Sink(std::move(Traffic));
			Results.push_back({ EModelRole::Tool, std::move(Text), {}, Call.Id });
		}
		Said.Calls = std::move(Reply.Calls);
		Request.Messages.push_back(std::move(Said));
		for (FModelMessage& Result : Results)
		{
			Request.Messages.push_back(std::move(Result));
		}
		if (!UserWords.empty())
		{
			Request.Messages.push_back({ EModelRole::User, std::exchange(UserWords, std::string()), {}, {} });
		}
		Tell(ETurnReportKind::Asking, {});
		return true;
	}

	bool FModelTurn::RunCall(const FModelCall& Call, std::string& OutText)
	{
		if (!Control.WaitUntilRunning())
		{
			return false;
		}
		// 1. What cannot be run is told to the model, and is no row.
		const FToolRow* const Row = FToolBox::Find(Call.Name);
		FToolArguments Arguments;
		std::string Problem =
			Call.bIsTooLarge ? std::string("the arguments are larger than 4 MiB; write the file in parts") : std::string();
		if (Problem.empty())
		{
			FToolArguments::Parse(UnwrapText(Call.Arguments), Arguments, Problem);
		}
		if (!Row || !Problem.empty())
		{
			OutText = Row ? "Not done: " + Problem + "." : Tools.Run(Call.Name, Arguments).Text;
			return true;
		}

		// 2. The plan is shown in a place of its own.
		if (Row->Kind == EToolKind::Plan)
		{
			FToolResult Result = Tools.Run(Call.Name, Arguments);
			OutText = Result.Text;
			if (Result.bSuccess)
			{
				TellPlan(std::move(Result.Plan));
			}
			return true;
		}

		// 3. The tool itself, again when the user has agreed to what it does.
		FTurnReport End;
		TellToolStart(*Row, Arguments, End);
		FToolResult Result = Tools.Run(Call.Name, Arguments);
		if (Result.Question && !Control.IsCancelled() && !AskForCall(*Row, Arguments, Result))
		{
			return false;
		}
		if (Control.IsCancelled() || (Input.MinimumToolSeconds > 0.0 && !Control.Sleep(Input.MinimumToolSeconds)))
		{
			return false;
		}
		End.Kind = ETurnReportKind::ToolCompleted;
		End.bSuccess = Result.bSuccess;
		End.Text = Utf8Text::ToString(Result.Sentence);
		Sink(std::move(End));
		if (!FToolBox::IsReading(Row->Kind))
		{
			// A model that tries again until it works has done what was asked.
			const std::string Subject = FToolBox::GetSubject(Arguments);
			Result.bSuccess ? (void)FailedChanges.erase(Subject) : (void)FailedChanges.emplace(Subject, Result.Sentence);
		}
		OutText = Result.Text.empty() ? Result.Sentence + "." : std::move(Result.Text);
		return true;
	}

	bool FModelTurn::AskForCall(const FToolRow& Row, const FToolArguments& Arguments, FToolResult& Result)
	{
		FTurnQuestion Question;
		Question.Tool = Row.Name;
		Question.Subject = Result.Question->Subject;
		Question.Text = Row.Kind == EToolKind::Command ? Result.Question->Reason
													   : "May the model use " + std::string(Row.Name) + " on " +
				AnswerMarkdown::FileName(Question.Subject, 160) + "?\n\nI ask since " + Result.Question->Reason + '.';
		const std::string Shown = Result.Question->Details.empty() ? ShowContent(Arguments, Question.Subject) : Result.Question->Details;
		Question.Text += (Shown.empty() ? "" : "\n\n") + Shown;
		FPermissionAnswer Answer = AskUser(Input, Control, Sink, Question);
		if (Answer.Decision.Kind == EDecision::Stopped)
		{
			return false;
		}
		if (Answer.Decision.IsAllowed())
		{
			Result = Tools.Run(Row.Name, Arguments, true);
			return true;
		}
		Result.Sentence = "Not done: " + Answer.Why;
		Result.Text = "Not done: the user was asked and has not agreed (" + Answer.Why + "). Do not try it again in other ways.";
		UserWords = std::move(Answer.Decision.Words);
		return true;
	}

	void FModelTurn::TellToolStart(const FToolRow& Row, const FToolArguments& Arguments, FTurnReport& OutStart)
	{
		OutStart.Kind = ETurnReportKind::ToolStarted;
		OutStart.ToolId = Utf8Text::ToString(Input.ToolIdPrefix + '-' + std::to_string(++ToolCount));
		OutStart.ToolName = Utf8Text::ToString(Row.Name);
		OutStart.Parameters = JsonText::MakeObject(MakeRowParameters(Row, Arguments));
		OutStart.Metadata =
			JsonText::MakeObject({ { "operation_type", std::string(Row.Operation) }, { "data_type", std::string(Row.DataType) } });
		Sink(FTurnReport(OutStart));
	}

	std::vector<std::pair<std::string_view, std::string>> FModelTurn::MakeRowParameters(
		const FToolRow& Row, const FToolArguments& Arguments)
	{
		std::string Subject = Utf8Text::Shorten(Utf8Text::Sanitise(FToolBox::GetSubject(Arguments)), 200);
		if (Row.Kind == EToolKind::Command)
		{
			// All of a command counts, so nothing of it may look like folders.
			std::replace(Subject.begin(), Subject.end(), '/', ' ');
			std::replace(Subject.begin(), Subject.end(), '\n', ' ');
		}
		const bool bIsPath = Arguments.Has("path") && Subject == Utf8Text::Sanitise(Arguments.GetText("path"));
		const auto IsNew = [&](std::string_view Name)
		{ return RowNames.insert(std::string(Row.Operation) + ' ' + std::string(Name)).second; };
		if (bIsPath && IsNew(GetStem(Subject)))
		{
			return { { "path", Subject } };
		}
		const std::string Words = Utf8Text::Shorten(bIsPath ? MakePlainWords(Subject)
				: Subject.empty()							? std::string("the project")
															: MakePlainWords(Subject),
			MaxRowCharacters);
		std::string Name = Words;
		for (int Number = 2; !IsNew(Name); ++Number)
		{
			Name = Words + ' ' + std::to_string(Number);
		}
		return { { "display_text", Name } };
	}
}
