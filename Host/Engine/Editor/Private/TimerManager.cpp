#include "TimerManager.h"

FTimerManager::~FTimerManager()
{
	for (const auto& Timer : Timers)
	{
		FTSTicker::RemoveTicker(Timer.Value);
	}
}

void FTimerManager::SetTimer(FTimerHandle& InOutHandle, const FTimerDelegate& InDelegate, float InRate, bool InbLoop, float InFirstDelay)
{
	ClearTimer(InOutHandle);
	if (InRate > 0.0f)
	{
		InOutHandle.Number = ++LastNumber;
		Start(InOutHandle.Number, InDelegate, InFirstDelay >= 0.0f ? InFirstDelay : InRate, InRate, InbLoop);
	}
}

FTimerHandle FTimerManager::SetTimerForNextTick(const FTimerDelegate& InDelegate)
{
	FTimerHandle Handle;
	Handle.Number = ++LastNumber;
	Start(Handle.Number, InDelegate, 0.0f, 0.0f, false);
	return Handle;
}

void FTimerManager::ClearTimer(FTimerHandle& InHandle)
{
	if (const FTSTicker::FDelegateHandle* Ticker = Timers.Find(InHandle.Number))
	{
		const FTSTicker::FDelegateHandle Removed = *Ticker;
		Timers.Remove(InHandle.Number);
		FTSTicker::RemoveTicker(Removed);
	}
	InHandle.Invalidate();
}

void FTimerManager::Start(uint64 Number, const FTimerDelegate& Delegate, float Delay, float Rate, bool bLoop)
{
	Timers.Add(Number,
		FTSTicker::GetCoreTicker().AddTicker(TEXT("Timer"), Delay,
			[Weak = TWeakPtr<FTimerManager>(AsShared()), Number, Delegate, Delay, Rate, bLoop](float)
			{
				const TSharedPtr<FTimerManager> Manager = Weak.Pin();
				return Manager.IsValid() && Manager->OnDue(Number, Delegate, Delay, Rate, bLoop);
			}));
}

bool FTimerManager::OnDue(uint64 Number, const FTimerDelegate& Delegate, float Delay, float Rate, bool bLoop)
{
	if (!Timers.Contains(Number))
	{
		return false;
	}
	if (!bLoop || !Delegate.IsBound())
	{
		// Out of the way first: the delegate may start another under the same handle.
		Timers.Remove(Number);
		Delegate.ExecuteIfBound();
		return false;
	}
	Delegate.ExecuteIfBound();
	if (!Timers.Contains(Number))
	{
		return false;
	}
	if (Delay == Rate)
	{
		return true;
	}
	Timers.Remove(Number);
	Start(Number, Delegate, Rate, Rate, true);
	return false;
}
