#include "ViewModels/ChatViewModel.h"

#include "Agent/Agent.h"
#include "Agent/AgentStateObserver.h"
#include "UpdateGate.h"

using Velmora::EConversationMode;
using Velmora::EConversationState;

namespace
{

	const TCHAR* GetConversationStateText(EConversationState State)
	{
		switch (State)
		{
		case EConversationState::NotStarted:
			return TEXT("Ready to start");
		case EConversationState::Initializing:
			return TEXT("Initializing");
		case EConversationState::Ready:
		case EConversationState::AwaitingInput:
			return TEXT("Ready");
		case EConversationState::Thinking:
			return TEXT("Thinking");
		case EConversationState::ExecutingTools:
			return TEXT("Executing tools");
		case EConversationState::Paused:
			return TEXT("Paused");
		case EConversationState::Completed:
			return TEXT("Completed");
		case EConversationState::Cancelled:
			return TEXT("Cancelled");
		case EConversationState::Error:
			return TEXT("Error");
		}
		return TEXT("Unknown");
	}

	/** The mode's word in the opening line of a conversation. General has none. */
	const TCHAR* GetConversationModeWord(EConversationMode Mode)
	{
		switch (Mode)
		{
		case EConversationMode::Advisor:
			return TEXT("Advisor");
		case EConversationMode::Code:
			return TEXT("Code");
		case EConversationMode::Assets:
			return TEXT("Assets");
		case EConversationMode::General:
			break;
		}
		return TEXT("");
	}

	/** The last running row of the tool, rows inside of user messages included. */
	TSharedPtr<FChatMessage> FindLastRunningTool(const TArray<TSharedPtr<FChatMessage>>& Rows, const FString& ToolName)
	{
		// From the end: of two running rows with one name the younger is the one that is spoken of.
		for (int32 Index = Rows.Num() - 1; Index >= 0; --Index)
		{
			const TSharedPtr<FChatMessage>& Row = Rows[Index];
			if (!Row.IsValid())
			{
				continue;
			}
			if (Row->IsToolRunning() && Row->ToolName == ToolName)
			{
				return Row;
			}
			// Its own rows are younger than the message and older than what follows it.
			if (Row->IsUserMessage())
			{
				if (TSharedPtr<FChatMessage> Nested = FindLastRunningTool(Row->ToolExecutions, ToolName))
				{
					return Nested;
				}
			}
		}
		return nullptr;
	}

} // namespace

FChatViewModel::FChatViewModel() = default;

FChatViewModel::~FChatViewModel()
{
	if (Agent.IsValid())
	{
		// The agent may outlive this object; an ended conversation has nothing more to report to it.
		Agent->EndConversation();
	}
	Agent.Reset();
	StateObserver.Reset();
	Messages.Empty();
}

bool FChatViewModel::Initialize(TSharedPtr<Velmora::FAgent> InAgent)
{
	if (!InAgent.IsValid())
	{
		return false;
	}
	Agent = InAgent;
	// Before the callbacks are set, since one of them may ask at once whether the agent is busy.
	StateObserver = MakeShared<Velmora::FAgentStateObserver>(Agent);
	SetupAgentCallbacks();
	return true;
}

void FChatViewModel::SetupAgentCallbacks()
{
	if (!Agent.IsValid())
	{
		return;
	}
	Agent->OnMessageReceived([this](const FString& Text, bool bHasToolCalls) { OnAgentMessageReceived(Text, bHasToolCalls); });
	Agent->OnToolExecutionStarted([this](const FString& ToolId, const FString& ToolName, const FString& Parameters, const FString& Metadata)
		{ OnAgentToolStarted(ToolId, ToolName, Parameters, Metadata); });
	Agent->OnToolExecutionCompleted([this](const FString& ToolId, const FString& ToolName, bool bSuccess, const FString& Result)
		{ OnAgentToolCompleted(ToolId, ToolName, bSuccess, Result); });
	Agent->OnStateChanged([this](EConversationState OldState, EConversationState NewState, const FString& Reason)
		{ OnAgentStateChanged(OldState, NewState, Reason); });
	Agent->OnError([this](const FString& Error) { OnAgentError(Error); });
	Agent->OnConversationCompleted([this](bool bSuccess, const FString& Summary) { OnAgentConversationCompleted(bSuccess, Summary); });
	Agent->OnConversationLoaded([this](const FString& ConversationId) { OnAgentConversationLoaded(ConversationId); });
	Agent->OnProcessMessage([this](const FString& Text) { OnAgentProcessMessage(Text); });

	// An agent that already holds a conversation reported its load to whoever listened before, so it is taken in here.
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = Agent->GetCurrentConversationMetadata();
	if (Metadata.IsValid() && Metadata->GetMessageCount() > 0)
	{
		OnAgentConversationLoaded(Metadata->Id);
	}
}

void FChatViewModel::Tick(float DeltaTime)
{
	// 1. What the agent is doing, which buttons and rows ask for in this frame.
	if (StateObserver.IsValid())
	{
		StateObserver->Tick(DeltaTime);
	}
	// 2. What it has said meanwhile.
	ProcessPendingUpdates(DeltaTime);
}

bool FChatViewModel::StartNewConversation(EConversationMode Mode)
{
	if (!Agent.IsValid())
	{
		return false;
	}
	// 1. The old conversation ends in its own list, where its last note still belongs.
	if (HasActiveConversation())
	{
		EndConversation();
	}
	// 2. A load that is still under way would fill the new list with the old messages.
	PendingLoadConversationId.Empty();
	ClearHistory();
	// 3. The new one; a failure is a row in the empty list, since the old one is gone either way.
	if (Agent->StartConversation(Mode).IsEmpty())
	{
		AddSystemMessage(TEXT("Failed to start conversation. Please check your API key and connection."));
		return false;
	}
	// In General mode the word is empty and two blanks meet; the sentence is meant to read so.
	AddSystemMessage(FString(TEXT("Started new ")) + GetConversationModeWord(GetMode()) + TEXT(" conversation"));
	return true;
}

bool FChatViewModel::SetModeForEmptyConversation(EConversationMode Mode)
{
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = GetCurrentConversationMetadata();
	if (!Metadata.IsValid() || Metadata->GetMessageCount() > 0)
	{
		return false;
	}
	if (Metadata->Mode != Mode)
	{
		Metadata->Mode = Mode; // The agent holds the same object.
		StateChangedEvent.Broadcast(GetState());
	}
	return true;
}

bool FChatViewModel::SendMessage(const FString& Text)
{
	if (!CanSendMessage() || Text.IsEmpty())
	{
		return false;
	}
	// 1. A prompt begins a new step, in which the same tool gets a row again.
	ClearSeenToolHeaders();
	// 2. The row stays when the agent refuses: what was typed is never lost, and the note after it says what became of it.
	const TSharedPtr<FChatMessage> Message = FChatMessage::CreateUserMessage(Text);
	AddMessage(Message); // The row is on screen before the agent is asked.
	if (!Agent->SendMessage(Text, ContextFiles))
	{
		AddSystemMessage(TEXT("Failed to send message. Please try again."));
		return false;
	}
	// 3. The files went out with this prompt. After a refusal they stay for the next try.
	ClearContextFiles();
	// 4. The agent opens the transaction while it takes the prompt, so its name is known only now. Without one there is no undo.
	const FString TransactionId = Agent->GetCurrentTransactionId();
	if (!TransactionId.IsEmpty())
	{
		Message->TransactionId = TransactionId;
	}
	return true;
}

void FChatViewModel::PauseConversation()
{
	if (!Agent.IsValid())
	{
		return;
	}
	Agent->PauseConversation();
	PausedNotice = FChatMessage::CreateSystemMessage(
		TEXT("Conversation Paused\n\n") TEXT("You have 3 options:\n") TEXT("1. Press Continue to resume as if nothing happened\n")
			TEXT("2. Add a prompt in the input box and press Continue to modify the request\n")
				TEXT("3. Press Cancel to cancel the entire conversation"));
	AddMessage(PausedNotice);
}

void FChatViewModel::ResumeConversation(const FString& Prompt)
{
	if (!Agent.IsValid())
	{
		return;
	}
	// The notice first: it describes a choice that has been made by this call.
	RemovePausedNotice();
	if (!Prompt.IsEmpty())
	{
		AddMessage(FChatMessage::CreateUserMessage(Prompt));
	}
	Agent->ResumeConversation(Prompt);
}

void FChatViewModel::CancelConversation()
{
	if (!Agent.IsValid())
	{
		return;
	}
	RemovePausedNotice();
	Agent->CancelConversation();
	AddSystemMessage(TEXT("Conversation cancelled"));
}

void FChatViewModel::EndConversation()
{
	if (!Agent.IsValid())
	{
		return;
	}
	Agent->EndConversation();
	AddSystemMessage(TEXT("Conversation ended"));
}

bool FChatViewModel::LoadConversation(const FString& ConversationId)
{
	if (!Agent.IsValid())
	{
		return false;
	}
	// Remembered before the agent is asked, which may report the load from within the call.
	PendingLoadConversationId = ConversationId;
	// The old conversation goes at once; the window must not show it under the name of the new one.
	Messages.Empty();
	MessagesChangedEvent.Broadcast();
	if (!Agent->LoadConversation(ConversationId))
	{
		PendingLoadConversationId.Empty();
		return false;
	}
	return true;
}

bool FChatViewModel::DeleteConversationHistory(const FString& ConversationId)
{
	return Agent.IsValid() && Agent->DeleteConversationHistory(ConversationId);
}

void FChatViewModel::ClearHistory()
{
	Messages.Empty();
	PendingMessages.Empty();
	// What waits belongs to the conversation that is cleared, and must not appear in the next one.
	bHasPendingUpdates = false;
	MessagesChangedEvent.Broadcast();
}

void FChatViewModel::ClearAllHistories()
{
	if (Agent.IsValid())
	{
		Agent->ClearAllHistories();
	}
}

void FChatViewModel::AddContextFile(const FString& Path)
{
	if (!ContextFiles.Contains(Path))
	{
		ContextFiles.Add(Path);
		ContextFilesChangedEvent.Broadcast();
	}
}

void FChatViewModel::RemoveContextFile(const FString& Path)
{
	const int32 RemovedCount = ContextFiles.RemoveAll([&Path](const FString& File) { return File == Path; });
	if (RemovedCount > 0)
	{
		ContextFilesChangedEvent.Broadcast();
	}
}

void FChatViewModel::ClearContextFiles()
{
	if (ContextFiles.Num() > 0)
	{
		ContextFiles.Empty();
		ContextFilesChangedEvent.Broadcast();
	}
}

EConversationState FChatViewModel::GetState() const
{
	return Agent.IsValid() ? Agent->GetState() : EConversationState::NotStarted;
}

EConversationMode FChatViewModel::GetMode() const
{
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = GetCurrentConversationMetadata();
	return Metadata.IsValid() ? Metadata->Mode : EConversationMode::General;
}

bool FChatViewModel::HasActiveConversation() const
{
	return Agent.IsValid() && Agent->HasActiveConversation();
}

TSharedPtr<Velmora::FConversationMetadata> FChatViewModel::GetCurrentConversationMetadata() const
{
	return Agent.IsValid() ? Agent->GetCurrentConversationMetadata() : nullptr;
}

FString FChatViewModel::GetCurrentConversationTitle() const
{
	return Agent.IsValid() ? Agent->GetCurrentConversationTitle() : FString(TEXT("New Conversation"));
}

TArray<Velmora::FConversationMetadata> FChatViewModel::GetConversationHistories() const
{
	return Agent.IsValid() ? Agent->GetConversationHistories() : TArray<Velmora::FConversationMetadata>();
}

bool FChatViewModel::IsBusy() const
{
	// The observer and not the state: only it knows of work that goes on through several states.
	return Agent.IsValid() && StateObserver->IsBusy();
}

bool FChatViewModel::CanUndo() const
{
	return Agent.IsValid() && Agent->CanUndo();
}

bool FChatViewModel::CanSendMessage() const
{
	// An offered update keeps the prompt open and the sending shut: the offer is to be answered first.
	return Agent.IsValid() && Velmora::FUpdateGate::Get().GetState() == Velmora::EUpdateGateState::Ready &&
		StateObserver->CanAcceptMessage();
}

FString FChatViewModel::GetStatusText() const
{
	if (!Agent.IsValid())
	{
		return TEXT("Not initialized");
	}
	// The gate speaks before the conversation, since nothing can be sent while it is shut.
	const Velmora::FUpdateGate& Gate = Velmora::FUpdateGate::Get();
	if (Gate.GetState() == Velmora::EUpdateGateState::Checking)
	{
		return TEXT("Initializing");
	}
	if (Gate.GetState() == Velmora::EUpdateGateState::RestartRequired)
	{
		const FString Message = Gate.GetMessage();
		return Message.IsEmpty() ? FString(TEXT("Restart required")) : Message;
	}
	return GetConversationStateText(Agent->GetState());
}

void FChatViewModel::AddMessage(TSharedPtr<FChatMessage> Message)
{
	if (Message.IsValid())
	{
		Messages.Add(MoveTemp(Message));
		MessagesChangedEvent.Broadcast();
	}
}

void FChatViewModel::RemoveMessage(TSharedPtr<FChatMessage> Message)
{
	if (Message.IsValid())
	{
		// Told even when the message was not in the list, so that a view that still shows it catches up.
		Messages.Remove(Message);
		MessagesChangedEvent.Broadcast();
	}
}

void FChatViewModel::AddSystemMessage(const FString& Text)
{
	AddMessage(FChatMessage::CreateSystemMessage(Text));
}

void FChatViewModel::RemovePausedNotice()
{
	if (PausedNotice.IsValid())
	{
		RemoveMessage(PausedNotice);
		PausedNotice.Reset();
	}
}

TSharedPtr<FChatMessage> FChatViewModel::FindLastUserMessage() const
{
	for (int32 Index = Messages.Num() - 1; Index >= 0; --Index)
	{
		if (Messages[Index].IsValid() && Messages[Index]->IsUserMessage())
		{
			return Messages[Index];
		}
	}
	return nullptr;
}

TSharedPtr<FChatMessage> FChatViewModel::FindRunningToolMessage(const FString& ToolName) const
{
	// What waits is younger than all that is shown.
	TSharedPtr<FChatMessage> Waiting = FindLastRunningTool(PendingMessages, ToolName);
	return Waiting.IsValid() ? Waiting : FindLastRunningTool(Messages, ToolName);
}
