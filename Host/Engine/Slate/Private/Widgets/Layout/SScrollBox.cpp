#include "Widgets/Layout/SScrollBox.h"

#include "Framework/Application/SlateApplication.h"
#include "DescendantView.h"
#include "Layout/LayoutUtils.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SNullWidget.h"

// A box that scrolls long content without anything in view jumping. Content is measured late: rows out of view keep the
// length they had, and turn out longer or shorter when they come in. So the offset is not what is kept in place. What is
// kept is one child that was in view, the anchor, and its distance from the view's edge; when lengths change, the offset
// follows it. Four things can be held: the first child in view (the rule), for one frame the anchor of the user's own
// scrolling or an offset that was asked for, and the end, which is where a chat stays while it grows.
//
// One frame: PrepassChildren measures what changed, ComputeDesiredSize brings the starts in line (UpdateStarts),
// OnArrangeChildren fits the offset to the view (UpdateView) and places what is in it, OnPaint ends what held for one
// frame.

namespace
{
	constexpr double WheelNotch = 48.0;
	constexpr double ArrowStep = 24.0;
	/** Of a page, what stays in view when turning it. */
	constexpr double PageOverlap = 32.0;
	/** Content that is longer than its view by no more than this fits. */
	constexpr double ScrollTolerance = 0.01;
	constexpr uint8 PendingViewTries = 4;
	/** Stands for the frame to come. */
	constexpr uint64 NextFrame = ~uint64(0);
	bool bMeasureEverything = false;

	uint64 GetCurrentFrame()
	{
		return FSlateApplication::IsInitialized() ? FSlateApplication::Get().GetFrameStats().FrameCount : 0;
	}
}

int32 SScrollBox::FAllChildren::Num() const
{
	return Box.Slots.Num() + 1;
}

TSharedRef<SWidget> SScrollBox::FAllChildren::GetChildAt(int32 Index) const
{
	return Index < Box.Slots.Num() ? Box.Slots.GetChildAt(Index) : Box.BarSlot.GetWidget();
}

SWidget& SScrollBox::FAllChildren::GetChildRefAt(int32 Index) const
{
	return Index < Box.Slots.Num() ? Box.Slots.GetChildRefAt(Index) : Box.BarSlot.GetWidgetRef();
}

SScrollBox::SScrollBox()
	: Slots(this)
	, AllChildren(*this)
{
	SetCanTick(false);
	SetClipping(EWidgetClipping::ClipToBounds);
	BarSlot.SetOwner(this);
	WatchChildren();
}

void SScrollBox::Construct(const FArguments& InArgs)
{
	Orientation = InArgs._Orientation;
	ConsumeMouseWheel = InArgs._ConsumeMouseWheel;
	bBarAlwaysVisible = InArgs._ScrollBarAlwaysVisible;
	UserScrolledHandler = InArgs._OnUserScrolled;
	BarVisibility = InArgs._ScrollBarVisibility;
	Bar = SNew(SScrollBar)
			  .Style(InArgs._ScrollBarStyle)
			  .Orientation(Orientation)
			  .Room(static_cast<float>(Orientation == Orient_Vertical ? InArgs._ScrollBarThickness.X : InArgs._ScrollBarThickness.Y))
			  .OnUserScrolled(this, &SScrollBox::OnBarScrolled);
	BarSlot.AttachWidget(Bar.ToSharedRef());
	Slots.AddSlots(InArgs._Slots);
}

float SScrollBox::GetScrollOffsetOfEnd() const
{
	return static_cast<float>(GetEnd());
}

// Held as an offset until the frame that shows it; the bounds are known only then.
void SScrollBox::SetScrollOffset(float NewScrollOffset)
{
	Offset = FMath::Max(static_cast<double>(NewScrollOffset), 0.0);
	Hold = EHold::Offset;
	HoldFrame = NextFrame;
	PendingView.Reset();
}

void SScrollBox::ScrollToEnd()
{
	Hold = EHold::End;
	PendingView.Reset();
}

// The descendant may not be arranged yet, so it waits for painting, and is tried for some frames.
void SScrollBox::ScrollDescendantIntoView(
	const TSharedPtr<SWidget>& WidgetToScrollIntoView, bool bAnimateScroll, EDescendantScrollDestination Destination, float Padding)
{
	PendingView = WidgetToScrollIntoView;
	PendingDestination = Destination;
	PendingPadding = Padding;
	PendingTries = PendingViewTries;
}

// A hold is for the next frame until that one has begun.
bool SScrollBox::IsHoldFresh() const
{
	return HoldFrame == NextFrame || HoldFrame == GetCurrentFrame();
}

int32 SScrollBox::FindFirstInView() const
{
	return Kept.FindEndingAfter(Offset);
}

// The widget is kept beside its index: children may come before it.
void SScrollBox::PickAnchor(int32 Index) const
{
	if (Index < 0 || Index >= Slots.Num() || Index >= Kept.NumPlaced())
	{
		AnchorIndex = INDEX_NONE;
		AnchorWidget.Reset();
		return;
	}
	if (AnchorIndex != Index || !AnchorWidget.HasSameObject(&Slots.GetChildRefAt(Index)))
	{
		AnchorIndex = Index;
		AnchorWidget = Slots.GetChildAt(Index);
	}
	AnchorDistance = Kept.GetStart(Index) - Offset;
}

// Nearly always where it was; otherwise it is looked for among all.
int32 SScrollBox::FindAnchor() const
{
	const TSharedPtr<SWidget> Widget = AnchorWidget.Pin();
	if (!Widget)
	{
		return INDEX_NONE;
	}
	if (AnchorIndex >= 0 && AnchorIndex < Slots.Num() && &Slots.GetChildRefAt(AnchorIndex) == Widget.Get())
	{
		return AnchorIndex;
	}
	for (int32 Index = 0; Index < Slots.Num(); ++Index)
	{
		if (&Slots.GetChildRefAt(Index) == Widget.Get())
		{
			return Index;
		}
	}
	return INDEX_NONE;
}

void SScrollBox::SetMeasureEverything(bool bInMeasureEverything)
{
	bMeasureEverything = bInMeasureEverything;
	SBoxPanel::SetMeasureEverything(bInMeasureEverything);
}

// 1. The children that changed, or all after a change of the box itself. 2. Those in view. 3. Of the others whose size
// hangs on bound functions, as many as a frame can bear.
void SScrollBox::PrepassChildren(float LayoutScale, bool bOwnChange)
{
	Bar->SlatePrepass(LayoutScale);
	if (bOwnChange || bMeasureEverything || !TakeAppended())
	{
		if (!TakeChildren(LayoutScale))
		{
			return;
		}
	}
	else
	{
		for (const int32 Index : Kept.Watch.TakeChanged())
		{
			if (!MeasureChild(Index, LayoutScale))
			{
				return;
			}
		}
	}
	for (int32 Index = Kept.GetShownBegin(); Index < FMath::Min(Kept.GetShownEnd(), Kids.Num()); ++Index)
	{
		if (!MeasureChild(Index, LayoutScale))
		{
			return;
		}
	}
	Kept.MeasureInTurn(bMeasureEverything, [this, LayoutScale](int32 Index) { return MeasureChild(Index, LayoutScale); });
}

bool SScrollBox::TakeChildren(float LayoutScale)
{
	const int32 Count = Slots.Num();
	// Numbers first: a child may report a change while its elder siblings are measured.
	Kids.Reset(Count);
	Kept.SetCount(Count);
	Kept.Watch.Reset(Count);
	for (int32 Index = 0; Index < Count; ++Index)
	{
		SWidget& Child = Slots.GetChildRefAt(Index);
		Kids.Add(&Child);
		SetChildNumber(Child, Index);
		Kept.Watch.SetBound(Index, Child.HasSizeBindings());
	}
	for (int32 Index = 0; Index < Kids.Num(); ++Index)
	{
		if (bMeasureEverything || !Kids[Index]->IsMeasuredAt(LayoutScale))
		{
			if (!MeasureChild(Index, LayoutScale))
			{
				return false;
			}
		}
		else
		{
			TakeLength(Index);
		}
	}
	return true;
}

bool SScrollBox::TakeAppended()
{
	const int32 Known = Kids.Num();
	const int32 Count = Slots.Num();
	if (Known == Count)
	{
		return true;
	}
	if (Known == 0 || Count < Known || &Slots.GetChildRefAt(Known - 1) != Kids.Last())
	{
		return false;
	}
	for (int32 Index = Known; Index < Count; ++Index)
	{
		SWidget& Child = Slots.GetChildRefAt(Index);
		Kids.Add(&Child);
		SetChildNumber(Child, Index);
	}
	Kept.SetCount(Count);
	Kept.Watch.Grow(Count);
	return true;
}

void SScrollBox::OnChildChanged(SWidget& Child)
{
	// 1. The bar is measured in any case.
	if (&Child == Bar.Get())
	{
		return;
	}
	// 2. One that was taken. The empty widget may stand in several slots, so that its number says nothing.
	const int32 Index = GetChildNumber(Child);
	const bool bIsEmpty = &Child == &SNullWidget::GetNullWidget().Get();
	if (!bIsEmpty && Index >= 0 && Index < FMath::Min(Kids.Num(), Slots.Num()) && &Slots.GetChildRefAt(Index) == &Child &&
		Kids[Index] == &Child)
	{
		Kept.Watch.NoteChanged(Index);
		return;
	}
	// 3. One that came at the end will be taken in any case. Anything else means that slots are no longer what they were.
	bool bIsNew = Kids.Num() == 0;
	for (int32 New = Slots.Num() - 1; New >= Kids.Num() && !bIsNew; --New)
	{
		bIsNew = &Slots.GetChildRefAt(New) == &Child;
	}
	if (!bIsNew)
	{
		Kids.Reset();
	}
}

// Measuring calls bound functions, which may add or remove children.
bool SScrollBox::MeasureChild(int32 Index, float LayoutScale)
{
	const int32 Count = Slots.Num();
	if (Index >= Count || Count != Kids.Num())
	{
		return false;
	}
	if (!Kids[Index]->GetVisibility().IsCollapsed())
	{
		Kids[Index]->SlatePrepass(LayoutScale);
	}
	if (Slots.Num() != Count || Kids.Num() != Count)
	{
		return false;
	}
	Kept.Watch.SetBound(Index, Kids[Index]->HasSizeBindings());
	TakeLength(Index);
	return true;
}

void SScrollBox::TakeLength(int32 Index)
{
	SWidget& Child = *Kids[Index];
	double Length = 0.0;
	double Across = 0.0;
	if (!Child.GetVisibility().IsCollapsed())
	{
		const FVector2D Size = Child.GetDesiredSize() + Slots[Index].GetPadding().GetDesiredSize();
		Length = GetAlong(Size);
		Across = GetAcross(Size);
	}
	Kept.Keep(Index, Length, Across);
}

void SScrollBox::UpdateStarts() const
{
	// 1. A hold for one frame ends; from then on what the user saw last stays in place, which the old starts tell.
	if (Hold == EHold::Anchor && !IsHoldFresh())
	{
		Hold = EHold::FirstInView;
		if (Kept.NumPlaced() == Kept.Num())
		{
			PickAnchor(FindFirstInView());
		}
	}

	// 2. New starts.
	if (!Kept.Update())
	{
		return;
	}

	// 3. The offset goes along with the anchor. At the very start one looks at the start, not at a child.
	if ((Hold == EHold::FirstInView && Offset > 0.0) || Hold == EHold::Anchor)
	{
		const int32 Anchor = FindAnchor();
		if (Anchor != INDEX_NONE)
		{
			AnchorIndex = Anchor;
			Offset = Kept.GetStart(Anchor) - AnchorDistance;
		}
	}
}

void SScrollBox::UpdateView(const FVector2D& Size) const
{
	// 1. Whether there is a bar. It takes room from the children, so that they are measured again when it comes or goes.
	ViewLength = GetAlong(Size);
	if (Kept.NumPlaced() != Slots.Num())
	{
		// Children came or went since the last measuring; this measures them where they are met.
		GetDesiredSize();
	}
	const bool bMayShow = !BarVisibility.IsSet() || BarVisibility.Get().IsVisible();
	bBarShown = bMayShow && (bBarAlwaysVisible || GetContentLength() > ViewLength + ScrollTolerance);
	if (bBarShown != bBarMeasured)
	{
		const_cast<SScrollBox*>(this)->Invalidate(EInvalidateWidgetReason::Layout);
	}

	// 2. The offset within its bounds.
	const double End = GetEnd();
	Offset = Hold == EHold::End ? End : FMath::Clamp(Offset, 0.0, End);
	if (Hold == EHold::Offset && !IsHoldFresh())
	{
		Hold = EHold::FirstInView;
	}

	// 3. The child that keeps its place from here on.
	UpdateAnchor();

	// 4. The bar.
	const double Length = GetContentLength();
	Bar->SetState(Length > 0.0 ? static_cast<float>(Offset / Length) : 0.0f,
		Length > ViewLength + ScrollTolerance ? static_cast<float>(ViewLength / Length) : 1.0f);
}

void SScrollBox::UpdateAnchor() const
{
	const int32 Anchor = Hold == EHold::Anchor ? FindAnchor() : INDEX_NONE;
	if (Anchor == INDEX_NONE || Kept.GetEnd(Anchor) <= Offset)
	{
		PickAnchor(FindFirstInView());
	}
	else if (Kept.GetStart(Anchor) >= Offset + ViewLength)
	{
		// Scrolled up by more than a view: the last child in view lies closest to what was seen before.
		PickAnchor(Kept.FindStartingFrom(Offset + ViewLength) - 1);
	}
	else
	{
		PickAnchor(Anchor);
	}
}

FVector2D SScrollBox::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	UpdateStarts();
	bBarMeasured = bBarShown;
	const double Across = Kept.GetMaxAcross() + (bBarShown ? Bar->GetRoom() : 0.0f);
	return Orientation == Orient_Vertical ? FVector2D(Across, GetContentLength()) : FVector2D(GetContentLength(), Across);
}

float SScrollBox::GetChildAcross(const FGeometry& AllottedGeometry) const
{
	return static_cast<float>(FMath::Max(GetAcross(AllottedGeometry.GetLocalSize()) - (bBarShown ? Bar->GetRoom() : 0.0f), 0.0));
}

// The offset in whole pixels is the same for all children.
FGeometry SScrollBox::PlaceChild(const FGeometry& AllottedGeometry, int32 Index) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	// Whole pixels, so that text and boxes move together.
	const double Scale = AllottedGeometry.GetAccumulatedScale();
	const double Along = Kept.GetStart(Index) - FMath::RoundToFloat(Offset * Scale) / Scale;
	const float Across = GetChildAcross(AllottedGeometry);
	const float Length = static_cast<float>(Kept.GetLength(Index));
	const FSlot& Slot = Slots[Index];
	const FVector2D& Desired = Slot.GetWidgetRef().GetDesiredSize();
	const FMargin Padding = Slot.GetPadding();
	const FAlignedAxis X = AlignChild(Slot.GetHorizontalAlignment(), bVertical ? Across : Length, static_cast<float>(Desired.X), Padding);
	const FAlignedAxis Y = AlignChild(Slot.GetVerticalAlignment(), bVertical ? Length : Across, static_cast<float>(Desired.Y), Padding);
	const FVector2D Position = bVertical ? FVector2D(X.Offset, Along + Y.Offset) : FVector2D(Along + X.Offset, Y.Offset);
	return AllottedGeometry.MakeChild(Position, FVector2D(X.Size, Y.Size));
}

void SScrollBox::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	UpdateView(Size);
	const int32 Count = Kept.NumPlaced();
	const double ViewEnd = Offset + ViewLength;
	// At the view's very edges only a child without length counts: it may have work to do in its tick.
	const int32 First = Kept.FindEndingFrom(Offset);
	int32 Index = First;
	for (; Index < Count && Kept.GetStart(Index) <= ViewEnd; ++Index)
	{
		if ((Kept.GetEnd(Index) <= Offset || Kept.GetStart(Index) >= ViewEnd) && Kept.GetLength(Index) > 0.0)
		{
			continue;
		}
		const TSharedRef<SWidget>& Widget = Slots[Index].GetWidget();
		const EVisibility Visibility = Widget->GetVisibility();
		if (!Visibility.IsCollapsed())
		{
			ArrangedChildren.AddWidget(Visibility, FArrangedWidget(Widget, PlaceChild(AllottedGeometry, Index)));
		}
	}
	Kept.SetShown(First, Index);
	if (bBarShown)
	{
		const bool bVertical = Orientation == Orient_Vertical;
		const double Across = GetChildAcross(AllottedGeometry);
		const double Room = Bar->GetRoom();
		const FVector2D BarCorner = bVertical ? FVector2D(Across, 0.0) : FVector2D(0.0, Across);
		const FVector2D BarSize = bVertical ? FVector2D(Room, Size.Y) : FVector2D(Size.X, Room);
		ArrangedChildren.AddWidget(FArrangedWidget(BarSlot.GetWidget(), AllottedGeometry.MakeChild(BarCorner, BarSize)));
	}
}

int32 SScrollBox::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	if (HoldFrame == NextFrame)
	{
		HoldFrame = GetCurrentFrame();
	}
	const int32 Result = SPanel::OnPaint(Args, AllottedGeometry, MyCullingRect, OutDrawElements, LayerId, InWidgetStyle, bParentEnabled);
	if (PendingTries > 0)
	{
		SettlePendingView(AllottedGeometry);
	}
	return Result;
}

void SScrollBox::SettlePendingView(const FGeometry& AllottedGeometry) const
{
	// 1. The way from the widget up to the child of this box that holds it.
	--PendingTries;
	TArray<TSharedPtr<SWidget>> Path;
	for (TSharedPtr<SWidget> Step = PendingView.Pin(); Step && Step.Get() != this; Step = Step->GetParentWidget())
	{
		Path.Add(Step);
	}
	int32 Index = INDEX_NONE;
	for (int32 Candidate = 0; Path.Num() > 0 && Candidate < Slots.Num() && Index == INDEX_NONE; ++Candidate)
	{
		Index = &Slots.GetChildRefAt(Candidate) == Path.Last().Get() ? Candidate : INDEX_NONE;
	}
	if (Index == INDEX_NONE)
	{
		PendingTries = 0;
		return;
	}

	// 2. Where it stands in the content, and the offset that shows it there.
	const FGeometry Place = DescendantView::ArrangeDown(Path, PlaceChild(AllottedGeometry, Index));
	const double Distance =
		GetAlong(Place.GetAbsolutePosition() - AllottedGeometry.GetAbsolutePosition()) / AllottedGeometry.GetAccumulatedScale();
	const double Length = GetAlong(Place.GetLocalSize()) + PendingPadding * 2.0;
	const double Wanted = FMath::Clamp(
		DescendantView::GetOffset(PendingDestination, Offset + Distance - PendingPadding, Length, Offset, ViewLength), 0.0, GetEnd());
	if (FMath::Abs(Wanted - Offset) <= ScrollTolerance)
	{
		PendingTries = 0;
		return;
	}

	// 3. Rows that come into view may turn out longer than thought, so another frame looks again.
	Offset = Wanted;
	Hold = EHold::Offset;
	HoldFrame = GetCurrentFrame();
	const_cast<SScrollBox*>(this)->Invalidate(EInvalidateWidgetReason::Layout);
}

// The anchor moves along with the content, so its distance changes by as much.
bool SScrollBox::ScrollByUser(double Distance)
{
	const double Target = FMath::Clamp(Offset + Distance, 0.0, GetEnd());
	if (FMath::Abs(Target - Offset) <= ScrollTolerance)
	{
		return false;
	}
	AnchorDistance -= Target - Offset;
	Offset = Target;
	Hold = EHold::Anchor;
	HoldFrame = NextFrame;
	PendingView.Reset();
	UserScrolledHandler.ExecuteIfBound(static_cast<float>(Offset));
	return true;
}

void SScrollBox::OnBarScrolled(float OffsetFraction)
{
	SetScrollOffset(static_cast<float>(FMath::Min(OffsetFraction * GetContentLength(), GetEnd())));
	UserScrolledHandler.ExecuteIfBound(static_cast<float>(Offset));
}

// What cannot scroll any further leaves the wheel to the box around it, unless it was set otherwise.
FReply SScrollBox::OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (ConsumeMouseWheel == EConsumeMouseWheel::Never)
	{
		return FReply::Unhandled();
	}
	const FVector2D& Wheel = MouseEvent.GetWheelDelta2D();
	const bool bSideways = MouseEvent.IsShiftDown();
	// A plain wheel over a row belongs to the column around it.
	const double Notches = Orientation == Orient_Vertical ? (bSideways ? 0.0 : -Wheel.Y)
		: Wheel.X != 0.0								  ? Wheel.X
		: bSideways										  ? -Wheel.Y
														  : 0.0;
	if (Notches == 0.0)
	{
		return FReply::Unhandled();
	}
	const bool bMoved = ScrollByUser(Notches * WheelNotch);
	return bMoved || ConsumeMouseWheel == EConsumeMouseWheel::Always ? FReply::Handled() : FReply::Unhandled();
}

FReply SScrollBox::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (InKeyEvent.GetModifierKeys().AnyModifiersDown())
	{
		return FReply::Unhandled();
	}
	const FKey Key = InKeyEvent.GetKey();
	const bool bVertical = Orientation == Orient_Vertical;
	const double Page = FMath::Max(ViewLength - PageOverlap, ViewLength * 0.5);
	bool bMoved = false;
	if (Key == (bVertical ? EKeys::Up : EKeys::Left))
	{
		bMoved = ScrollByUser(-ArrowStep);
	}
	else if (Key == (bVertical ? EKeys::Down : EKeys::Right))
	{
		bMoved = ScrollByUser(ArrowStep);
	}
	else if (Key == EKeys::PageUp)
	{
		bMoved = bVertical && ScrollByUser(-Page);
	}
	else if (Key == EKeys::PageDown)
	{
		bMoved = bVertical && ScrollByUser(Page);
	}
	else if (Key == EKeys::Home)
	{
		bMoved = bVertical && ScrollByUser(-GetContentLength());
	}
	else if (Key == EKeys::End && bVertical)
	{
		bMoved = ScrollByUser(GetContentLength());
		if (bMoved)
		{
			// The end stays the end while rows that come into view turn out longer.
			ScrollToEnd();
		}
	}
	return bMoved ? FReply::Handled() : FReply::Unhandled();
}
