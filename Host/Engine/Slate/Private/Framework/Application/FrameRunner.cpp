#include "FrameRunner.h"

#include "Containers/Ticker.h"
#include "HAL/PlatformTime.h"
#include "Host/HostSleep.h"
#include "Host/HostTasks.h"
#include "InputRouter.h"
#include "LayerStack.h"

#include <chrono>

// When a frame is run, and what is painted in it. The program is idle most of the time and must cost nothing then: a
// turn waits until input, a task, a timer or a ticker is due, and a frame comes only if something asked for one. After
// activity frames go on at full rate for half a second, so that what answers a click over several frames does not have
// to ask for each.
//
// The picture of a frame is a list of elements. Two lists are compared element by element, and only the rectangle around
// what differs is painted; a blinking caret costs a few hundred pixels.

namespace
{
	constexpr double ActiveFrameSeconds = 1.0 / 60.0;
	constexpr double ActivitySeconds = 0.5;
	constexpr double MaxWidgetDelta = 0.25;
	constexpr double MaxWaitSeconds = 3600.0;
	/** Windows wait for whole milliseconds, so a turn may come a little before its time. */
	constexpr double FrameTolerance = 0.0006;
	/** Text that wraps and boxes that wrap settle in two walks; the rest is a safety net. */
	constexpr int32 MaxLayoutPasses = 4;

	/** Time spent on work is real time, also while the program's clock is simulated. */
	double GetWorkSeconds()
	{
		return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
	}
}

FFrameRunner::FFrameRunner(FLayerStack& InLayers, FInputRouter& InInput, IHostWindow& InWindow)
	: Layers(InLayers)
	, Input(InInput)
	, Window(InWindow)
	, Elements(FVector2D(0, 0), 1.0f)
	, Spare(FVector2D(0, 0), 1.0f)
	, LastTurnTime(FPlatformTime::Seconds())
	, LastFrameTime(LastTurnTime)
	, LastBeat(LastTurnTime)
	, ActiveUntil(LastTurnTime + ActivitySeconds)
{
}

void FFrameRunner::NoteActivity()
{
	const double Now = FPlatformTime::Seconds();
	ActiveUntil = bStrictSleep ? ActiveUntil : Now + ActivitySeconds;
	FHostSleep::RequestFrameAt(Now);
}

// In the editor nothing but user action and active timers brings frames. Tests of the module switch the kindness off.
void FFrameRunner::SetStrictSleep(bool bStrict)
{
	bStrictSleep = bStrict;
	ActiveUntil = LastFrameTime;
}

// 1. Nobody looks. 2. Something is wanted now. 3. Something is open or was active just now: the next beat. 4. Otherwise
// when a timer is due.
double FFrameRunner::GetNextFrameTime() const
{
	if (!Window.IsVisible())
	{
		return FHostSleep::Never();
	}
	if (bFrameWanted || Input.HasActivity())
	{
		return LastFrameTime;
	}
	const double Beat = LastBeat + ActiveFrameSeconds - FrameTolerance;
	if ((!bStrictSleep && Layers.IsAnythingOpen()) || Layers.CountOpen() != ShownLayers || Beat <= ActiveUntil)
	{
		return Beat;
	}
	return FMath::Max(Beat, FHostSleep::GetNextFrameTime());
}

// How long the turn may sleep; the wait ends sooner when the window has an event or another thread wakes it.
double FFrameRunner::GetWait() const
{
	if (FHostTasks::HasPending())
	{
		return 0.0;
	}
	// A ticker without a delay is called as often as there are frames at full rate.
	const double TickerWait = FMath::Max<double>(FTSTicker::GetCoreTicker().GetTimeUntilNextCall(), ActiveFrameSeconds);
	const double Next = FMath::Min(GetNextFrameTime(), LastTurnTime + TickerWait);
	return FMath::Clamp(Next - FPlatformTime::Seconds(), 0.0, MaxWaitSeconds);
}

// Equally long lists differ in place, which is the rule: a colour, a caret, a scrolled text.
FSlateRect FFrameRunner::GetDamage(const TArray<FSlateDrawElement>& Before, const TArray<FSlateDrawElement>& Now)
{
	FSlateRect Damage;
	const int32 Shorter = FMath::Min(Before.Num(), Now.Num());
	if (Before.Num() == Now.Num())
	{
		for (int32 Index = 0; Index < Shorter; ++Index)
		{
			if (Before[Index] != Now[Index])
			{
				Damage = Damage.Expand(Before[Index].GetBounds()).Expand(Now[Index].GetBounds());
			}
		}
		return Damage;
	}
	// Something came or went: what is equal at both ends is left alone.
	int32 Front = 0;
	while (Front < Shorter && Before[Front] == Now[Front])
	{
		++Front;
	}
	int32 Back = 0;
	while (Back < Shorter - Front && Before[Before.Num() - 1 - Back] == Now[Now.Num() - 1 - Back])
	{
		++Back;
	}
	for (int32 Index = Front; Index < Before.Num() - Back; ++Index)
	{
		Damage = Damage.Expand(Before[Index].GetBounds());
	}
	for (int32 Index = Front; Index < Now.Num() - Back; ++Index)
	{
		Damage = Damage.Expand(Now[Index].GetBounds());
	}
	return Damage;
}

// Text learns its width only when it is arranged, and may then want another height. So a frame that left something to be
// measured is laid out again before it is shown; nobody sees the state in between. Widgets tick in the first pass alone.
void FFrameRunner::LayOutAndPaint(double Now, float DeltaTime, FSlateWindowElementList& Out)
{
	const FIntPoint PixelSize = Window.GetPixelSize();
	const FVector2D Size(PixelSize.X, PixelSize.Y);
	const float Scale = Window.GetScale();
	SWidget::SetLayoutScale(Scale);
	for (int32 Pass = 0; Pass < MaxLayoutPasses; ++Pass)
	{
		Layers.Arrange(Size, Scale);
		Out.Reset(Size, Scale);
		const FPaintArgs Args(Now, DeltaTime, Pass == 0);
		// A copy: a tick may open or close a layer.
		const TArray<FLayer> All = Layers.GetLayers();
		for (const FLayer& Layer : All)
		{
			if (Layer.Root->GetVisibility().IsVisible())
			{
				Layer.Root->Paint(Args, Layer.Geometry, Out.GetClip(), Out, 0, FWidgetStyle(), true);
			}
		}
		if (!Layers.NeedsPrepass())
		{
			bUnsettled = false;
			return;
		}
	}
	// What swings for ever is not worth every frame.
	if (!bUnsettled)
	{
		bUnsettled = true;
		FHostSleep::RequestFrameAt(Now);
	}
}

bool FFrameRunner::RunTurn(bool bForce)
{
	const double WorkStart = GetWorkSeconds();
	const double Now = FPlatformTime::Seconds();
	const double Elapsed = FMath::Max(Now - LastTurnTime, 0.0);
	LastTurnTime = Now;

	// 1. What was handed over. A task that changes a widget has something to show; one that changes what widgets only ask for
	// has to be waited for by them.
	const uint64 ChangesBefore = FHostSleep::GetChangeCount();
	FHostTasks::RunGameThreadTasks();
	if (!bStrictSleep && FHostSleep::GetChangeCount() != ChangesBefore)
	{
		NoteActivity();
	}
	// 2. The core ticker.
	FTSTicker::GetCoreTicker().Tick(static_cast<float>(Elapsed));
	// 3. Layers that have come to their end.
	Layers.PrunePopups(Now);
	for (const TSharedRef<SWindow>& Closed : Layers.RemoveClosedWindows())
	{
		Closed->NotifyClosed();
		NoteActivity();
	}
	// 4. The frame, if there is reason for one.
	const bool bFrame = bForce || Now >= GetNextFrameTime();
	if (bFrame)
	{
		RunFrame(Now);
		Stats.LastFrameSeconds = GetWorkSeconds() - WorkStart;
	}
	++Stats.TurnCount;
	Stats.WorstFrameSeconds = FMath::Max(Stats.WorstFrameSeconds, GetWorkSeconds() - WorkStart);
	return bFrame;
}

// Frames keep to a beat of 60 a second. A late one does not shift the beat, unless it is late by more than a frame.
void FFrameRunner::RunFrame(double Now)
{
	const double Elapsed = FMath::Max(Now - LastFrameTime, 0.0);
	LastFrameTime = Now;
	LastBeat = Now - LastBeat < 2.0 * ActiveFrameSeconds ? FMath::Min(Now, LastBeat + ActiveFrameSeconds) : Now;
	bFrameWanted = false;
	if (Input.TakeActivity() || Layers.CountOpen() != ShownLayers)
	{
		NoteActivity();
	}
	// From here on whoever wants another frame says so.
	FHostSleep::BeginFrame();
	ShownLayers = Layers.CountOpen();
	if (Window.IsVisible())
	{
		// Taken out of the members while in use: a dialog opened by a tick runs frames of its own in here.
		FSlateWindowElementList Next = MoveTemp(Spare);
		Spare = FSlateWindowElementList(FVector2D(0, 0), 1.0f);
		LayOutAndPaint(Now, static_cast<float>(FMath::Min(Elapsed, MaxWidgetDelta)), Next);
		Present(MoveTemp(Next));
		Input.Update(Now);
	}
	++Stats.FrameCount;
}

// The whole window is painted when it was covered, resized or scaled, and the damage otherwise. The old list becomes the
// spare one, whose memory the next frame uses.
void FFrameRunner::Present(FSlateWindowElementList&& Next)
{
	const FSlateRect Whole(0.0f, 0.0f, static_cast<float>(Next.GetWindowSize().X), static_cast<float>(Next.GetWindowSize().Y));
	const bool bWhole =
		Input.TakeExposed() || !bHasPicture || Next.GetWindowSize() != Elements.GetWindowSize() || Next.GetScale() != Elements.GetScale();
	const FSlateRect Damage = bWhole ? Whole : GetDamage(Elements.GetElements(), Next.GetElements()).IntersectionWith(Whole);
	Stats.LastPaintedPixels = 0.0;
	if (!Damage.IsEmpty())
	{
		Window.PaintAndPresent(Next, Damage);
		Stats.LastPaintedPixels = static_cast<double>(Damage.Width()) * Damage.Height();
		++Stats.PaintedFrames;
		bHasPicture = true;
	}
	Spare = MoveTemp(Elements);
	Elements = MoveTemp(Next);
}
