#include "ViewModels/MessageBatcher.h"

#include "HAL/PlatformTime.h"
#include "ViewModels/ChatMessage.h"

FMessageBatcher::FMessageBatcher()
	: BatchStartTime(FPlatformTime::Seconds())
{
}

void FMessageBatcher::AddMessage(TSharedPtr<FChatMessage> Message)
{
	if (!Message.IsValid())
	{
		return;
	}
	// A batch is as old as its first message: one that is added later does not put it off.
	if (PendingMessages.Num() == 0)
	{
		BatchStartTime = FPlatformTime::Seconds();
	}
	PendingMessages.Add(MoveTemp(Message));
}

bool FMessageBatcher::ShouldFlush() const
{
	if (PendingMessages.Num() == 0)
	{
		return false;
	}
	// Full or old enough. The clock is asked, since nobody needs to tick a batch.
	return PendingMessages.Num() >= BatchSize || FPlatformTime::Seconds() - BatchStartTime >= BatchTime;
}

TArray<TSharedPtr<FChatMessage>> FMessageBatcher::Flush()
{
	TArray<TSharedPtr<FChatMessage>> Batch = PendingMessages;
	Clear();
	return Batch;
}

void FMessageBatcher::Clear()
{
	PendingMessages.Empty();
	BatchStartTime = FPlatformTime::Seconds();
}
