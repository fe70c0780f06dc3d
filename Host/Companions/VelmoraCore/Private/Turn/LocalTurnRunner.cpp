#include "Turn/LocalTurnRunner.h"

#include <algorithm>
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
			void TellPlan(std::string_view Text);
			void SetPlanStep(size_t Index, EPlanStepStatus Status);
			bool RunRequest(const std::string& Text);
			bool AnswerHelp(std::string_view Opening);

			FTurnDesk Desk;
			FAgentRequest Request;

			/** Empty for a plain request. */
			FAgentPlan Plan;
		};

		template <typename WorkType, bool (WorkType::*Run)()>
		bool RunWork(FTurnDesk& Desk, const FAgentRequest& Request)
		{
			return (WorkType(Desk, Request).*Run)();
		}

		/** Which work does what is asked for. False when the turn is over. */
		struct FWorkRow
		{
			ERequestKind Kind;
			bool (*Run)(FTurnDesk& Desk, const FAgentRequest& Request);
		};
		constexpr FWorkRow Works[] = {
			{ ERequestKind::FindText, &RunWork<FSearchWork, &FSearchWork::RunFindText> },
			{ ERequestKind::WhichFiles, &RunWork<FSearchWork, &FSearchWork::RunWhichFiles> },
			{ ERequestKind::Explain, &RunWork<FSearchWork, &FSearchWork::RunExplain> },
			{ ERequestKind::FreeQuestion, &RunWork<FSearchWork, &FSearchWork::RunFreeQuestion> },
			{ ERequestKind::FindSymbol, &RunWork<FSymbolWork, &FSymbolWork::RunFindSymbol> },
			{ ERequestKind::Outline, &RunWork<FSymbolWork, &FSymbolWork::RunOutline> },
			{ ERequestKind::Show, &RunWork<FBrowseWork, &FBrowseWork::RunShow> },
			{ ERequestKind::List, &RunWork<FBrowseWork, &FBrowseWork::RunList> },
			{ ERequestKind::Summarise, &RunWork<FBrowseWork, &FBrowseWork::RunSummarise> },
			{ ERequestKind::Count, &RunWork<FBrowseWork, &FBrowseWork::RunCount> },
			{ ERequestKind::ChangeFiles, &RunWork<FChangeWork, &FChangeWork::RunChange> },
		};
	}

	void FLocalTurn::Run()
	{
		if (!Desk.Files.IsAvailable())
		{
			const std::string& Folder = Desk.Input.ProjectFolder;
			Desk.Tell(ETurnReportKind::Failed,
				Folder.empty()
					? "There is no project folder to work on."
					: "The project folder " + Folder + " cannot be opened. Check that it still exists, then send the message again.");
			return;
		}
		Plan = MakeAgentPlan(Desk.Input.Prompt);
		Desk.bHasPlan = !Plan.IsEmpty();
		if (!Desk.ReadAttachments() || !(Plan.IsEmpty() ? RunRequest(Desk.Input.Prompt) : RunPlan()))
		{
			return;
		}
		// What the user wants instead of what was refused is a request of its own.
		while (!Desk.NextPrompt.empty())
		{
			Desk.Failure.clear();
			Desk.bHasPlan = false;
			Desk.AttachmentNotes.clear();
			if (!RunRequest(std::exchange(Desk.NextPrompt, std::string())))
			{
				return;
			}
		}
		if (Desk.Control.WaitUntilRunning())
		{
			Desk.Tell(ETurnReportKind::Finished, Desk.Failure);
		}
	}

	bool FLocalTurn::RunPlan()
	{
		TellPlan("The plan was made.");
		for (size_t Index = 0; Index < Plan.Steps.size(); ++Index)
		{
			if (!Desk.Control.WaitUntilRunning())
			{
				return false;
			}
			SetPlanStep(Index, EPlanStepStatus::Running);
			Desk.TellStep(static_cast<int>(Index) + 1, Plan.Steps[Index].Text);

			Desk.Failure.clear();
			if (!RunRequest(Plan.Steps[Index].Text) || !Desk.Control.WaitUntilRunning())
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

	void FLocalTurn::TellPlan(std::string_view Text)
	{
		FTurnReport Change;
		Change.Kind = ETurnReportKind::Plan;
		Change.Text = Utf8Text::ToString(Text);
		Change.Plan = Plan;
		Desk.Sink(std::move(Change));
	}

	void FLocalTurn::SetPlanStep(size_t Index, EPlanStepStatus Status)
	{
		Plan.Steps[Index].Status = Status;
		TellPlan("Step " + std::to_string(Index + 1) + " of " + std::to_string(Plan.Steps.size()));
	}

	bool FLocalTurn::RunRequest(const std::string& Text)
	{
		ReadRequest(Text);
		const auto Row =
			std::find_if(std::begin(Works), std::end(Works), [this](const FWorkRow& Work) { return Work.Kind == Request.Kind; });
		if (Row != std::end(Works))
		{
			return Row->Run(Desk, Request);
		}
		switch (Request.Kind)
		{
		case ERequestKind::Help:
			return AnswerHelp("I answer from the files of this project, on this machine.");
		case ERequestKind::Greeting:
			return AnswerHelp("Hello! I answer from the files of this project.");
		case ERequestKind::Thanks:
			Desk.Answer("You are welcome.\n");
			return true;
		default:
			break;
		}
		// A question in other words about files that came with it can still be met by showing what they hold.
		if (!Desk.Attachments.empty())
		{
			return FBrowseWork(Desk, Request).AnswerAttachments(Desk.Attachments);
		}
		Desk.Fail("The request was not understood.");
		return AnswerHelp("I did not understand that request.");
	}

	bool FLocalTurn::AnswerHelp(std::string_view Opening)
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
			"- `first find FThing, then list Source` or `plan:` and one step a line\n"
			"- `help` shows this\n"
			"Files attached with @ are looked at first.\n");
		return true;
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
