#include "KeyboardPlace.h"

#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostFocus.h"
#include "Host/SDockArea.h"
#include "Host/TabStops.h"

namespace
{
	/** What is made anew in a frame may have its place in the next one only. */
	constexpr int32 MaxLooks = 4;

	/** In one of the layers of the window, be it scrolled away. @param bShown  It and all around it are shown, too. */
	bool IsInWindow(const TSharedRef<SWidget>& Widget, bool bShown = true)
	{
		TSharedRef<SWidget> Top = Widget;
		while (!bShown || Top->GetVisibility().IsVisible())
		{
			const TSharedPtr<SWidget> Parent = Top->GetParentWidget();
			if (!Parent)
			{
				return FSlateApplication::Get().GetLayerRoots().Contains(Top);
			}
			Top = Parent.ToSharedRef();
		}
		return false;
	}

	FSlateRect GetPlace(const TSharedRef<SWidget>& Widget)
	{
		return Widget->GetCachedGeometry().GetLayoutBoundingRect();
	}

	/** What was made since the last frame has no place yet. */
	TArray<TSharedRef<SWidget>> CollectStops(const TSharedRef<SWidget>& Root, bool& bOutHavePlaces)
	{
		TArray<TSharedRef<SWidget>> Stops;
		TabStops::Collect(Root, Stops);
		bOutHavePlaces = !Stops.ContainsByPredicate([](const TSharedRef<SWidget>& Stop) { return GetPlace(Stop).IsEmpty(); });
		Stops.RemoveAll([](const TSharedRef<SWidget>& Stop) { return !TabStops::CanBeSeen(Stop); });
		return Stops;
	}

	TSharedPtr<SDockTab> GetFrontTab()
	{
		const TSharedPtr<SDockArea> Area = FGlobalTabmanager::Get()->GetDockArea();
		return Area ? Area->GetActiveTab() : nullptr;
	}
}

void FKeyboardPlace::Remember(const TSharedRef<SWidget>& Focused)
{
	Path.Reset();
	for (TSharedPtr<SWidget> Widget = Focused; Widget; Widget = Widget->GetParentWidget())
	{
		Path.Add(Widget);
	}
	Place = GetPlace(Focused);
	bHadRing = FHostFocus::Get().bShowRing;
	LooksLeft = MaxLooks;
	bIsNewTab = false;
}

TSharedPtr<SWidget> FKeyboardPlace::FindNearest(bool bMayWait) const
{
	for (const TWeakPtr<SWidget>& Entry : Path)
	{
		const TSharedPtr<SWidget> Around = Entry.Pin();
		if (!Around || !IsInWindow(Around.ToSharedRef()))
		{
			continue;
		}
		bool bHavePlaces = true;
		const TArray<TSharedRef<SWidget>> Stops = CollectStops(Around.ToSharedRef(), bHavePlaces);
		if (!bHavePlaces && bMayWait)
		{
			return nullptr;
		}
		TSharedPtr<SWidget> Nearest;
		double Distance = 0.0;
		for (const TSharedRef<SWidget>& Stop : Stops)
		{
			const FSlateRect Other = GetPlace(Stop);
			const double Here = FVector2D(Other.Left - Place.Left, Other.Top - Place.Top).SizeSquared();
			if (!Nearest || Here < Distance)
			{
				Nearest = Stop;
				Distance = Here;
			}
		}
		if (Nearest)
		{
			return Nearest;
		}
	}
	return nullptr;
}

TSharedPtr<SWidget> FKeyboardPlace::FindFirst(const SDockTab& Tab, bool bMayWait)
{
	bool bHavePlaces = true;
	const TArray<TSharedRef<SWidget>> Stops = CollectStops(Tab.GetContent(), bHavePlaces);
	return Stops.IsEmpty() || (!bHavePlaces && bMayWait) ? nullptr : TSharedPtr<SWidget>(Stops[0]);
}

void FKeyboardPlace::NoteTurn()
{
	// 1. A menu gives the keyboard back itself.
	FSlateApplication& Application = FSlateApplication::Get();
	if (Application.GetFrameStats().FrameCount == SeenFrames || Application.AnyMenusVisible())
	{
		return;
	}
	SeenFrames = Application.GetFrameStats().FrameCount;
	const TSharedPtr<SDockTab> Tab = GetFrontTab();
	if (Tab && !FrontTab.HasSameObject(Tab.Get()))
	{
		bIsNewTab = true;
		LooksLeft = MaxLooks;
	}
	FrontTab = Tab;
	// 2. Somebody has it, or has let go of it.
	const TSharedPtr<SWidget> Focused = Application.GetKeyboardFocusedWidget();
	if (Focused && IsInWindow(Focused.ToSharedRef()))
	{
		Remember(Focused.ToSharedRef());
		return;
	}
	if (!bIsNewTab && Focused && Focused->GetVisibility().IsVisible() && IsInWindow(Focused.ToSharedRef(), false))
	{
		// What is hidden for a while, with all around it, still has it when that comes back.
		return;
	}
	const TSharedPtr<SWidget> Before = Path.IsEmpty() ? nullptr : Path[0].Pin();
	const bool bWasLetGo = !Focused && (Path.IsEmpty() || (Before && IsInWindow(Before.ToSharedRef())));
	if (!bIsNewTab && bWasLetGo)
	{
		return;
	}
	// 3. Whoever had it is gone, or is hidden alone.
	const bool bMayWait = LooksLeft > 0;
	if (const TSharedPtr<SWidget> Next = bIsNewTab && Tab ? FindFirst(*Tab, bMayWait) : FindNearest(bMayWait))
	{
		Application.SetKeyboardFocus(Next, bHadRing || bIsNewTab ? EFocusCause::Navigation : EFocusCause::SetDirectly);
		Application.NoteActivity();
	}
	else if (bMayWait)
	{
		--LooksLeft;
		Application.RequestFrame();
	}
	else
	{
		bIsNewTab = false;
		Path.Reset();
	}
}
