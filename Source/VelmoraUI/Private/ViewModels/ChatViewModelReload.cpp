#include "ViewModels/ChatViewModel.h"

#include "Agent/Agent.h"

// Only what was said comes back. Tool runs, notes of the system, undo points and times of a stored conversation do not.
void FChatViewModel::OnAgentConversationLoaded(const FString& ConversationId)
{
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = GetCurrentConversationMetadata();
	if (!Metadata.IsValid() || Metadata->Id != ConversationId)
	{
		return;
	}
	if (!PendingLoadConversationId.IsEmpty() && PendingLoadConversationId != ConversationId)
	{
		return; // The user has asked for another conversation in the meantime.
	}
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
	PendingLoadConversationId.Empty();
	MessagesChangedEvent.Broadcast();
}
