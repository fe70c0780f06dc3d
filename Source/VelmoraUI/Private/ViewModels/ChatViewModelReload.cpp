#include "ViewModels/ChatViewModel.h"

#include "Agent/Agent.h"

// Only what was said comes back. Tool runs, notes of the system, undo points and times of a stored conversation do not.
void FChatViewModel::OnAgentConversationLoaded(const FString& ConversationId)
{
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = GetCurrentConversationMetadata();
	// 1. The report may be late: the agent is asked what it holds now, and a report about anything else is dropped.
	if (!Metadata.IsValid() || Metadata->Id != ConversationId)
	{
		return;
	}
	if (!PendingLoadConversationId.IsEmpty() && PendingLoadConversationId != ConversationId)
	{
		return; // The user has asked for another conversation in the meantime.
	}
	// 2. The rows, made anew. Empty texts are left out: a turn that only ran tools has stored one.
	Messages.Empty();
	for (const Velmora::FConversationMessage& Stored : Metadata->GetMessages())
	{
		if (Stored.Content.IsEmpty())
		{
			continue;
		}
		if (Stored.IsUserMessage())
		{
			Messages.Add(FChatMessage::CreateUserMessage(Stored.Content));
		}
		else if (Stored.IsAssistantMessage())
		{
			Messages.Add(FChatMessage::CreateAIMessage(Stored.Content, Stored.HasToolCalls()));
		}
	}
	// 3. From here on reports of further loads count again.
	PendingLoadConversationId.Empty();
	MessagesChangedEvent.Broadcast();
}
