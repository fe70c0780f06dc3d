#pragma once

#include "Containers/Map.h"
#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

DECLARE_DELEGATE(FTimerDelegate);

/** Names a timer of one manager. A fresh one names none. */
struct FTimerHandle
{
	bool IsValid() const { return Number != 0; }
	void Invalidate() { Number = 0; }
	bool operator==(const FTimerHandle& Other) const { return Number == Other.Number; }

private:
	friend class FTimerManager;
	uint64 Number = 0;
};

/** Calls delegates after a time, on the game thread's core ticker. A delegate whose object has gone is dropped. Game thread. */
class EDITOR_API FTimerManager : public TSharedFromThis<FTimerManager>
{
public:
	~FTimerManager();

	/**
	 * A handle that names a timer already takes the new time over.
	 *
	 * @param InRate        Seconds until the call, and between calls if it loops. Zero or less only clears the handle's timer.
	 * @param InFirstDelay  Seconds until the first call; negative for InRate.
	 */
	void SetTimer(FTimerHandle& InOutHandle, const FTimerDelegate& InDelegate, float InRate, bool InbLoop, float InFirstDelay = -1.0f);

	/** Calls once, in the next tick. */
	FTimerHandle SetTimerForNextTick(const FTimerDelegate& InDelegate);

	/** The handle names no timer afterwards. */
	void ClearTimer(FTimerHandle& InHandle);
	bool IsTimerActive(const FTimerHandle& InHandle) const { return Timers.Contains(InHandle.Number); }

private:
	void Start(uint64 Number, const FTimerDelegate& Delegate, float Delay, float Rate, bool bLoop);

	/** @return True to be called again after the same time. */
	bool OnDue(uint64 Number, const FTimerDelegate& Delegate, float Delay, float Rate, bool bLoop);

	TMap<uint64, FTSTicker::FDelegateHandle> Timers;
	uint64 LastNumber = 0;
};
