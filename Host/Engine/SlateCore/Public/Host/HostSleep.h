#pragma once

#include "CoreMinimal.h"
#include "Types/WidgetActiveTimerDelegate.h"

/**
 * What brings the next frame while Slate sleeps, besides input: active timers, and what the host's own widgets say of
 * themselves while they are painted. Times are those of FPlatformTime::Seconds. Game thread.
 *
 * An active timer counts from the moment it is due until it is called or taken back, also when its widget is not painted
 * and it can therefore not be called: as in the editor, a timer that nobody takes back keeps Slate awake for good.
 */
class SLATECORE_API FHostSleep
{
public:
	/** The largest time: nothing brings a frame. */
	static double Never();

	/** While painting or ticking: the picture changes by itself at that time. Forgotten when the next frame begins. */
	static void RequestFrameAt(double Time);
	/** Drops what the last frame has asked for. */
	static void BeginFrame();
	/** When a frame is due, by the timers and by what the last frame has asked for. */
	static double GetNextFrameTime();

	/** Timers that are registered, on whatever widget. */
	static int32 GetActiveTimerCount();

	/** A widget was changed by a call and not by a bound attribute, so the picture may no longer be true. */
	static void NoteChange() { ++ChangeCount; }
	static uint64 GetChangeCount() { return ChangeCount; }

private:
	friend class SWidget;
	static void AddTimer(const TSharedRef<FActiveTimerHandle>& Timer);
	static void RemoveTimer(const FActiveTimerHandle& Timer);

	static uint64 ChangeCount;
};
