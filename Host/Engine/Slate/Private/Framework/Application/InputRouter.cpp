#include "InputRouter.h"

#include "HAL/PlatformTime.h"
#include "Host/HostClose.h"
#include "Host/HostFocus.h"
#include "Host/HostKeyWatch.h"
#include "LayerStack.h"
#include "Host/TabStops.h"

// Turns what the platform reports into calls of widgets. Presses and wheels go to what lies under the pointer, keys to
// what has the focus, both from the innermost widget outwards until one handles the event (bubbling); previews go the
// other way before. A widget that captured the mouse gets everything of it until it lets go.
//
// Handlers may do anything: open windows, move the focus, take widgets away. So a path holds its widgets alive, and
// nothing that was true before a call is taken for true after it.

namespace
{
	constexpr double DoubleClickSeconds = 0.4;
	constexpr double DoubleClickDistance = 4.0;
}

FInputRouter::FInputRouter(FLayerStack& InLayers, IHostWindow& InWindow)
	: Layers(InLayers)
	, Window(InWindow)
	, ToolTips(InLayers)
{
}

template <typename EventType>
FReply FInputRouter::Bubble(const FEventPath& Path, FReply (SWidget::*Handler)(const FGeometry&, const EventType&), const EventType& Event)
{
	for (int32 Index = Path.EnabledCount - 1; Index >= 0; --Index)
	{
		const FArrangedWidget& Target = Path.Widgets[Index];
		const FReply Reply = (Target.Widget.Get().*Handler)(Target.Geometry, Event);
		if (Reply.IsEventHandled())
		{
			return Reply;
		}
	}
	return FReply::Unhandled();
}

FEventPath FInputRouter::GetPathUnder(const FVector2D& Position) const
{
	return FEventPath::Under(Layers, Position, Window.GetPixelSize());
}

bool FInputRouter::IsReachable(const TSharedRef<SWidget>& Widget) const
{
	return Layers.TakesKeyboard(FEventPath::GetRootOf(Widget).Get());
}

TSharedPtr<SWidget> FInputRouter::GetReachableFocus() const
{
	const TSharedPtr<SWidget> Focused = FHostFocus::Get().Focused.Pin();
	return Focused && IsReachable(Focused.ToSharedRef()) ? Focused : nullptr;
}

// The way that a key goes.
FEventPath FInputRouter::GetFocusPath() const
{
	// Popups take the keyboard only when they asked for it.
	const TSharedPtr<SWidget> Focused = GetReachableFocus();
	return FEventPath::To(Focused ? Focused : Layers.GetInputRoot().ToSharedPtr());
}

FPointerEvent FInputRouter::MakePointerEvent(const FKey& Button, const FVector2D& Wheel) const
{
	return FPointerEvent(Pointer, LastPointer, Button, Wheel, Modifiers);
}

// A reply asks for changes of capture and focus. They are made when the event is over, so that handlers further out
// still see the state that the event came in.
void FInputRouter::ApplyReply(const FReply& Reply, const FEventPath& Path)
{
	if (Reply.ShouldReleaseMouse())
	{
		FHostFocus::Get().MouseCaptor.Reset();
	}
	if (Reply.GetMouseCaptor())
	{
		FHostFocus::Get().MouseCaptor = Reply.GetMouseCaptor();
	}
	if (Reply.ShouldReleaseUserFocus())
	{
		SetFocus(nullptr, EFocusCause::Cleared);
	}
	if (Reply.GetUserFocusRecepient())
	{
		SetFocus(Reply.GetUserFocusRecepient(), Reply.GetFocusCause());
	}
}

// 1. Previews, from outside in. 2. Handlers, from inside out. 3. What nobody took: Tab moves the focus, Escape closes a
// popup.
void FInputRouter::OnKeyDown(const FKey& Key, const FModifierKeysState& InModifiers, bool bRepeat)
{
	bActivity = true;
	Modifiers = InModifiers;
	if (FHostKeyWatch::TakesKey(Key, InModifiers, true))
	{
		return;
	}
	if (!Key.IsModifierKey())
	{
		CloseToolTip();
	}
	const FKeyEvent Event(Key, Modifiers, bRepeat);
	const FEventPath Path = GetFocusPath();
	for (int32 Index = 0; Index < Path.EnabledCount; ++Index)
	{
		const FArrangedWidget& Target = Path.Widgets[Index];
		const FReply Reply = Target.Widget->OnPreviewKeyDown(Target.Geometry, Event);
		if (Reply.IsEventHandled())
		{
			ApplyReply(Reply, Path);
			return;
		}
	}
	const FReply Reply = Bubble<FKeyEvent>(Path, &SWidget::OnKeyDown, Event);
	if (Reply.IsEventHandled())
	{
		ApplyReply(Reply, Path);
		return;
	}
	if (Key == EKeys::Tab && !Modifiers.IsControlDown() && !Modifiers.IsAltDown())
	{
		MoveFocusByTab(Modifiers.IsShiftDown());
	}
	else if (Key == EKeys::Escape && Layers.GetPopups().Num() > 0)
	{
		Layers.GetPopups().Last()->Dismiss();
	}
}

void FInputRouter::OnKeyUp(const FKey& Key, const FModifierKeysState& InModifiers)
{
	bActivity = true;
	Modifiers = InModifiers;
	if (FHostKeyWatch::TakesKey(Key, InModifiers, false))
	{
		return;
	}
	const FEventPath Path = GetFocusPath();
	ApplyReply(Bubble<FKeyEvent>(Path, &SWidget::OnKeyUp, FKeyEvent(Key, Modifiers)), Path);
}

void FInputRouter::OnTextInput(FStringView Text)
{
	bActivity = true;
	if (FHostKeyWatch::TakesText())
	{
		return;
	}
	const FEventPath Path = GetFocusPath();
	ApplyReply(Bubble<FCharacterEvent>(Path, &SWidget::OnKeyChar, FCharacterEvent(FString(Text), Modifiers)), Path);
}

void FInputRouter::OnPreedit(FStringView Text, int32 Cursor)
{
	bActivity = true;
	if (const TSharedPtr<SWidget> Focused = GetReachableFocus())
	{
		Focused->OnPreedit(Text, Cursor);
	}
}

// 1. What lies under the pointer now. 2. Leaving, from inside out. 3. Entering, from outside in.
bool FInputRouter::UpdateHover(const FPointerEvent& Event)
{
	bool bChanged = false;
	FEventPath Path;
	if (bPointerInside)
	{
		Path = GetPathUnder(Pointer);
	}
	if (const TSharedPtr<SWidget> Captor = FHostFocus::Get().MouseCaptor.Pin())
	{
		// While captured only the captor and what holds it can be hovered, and only while the pointer is on the captor.
		const int32 Index =
			Path.Widgets.IndexOfByPredicate([&Captor](const FArrangedWidget& Entry) { return &Entry.Widget.Get() == Captor.Get(); });
		Path.Shorten(Index + 1);
	}
	const TArray<TWeakPtr<SWidget>> Before = Hovered;
	Hovered.Reset();
	for (const FArrangedWidget& Entry : Path.Widgets)
	{
		Hovered.Add(TWeakPtr<SWidget>(Entry.Widget));
	}
	for (int32 Index = Before.Num() - 1; Index >= 0; --Index)
	{
		const TSharedPtr<SWidget> Widget = Before[Index].Pin();
		if (Widget &&
			!Path.Widgets.ContainsByPredicate([&Widget](const FArrangedWidget& Entry) { return &Entry.Widget.Get() == Widget.Get(); }))
		{
			bChanged = true;
			Widget->bIsHovered = false;
			Widget->bIsDirectlyHovered = false;
			Widget->OnMouseLeave(Event);
		}
	}
	for (int32 Index = 0; Index < Path.Widgets.Num(); ++Index)
	{
		SWidget& Widget = Path.Widgets[Index].Widget.Get();
		Widget.bIsDirectlyHovered = Index == Path.Widgets.Num() - 1;
		if (!Widget.bIsHovered)
		{
			bChanged = true;
			Widget.bIsHovered = true;
			Widget.OnMouseEnter(Path.Widgets[Index].Geometry, Event);
		}
	}
	return bChanged;
}

void FInputRouter::OnMouseMove(const FVector2D& Position, const FModifierKeysState& InModifiers)
{
	bActivity = true;
	Modifiers = InModifiers;
	bPointerInside = true;
	LastPointer = Pointer;
	Pointer = Position;
	if (LastPointer != Pointer)
	{
		ToolTips.NoteRest(FPlatformTime::Seconds());
	}
	const FPointerEvent Event = MakePointerEvent(FKey());
	UpdateHover(Event);
	const FEventPath Path = GetPointerPath();
	ApplyReply(Bubble<FPointerEvent>(Path, &SWidget::OnMouseMove, Event), Path);
}

bool FInputRouter::DismissPopupsOutside(const FVector2D& Position)
{
	// A press closes the popups above the one that it lies in, or in whose owner the user works.
	bool bSwallowed = false;
	// A copy: closing one may run frames, which drop others from the list.
	const TArray<TSharedRef<FPopup>> Open = Layers.GetPopups();
	for (int32 Index = Open.Num() - 1; Index >= 0; --Index)
	{
		const TSharedRef<FPopup>& Popup = Open[Index];
		const TSharedPtr<SWidget> Owner = Popup->Owner.Pin();
		const bool bOnThisOwner = Owner && Owner->GetCachedGeometry().IsUnderLocation(Position);
		if (Popup->Frame->GetCachedGeometry().IsUnderLocation(Position) || (bOnThisOwner && Popup->OwnerPress == EHostOwnerPress::Reaches))
		{
			break;
		}
		bSwallowed = bSwallowed || (bOnThisOwner && Popup->OwnerPress == EHostOwnerPress::OnlyCloses);
		Popup->Dismiss();
	}
	return bSwallowed;
}

bool FInputRouter::TakeDoublePress(const FKey& Button, const FVector2D& Position)
{
	const double Now = FPlatformTime::Seconds();
	const FVector2D Moved = Position - LastPressPosition;
	const bool bDouble = LastPressButton == Button && LastPressTime >= 0.0 && Now - LastPressTime <= DoubleClickSeconds &&
		FMath::Abs(Moved.X) <= DoubleClickDistance && FMath::Abs(Moved.Y) <= DoubleClickDistance;
	LastPressButton = Button;
	LastPressPosition = Position;
	// A third press is a single one again: widgets count it from the double click before it.
	LastPressTime = bDouble ? -1.0 : Now;
	return bDouble;
}

// 1. Popups outside of the press close; that may be all that it does. 2. Previews, then the double click, then the
// press. 3. The focus.
void FInputRouter::OnMouseDown(const FKey& Button, const FVector2D& Position, const FModifierKeysState& InModifiers)
{
	bActivity = true;
	Modifiers = InModifiers;
	bPointerInside = true;
	LastPointer = Pointer;
	Pointer = Position;
	bLeftDown = bLeftDown || Button == EKeys::LeftMouseButton;
	CloseToolTip();
	FHostFocus::Get().bShowRing = false;
	if (DismissPopupsOutside(Position))
	{
		LastPressTime = -1.0;
		return;
	}

	const FPointerEvent Event = MakePointerEvent(Button);
	UpdateHover(Event);
	const FEventPath Path = GetPathUnder(Pointer);
	const TWeakPtr<SWidget> FocusBefore = FHostFocus::Get().Focused;
	const bool bDouble = TakeDoublePress(Button, Position);
	FReply Reply = FReply::Unhandled();
	for (int32 Index = 0; Index < Path.EnabledCount && !Reply.IsEventHandled(); ++Index)
	{
		Reply = Path.Widgets[Index].Widget->OnPreviewMouseButtonDown(Path.Widgets[Index].Geometry, Event);
	}
	if (!Reply.IsEventHandled() && bDouble)
	{
		Reply = Bubble<FPointerEvent>(Path, &SWidget::OnMouseButtonDoubleClick, Event);
	}
	if (!Reply.IsEventHandled())
	{
		Reply = Bubble<FPointerEvent>(Path, &SWidget::OnMouseButtonDown, Event);
	}
	ApplyReply(Reply, Path);
	// A press focuses the innermost widget that takes the keyboard, unless its handler has moved the focus already.
	if (!Reply.GetUserFocusRecepient() && !Reply.ShouldReleaseUserFocus() && FocusBefore == FHostFocus::Get().Focused)
	{
		for (int32 Index = Path.EnabledCount - 1; Index >= 0; --Index)
		{
			if (Path.Widgets[Index].Widget->SupportsKeyboardFocus() && IsReachable(Path.Widgets[Index].Widget))
			{
				SetFocus(Path.Widgets[Index].Widget, EFocusCause::Mouse);
				break;
			}
		}
	}
}

// What has the capture gets the release even outside of itself: that is how a button tells a click from a change of
// mind.
void FInputRouter::OnMouseUp(const FKey& Button, const FVector2D& Position, const FModifierKeysState& InModifiers)
{
	bActivity = true;
	Modifiers = InModifiers;
	LastPointer = Pointer;
	Pointer = Position;
	const FPointerEvent Event = MakePointerEvent(Button);
	const TSharedPtr<SWidget> Captor = FHostFocus::Get().MouseCaptor.Pin();
	const FEventPath Path = GetPointerPath();
	if (Button == EKeys::LeftMouseButton)
	{
		bLeftDown = false;
	}
	ApplyReply(Bubble<FPointerEvent>(Path, &SWidget::OnMouseButtonUp, Event), Path);
	// A widget that forgot to let go must not keep the mouse for ever.
	if (Captor && FHostFocus::Get().MouseCaptor.HasSameObject(Captor.Get()) && !bLeftDown)
	{
		ReleaseCapture();
	}
	UpdateHover(Event);
}

void FInputRouter::OnMouseWheel(const FVector2D& Delta, const FVector2D& Position, const FModifierKeysState& InModifiers)
{
	bActivity = true;
	Modifiers = InModifiers;
	bPointerInside = true;
	Pointer = Position;
	CloseToolTip();
	const FEventPath Path = GetPathUnder(Pointer);
	ApplyReply(Bubble<FPointerEvent>(Path, &SWidget::OnMouseWheel, MakePointerEvent(FKey(), Delta)), Path);
}

void FInputRouter::CloseToolTip()
{
	ToolTips.Close(Pointer);
}

void FInputRouter::OnMouseLeave()
{
	bActivity = true;
	bPointerInside = false;
	CloseToolTip();
	UpdateHover(MakePointerEvent(FKey()));
}

void FInputRouter::OnWindowResized()
{
	bActivity = true;
	bExposed = true;
}

void FInputRouter::OnWindowActivated(bool bActive)
{
	bActivity = true;
	FHostFocus::Get().bWindowActive = bActive;
	if (!bActive)
	{
		Modifiers = FModifierKeysState();
	}
}

void FInputRouter::OnWindowExposed()
{
	bActivity = true;
	bExposed = true;
}

void FInputRouter::OnCloseRequested()
{
	bActivity = true;
	if (FHostClose::MayClose())
	{
		bExitRequested = true;
	}
}

// 1. The widget or the nearest around it that takes the keyboard. 2. Refused below a modal window. 3. The old one hears
// first, and the new one may pass the focus on.
bool FInputRouter::SetFocus(const TSharedPtr<SWidget>& Widget, EFocusCause Cause)
{
	TSharedPtr<SWidget> Target = Widget;
	while (Target && !Target->SupportsKeyboardFocus())
	{
		Target = Target->GetParentWidget();
	}
	if (Widget && !Target)
	{
		return false;
	}
	if (Target)
	{
		// What a modal window covers stays without the keyboard, whoever asks for it meanwhile.
		const TSharedRef<SWidget> Root = FEventPath::GetRootOf(Target.ToSharedRef());
		if (Layers.IsLayerRoot(Root.Get()) && !Layers.TakesKeyboard(Root.Get()))
		{
			return false;
		}
	}
	FHostFocus& Focus = FHostFocus::Get();
	Focus.bShowRing = Cause == EFocusCause::Navigation;
	const TSharedPtr<SWidget> Before = Focus.Focused.Pin();
	if (Before == Target)
	{
		return true;
	}
	bActivity = true;
	Focus.Focused = Target;
	const FFocusEvent Event(Cause);
	if (Before)
	{
		Before->OnFocusLost(Event);
	}
	if (Target && Focus.Focused.HasSameObject(Target.Get()))
	{
		const FReply Reply = Target->OnFocusReceived(Target->GetCachedGeometry(), Event);
		if (Reply.GetUserFocusRecepient() && Reply.GetUserFocusRecepient() != Target)
		{
			return SetFocus(Reply.GetUserFocusRecepient(), Cause);
		}
	}
	return true;
}

bool FInputRouter::FocusFirstBelow(const TSharedRef<SWidget>& Root)
{
	TArray<TSharedRef<SWidget>> All;
	TabStops::Collect(Root, All);
	return All.Num() > 0 && SetFocus(All[0], EFocusCause::Navigation);
}

void FInputRouter::ReleaseCapture()
{
	const TSharedPtr<SWidget> Captor = FHostFocus::Get().MouseCaptor.Pin();
	FHostFocus::Get().MouseCaptor.Reset();
	if (Captor)
	{
		Captor->OnMouseCaptureLost();
	}
}

// Within the popup that has the keyboard, else within the window that takes input; around the end.
void FInputRouter::MoveFocusByTab(bool bBackward)
{
	TSharedRef<SWidget> Root = Layers.GetInputRoot();
	const TSharedPtr<SWidget> Focused = GetReachableFocus();
	for (const TSharedRef<FPopup>& Popup : Layers.GetPopups())
	{
		if (Focused && (Popup->Frame->HasFocusedDescendants() || Popup->Frame->HasKeyboardFocus()))
		{
			Root = Popup->Frame;
		}
	}
	TArray<TSharedRef<SWidget>> All;
	TabStops::Collect(Root, All);
	if (All.Num() == 0)
	{
		return;
	}
	int32 Index = All.IndexOfByPredicate([&Focused](const TSharedRef<SWidget>& Widget)
		{ return Focused && (&Widget.Get() == Focused.Get() || Widget->HasFocusedDescendants()); });
	// The innermost match counts: an outer stop may hold the focused one.
	for (int32 Other = Index + 1; Focused && Other < All.Num(); ++Other)
	{
		if (&All[Other].Get() == Focused.Get() || All[Other]->HasFocusedDescendants())
		{
			Index = Other;
		}
	}
	const int32 Count = All.Num();
	Index = Index == INDEX_NONE ? (bBackward ? Count - 1 : 0) : (Index + (bBackward ? Count - 1 : 1)) % Count;
	SetFocus(All[Index], EFocusCause::Navigation);
	TabStops::BringIntoView(All[Index]);
	FHostFocus::Get().bShowRing = true;
	TabLanding = All[Index];
	bTabBackward = bBackward;
	TabStepsLeft = Count;
}

// What is cut away cannot be looked at; whoever worked there would not see what becomes of it. A row may move for the one that
// has the keyboard, though, so that only the layout after the step tells what stays hidden.
void FInputRouter::LeaveHiddenStop()
{
	const TSharedPtr<SWidget> Landing = TabLanding.Pin();
	TabLanding.Reset();
	const bool bIsThere = Landing && (Landing->HasKeyboardFocus() || Landing->HasFocusedDescendants());
	if (!bIsThere || TabStepsLeft <= 0 || TabStops::CanBeSeen(Landing.ToSharedRef()))
	{
		return;
	}
	// All of them may be hidden: once around is enough.
	const int32 Left = TabStepsLeft - 1;
	MoveFocusByTab(bTabBackward);
	TabStepsLeft = Left;
	bActivity = true;
}

FEventPath FInputRouter::GetPointerPath() const
{
	const TSharedPtr<SWidget> Captor = FHostFocus::Get().MouseCaptor.Pin();
	return Captor ? FEventPath::To(Captor) : GetPathUnder(Pointer);
}

EMouseCursor::Type FInputRouter::QueryCursor() const
{
	if (!bPointerInside)
	{
		return EMouseCursor::Default;
	}
	const FEventPath Path = GetPointerPath();
	const FPointerEvent Event = MakePointerEvent(FKey());
	for (int32 Index = Path.EnabledCount - 1; Index >= 0; --Index)
	{
		const FCursorReply Reply = Path.Widgets[Index].Widget->OnCursorQuery(Path.Widgets[Index].Geometry, Event);
		if (Reply.IsEventHandled())
		{
			return Reply.GetCursorType();
		}
	}
	return EMouseCursor::Default;
}

// After layout, since widgets move under a pointer that rests.
void FInputRouter::Update(double Now)
{
	LeaveHiddenStop();
	if (UpdateHover(MakePointerEvent(FKey())))
	{
		// What moved under the resting pointer looks otherwise now.
		bActivity = true;
	}
	if (ToolTips.Update(Now, Hovered, Pointer, bPointerInside && !bLeftDown))
	{
		bActivity = true;
	}

	const EMouseCursor::Type Wanted = QueryCursor();
	if (Wanted != LastCursor)
	{
		LastCursor = Wanted;
		Window.SetCursor(Wanted);
	}

	FSlateRect CaretArea;
	const TSharedPtr<SWidget> Focused = GetReachableFocus();
	const bool bWantsText = Focused && Focused->GetTextInputArea(CaretArea);
	if (bWantsText != bTextInputOpen || (bWantsText && CaretArea != LastCaretArea))
	{
		bTextInputOpen = bWantsText;
		LastCaretArea = CaretArea;
		Window.SetTextInput(bWantsText, CaretArea);
	}
}

bool FInputRouter::TakeActivity()
{
	const bool bWas = bActivity;
	bActivity = false;
	return bWas;
}

bool FInputRouter::TakeExposed()
{
	const bool bWas = bExposed;
	bExposed = false;
	return bWas;
}
