#include "Containers/Ticker.h"

#include "HAL/PlatformTime.h"
#include "Templates/UnrealTemplate.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <limits>
#include <thread>
#include <vector>

// Delegates that are called with the turns of the program's loop. Anyone may add and remove them from any thread, and a
// delegate may remove itself or others, or run the loop within itself (a modal window). Three rules follow:
//
// 1. Due ones are collected under the lock and called without it, in the order of their time and then of adding.
// 2. An element that is executing is not called again by an inner loop, and not twice in the same turn.
// 3. Removing waits until a call in another thread has returned, so that what the delegate uses may be destroyed after
// it.
//
// A delay is the least that passes between two calls. At rest every call wakes the processor, so that those which repeat at
// much the same time are put together: who is called again waits a little longer where that meets a call of another.

/** One registered delegate. Its own lock guards the state that RemoveTicker and Tick meet on. */
class FTSTicker::FElement
{
public:
	FElement(FTSTicker& InOwner, TFunction<bool(float)>&& InFunction, float InDelay)
		: Owner(InOwner)
		, Delay(InDelay)
		, Function(MoveTemp(InFunction))
	{
	}

	FTSTicker& Owner;
	const double Delay;

	// Guarded by the owner's lock.
	double NextTime = 0.0;
	uint64 LastTick = 0;
	uint64 Order = 0;

	std::mutex Mutex;
	std::condition_variable Finished;
	TFunction<bool(float)> Function;
	std::thread::id Executing;
	bool bRemoved = false;
};

namespace
{
	// Deltas are floats: ten times 0.1f may fall a hair short of a delay of 1.
	constexpr double DueTolerance = 1.0e-5;
	/** What a delay may grow by for that. Short ones follow something that moves and are kept as they are. */
	constexpr double SlackShare = 0.25;
	constexpr double MaxSlackSeconds = 0.25;
	constexpr double ShortDelaySeconds = 0.2;

	/**
	 * The last time within the slack at which another one is called, now or some calls later; the earliest one when there is no such
	 * time. Under the owner's lock.
	 */
	double FindSharedTime(const FTSTicker::FElement& Element, const TArray<TSharedPtr<FTSTicker::FElement>>& Elements, double Earliest)
	{
		if (Element.Delay < ShortDelaySeconds)
		{
			return Earliest;
		}
		const double Slack = std::min(Element.Delay * SlackShare, MaxSlackSeconds);
		double Shared = Earliest;
		for (const TSharedPtr<FTSTicker::FElement>& Other : Elements)
		{
			if (Other.Get() != &Element && Other->Delay >= ShortDelaySeconds)
			{
				// A time that differs by the rounding of many sums is the same.
				const double Ahead = Earliest - DueTolerance - Other->NextTime;
				const double Time = Other->NextTime + std::ceil(std::max(Ahead / Other->Delay, 0.0)) * Other->Delay;
				Shared = Time <= Earliest + Slack ? std::max(Shared, Time) : Shared;
			}
		}
		return Shared;
	}
}

FTSTicker::FTSTicker() = default;
FTSTicker::~FTSTicker() = default;

FTSTicker& FTSTicker::GetCoreTicker()
{
	static FTSTicker Ticker;
	return Ticker;
}

FTSTicker::FDelegateHandle FTSTicker::AddTicker(const FTickerDelegate& Delegate, float Delay)
{
	// A delegate whose object has died leaves the ticker.
	return AddTicker(TEXT(""), Delay, [Delegate](float DeltaTime) { return Delegate.IsBound() && Delegate.Execute(DeltaTime); });
}

FTSTicker::FDelegateHandle FTSTicker::AddTicker(const TCHAR* Name, float Delay, TFunction<bool(float)> Function)
{
	return AddElement(MakeShared<FElement>(*this, MoveTemp(Function), Delay), Delay);
}

// A delay counts from now, and now may be well after the last turn.
FTSTicker::FDelegateHandle FTSTicker::AddElement(TSharedPtr<FElement> Element, float Delay)
{
	const std::lock_guard<std::mutex> Lock(Mutex);
	const double SinceTick = ClockAtTick >= 0.0 ? std::max(FPlatformTime::Seconds() - ClockAtTick, 0.0) : 0.0;
	Element->NextTime = CurrentTime + SinceTick + Element->Delay;
	Element->Order = NextOrder++;
	Elements.Add(Element);
	return Element;
}

void FTSTicker::RemoveTicker(FDelegateHandle Handle)
{
	const TSharedPtr<FElement> Element = Handle.Pin();
	if (!Element)
	{
		return;
	}
	{
		const std::lock_guard<std::mutex> Lock(Element->Owner.Mutex);
		Element->Owner.Elements.Remove(Element);
	}
	TFunction<bool(float)> Gone; // What the delegate holds is destroyed outside the lock.
	std::unique_lock<std::mutex> Lock(Element->Mutex);
	Element->bRemoved = true;
	if (Element->Executing == std::this_thread::get_id())
	{
		return; // Tick lets go of it once it has returned.
	}
	Element->Finished.wait(Lock, [&Element] { return Element->Executing == std::thread::id(); });
	Gone = MoveTemp(Element->Function);
}

void FTSTicker::Tick(float DeltaTime)
{
	const float Passed = std::max(DeltaTime, 0.0f);
	static std::atomic<uint64> TickCounter{ 0 };
	const uint64 ThisTick = ++TickCounter;
	std::vector<TSharedPtr<FElement>> Due;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		CurrentTime += double(Passed);
		ClockAtTick = ClockAtTick >= 0.0 ? FPlatformTime::Seconds() : ClockAtTick;
		for (const TSharedPtr<FElement>& Element : Elements)
		{
			if (Element->NextTime <= CurrentTime + DueTolerance)
			{
				Due.push_back(Element);
			}
		}
		std::sort(Due.begin(), Due.end(),
			[](const TSharedPtr<FElement>& A, const TSharedPtr<FElement>& B)
			{ return A->NextTime != B->NextTime ? A->NextTime < B->NextTime : A->Order < B->Order; });
	}
	for (const TSharedPtr<FElement>& Element : Due)
	{
		{
			const std::lock_guard<std::mutex> Lock(Element->Mutex);
			if (Element->bRemoved || Element->Executing != std::thread::id())
			{
				continue;
			}
			Element->Executing = std::this_thread::get_id();
		}
		bool bCall = false;
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			bCall = Element->LastTick < ThisTick; // Else a loop inside an earlier delegate has called it.
			if (bCall)
			{
				Element->NextTime = FindSharedTime(*Element, Elements, CurrentTime + Element->Delay);
				Element->LastTick = ThisTick;
			}
		}
		const bool bStay = !bCall || Element->Function(Passed);
		TFunction<bool(float)> Gone;
		{
			const std::lock_guard<std::mutex> Lock(Element->Mutex);
			Element->Executing = std::thread::id();
			Element->bRemoved = Element->bRemoved || !bStay;
			if (Element->bRemoved)
			{
				Gone = MoveTemp(Element->Function);
			}
		}
		Element->Finished.notify_all();
		if (!bStay)
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			Elements.Remove(Element);
		}
	}
}

float FTSTicker::GetTimeUntilNextCall() const
{
	const std::lock_guard<std::mutex> Lock(Mutex);
	double Soonest = double(std::numeric_limits<float>::max());
	for (const TSharedPtr<FElement>& Element : Elements)
	{
		Soonest = std::min(Soonest, std::max(0.0, Element->NextTime - CurrentTime));
	}
	return float(Soonest);
}

// While a loop runs, time between its turns counts as well; a test that ticks by hand has its own time.
void FTSTicker::SetFollowsClock(bool bFollows)
{
	const std::lock_guard<std::mutex> Lock(Mutex);
	ClockAtTick = bFollows ? FPlatformTime::Seconds() : -1.0;
}

void FTSTicker::Reset()
{
	TArray<TSharedPtr<FElement>> Gone;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		Gone = Elements;
	}
	for (const TSharedPtr<FElement>& Element : Gone)
	{
		RemoveTicker(Element);
	}
}
