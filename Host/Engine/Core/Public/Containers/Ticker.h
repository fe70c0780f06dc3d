#pragma once

#include "Containers/Array.h"
#include "Delegates/Delegate.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include <mutex>

/** Returns true to be called again. DeltaTime is the time since the ticker's last tick, in seconds, whenever the last call was. */
using FTickerDelegate = TDelegate<bool(float)>;

/**
 * Calls delegates every so often. All get the time since the last tick, that is, for the core ticker, since the last turn
 * of the program's loop: whoever is called with a delay and wants to know how long ago asks the clock. A delegate may add
 * and remove tickers, itself included, and may run a loop that ticks again: it is not entered twice. Add and remove on
 * any thread; Tick on the game thread.
 */
class CORE_API FTSTicker
{
public:
	class FElement;
	using FDelegateHandle = TWeakPtr<FElement>;

	/** Ticked in every turn of the program's loop. */
	static FTSTicker& GetCoreTicker();

	FTSTicker();
	~FTSTicker();
	FTSTicker(const FTSTicker&) = delete;
	FTSTicker& operator=(const FTSTicker&) = delete;

	/** @param Delay  Seconds between two calls; 0 calls in every tick. The first call is never in the tick that adds it. */
	FDelegateHandle AddTicker(const FTickerDelegate& Delegate, float Delay = 0.0f);
	FDelegateHandle AddTicker(const TCHAR* Name, float Delay, TFunction<bool(float)> Function);
	/**
	 * After the call the delegate will not run again. When another thread is inside it, waits for its end. An invalid
	 * handle is ignored.
	 */
	static void RemoveTicker(FDelegateHandle Handle);

	/** Moves the ticker's time on by DeltaTime seconds and calls what is due, the longest due first. */
	void Tick(float DeltaTime);
	/** Seconds until the next call is due, 0 when one is due now; the largest float when there is none. */
	float GetTimeUntilNextCall() const;
	/** Removes everything. */
	void Reset();
	/**
	 * Delays of what is added between two ticks count from the adding by FPlatformTime, and not from the tick before: for a
	 * ticker whose deltas are that clock's, and may be long. Game thread.
	 */
	void SetFollowsClock(bool bFollows);

private:
	FDelegateHandle AddElement(TSharedPtr<FElement> Element, float Delay);

	mutable std::mutex Mutex;
	TArray<TSharedPtr<FElement>> Elements;
	double CurrentTime = 0.0;
	/** The clock at the last tick; below zero when the clock is not followed. */
	double ClockAtTick = -1.0;
	uint64 NextOrder = 0;
};
