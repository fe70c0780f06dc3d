#include "Host/HostSleep.h"

#include <limits>

uint64 FHostSleep::ChangeCount = 0;

namespace
{
	double RequestedTime = std::numeric_limits<double>::max();

	/** Few: who is at rest has none. */
	TArray<TWeakPtr<FActiveTimerHandle>>& GetTimers()
	{
		static TArray<TWeakPtr<FActiveTimerHandle>> Timers;
		return Timers;
	}
}

double FHostSleep::Never()
{
	return std::numeric_limits<double>::max();
}

void FHostSleep::RequestFrameAt(double Time)
{
	RequestedTime = FMath::Min(RequestedTime, Time);
}

void FHostSleep::BeginFrame()
{
	RequestedTime = Never();
}

double FHostSleep::GetNextFrameTime()
{
	double Next = RequestedTime;
	for (const TWeakPtr<FActiveTimerHandle>& Weak : GetTimers())
	{
		if (const TSharedPtr<FActiveTimerHandle> Timer = Weak.Pin())
		{
			Next = FMath::Min(Next, Timer->NextTime);
		}
	}
	return Next;
}

int32 FHostSleep::GetActiveTimerCount()
{
	GetTimers().RemoveAll([](const TWeakPtr<FActiveTimerHandle>& Timer) { return !Timer.IsValid(); });
	return GetTimers().Num();
}

void FHostSleep::AddTimer(const TSharedRef<FActiveTimerHandle>& Timer)
{
	GetTimers().Add(TWeakPtr<FActiveTimerHandle>(Timer));
}

void FHostSleep::RemoveTimer(const FActiveTimerHandle& Timer)
{
	GetTimers().RemoveAll([&Timer](const TWeakPtr<FActiveTimerHandle>& Entry) { return !Entry.IsValid() || Entry.HasSameObject(&Timer); });
}
