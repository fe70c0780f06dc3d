#include "Turn/LocalTurnRunner.h"

#include <utility>

#include "Request/AttachedNames.h"
#include "Request/PlanRequest.h"
#include "Text/Utf8Text.h"
#include "Turn/BrowseWork.h"
#include "Turn/ChangeWork.h"
#include "Turn/SearchWork.h"
#include "Turn/SymbolWork.h"
#include "Turn/TurnDesk.h"

namespace Velmora
{
	namespace
	{
		/** One turn of the local agent: understands the prompt or its steps, and gives each to the work of its kind. */
		class FLocalTurn
		{
		public:
			FLocalTurn(const FTurnInput& InInput, FTurnControl& InControl, const ITurnRunner::FReportSink& InSink)
				: Desk(InInput, InControl, InSink)
			{
			}

			/** Ends with Finished or Failed, or with nothing when cancelled. */
			void Run();

		private:
			/** Understands a sentence of the user's, with the names of the attached files in it. */
			void ReadRequest(const std::string& Text);

			/** Runs the steps one by one up to the first that fails. False when the turn is over. */
			bool RunPlan();
			void SetPlanStep(size_t Index, EPlanStepStatus Status);
			bool RunRequest();
			void AnswerHelp(std::string_view Opening);
			void AnswerUnknown();

			FTurnDesk Desk;
			FAgentRequest Request;

			/** Empty for a plain request. */
			FAgentPlan Plan;
		};
	}

	void FLocalTurn::Run()
	{
		if (!Desk.Files.IsAvailable())
		{
			FTurnReport Item;
			Item.Kind = ETurnReportKind::Failed;
			Item.Text = Desk.Input.ProjectFolder.empty()
				? FString(TEXT("There is no project folder to work on."))
				: Utf8Text::ToString("The project folder " + Desk.Input.ProjectFolder +
					  " cannot be opened. Check that it still exists, then send the message again.");
			Desk.Report(std::move(Item));
			return;
		}
		Plan = MakeAgentPlan(Desk.Input.Prompt);
		Desk.bHasPlan = !Plan.IsEmpty();
		if (!Desk.ReadAttachments())
		{
			return;
		}
		ReadRequest(Desk.Input.Prompt);
		if (!(Plan.IsEmpty() ? RunRequest() : RunPlan()))
		{
			return;
		}
		while (!Desk.NextPrompt.empty())
		{
			const std::string Prompt = std::exchange(Desk.NextPrompt, std::string());
			Desk.Failure.clear();
			Plan = FAgentPlan();
			Desk.bHasPlan = false;
			Desk.AttachmentNotes.clear();
			ReadRequest(Prompt);
			if (!RunRequest())
			{
				return;
			}
		}
		if (!Desk.Control.WaitUntilRunning())
		{
			return;
		}
		FTurnReport Item;
		Item.Kind = ETurnReportKind::Finished;
		Item.Text = Utf8Text::ToString(Desk.Failure);
		Desk.Report(std::move(Item));
	}

	bool FLocalTurn::RunPlan()
	{
		FTurnReport Made;
		Made.Kind = ETurnReportKind::Plan;
		Made.Text = TEXT("The plan was made.");
		Made.Plan = Plan;
		Desk.Report(std::move(Made));
		for (size_t Index = 0; Index < Plan.Steps.size(); ++Index)
		{
			if (!Desk.Control.WaitUntilRunning())
			{
				return false;
			}
			SetPlanStep(Index, EPlanStepStatus::Running);
			FTurnReport Step;
			Step.Kind = ETurnReportKind::Step;
			Step.Text =
				Utf8Text::ToString("Executing step " + std::to_string(Index + 1) + ": " + Utf8Text::Shorten(Plan.Steps[Index].Text, 80));
			Desk.Report(std::move(Step));

			Desk.Failure.clear();
			ReadRequest(Plan.Steps[Index].Text);
			if (!RunRequest() || !Desk.Control.WaitUntilRunning())
			{
				return false;
			}
			Desk.AttachmentNotes.clear();
			if (Desk.HasFailed())
			{
				Plan.Steps[Index].Status = EPlanStepStatus::Failed;
				if (Index + 1 < Plan.Steps.size())
				{
					Desk.Answer("I stopped the plan at step " + std::to_string(Index + 1) + ", which failed. Nothing after it was done.");
				}
				SetPlanStep(Index, EPlanStepStatus::Failed);
				return true;
			}
			Plan.Steps[Index].Status = EPlanStepStatus::Done;
		}
		SetPlanStep(Plan.Steps.size() - 1, EPlanStepStatus::Done);
		return true;
	}

	void FLocalTurn::SetPlanStep(size_t Index, EPlanStepStatus Status)
	{
		Plan.Steps[Index].Status = Status;
		FTurnReport Change;
		Change.Kind = ETurnReportKind::Plan;
		Change.Text = Utf8Text::ToString("Step " + std::to_string(Index + 1) + " of " + std::to_string(Plan.Steps.size()));
		Change.Plan = Plan;
		Desk.Report(std::move(Change));
	}

	bool FLocalTurn::RunRequest()
	{
		switch (Request.Kind)
		{
		case ERequestKind::FindText:
			return FSearchWork(Desk, Request).RunFindText();
		case ERequestKind::FindSymbol:
			return FSymbolWork(Desk, Request).RunFindSymbol();
		case ERequestKind::Outline:
			return FSymbolWork(Desk, Request).RunOutline();
		case ERequestKind::WhichFiles:
			return FSearchWork(Desk, Request).RunWhichFiles();
		case ERequestKind::Explain:
			return FSearchWork(Desk, Request).RunExplain();
		case ERequestKind::Show:
			return FBrowseWork(Desk, Request).RunShow();
		case ERequestKind::List:
			return FBrowseWork(Desk, Request).RunList();
		case ERequestKind::Summarise:
			return FBrowseWork(Desk, Request).RunSummarise();
		case ERequestKind::Count:
			return FBrowseWork(Desk, Request).RunCount();
		case ERequestKind::Help:
			AnswerHelp("I answer from the files of this project, on this machine.");
			return true;
		case ERequestKind::Greeting:
			AnswerHelp("Hello! I answer from the files of this project.");
			return true;
		case ERequestKind::Thanks:
			Desk.Answer("You are welcome.\n");
			return true;
		case ERequestKind::ChangeFiles:
			return FChangeWork(Desk, Request).RunChange();
		case ERequestKind::FreeQuestion:
			return FSearchWork(Desk, Request).RunFreeQuestion();
		case ERequestKind::Unknown:
			break;
		}
		// A question in other words about files that came with it can still be met by showing what they hold.
		if (!Desk.Attachments.empty())
		{
			return FBrowseWork(Desk, Request).AnswerAttachments(Desk.Attachments);
		}
		AnswerUnknown();
		return true;
	}

	void FLocalTurn::AnswerHelp(std::string_view Opening)
	{
		Desk.Answer(std::string(Opening) +
			"\nYou can ask, for example:\n"
			"- `find TryParseTable` or `find Health in Source` looks for text and shows the best place\n"
			"- `what is class FThing?` or `explain FThing` shows a definition\n"
			"- `where is FThing defined?`, `find symbol FThing` and `outline README.md` ask the code index\n"
			"- `which files mention Health?` lists files\n"
			"- `show README.md`, `show lines 10-20 of X.cpp` or `show the last 20 lines of X.cpp`\n"
			"- `list Source` or `list *.h`\n"
			"- `summarise the project` or `what is in this project?`\n"
			"- `how many lines?` or `how many files in Source?`\n"
			"- `create notes.md with \"some text\"` or `write \"some text\" to notes.md`\n"
			"- `replace \"a\" by \"b\" in notes.md` or `append \"a line\" to notes.md`\n"
			"- `delete notes.md`\n"
			"- `first find FThing, then list Source` or `plan:` with a step a line does one after the other\n"
			"- `help` shows this\n"
			"Files attached with @ are looked at first.\n");
	}

	void FLocalTurn::AnswerUnknown()
	{
		Desk.Fail("The request was not understood.");
		AnswerHelp("I did not understand that request.");
	}

	void FLocalTurn::ReadRequest(const std::string& Text)
	{
		Request = ParseAgentRequest(Text);
		if (Desk.Attachments.empty())
		{
			return;
		}
		const std::vector<std::string> Names = Desk.GetAttachedNames();
		if (Request.Kind == ERequestKind::ChangeFiles)
		{
			// A pick puts the bare name into the text, whatever it is made of.
			Request = ParseAgentRequest(QuoteAttachedNames(Text, Names));
			return;
		}
		// "notes.md append … to it": the file was picked first, and what to do with it was typed behind it.
		const std::string_view Rest = SkipAttachedNames(Text, Names);
		if (Rest.size() < Text.size() && !Rest.empty())
		{
			FAgentRequest Behind = ParseAgentRequest(QuoteAttachedNames(Rest, Names));
			if (Behind.Kind == ERequestKind::ChangeFiles && Behind.Change.Kind != EChangeRequest::Unclear)
			{
				Request = std::move(Behind);
			}
		}
	}

	void FLocalTurnRunner::Run(const FTurnInput& Input, FTurnControl& Control, const FReportSink& Sink)
	{
		FLocalTurn(Input, Control, Sink).Run();
	}
}
