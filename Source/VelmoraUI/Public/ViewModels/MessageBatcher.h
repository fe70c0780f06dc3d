#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

class FChatMessage;

/**
 * Collects messages until a batch is due: when it holds enough of them, or when its first one has waited long enough.
 * Asks no one and reports to no one; the owner polls ShouldFlush. No lock.
 */
class VELMORAUI_API FMessageBatcher
{
public:
	FMessageBatcher();

	/** The first message of a batch starts its clock. Null is ignored. */
	void AddMessage(TSharedPtr<FChatMessage> Message);

	/** Never true for an empty batch. */
	bool ShouldFlush() const;

	/** Hands the batch out and begins a new one. */
	TArray<TSharedPtr<FChatMessage>> Flush();

	void Clear();

	int32 GetPendingCount() const { return PendingMessages.Num(); }

	/** Number of messages at which a batch is due. Not checked. */
	void SetBatchSize(int32 Size) { BatchSize = Size; }

	/** Seconds after which a batch is due. Not checked. */
	void SetBatchTime(float Seconds) { BatchTime = Seconds; }

private:
	TArray<TSharedPtr<FChatMessage>> PendingMessages;
	double BatchStartTime;
	int32 BatchSize = 10;
	float BatchTime = 0.1f;
};
