#pragma once

#include "CoreMinimal.h"
#include "Containers/Ticker.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

class FActiveTimerHandle;
class SWidget;

/**
 * Keeps Slate awake for a widget while something is due, as a member of that widget. Without input and without an active timer
 * Slate neither ticks nor paints, so who waits for anything else says so here, by an active timer that ends with the wait.
 *
 * A timer is called with the painting of its widget. One that is scrolled away or in a hidden tab would keep Slate awake for
 * nothing, so a timer that is not called for more than a second is taken back; the Tick that comes when the widget is in view again goes on
 * with what is still due. For the same reason a widget that was never painted wakes nobody. Game thread.
 */
class VELMORAUI_API FStayAwake
{
public:
	FStayAwake() = default;
	~FStayAwake();
	FStayAwake(const FStayAwake&) = delete;
	FStayAwake& operator=(const FStayAwake&) = delete;

	/**
	 * Called once, when the owner is constructed.
	 * @param InOwner   Holds this member.
	 * @param InIsDue   Asked with each frame; true asks for more.
	 * @param InPeriod  Seconds between frames, 0 for every one.
	 */
	void SetUp(SWidget& InOwner, TFunction<bool()> InIsDue, float InPeriod = 0.0f);

	/** Brings a frame, and more of them while something is due. */
	void Start();

	/** From the owner's Tick: starts when something is due. */
	void Update();

private:
	/** @return Whether the ticker goes on. */
	bool WatchTimer();
	void StopWatching();

	SWidget* Owner = nullptr;
	TFunction<bool()> IsDue;
	float Period = 0.0f;
	/** Null while nothing is due. */
	TSharedPtr<FActiveTimerHandle> Timer;
	FTSTicker::FDelegateHandle Watch;
	/** Looks at the timer in a row that found it not called since the one before. */
	int32 MissedLooks = 0;
	bool bWasPainted = false;
};
