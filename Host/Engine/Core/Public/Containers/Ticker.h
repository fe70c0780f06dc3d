#pragma once

#include "Containers/Array.h"
#include "Delegates/Delegate.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include <mutex>

/** Returns true to be called again. DeltaTime is in seconds. */
using FTickerDelegate = TDelegate<bool(float)>;

/**
 * Calls delegates every so often. The host gives a delegate the time since it was last called (for the first call:
 * since it was added), so that sums of the deltas are true seconds also with a delay. A delegate may add and remove
 * tickers, itself included, and may run a loop that ticks again: it is not entered twice. Add and remove on any
 * thread; Tick on the game thread.
 */
class CORE_API FTSTicker
{
public:
	class FElement;
	using FDelegateHandle = TWeakPtr<FElement>;

	/** Ticked once a frame by the program's loop. */
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

private:
	FDelegateHandle AddElement(TSharedPtr<FElement> Element, float Delay);

	mutable std::mutex Mutex;
	TArray<TSharedPtr<FElement>> Elements;
	double CurrentTime = 0.0;
	uint64 NextOrder = 0;
};
