#include "Agent/AgentSession.h"

#include "Async/Async.h"
#include "Host/BuiltInAgentOptions.h"
#include "Host/HostFileNames.h"
#include "Host/ProjectFolder.h"
#include "Misc/Guid.h"
#include "UObject/Class.h"
#include "UObject/UObjectGlobals.h"

#include "Agent/Utf8Text.h"
#include "Settings/VelmoraSettings.h"
#include "Store/ConversationStore.h"
#include "Store/TurnRecorder.h"

namespace Velmora
{
	namespace
	{
		/** How long the end of an agent may wait for its workers. They look up between two files, so this is never reached but on a dead
		 * disk. */
		constexpr double MaxWorkerWaitSeconds = 2.0;
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
	}

	FString FAgentSession::StartConversation(EConversationMode Mode)
	{
		if (GetProjectFolder().IsEmpty())
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
		StoredCount = 0;
	}

	bool FAgentSession::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
	{
		if (!Current.IsValid() || HasTurn() || Text.TrimStartAndEnd().IsEmpty())
		{
			return false;
		}
		FString Problem;
		if (!RecordUserMessage(Text, Problem))
		{
			Current->Messages.Pop();
			Fire(Callbacks.Error, Problem);
			return false;
		}
		OpenTransaction();
		TurnContextFiles = ContextFiles;
		StartTurn(Text);
		SetState(EConversationState::Thinking, TEXT("A message was sent."));
		return true;
	}

	void FAgentSession::StartTurn(const FString& Prompt)
	{
		DropTurn();
		const TSharedRef<FTurnControl> Control = MakeShared<FTurnControl>();
		Turn = Control;
		const TSharedRef<FTurnRecorder> TurnRecorder =
			MakeShared<FTurnRecorder>(GetStore().AsShared(), Current->Id, StoredCount < Current->Messages.Num());
		Recorder = TurnRecorder;

		FTurnInput Input;
		Input.ProjectFolder = HostFileNameToBytes(GetProjectFolderPath());
		Input.Prompt = Utf8Text::FromString(Prompt);
		for (const FString& File : TurnContextFiles)
		{
			Input.ContextFiles.push_back(HostFileNameToBytes(File));
		}
		Input.ProjectDescription = Utf8Text::FromString(GetDefault<UVelmoraSettings>()->ProjectDescription);
		Input.MinimumToolSeconds = GetBuiltInAgentOptions().MinimumToolSeconds;
		Input.ToolIdPrefix = Utf8Text::FromString(FGuid::NewGuid().ToString());
		Input.bIsAdvisor = Current->Mode == EConversationMode::Advisor;
		Input.Journal = Journal;
		Input.TransactionId = HostFileNameToBytes(TransactionId);

		Workers.RemoveAll([](const TFuture<void>& Worker) { return Worker.IsReady(); });
		Workers.Add(Async(EAsyncExecution::Thread,
			[Input = MoveTemp(Input), Control, TurnRecorder, WeakSession = TWeakPtr<FAgentSession>(AsShared())]
			{
				FTurnRunner Runner(Input, *Control,
					[&Control, &TurnRecorder, &WeakSession](FTurnReport&& Report)
					{
						if (Control->IsCancelled())
						{
							return;
						}
						if (Report.Kind == ETurnReportKind::Answer)
						{
							TurnRecorder->Record({ Report.Text, EConversationRole::Assistant });
						}
						AsyncTask(ENamedThreads::GameThread,
							[Control, WeakSession, Report = MoveTemp(Report)]() mutable
							{
								if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
								{
									Session->OnReport(Control, MoveTemp(Report));
								}
							});
					});
				Runner.Run();
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

	void FAgentSession::Deliver(FTurnReport&& Report)
	{
		uint32 StartEpoch = Epoch;
		if (Report.Kind == ETurnReportKind::Step || Report.Kind == ETurnReportKind::ToolStarted || Report.Kind == ETurnReportKind::Answer)
		{
			const bool bStartsTool = Report.Kind == ETurnReportKind::ToolStarted;
			SetState(bStartsTool ? EConversationState::ExecutingTools : EConversationState::Thinking,
				bStartsTool ? Report.ToolName : FString(TEXT("Working on the request.")));
			if (Epoch != StartEpoch)
			{
				return;
			}
			if (State == EConversationState::Paused)
			{
				HeldReports.push_front(MoveTemp(Report));
				return;
			}
		}
		switch (Report.Kind)
		{
		case ETurnReportKind::Step:
			Fire(Callbacks.ProcessMessage, Report.Text);
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
		{
			FString Problem;
			const bool bIsRecorded = RecordAnswer(Report.Text, Problem);
			Fire(Callbacks.MessageReceived, Report.Text, false);
			if (!bIsRecorded && Epoch == StartEpoch)
			{
				TellStoreProblem(Problem);
			}
			return;
		}

		case ETurnReportKind::Plan:
			SetPlan(MoveTemp(Report.Plan), Report.Text);
			return;

		case ETurnReportKind::Failed:
			DropTurn();
			StartEpoch = Epoch;
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
			return;

		case ETurnReportKind::Finished:
			DropTurn();
			SetState(EConversationState::AwaitingInput, TEXT("The turn is complete."));
			return;
		}
	}

	void FAgentSession::PauseConversation()
	{
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
		if (Prompt.TrimStartAndEnd().IsEmpty())
		{
			Turn->SetPaused(false);
			SetState(StateBeforePause, TEXT("Resumed by the user."));
			DeliverHeldReports();
			return;
		}
		FString Problem;
		const bool bIsRecorded = RecordUserMessage(Prompt, Problem);
		StartTurn(Prompt);
		const uint32 StartEpoch = Epoch;
		if (!bIsRecorded)
		{
			TellStoreProblem(Problem);
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
		if (Current.IsValid())
		{
			Current.Reset();
		}
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

	void FAgentSession::StopPlan(EPlanStepStatus Status, const FString& Why)
	{
		FAgentPlan Stopped = Plan;
		for (FPlanStep& Step : Stopped.Steps)
		{
			if (Step.Status == EPlanStepStatus::Running)
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
		Fire(Callbacks.StateChanged, OldState, NewState, Reason);
	}
}
