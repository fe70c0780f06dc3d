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
		// Nobody ticks while Slate sleeps, and the batch is emptied by a tick.
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
	// 1. The clock starts with the first frame that finds something, so a message waits at least one batch and not a part of one.
	if (!bHasPendingUpdates)
	{
		BatchElapsed = 0.0f;
		return;
	}
	// 2. Ten may wait for their time; an eleventh says that they come faster than anybody reads.
	BatchElapsed += DeltaTime;
	if (BatchElapsed < ChatBatchSeconds && PendingMessages.Num() <= MaxWaitingChatMessages)
	{
		return;
	}
	// 3. All at once, in one report.
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
