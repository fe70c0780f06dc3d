#include "Agent/AgentSession.h"

#include "Async/Async.h"
#include "Host/BuiltInAgentOptions.h"
#include "Host/ProjectFolder.h"
#include "Misc/Guid.h"
#include "UObject/Class.h"
#include "UObject/UObjectGlobals.h"

#include "Agent/Utf8Text.h"
#include "Settings/VelmoraSettings.h"
#include "Store/ConversationStore.h"

namespace Velmora
{
	namespace
	{
		/** How long the end of an agent may wait for its workers. They look up between two files, so this is never reached but on a dead disk. */
		constexpr double MaxWorkerWaitSeconds = 2.0;
		constexpr int32 MaxTitleLength = 50;
	}

	void FAgentSession::Abandon()
	{
		DropTurn();
		Callbacks = FCallbacks();
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
		OpenEmptyConversation(Mode);
		const FString Id = Current->Id;
		SetState(EConversationState::Ready, TEXT("A new conversation was opened."));
		return Id;
	}

	void FAgentSession::OpenEmptyConversation(EConversationMode Mode)
	{
		Current = MakeShared<FConversationMetadata>();
		Current->Id = FGuid::NewGuid().ToString();
		Current->Mode = Mode;
		Current->LastUpdated = FDateTime::Now();
	}

	bool FAgentSession::SendMessage(const FString& Text, const TArray<FString>& ContextFiles)
	{
		if (!Current.IsValid() || HasTurn() || Text.TrimStartAndEnd().IsEmpty())
		{
			return false;
		}
		RecordMessage(EConversationRole::User, Text);
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

		FTurnInput Input;
		Input.ProjectFolder = Utf8Text::FromString(GetProjectFolder());
		Input.Prompt = Utf8Text::FromString(Prompt);
		for (const FString& File : TurnContextFiles)
		{
			Input.ContextFiles.push_back(Utf8Text::FromString(File));
		}
		Input.ProjectDescription = Utf8Text::FromString(GetDefault<UVelmoraSettings>()->ProjectDescription);
		Input.MinimumToolSeconds = GetBuiltInAgentOptions().MinimumToolSeconds;
		Input.ToolIdPrefix = Utf8Text::FromString(FGuid::NewGuid().ToString());

		Workers.RemoveAll([](const TFuture<void>& Worker) { return Worker.IsReady(); });
		Workers.Add(Async(EAsyncExecution::Thread, [Input = MoveTemp(Input), Control, WeakSession = TWeakPtr<FAgentSession>(AsShared())]
		{
			FTurnRunner Runner(Input, *Control, [&Control, &WeakSession](FTurnReport&& Report)
			{
				if (Control->IsCancelled())
				{
					return;
				}
				AsyncTask(ENamedThreads::GameThread, [Control, WeakSession, Report = MoveTemp(Report)]() mutable
				{
					if (const TSharedPtr<FAgentSession> Session = WeakSession.Pin())
					{
						Session->OnReport(Control, MoveTemp(Report));
					}
				});
			});
			Runner.Run();
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
			SetState(bStartsTool ? EConversationState::ExecutingTools : EConversationState::Thinking, bStartsTool ? Report.ToolName : FString(TEXT("Working on the request.")));
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
			Fire(Callbacks.ToolCompleted, Report.ToolId, Report.ToolName, Report.bSuccess, Report.Text);
			return;

		case ETurnReportKind::Answer:
			RecordMessage(EConversationRole::Assistant, Report.Text);
			Fire(Callbacks.MessageReceived, Report.Text, false);
			return;

		case ETurnReportKind::Failed:
			DropTurn();
			StartEpoch = Epoch;
			CloseOpenTools(Report.Text);
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
		RecordMessage(EConversationRole::User, Prompt);
		StartTurn(Prompt);
		const uint32 StartEpoch = Epoch;
		CloseOpenTools(TEXT("Stopped: the request was changed."));
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
			SetState(EConversationState::Cancelled, TEXT("Stopped by the user."));
		}
	}

	void FAgentSession::EndConversation()
	{
		DropTurn();
		OpenTools.Empty();
		if (Current.IsValid())
		{
			FConversationStore::Get().Save(*Current);
			Current.Reset();
		}
		State = EConversationState::NotStarted;
	}

	bool FAgentSession::LoadConversation(const FString& Id)
	{
		FConversationMetadata Stored;
		if (HasTurn() || !FConversationStore::Get().Load(Id, Stored))
		{
			return false;
		}
		if (!Current.IsValid() || Current->Id != Id)
		{
			EndConversation();
			Current = MakeShared<FConversationMetadata>(MoveTemp(Stored));
		}
		const FString LoadedId = Current->Id;
		const uint32 StartEpoch = Epoch;
		SetState(EConversationState::Ready, TEXT("A stored conversation was opened."));
		if (Epoch == StartEpoch)
		{
			Fire(Callbacks.ConversationLoaded, LoadedId);
		}
		return true;
	}

	bool FAgentSession::DeleteConversationHistory(const FString& Id)
	{
		if (!Current.IsValid() || Current->Id != Id)
		{
			return FConversationStore::Get().Delete(Id);
		}
		const EConversationMode Mode = Current->Mode;
		EndConversation();
		FConversationStore::Get().Delete(Id);
		OpenEmptyConversation(Mode);
		SetState(EConversationState::Ready, TEXT("The conversation was deleted."));
		return true;
	}

	FString FAgentSession::GetTitle() const
	{
		if (!Current.IsValid())
		{
			return FString();
		}
		const FConversationMessage* First = Current->Messages.FindByPredicate([](const FConversationMessage& Message) { return Message.IsUserMessage() && !Message.Content.IsEmpty(); });
		if (!First)
		{
			return FString();
		}
		FString Title = First->Content.Replace(TEXT("\r\n"), TEXT(" ")).Replace(TEXT("\n"), TEXT(" ")).Replace(TEXT("\r"), TEXT(" ")).TrimStartAndEnd();
		return Title.Len() > MaxTitleLength ? Title.Left(MaxTitleLength) + TEXT("...") : Title;
	}

	void FAgentSession::CloseOpenTools(const FString& Why)
	{
		const uint32 StartEpoch = Epoch;
		while (OpenTools.Num() > 0 && Epoch == StartEpoch)
		{
			const FOpenTool Tool = OpenTools[0];
			OpenTools.RemoveAt(0);
			Fire(Callbacks.ToolCompleted, Tool.Id, Tool.Name, false, Why);
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

	void FAgentSession::RecordMessage(EConversationRole Role, const FString& Text)
	{
		FConversationMessage Message;
		Message.Content = Text;
		Message.Role = Role;
		Current->Messages.Add(MoveTemp(Message));
		Current->LastUpdated = FDateTime::Now();
		FConversationStore::Get().Save(*Current);
	}
}
