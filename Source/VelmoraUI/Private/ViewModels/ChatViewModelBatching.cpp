#include "ViewModels/ChatViewModel.h"

namespace
{
	constexpr float ChatBatchSeconds = 0.1f;
	constexpr int32 MaxWaitingChatMessages = 10;
} // namespace

void FChatViewModel::AddToBatch(TSharedPtr<FChatMessage> Message)
{
	if (Message.IsValid())
	{
		PendingMessages.Add(MoveTemp(Message));
		bHasPendingUpdates = true;
		if (MessageWaitsHook)
		{
			MessageWaitsHook();
		}
	}
}

bool FChatViewModel::HasPendingUpdates() const
{
	return bHasPendingUpdates || PendingMessages.Num() > 0;
}

void FChatViewModel::ProcessPendingUpdates(float DeltaTime)
{
	// Seconds since the first frame in which something waited. One clock for all view models of the process.
	static float BatchElapsed = 0.0f;
	if (!bHasPendingUpdates)
	{
		BatchElapsed = 0.0f;
		return;
	}
	BatchElapsed += DeltaTime;
	if (BatchElapsed < ChatBatchSeconds && PendingMessages.Num() <= MaxWaitingChatMessages)
	{
		return;
	}
	FlushPendingMessages();
	BatchElapsed = 0.0f;
}

void FChatViewModel::FlushPendingMessages()
{
	if (PendingMessages.Num() == 0)
	{
		return;
	}
	Messages.Append(PendingMessages);
	PendingMessages.Empty();
	bHasPendingUpdates = false;
	MessagesChangedEvent.Broadcast();
}
