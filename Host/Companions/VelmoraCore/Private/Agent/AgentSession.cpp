#include "Agent/AgentSession.h"

#include "Async/Async.h"
#include "HAL/PlatformTime.h"
#include "Host/BuiltInAgentOptions.h"
#include "Host/HostFileNames.h"
#include "Host/ProjectFolder.h"
#include "Misc/Guid.h"
#include "UObject/Class.h"
#include "UObject/UObjectGlobals.h"

#include "Agent/TurnRunnerFactory.h"
#include "Settings/VelmoraSettings.h"
#include "Store/ConversationStore.h"
#include "Store/TurnRecorder.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** How long the end of an agent may wait for its workers. They look up between two files, so this is never reached but on a dead
		 * disk. */
		constexpr double MaxWorkerWaitSeconds = 2.0;

		FConversationMessage MakeMessage(const FTurnReport& Report)
		{
			FConversationMessage Message;
			Message.Content = Report.Text;
			Message.Role = Report.Kind == ETurnReportKind::Answer ? EConversationRole::Assistant : EConversationRole::Tool;
			Message.bHasToolCalls = Report.bHasToolCalls;
			return Message;
		}
	}

	void FAgentSession::Abandon()
	{
		DropTurn();
		Callbacks = FCallbacks();
		if (Store.IsValid())
		{
			Store->StopChecking();
		}
		for (const TFuture<void>& Worker : Workers)
		{
			if (Worker.IsValid())
			{
				Worker.WaitFor(FTimespan::FromSeconds(MaxWorkerWaitSeconds));
			}
		}
		StoreAtLast();
	}

	FString FAgentSession::StartConversation(EConversationMode Mode)
	{
		if (GetProjectFolder().IsEmpty() || bIsUndoing)
		{
			return FString();
		}
		EndConversation();
		OpenStore();
		OpenEmptyConversation(Mode);
		const FString Id = Current->Id;
		SetOpened(TEXT("A new conversation was opened."));
		return Id;
	}

	void FAgentSession::OpenEmptyConversation(EConversationMode Mode)
	{
		Current = MakeShared<FConversationMetadata>();
		Current->Id = FGuid::NewGuid().ToString();
		Current->Mode = Mode;
		Current->LastUpdated = FDateTime::Now();
		Attached.Empty();
		StoredCount = 0;
		bIsBehind = false;
	}

	bool FAgentSession::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
	{
		if (!Current.IsValid() || HasTurn() || bIsUndoing || Text.IsEmpty())
		{
			return false;
		}
		// A store that cannot be written stops nobody: the conversation goes on in memory until it can.
		if (const FOutcome Recorded = RecordUserMessage(Text, ContextFiles); !Recorded)
		{
			TellStoreProblemSoon(Recorded);
		}
		if (Text.TrimStartAndEnd().IsEmpty())
		{
			// Nothing can be changed for a prompt of blanks, so there is nothing to undo.
			TransactionId.Empty();
		}
		else
		{
			OpenTransaction();
		}
		TurnContextFiles = ContextFiles;
		StartTurn(Text);
		SetState(EConversationState::Thinking, TEXT("A message was sent."));
		return true;
	}

	void FAgentSession::StartTurn(const FString& Prompt)
	{
		DropTurn();
		NoteTurnFailure(FString());
		const TSharedRef<FTurnControl> Control = MakeShared<FTurnControl>();
		Turn = Control;
		const TSharedRef<FTurnRecorder> TurnRecorder =
			MakeShared<FTurnRecorder>(GetStore().AsShared(), Current->Id, StoredCount < Current->Messages.Num());
		Recorder = TurnRecorder;

		FTurnInput Input = MakeTurnInput(Prompt);
		std::unique_ptr<ITurnRunner> Runner = MakeTurnRunner(Input);
		if (Runner->NeedsTranscript())
		{
			// The prompt itself stands last.
			Input.Transcript = Current->Messages;
			Input.Transcript.Pop();
		}
		Workers.RemoveAll([](const TFuture<void>& Worker) { return Worker.IsReady(); });
		Workers.Add(Async(EAsyncExecution::Thread,
			[Input = MoveTemp(Input), Runner = std::shared_ptr<ITurnRunner>(MoveTemp(Runner)), Control, TurnRecorder,
				WeakSession = TWeakPtr<FAgentSession>(AsShared())]
			{
				Runner->Run(Input, *Control,
					[&Control, &TurnRecorder, &WeakSession](FTurnReport&& Report)
					{ TakeReport(MoveTemp(Report), Control, TurnRecorder, WeakSession); });
				// A change that was made when the turn was stopped is told all the same.
				AsyncTask(ENamedThreads::GameThread,
					[WeakSession]
					{
						if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
						{
							Session->PublishChanges();
						}
					});
			}));
	}

	FTurnInput FAgentSession::MakeTurnInput(const FString& Prompt)
	{
		const UVelmoraSettings* const Settings = GetDefault<UVelmoraSettings>();
		FTurnInput Input;
		Input.ProjectFolder = HostFileNameToBytes(GetProjectFolderPath());
		Input.Prompt = Utf8Text::FromString(Prompt);
		for (const FString& File : TurnContextFiles)
		{
			Input.ContextFiles.push_back(HostFileNameToBytes(File));
		}
		Input.Mode = Current->Mode;
		Input.Behaviour.ProjectDescription = Utf8Text::FromString(Settings->ProjectDescription);
		Input.Behaviour.CurrentAreaOfFocus = Utf8Text::FromString(Settings->CurrentAreaOfFocus);
		Input.Behaviour.GuidelinesAndTips = Utf8Text::FromString(Settings->GuidelinesAndTips);
		Input.Behaviour.Constraints = Utf8Text::FromString(Settings->Constraints);
		Input.MinimumToolSeconds = GetBuiltInAgentOptions().MinimumToolSeconds;
		Input.ToolIdPrefix = Utf8Text::FromString(FGuid::NewGuid().ToString());
		Input.Journal = Input.IsAdvisor() ? nullptr : Journal;
		Input.TransactionId = HostFileNameToBytes(TransactionId);
		Input.Rules = GetRules();
		Input.bCanAsk = GetBuiltInAgentOptions().bCanAsk;
		return Input;
	}

	void FAgentSession::TakeReport(FTurnReport&& Report, const TSharedRef<FTurnControl>& Control,
		const TSharedRef<FTurnRecorder>& TurnRecorder, const TWeakPtr<FAgentSession>& WeakSession)
	{
		if (Control->IsCancelled())
		{
			return;
		}
		// The front end counts and breaks lines at line feeds alone.
		Report.Text.ReplaceInline(TEXT("\r\n"), TEXT("\n"));
		Report.Text.ReplaceInline(TEXT("\r"), TEXT("\n"));
		if (Report.Kind == ETurnReportKind::Answer || Report.Kind == ETurnReportKind::ToolTraffic)
		{
			TurnRecorder->Record(MakeMessage(Report));
		}
		AsyncTask(ENamedThreads::GameThread,
			[Control, WeakSession, Report = MoveTemp(Report)]() mutable
			{
				if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
				{
					Session->OnReport(Control, MoveTemp(Report));
				}
			});
	}

	void FAgentSession::DropTurn()
	{
		++Epoch;
		if (Turn.IsValid())
		{
			Turn->Cancel();
			Turn.Reset();
		}
		if (const TSharedPtr<FTurnRecorder> Dropped = MoveTemp(Recorder))
		{
			Dropped->Drop();
		}
		HeldReports.clear();
		ForgetQuestion();
	}

	void FAgentSession::OnReport(const TSharedRef<FTurnControl>& From, FTurnReport&& Report)
	{
		if (Turn != From.ToSharedPtr())
		{
			return;
		}
		// A pause lets the tool under way end, and nothing else be told.
		if (State == EConversationState::Paused && Report.Kind == ETurnReportKind::ToolCompleted && HeldReports.empty())
		{
			Deliver(MoveTemp(Report));
			return;
		}
		HeldReports.push_back(MoveTemp(Report));
		DeliverHeldReports();
	}

	void FAgentSession::DeliverHeldReports()
	{
		while (Turn.IsValid() && State != EConversationState::Paused && !HeldReports.empty())
		{
			FTurnReport Report = MoveTemp(HeldReports.front());
			HeldReports.pop_front();
			Deliver(MoveTemp(Report));
		}
	}

	bool FAgentSession::EnterStateOf(FTurnReport& Report)
	{
		const bool bStartsTool = Report.Kind == ETurnReportKind::ToolStarted;
		const bool bThinks =
			Report.Kind == ETurnReportKind::Step || Report.Kind == ETurnReportKind::Answer || Report.Kind == ETurnReportKind::Asking;
		if (!bStartsTool && !bThinks)
		{
			return true;
		}
		const uint32 StartEpoch = Epoch;
		SetState(bStartsTool ? EConversationState::ExecutingTools : EConversationState::Thinking,
			bStartsTool ? Report.ToolName : FString(TEXT("Working on the request.")));
		// Who heard of it may have ended the turn, or paused it; then the report waits.
		if (Epoch != StartEpoch)
		{
			return false;
		}
		if (State == EConversationState::Paused)
		{
			HeldReports.push_front(MoveTemp(Report));
			return false;
		}
		return true;
	}

	void FAgentSession::Deliver(FTurnReport&& Report)
	{
		if (!EnterStateOf(Report))
		{
			return;
		}
		const uint32 StartEpoch = Epoch;
		switch (Report.Kind)
		{
		case ETurnReportKind::Step:
			Fire(Callbacks.ProcessMessage, Report.Text);
			return;

		case ETurnReportKind::Asking:
			return;

		case ETurnReportKind::ToolStarted:
			OpenTools.Add({ Report.ToolId, Report.ToolName });
			Fire(Callbacks.ToolStarted, Report.ToolId, Report.ToolName, Report.Parameters, Report.Metadata);
			return;

		case ETurnReportKind::ToolCompleted:
			OpenTools.RemoveAll([&Report](const FOpenTool& Tool) { return Tool.Id == Report.ToolId; });
			StateBeforePause = EConversationState::Thinking;
			PublishChanges();
			Fire(Callbacks.ToolCompleted, Report.ToolId, Report.ToolName, Report.bSuccess, Report.Text);
			return;

		case ETurnReportKind::Answer:
		case ETurnReportKind::ToolTraffic:
		{
			const FOutcome Recorded = RecordReported(Report);
			if (Report.Kind == ETurnReportKind::Answer)
			{
				Fire(Callbacks.MessageReceived, Report.Text, Report.bHasToolCalls);
			}
			if (!Recorded && Epoch == StartEpoch)
			{
				TellStoreProblem(Recorded);
			}
			return;
		}

		case ETurnReportKind::Plan:
			SetPlan(MoveTemp(Report.Plan), Report.Text);
			return;

		case ETurnReportKind::Decision:
			AskQuestion(MoveTemp(Report.Question));
			return;

		case ETurnReportKind::Failed:
		case ETurnReportKind::Finished:
			DeliverEnd(MoveTemp(Report));
			return;
		}
	}

	void FAgentSession::DeliverEnd(FTurnReport&& Report)
	{
		DropTurn();
		NoteTurnFailure(Report.Text);
		const uint32 StartEpoch = Epoch;
		if (Report.Kind == ETurnReportKind::Finished)
		{
			// A model may forget its plan; nothing runs any more.
			StopPlan(EPlanStepStatus::Waiting, TEXT("The turn is complete."));
			if (Epoch == StartEpoch)
			{
				SetState(EConversationState::AwaitingInput, TEXT("The turn is complete."));
			}
			return;
		}
		CloseOpenTools(Report.Text);
		if (Epoch == StartEpoch)
		{
			StopPlan(EPlanStepStatus::Failed, Report.Text);
		}
		if (Epoch == StartEpoch)
		{
			SetState(EConversationState::Error, Report.Text);
		}
		if (Epoch == StartEpoch)
		{
			Fire(Callbacks.Error, Report.Text);
		}
	}

	void FAgentSession::PauseConversation()
	{
		if (Question)
		{
			Question->bAskAgain = true;
		}
		if (!HasTurn() || State == EConversationState::Paused)
		{
			return;
		}
		Turn->SetPaused(true);
		StateBeforePause = State;
		SetState(EConversationState::Paused, TEXT("Paused by the user."));
	}

	void FAgentSession::ResumeConversation(const FString& Prompt)
	{
		if (!HasTurn() || State != EConversationState::Paused)
		{
			return;
		}
		if (Question)
		{
			ContinueAtQuestion(Prompt);
			return;
		}
		LastContinue = FPlatformTime::Seconds();
		if (Prompt.TrimStartAndEnd().IsEmpty())
		{
			Turn->SetPaused(false);
			SetState(StateBeforePause, TEXT("Resumed by the user."));
			DeliverHeldReports();
			return;
		}
		const FOutcome Recorded = RecordUserMessage(Prompt);
		AddToTransaction();
		StartTurn(Prompt);
		const uint32 StartEpoch = Epoch;
		if (!Recorded)
		{
			TellStoreProblem(Recorded);
		}
		if (Epoch != StartEpoch)
		{
			return;
		}
		CloseOpenTools(TEXT("Stopped: the request was changed."));
		if (Epoch == StartEpoch)
		{
			StopPlan(EPlanStepStatus::Stopped, TEXT("The request was changed."));
		}
		if (Epoch == StartEpoch)
		{
			SetState(EConversationState::Thinking, TEXT("Resumed with another request."));
		}
	}

	void FAgentSession::CancelConversation()
	{
		if (!HasTurn())
		{
			return;
		}
		DropTurn();
		const uint32 StartEpoch = Epoch;
		CloseOpenTools(TEXT("Stopped by the user."));
		if (Epoch == StartEpoch)
		{
			StopPlan(EPlanStepStatus::Stopped, TEXT("Stopped by the user."));
		}
		if (Epoch == StartEpoch)
		{
			SetState(EConversationState::Cancelled, TEXT("Stopped by the user."));
		}
	}

	void FAgentSession::EndConversation()
	{
		DropTurn();
		OpenTools.Empty();
		KeepUnstored();
		Current.Reset();
		TransactionId.Empty();
		State = EConversationState::NotStarted;
	}

	void FAgentSession::CloseOpenTools(const FString& Why)
	{
		const uint32 StartEpoch = Epoch;
		// A change is made whole or not at all, whatever comes in between.
		const FString Result = PublishChanges() ? Why + TEXT(" Its change had been made by then.") : Why;
		while (OpenTools.Num() > 0 && Epoch == StartEpoch)
		{
			const FOpenTool Tool = OpenTools[0];
			OpenTools.RemoveAt(0);
			Fire(Callbacks.ToolCompleted, Tool.Id, Tool.Name, false, Result);
		}
	}

	FString FAgentSession::GetPlan() const
	{
		return Utf8Text::ToString(Plan.ToMarkdown());
	}

	void FAgentSession::SetPlan(FAgentPlan&& NewPlan, const FString& What)
	{
		if (Plan.IsEmpty() && NewPlan.IsEmpty())
		{
			return;
		}
		Plan = MoveTemp(NewPlan);
		Fire(Callbacks.PlanUpdate, What, GetPlan());
	}

	void FAgentSession::MarkPlanPaused(bool bIsPaused, const FString& Why)
	{
		const EPlanStepStatus From = bIsPaused ? EPlanStepStatus::Running : EPlanStepStatus::Paused;
		FAgentPlan Marked = Plan;
		for (FPlanStep& Step : Marked.Steps)
		{
			if (Step.Status == From)
			{
				Step.Status = bIsPaused ? EPlanStepStatus::Paused : EPlanStepStatus::Running;
				SetPlan(MoveTemp(Marked), Why);
				return;
			}
		}
	}

	void FAgentSession::StopPlan(EPlanStepStatus Status, const FString& Why)
	{
		FAgentPlan Stopped = Plan;
		for (FPlanStep& Step : Stopped.Steps)
		{
			if (Step.Status == EPlanStepStatus::Running || Step.Status == EPlanStepStatus::Paused)
			{
				Step.Status = Status;
				SetPlan(MoveTemp(Stopped), Why);
				return;
			}
		}
	}

	void FAgentSession::SetOpened(const FString& Reason)
	{
		const uint32 StartEpoch = Epoch;
		SetPlan(FAgentPlan(), Reason);
		if (Epoch == StartEpoch)
		{
			SetState(EConversationState::Ready, Reason);
		}
	}

	void FAgentSession::SetState(EConversationState NewState, const FString& Reason)
	{
		const EConversationState OldState = State;
		if (OldState == NewState)
		{
			return;
		}
		State = NewState;
		const uint32 StartEpoch = Epoch;
		Fire(Callbacks.StateChanged, OldState, NewState, Reason);
		if (Epoch == StartEpoch && State == NewState)
		{
			MarkPlanPaused(NewState == EConversationState::Paused, Reason);
		}
	}
}
