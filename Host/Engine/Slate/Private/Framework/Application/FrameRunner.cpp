#include "FrameRunner.h"

#include "Containers/Ticker.h"
#include "HAL/PlatformTime.h"
#include "Host/HostTasks.h"
#include "InputRouter.h"
#include "LayerStack.h"

#include <chrono>

namespace
{
	constexpr double IdleFrameSeconds = 0.1;
	constexpr double ActiveFrameSeconds = 1.0 / 60.0;
	constexpr double ActivitySeconds = 0.5;
	constexpr double MaxWidgetDelta = 0.25;
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
	, LastFrameTime(FPlatformTime::Seconds())
	, ActiveUntil(LastFrameTime + ActivitySeconds)
{
}

void FFrameRunner::NoteActivity()
{
	ActiveUntil = FPlatformTime::Seconds() + ActivitySeconds;
}

double FFrameRunner::GetWait() const
{
	if (FHostTasks::HasPending())
	{
		return 0.0;
	}
	const double Now = FPlatformTime::Seconds();
	const bool bActive = Now < ActiveUntil || Layers.IsAnythingOpen();
	const double Period = bActive ? ActiveFrameSeconds : IdleFrameSeconds;
	return FMath::Clamp(LastFrameTime + Period - Now, 0.0, Period);
}

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
			break;
		}
	}
}

void FFrameRunner::RunFrame()
{
	const double WorkStart = GetWorkSeconds();
	const double Now = FPlatformTime::Seconds();
	const double Elapsed = FMath::Max(Now - LastFrameTime, 0.0);
	LastFrameTime = Now;

	if (FHostTasks::HasPending())
	{
		NoteActivity();
	}
	FHostTasks::RunGameThreadTasks();
	FTSTicker::GetCoreTicker().Tick(static_cast<float>(Elapsed));
	Layers.PrunePopups(Now);
	for (const TSharedRef<SWindow>& Closed : Layers.RemoveClosedWindows())
	{
		Closed->NotifyClosed();
		NoteActivity();
	}

	if (Window.IsVisible())
	{
		// Taken out of the members while in use: a dialog opened by a tick runs frames of its own in here.
		FSlateWindowElementList Next = MoveTemp(Spare);
		Spare = FSlateWindowElementList(FVector2D(0, 0), 1.0f);
		LayOutAndPaint(Now, static_cast<float>(FMath::Min(Elapsed, MaxWidgetDelta)), Next);

		const FSlateRect Whole(0.0f, 0.0f, static_cast<float>(Next.GetWindowSize().X), static_cast<float>(Next.GetWindowSize().Y));
		const bool bWhole = Input.TakeExposed() || !bHasPicture || Next.GetWindowSize() != Elements.GetWindowSize() ||
			Next.GetScale() != Elements.GetScale();
		const FSlateRect Damage = bWhole ? Whole : GetDamage(Elements.GetElements(), Next.GetElements()).IntersectionWith(Whole);
		Stats.LastPaintedPixels = 0.0;
		if (!Damage.IsEmpty())
		{
			Window.PaintAndPresent(Next, Damage);
			Stats.LastPaintedPixels = static_cast<double>(Damage.Width()) * Damage.Height();
			++Stats.PaintedFrames;
			bHasPicture = true;
			NoteActivity();
		}
		Spare = MoveTemp(Elements);
		Elements = MoveTemp(Next);
		Input.Update(Now);
	}
	if (Input.TakeActivity())
	{
		NoteActivity();
	}
	++Stats.FrameCount;
	Stats.LastFrameSeconds = GetWorkSeconds() - WorkStart;
	Stats.WorstFrameSeconds = FMath::Max(Stats.WorstFrameSeconds, Stats.LastFrameSeconds);
}
