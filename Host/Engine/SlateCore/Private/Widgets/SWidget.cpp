#include "Widgets/SWidget.h"

#include "HAL/PlatformTime.h"
#include "Host/HostFocus.h"
#include "Host/HostSleep.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/IToolTip.h"

// How a frame stays cheap. A window with a long conversation has tens of thousands of widgets, and nearly all of them
// are the same as in the frame before. Three marks say which are not:
//
// - bNeedsPrepass: this widget itself changed and has to be measured.
// - bDescendantNeedsPrepass: one below it changed; the way there is marked up to the root.
// - SizeBindingCount: how many widgets here and below have a size that hangs on a bound function. Nobody says when such
// a function would give another value, so these are asked in every frame.
//
// A subtree without any of the three is neither walked nor measured. Panels with many children go further and keep a
// list of those that changed (WatchChildren, OnChildChanged).
//
// What few widgets have (tooltips, cursors, timers, bound visibility) lies in FRareState, which is made at need: a text
// block is the most frequent widget by far and has none of it.

namespace
{
	float CurrentLayoutScale = 1.0f;
	FWidgetCounters WidgetCounters;
}

SWidget::SWidget() = default;

SWidget::~SWidget()
{
	if (FHostFocus::Get().MouseCaptor.HasSameObject(this))
	{
		FHostFocus::Get().MouseCaptor.Reset();
	}
	if (Rare)
	{
		// Somebody may hold a handle longer than the widget lives.
		for (const TSharedRef<FActiveTimerHandle>& Timer : Rare->ActiveTimers)
		{
			FHostSleep::RemoveTimer(Timer.Get());
		}
	}
}

// Made at the first use; what only reads looks at Rare itself, so that a question never costs memory.
SWidget::FRareState& SWidget::GetRareState()
{
	if (!Rare)
	{
		Rare = MakeUnique<FRareState>();
	}
	return *Rare;
}

void SWidget::SWidgetConstruct(const FSlateBaseNamedArgs& Args)
{
	SetVisibility(Args._Visibility);
	SetEnabled(Args._IsEnabled);
	if (Args._ToolTipText.IsSet())
	{
		SetToolTipText(Args._ToolTipText);
	}
	if (Args._ToolTip)
	{
		SetToolTip(Args._ToolTip);
	}
	if (Args._Cursor.IsSet())
	{
		SetCursor(Args._Cursor);
	}
	RenderOpacity = Args._RenderOpacity;
	if (Args._bClippingSet)
	{
		Clipping = Args._Clipping;
	}
	if (!Args._Tag.IsNone())
	{
		Tag = Args._Tag;
	}
}

FReply SWidget::OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnKeyUp(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnPreviewMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FReply::Unhandled();
}

FReply SWidget::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return FReply::Unhandled();
}

void SWidget::OnMouseEnter(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) {}

void SWidget::OnMouseLeave(const FPointerEvent& MouseEvent) {}

void SWidget::OnMouseCaptureLost() {}

FCursorReply SWidget::OnCursorQuery(const FGeometry& MyGeometry, const FPointerEvent& CursorEvent) const
{
	if (!Rare)
	{
		return FCursorReply::Unhandled();
	}
	const TOptional<EMouseCursor::Type> Wanted = Rare->Cursor.Get();
	return Wanted.IsSet() ? FCursorReply::Cursor(Wanted.GetValue()) : FCursorReply::Unhandled();
}

FReply SWidget::OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent)
{
	return FReply::Unhandled();
}

void SWidget::OnFocusLost(const FFocusEvent& InFocusEvent) {}

bool SWidget::SupportsKeyboardFocus() const
{
	return false;
}

bool SWidget::OnPreedit(FStringView Text, int32 Cursor)
{
	return false;
}

bool SWidget::GetTextInputArea(FSlateRect& OutCaret) const
{
	return false;
}

void SWidget::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) {}

// Measures from the leaves up. A widget that is measured in the middle of a frame by somebody else is not measured again
// by its parent, since its marks are gone then.
void SWidget::SlatePrepass(float LayoutScale)
{
	if (!NeedsPrepass() && SizeBindingCount == 0 && MeasuredScale == LayoutScale)
	{
		return;
	}
	++WidgetCounters.Measured;
	const bool bOwnChange = bNeedsPrepass || MeasuredScale != LayoutScale;
	// Cleared first: what is set while measuring asks for another round.
	bNeedsPrepass = false;
	bDescendantNeedsPrepass = false;
	MeasuredScale = LayoutScale;
	PrepassChildren(LayoutScale, bOwnChange);
	DesiredSize = ComputeDesiredSize(LayoutScale);
}

void SWidget::PrepassChildren(float LayoutScale, bool bOwnChange)
{
	FChildren& Children = *GetChildren();
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		SWidget& Child = Children.GetChildRefAt(Index);
		if (!Child.GetVisibility().IsCollapsed())
		{
			Child.SlatePrepass(LayoutScale);
		}
	}
}

// Kept from the last prepass.
const FVector2D& SWidget::GetDesiredSize() const
{
	// A child that was made or set since the prepass is measured where it is met.
	if (NeedsPrepass())
	{
		const_cast<SWidget*>(this)->SlatePrepass(MeasuredScale > 0.0f ? MeasuredScale : CurrentLayoutScale);
	}
	return DesiredSize;
}

void SWidget::ArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	OnArrangeChildren(AllottedGeometry, ArrangedChildren);
}

int32 SWidget::Paint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	// 1. The place is noted even for what paints nothing: hit tests and tooltips go by it.
	CachedGeometry = AllottedGeometry;
	// 2. Work per frame comes before painting, so that what it changes is seen in this frame. Only widgets that are
	// painted tick.
	if (Args.ShouldTick())
	{
		SWidget* MutableThis = const_cast<SWidget*>(this);
		if (bCanTick)
		{
			++WidgetCounters.Ticked;
			MutableThis->Tick(AllottedGeometry, Args.GetCurrentTime(), Args.GetDeltaTime());
		}
		if (Rare && Rare->ActiveTimers.Num() > 0)
		{
			MutableThis->RunActiveTimers(Args.GetCurrentTime());
		}
	}
	// 3. Opacity multiplies down the tree; so does the style that carries it.
	++WidgetCounters.Painted;

	FWidgetStyle Style = InWidgetStyle;
	if (RenderOpacity != 1.0f)
	{
		Style.BlendOpacity(RenderOpacity);
	}
	const bool bClip = Clipping != EWidgetClipping::Inherit && Clipping != EWidgetClipping::OnDemand;
	if (!bClip)
	{
		return OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, Style, bParentEnabled);
	}
	// 4. Whoever clips also culls: children see the smaller rectangle.
	OutDrawElements.PushClip(GetClipRect(AllottedGeometry));
	const FSlateRect InnerCulling = OutDrawElements.GetClip();
	const int32 Result = OnPaint(Args, AllottedGeometry, InnerCulling, OutDrawElements, LayerId, Style, bParentEnabled);
	OutDrawElements.PopClip();
	return Result;
}

int32 SWidget::PaintArrangedChildren(const FPaintArgs& Args, const FArrangedChildren& ArrangedChildren, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	int32 MaxLayer = LayerId;
	for (int32 Index = 0; Index < ArrangedChildren.Num(); ++Index)
	{
		const FArrangedWidget& Child = ArrangedChildren[Index];
		const FSlateRect Bounds = Child.Geometry.GetLayoutBoundingRect();
		const FSlateRect& Clip = OutDrawElements.GetClip();
		// Edges count: a widget without size at a place in view still ticks.
		if (Bounds.Left <= Clip.Right && Bounds.Right >= Clip.Left && Bounds.Top <= Clip.Bottom && Bounds.Bottom >= Clip.Top)
		{
			MaxLayer = FMath::Max(MaxLayer,
				Child.Widget->Paint(Args, Child.Geometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled));
		}
	}
	return MaxLayer;
}

// Marks the way to the root. It goes on to the top although an ancestor may be marked already.
void SWidget::Invalidate(EInvalidateWidgetReason InvalidateReason)
{
	FHostSleep::NoteChange();
	if (InvalidateReason == EInvalidateWidgetReason::None || InvalidateReason == EInvalidateWidgetReason::Paint)
	{
		// Painting reads everything anew in each frame.
		return;
	}
	bNeedsPrepass = true;
	// To the very top: an ancestor may have been measured while this subtree was collapsed and kept its marks.
	SWidget* Child = this;
	for (SWidget* Parent = ParentWidget; Parent; Parent = Parent->ParentWidget)
	{
		Parent->bDescendantNeedsPrepass = true;
		if (Parent->bWatchesChildren)
		{
			Parent->OnChildChanged(*Child);
		}
		Child = Parent;
	}
}

void SWidget::OnChildChanged(SWidget& Child) {}

TSharedPtr<SWidget> SWidget::GetParentWidget() const
{
	return ParentWidget ? TSharedPtr<SWidget>(ParentWidget->AsShared()) : nullptr;
}

// A fixed visibility lies in the widget itself; a bound one goes to the rare state and is polled. Coming and going
// changes what the parents want, becoming merely hidden does not, but that difference is not worth a second path.
void SWidget::SetVisibility(TAttribute<EVisibility> InVisibility)
{
	FHostSleep::NoteChange();
	if (!InVisibility.IsBound() && !bVisibilityBound)
	{
		const EVisibility Wanted = InVisibility.Get();
		if (Visibility != Wanted)
		{
			Visibility = Wanted;
			Invalidate(EInvalidateWidgetReason::Layout);
		}
		return;
	}
	AssignSizeAttribute(GetRareState().Visibility, MoveTemp(InVisibility));
	bVisibilityBound = Rare->Visibility.IsBound();
	if (!bVisibilityBound)
	{
		Visibility = Rare->Visibility.Get();
	}
}

// Changes no size, so nothing is measured for it.
void SWidget::SetEnabled(TAttribute<bool> InEnabled)
{
	FHostSleep::NoteChange();
	bEnabledBound = InEnabled.IsBound();
	if (bEnabledBound)
	{
		GetRareState().Enabled = MoveTemp(InEnabled);
	}
	else
	{
		bEnabled = InEnabled.Get();
	}
}

void SWidget::SetToolTipText(const TAttribute<FText>& InToolTipText)
{
	GetRareState().ToolTipText = InToolTipText;
}

void SWidget::SetToolTip(const TSharedPtr<IToolTip>& InToolTip)
{
	GetRareState().ToolTip = InToolTip;
}

TSharedPtr<IToolTip> SWidget::GetToolTip()
{
	return Rare ? Rare->ToolTip : nullptr;
}

void SWidget::SetCursor(const TAttribute<TOptional<EMouseCursor::Type>>& InCursor)
{
	GetRareState().Cursor = InCursor;
}

void SWidget::SetRenderOpacity(float InOpacity)
{
	FHostSleep::NoteChange();
	RenderOpacity = InOpacity;
}

void SWidget::SetClipping(EWidgetClipping InClipping)
{
	Clipping = InClipping;
}

bool SWidget::HasKeyboardFocus() const
{
	return FHostFocus::Get().Focused.HasSameObject(this);
}

// From the focused widget up: the way to the root is short, the tree below is not.
bool SWidget::HasFocusedDescendants() const
{
	const TSharedPtr<SWidget> Focused = FHostFocus::Get().Focused.Pin();
	for (const SWidget* Widget = Focused ? Focused->ParentWidget : nullptr; Widget; Widget = Widget->ParentWidget)
	{
		if (Widget == this)
		{
			return true;
		}
	}
	return false;
}

bool SWidget::HasMouseCapture() const
{
	return FHostFocus::Get().MouseCaptor.HasSameObject(this);
}

bool SWidget::ShouldShowFocusRing() const
{
	// A window without the keyboard must not look as if it had it.
	return FHostFocus::Get().bShowRing && FHostFocus::Get().bWindowActive && HasKeyboardFocus();
}

// The timer lies with the widget, which calls it when it is painted, and with the host's sleep, which wakes for it.
TSharedRef<FActiveTimerHandle> SWidget::RegisterActiveTimer(float TickPeriod, FWidgetActiveTimerDelegate TickFunction)
{
	const double Now = FPlatformTime::Seconds();
	const TSharedRef<FActiveTimerHandle> Handle = MakeShared<FActiveTimerHandle>(TickPeriod, MoveTemp(TickFunction), Now + TickPeriod);
	Handle->LastTime = Now;
	GetRareState().ActiveTimers.Add(Handle);
	FHostSleep::AddTimer(Handle);
	return Handle;
}

void SWidget::UnRegisterActiveTimer(const TSharedRef<FActiveTimerHandle>& ActiveTimerHandle)
{
	if (!Rare)
	{
		return;
	}
	FHostSleep::RemoveTimer(ActiveTimerHandle.Get());
	Rare->ActiveTimers.RemoveAll(
		[&ActiveTimerHandle](const TSharedRef<FActiveTimerHandle>& Timer) { return &Timer.Get() == &ActiveTimerHandle.Get(); });
}

// A timer that is late is not called twice to catch up: its period begins anew with the call.
void SWidget::RunActiveTimers(double Now)
{
	// A copy: a timer may register or remove others.
	const TArray<TSharedRef<FActiveTimerHandle>> Due = Rare->ActiveTimers;
	for (const TSharedRef<FActiveTimerHandle>& Timer : Due)
	{
		if (Now < Timer->NextTime)
		{
			continue;
		}
		const float Elapsed = static_cast<float>(Now - Timer->LastTime);
		Timer->LastTime = Now;
		Timer->NextTime = Now + Timer->Period;
		if (!Timer->Function.IsBound() || Timer->Function.Execute(Now, Elapsed) == EActiveTimerReturnType::Stop)
		{
			UnRegisterActiveTimer(Timer);
		}
	}
}

FText SWidget::GetDisplayedText() const
{
	return FText::GetEmpty();
}

void SWidget::DescribeAccess(FHostAccess& Out) const {}

FReply SWidget::DoAccessAction()
{
	return FReply::Unhandled();
}

bool SWidget::SetAccessValue(double Value)
{
	return false;
}

void SWidget::SetLayoutScale(float Scale)
{
	CurrentLayoutScale = Scale;
}

float SWidget::GetLayoutScale()
{
	return CurrentLayoutScale;
}

FWidgetCounters& SWidget::GetCounters()
{
	return WidgetCounters;
}

void SWidget::NoteSizeBinding(bool bBound)
{
	ChangeSizeBindings(bBound ? 1 : -1);
}

// The counts of size bindings move with the subtree from the old parents to the new ones.
void SWidget::SetParent(SWidget* InParent)
{
	// The empty widget stands in many slots at once and belongs to none.
	if (this == &SNullWidget::GetNullWidget().Get())
	{
		return;
	}
	if (ParentWidget && SizeBindingCount != 0)
	{
		ParentWidget->ChangeSizeBindings(-SizeBindingCount);
	}
	ParentWidget = InParent;
	if (ParentWidget && SizeBindingCount != 0)
	{
		ParentWidget->ChangeSizeBindings(SizeBindingCount);
	}
}

// Counts add up to the root. A watching parent hears when a child gets its first such binding or loses its last, since
// it keeps a list of the children that it has to ask.
void SWidget::ChangeSizeBindings(int32 Delta)
{
	for (SWidget* Widget = this; Widget; Widget = Widget->ParentWidget)
	{
		const bool bHad = Widget->SizeBindingCount > 0;
		Widget->SizeBindingCount += Delta;
		if (Widget->ParentWidget && Widget->ParentWidget->bWatchesChildren && bHad != Widget->HasSizeBindings())
		{
			Widget->ParentWidget->OnChildChanged(*Widget);
		}
	}
}
