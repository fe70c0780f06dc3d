#include "LayerStack.h"

#include "Host/HostNotifications.h"
#include "SFloatingFrames.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/Views/STableViewBase.h"

namespace
{
	/** A tooltip hangs this far below the pointer. */
	constexpr float ToolTipDrop = 16.0f;
	/** From a row of a menu to its tooltip: the menu's own edge, and some room. */
	constexpr float MenuToolTipGap = 8.0f;
	/** Room between a popup and what it belongs to. */
	constexpr float PopupGap = 2.0f;
	/** With less room beside its owner a popup covers it after all; slate units. */
	constexpr float MinHelpHeight = 60.0f;

	/** What is taller than this, in slate units, may be covered by its own tooltip. */
	constexpr float MaxClearHeight = 80.0f;

	/** The list that a widget is in a row of. */
	TSharedPtr<SWidget> FindList(TSharedPtr<SWidget> Widget)
	{
		while (Widget && !dynamic_cast<const STableViewBase*>(Widget.Get()))
		{
			Widget = Widget->GetParentWidget();
		}
		return Widget;
	}

	bool HoldsKeyboard(const SWidget& Widget)
	{
		return Widget.HasKeyboardFocus() || Widget.HasFocusedDescendants();
	}

	/** The height of a popup that helps while its owner is worked in: as much as there is room for, so that the owner stays in view. */
	double LimitHelpHeight(double Height, const FSlateRect& Owner, double WindowHeight, float Scale)
	{
		const double Room = FMath::Max<double>(Owner.Top, WindowHeight - Owner.Bottom) - PopupGap;
		return Room >= MinHelpHeight * Scale ? FMath::Min(Height, Room) : Height;
	}
}

IMenu::~IMenu() = default;

FPopup::FPopup(const TSharedRef<SWidget>& InOwner, const TSharedRef<SWidget>& InContent, const TSharedRef<SWidget>& InFrame)
	: Owner(InOwner)
	, Content(InContent)
	, Frame(InFrame)
{
}

void FPopup::Dismiss()
{
	if (bOpen)
	{
		bOpen = false;
		const TSharedRef<FPopup> KeepAlive = SharedThis(this);
		OnMenuDismissed.Broadcast(KeepAlive);
	}
}

namespace
{
	/** Where a popup of a size would stand beside its anchor, were there room. */
	struct FPopupPlace
	{
		float X = 0.0f;
		float Y = 0.0f;
		/** Above or below its anchor, so that the other side may do as well. */
		bool bVertical = true;
	};

	FPopupPlace GetWantedPlace(const FSlateRect& Anchor, float Width, float Height, EMenuPlacement Placement)
	{
		const float Middle = (Anchor.Left + Anchor.Right - Width) * 0.5f;
		const float Below = Anchor.Bottom + PopupGap;
		const float Above = Anchor.Top - PopupGap - Height;
		switch (Placement)
		{
		case MenuPlacement_CenteredBelowAnchor:
			return { Middle, Below, true };
		case MenuPlacement_BelowRightAnchor:
		case MenuPlacement_ComboBoxRight:
			return { Anchor.Right - Width, Below, true };
		case MenuPlacement_AboveAnchor:
			return { Anchor.Left, Above, true };
		case MenuPlacement_CenteredAboveAnchor:
			return { Middle, Above, true };
		case MenuPlacement_AboveRightAnchor:
			return { Anchor.Right - Width, Above, true };
		case MenuPlacement_MenuRight:
			return { Anchor.Right + PopupGap, Anchor.Top, false };
		case MenuPlacement_MenuLeft:
			return { Anchor.Left - PopupGap - Width, Anchor.Top, false };
		case MenuPlacement_Center:
		case MenuPlacement_RightLeftCenter:
			return { Middle, (Anchor.Top + Anchor.Bottom - Height) * 0.5f, false };
		case MenuPlacement_MatchBottomLeft:
			return { Anchor.Left, Anchor.Bottom - Height, false };
		case MenuPlacement_BelowAnchor:
		case MenuPlacement_ComboBox:
			break;
		}
		return { Anchor.Left, Below, true };
	}
}

FSlateRect FPopup::PlacePopup(const FSlateRect& Anchor, const FVector2D& PopupSize, EMenuPlacement Placement, const FVector2D& WindowSize)
{
	const float Width = static_cast<float>(PopupSize.X);
	const float Height = static_cast<float>(PopupSize.Y);
	const float WindowWidth = static_cast<float>(WindowSize.X);
	const float WindowHeight = static_cast<float>(WindowSize.Y);

	// 1. As asked for.
	FPopupPlace Place = GetWantedPlace(Anchor, Width, Height, Placement);

	// 2. On the other side when there is no room here but there is over there.
	const float Below = Anchor.Bottom + PopupGap;
	const float Above = Anchor.Top - PopupGap - Height;
	const float LeftOf = Anchor.Left - PopupGap - Width;
	if (Place.bVertical && Place.Y == Below && Below + Height > WindowHeight && Above >= 0.0f)
	{
		Place.Y = Above;
	}
	else if (Place.bVertical && Place.Y == Above && Above < 0.0f && Below + Height <= WindowHeight)
	{
		Place.Y = Below;
	}
	else if (Placement == MenuPlacement_MenuRight && Place.X + Width > WindowWidth && LeftOf >= 0.0f)
	{
		Place.X = LeftOf;
	}
	else if (Placement == MenuPlacement_MenuRight && Place.X + Width > WindowWidth)
	{
		// No room on either side: not over the row, where the click that opens a sub-menu would pick its first entry.
		Place.Y = Below + Height <= WindowHeight || Above < 0.0f ? Below : Above;
	}

	// 3. Inside the window at any price: what cannot be seen cannot be picked.
	const float X = FMath::Max(FMath::Min(Place.X, WindowWidth - Width), 0.0f);
	const float Y = FMath::Max(FMath::Min(Place.Y, WindowHeight - Height), 0.0f);
	return FSlateRect(X, Y, X + FMath::Min(Width, WindowWidth), Y + FMath::Min(Height, WindowHeight));
}

FLayerStack::FLayerStack()
	: Content(SNullWidget::GetNullWidget())
{
}

FLayerStack::~FLayerStack() = default;

FGeometry FLayerStack::PlaceFloating(const SWidget& Widget, const FSlateRect& Rect, float Scale) const
{
	return FGeometry::MakeRoot(FVector2D(Rect.Width() / Scale, Rect.Height() / Scale),
		FVector2D(FMath::RoundToFloat(Rect.Left), FMath::RoundToFloat(Rect.Top)), Scale);
}

// The layers from bottom to top: content, windows, toasts, popups, tooltip. Each is measured and placed before the next
// one, since a popup stands beside an owner in a layer below. What the user has opened lies over what comes by itself.
void FLayerStack::Arrange(const FVector2D& PixelSize, float Scale)
{
	Layers.Reset();
	const FGeometry Whole = FGeometry::MakeRoot(PixelSize / static_cast<double>(Scale), FVector2D(0, 0), Scale);
	Content->SlatePrepass(Scale);
	Layers.Add({ Content, Whole, false, false });
	for (const FWindowLayer& Window : Windows)
	{
		Window.Frame->SlatePrepass(Scale);
		Layers.Add({ Window.Frame, Whole, Window.bModal, false });
	}
	if (Toasts)
	{
		Toasts->SlatePrepass(Scale);
		const FVector2D Size = Toasts->GetDesiredSize() * static_cast<double>(Scale);
		const FSlateRect Rect = FHostNotifications::PlaceStack(Size, PixelSize);
		Layers.Add({ Toasts.ToSharedRef(), PlaceFloating(*Toasts, Rect, Scale), false, false });
	}
	for (const TSharedRef<FPopup>& Popup : Popups)
	{
		const TSharedPtr<SWidget> Owner = Popup->Owner.Pin();
		if (!Popup->bOpen || !Owner)
		{
			continue;
		}
		Popup->Frame->SlatePrepass(Scale);
		const FVector2D Corner = Owner->GetCachedGeometry().GetAbsolutePosition();
		const FSlateRect& Relative = Popup->RelativeAnchor;
		FSlateRect Anchor(Relative.Left + static_cast<float>(Corner.X), Relative.Top + static_cast<float>(Corner.Y),
			Relative.Right + static_cast<float>(Corner.X), Relative.Bottom + static_cast<float>(Corner.Y));
		if (Popup->bFollowsOwnerSize)
		{
			Anchor = Owner->GetCachedGeometry().GetLayoutBoundingRect();
		}
		FVector2D Size = Popup->Frame->GetDesiredSize() * static_cast<double>(Scale);
		const bool bAboveOrBelow = Popup->Placement == MenuPlacement_AboveAnchor || Popup->Placement == MenuPlacement_BelowAnchor;
		if (bAboveOrBelow && Popup->OwnerPress == EHostOwnerPress::Reaches)
		{
			Size.Y = LimitHelpHeight(Size.Y, Anchor, PixelSize.Y, Scale);
		}
		Layers.Add({ Popup->Frame, PlaceFloating(*Popup->Frame, FPopup::PlacePopup(Anchor, Size, Popup->Placement, PixelSize), Scale),
			false, false });
	}
	if (ToolTip)
	{
		ToolTip->SlatePrepass(Scale);
		const FVector2D Size = ToolTip->GetDesiredSize() * static_cast<double>(Scale);
		Layers.Add({ ToolTip.ToSharedRef(), PlaceFloating(*ToolTip, PlaceToolTip(Size, PixelSize, Scale), Scale), false, true });
	}
}

// Below the pointer, far enough that the arrow does not cover it.
FSlateRect FLayerStack::PlaceToolTip(const FVector2D& Size, const FVector2D& PixelSize, float Scale) const
{
	static const FName MenuRow(TEXT("SMenuRow"));
	const TSharedPtr<SWidget> Owner = ToolTipOwner.Pin();
	const TSharedPtr<SWidget> List = FindList(Owner);
	if (Owner && (Owner->GetType() == MenuRow || List))
	{
		// Beside the menu or the list, so that it covers no other row.
		FSlateRect Row = Owner->GetCachedGeometry().GetLayoutBoundingRect();
		if (List)
		{
			const FSlateRect All = List->GetCachedGeometry().GetLayoutBoundingRect();
			Row = FSlateRect(All.Left, Row.Top, All.Right, Row.Bottom);
		}
		const float Outside = MenuToolTipGap * Scale;
		return FPopup::PlacePopup(
			FSlateRect(Row.Left - Outside, Row.Top + PopupGap, Row.Right + Outside, Row.Bottom), Size, MenuPlacement_MenuRight, PixelSize);
	}
	const float X = static_cast<float>(ToolTipPointer.X);
	const float Y = static_cast<float>(ToolTipPointer.Y);
	// The pointer's own place is the anchor, so that the tip moves above it when there is no room below.
	FSlateRect Anchor(X, Y - PopupGap, X, Y + ToolTipDrop * Scale - PopupGap);
	const FSlateRect Explained = Owner ? Owner->GetCachedGeometry().GetLayoutBoundingRect() : FSlateRect();
	if (Owner && Explained.ContainsPoint(ToolTipPointer) && Explained.Height() <= MaxClearHeight * Scale)
	{
		// What is no taller than some lines is not covered; of a page only the pointer's place is kept clear.
		Anchor.Top = FMath::Min(Anchor.Top, Explained.Top);
		Anchor.Bottom = FMath::Max(Anchor.Bottom, Explained.Bottom);
	}
	return FPopup::PlacePopup(Anchor, Size, MenuPlacement_BelowAnchor, PixelSize);
}

bool FLayerStack::NeedsPrepass() const
{
	for (const FLayer& Layer : Layers)
	{
		if (Layer.Root->NeedsPrepass())
		{
			return true;
		}
	}
	return false;
}

void FLayerStack::SetToolTip(const TSharedPtr<SWidget>& InToolTip, const FVector2D& Pointer, const TSharedPtr<SWidget>& Owner)
{
	ToolTip = InToolTip;
	ToolTipOwner = Owner;
	ToolTipPointer = Pointer;
}

void FLayerStack::AddWindow(const TSharedRef<SWindow>& Window, bool bModal)
{
	Windows.Add({ Window, SNew(SWindowFrame, Window, bModal), bModal });
}

TSharedPtr<SWindow> FLayerStack::GetTopWindow(bool bModalOnly) const
{
	for (int32 Index = Windows.Num() - 1; Index >= 0; --Index)
	{
		if (!bModalOnly || Windows[Index].bModal)
		{
			return Windows[Index].Window;
		}
	}
	return nullptr;
}

TArray<TSharedRef<SWindow>> FLayerStack::RemoveClosedWindows()
{
	TArray<TSharedRef<SWindow>> Removed;
	for (int32 Index = Windows.Num() - 1; Index >= 0; --Index)
	{
		if (Windows[Index].Window->IsDestroyRequested())
		{
			Removed.Add(Windows[Index].Window);
			Windows.RemoveAt(Index);
		}
	}
	return Removed;
}

bool FLayerStack::ContainsWindow(const TSharedRef<SWindow>& Window) const
{
	return Windows.ContainsByPredicate([&Window](const FWindowLayer& Layer) { return &Layer.Window.Get() == &Window.Get(); });
}

// Where keys go that no focused widget can take.
TSharedRef<SWidget> FLayerStack::GetInputRoot() const
{
	for (int32 Index = Windows.Num() - 1; Index >= 0; --Index)
	{
		if (Windows[Index].bModal)
		{
			return Windows[Index].Frame;
		}
	}
	return Content;
}

bool FLayerStack::IsLayerRoot(const SWidget& Root) const
{
	return &Content.Get() == &Root || Toasts.Get() == &Root ||
		Windows.ContainsByPredicate([&Root](const FWindowLayer& Layer) { return &Layer.Frame.Get() == &Root; }) ||
		Popups.ContainsByPredicate([&Root](const TSharedRef<FPopup>& Popup) { return Popup->bOpen && &Popup->Frame.Get() == &Root; });
}

// From the topmost window down: what lies under a modal one is out of reach.
bool FLayerStack::TakesKeyboard(const SWidget& Root) const
{
	for (int32 Index = Windows.Num() - 1; Index >= 0; --Index)
	{
		if (&Windows[Index].Frame.Get() == &Root)
		{
			return true;
		}
		if (Windows[Index].bModal)
		{
			// Popups and toasts lie over the windows.
			return &Content.Get() != &Root && IsLayerRoot(Root) &&
				!Windows.ContainsByPredicate([&Root](const FWindowLayer& Layer) { return &Layer.Frame.Get() == &Root; });
		}
	}
	return IsLayerRoot(Root);
}

// A popup lives no longer than what it belongs to is shown; and one that left the keyboard with its owner goes when the
// keyboard leaves both.
void FLayerStack::PrunePopups(double FrameTime)
{
	// Closing one may close others, so the list is walked as a copy.
	const TArray<TSharedRef<FPopup>> Open = Popups;
	for (const TSharedRef<FPopup>& Popup : Open)
	{
		const TSharedPtr<SWidget> Owner = Popup->Owner.Pin();
		bool bOwnerShown = Owner.IsValid();
		for (TSharedPtr<SWidget> Widget = Owner; Widget && bOwnerShown;)
		{
			// An owner may live on outside the window, such as in the tab behind.
			const TSharedPtr<SWidget> Parent = Widget->GetParentWidget();
			bOwnerShown = Widget->GetVisibility().IsVisible() && (Parent || IsLayerRoot(*Widget));
			Widget = Parent;
		}
		const bool bKeyboardLeft = bOwnerShown && Popup->bOwnerHasKeyboard && !HoldsKeyboard(*Owner) && !HoldsKeyboard(*Popup->Frame);
		if (!bOwnerShown || bKeyboardLeft)
		{
			Popup->Dismiss();
		}
	}
	Popups.RemoveAll([](const TSharedRef<FPopup>& Popup) { return !Popup->bOpen; });
}
