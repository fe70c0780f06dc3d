#include "Widgets/Layout/SSplitter.h"

#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"

// Slots share the room by value; handles between them move value from one neighbour to the other. Values, not sizes, are
// what is kept, so that a layout survives another window size. All parts of a layout are computed anew for each question
// (LayOut): splitters have two or three slots, and what is not kept cannot be stale.

SSplitter::FSlotArguments& SSplitter::FSlotArguments::Value(TAttribute<float> InValue)
{
	_Value = MoveTemp(InValue);
	return *this;
}

SSplitter::FSlotArguments& SSplitter::FSlotArguments::MinSize(TAttribute<float> InMinSize)
{
	_MinSize = MoveTemp(InMinSize);
	return *this;
}

SSplitter::FSlotArguments& SSplitter::FSlotArguments::SizeRule(TAttribute<ESizeRule> InSizeRule)
{
	_SizeRule = MoveTemp(InSizeRule);
	return *this;
}

SSplitter::FSlotArguments& SSplitter::FSlotArguments::Resizable(TAttribute<bool> bInResizable)
{
	_Resizable = MoveTemp(bInResizable);
	return *this;
}

void SSplitter::FSlot::Construct(const FSlotArguments& Arguments)
{
	Value = Arguments._Value;
	MinSize = Arguments._MinSize;
	SizeRule = Arguments._SizeRule;
	Resizable = Arguments._Resizable;
	// The values share out what is given; only the minimum is part of what is wanted.
	NoteBinding(MinSize.IsBound());
	if (Arguments._Child)
	{
		AttachWidget(Arguments._Child.ToSharedRef());
	}
	InvalidateLayout();
}

void SSplitter::FSlot::Resize(float NewValue)
{
	Value = NewValue;
}

SSplitter::SSplitter()
	: Children(this)
{
	SetCanTick(false);
}

void SSplitter::Construct(const FArguments& InArgs)
{
	Orientation = InArgs._Orientation;
	HandleSize = FMath::Max(InArgs._PhysicalSplitterHandleSize, 0.0f);
	FinishedResizingHandler = InArgs._OnSplitterFinishedResizing;
	Children.AddSlots(InArgs._Slots);
}

// By value, minimum sizes first: a slot that would fall below its own is closed at it and the rest is shared anew. Each
// round closes one at least, so it ends.
void SSplitter::Share(FParts& Parts, float Room)
{
	float ValueSum = 0.0f;
	float MinSum = 0.0f;
	for (const FPart& Part : Parts)
	{
		ValueSum += Part.bShares ? Part.Value : 0.0f;
		MinSum += Part.bShares ? Part.MinSize : 0.0f;
	}
	Room = FMath::Max(Room, 0.0f);
	if (MinSum >= Room)
	{
		// Too narrow for all: everything stays in sight, smaller.
		for (FPart& Part : Parts)
		{
			Part.Size = Part.bShares ? (MinSum > 0.0f ? Room * Part.MinSize / MinSum : 0.0f) : Part.Size;
		}
		return;
	}
	for (bool bSettled = false; !bSettled;)
	{
		bSettled = true;
		float ClosedSize = 0.0f;
		float ClosedValue = 0.0f;
		for (FPart& Part : Parts)
		{
			if (!Part.bOpen)
			{
				continue;
			}
			Part.Size = ValueSum > 0.0f ? Room * Part.Value / ValueSum : 0.0f;
			if (Part.Size < Part.MinSize)
			{
				Part.Size = Part.MinSize;
				Part.bOpen = false;
				ClosedSize += Part.Size;
				ClosedValue += Part.Value;
				bSettled = false;
			}
		}
		Room = FMath::Max(Room - ClosedSize, 0.0f);
		ValueSum -= ClosedValue;
	}
}

// 1. Slots that take their desired size, and the handles, come off the room. 2. The others share what is left. 3. Edges
// are rounded one after the other from the exact sums, so that errors do not add up.
SSplitter::FParts SSplitter::LayOut(const FGeometry& Geometry) const
{
	FParts Parts;
	float Room = static_cast<float>(GetAlong(Geometry.GetLocalSize()));
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (Child.GetVisibility().IsCollapsed())
		{
			continue;
		}
		FPart Part;
		Part.Index = Index;
		Part.MinSize = Slot.GetMinSize();
		Part.bShares = Part.bOpen = Slot.GetSizeRule() == FractionOfParent;
		if (Part.bShares)
		{
			Part.Value = Slot.GetValue();
		}
		else
		{
			Part.Size = FMath::Max(static_cast<float>(GetAlong(Child.GetDesiredSize())), Part.MinSize);
			Room -= Part.Size;
		}
		Parts.Add(Part);
	}
	Room -= HandleSize * static_cast<float>(FMath::Max(Parts.Num() - 1, 0));
	Share(Parts, Room);
	// Edges stand on whole pixels, so that handles are equally sharp wherever they are dragged to.
	const float Scale = Geometry.GetAccumulatedScale();
	float Start = 0.0f;
	float Exact = 0.0f;
	for (int32 Number = 0; Number < Parts.Num(); ++Number)
	{
		FPart& Part = Parts[Number];
		Exact += Part.Size;
		const float End = Number + 1 < Parts.Num() ? FMath::RoundToFloat(Exact * Scale) / Scale : Exact;
		Part.Start = Start;
		Part.Size = FMath::Max(End - Start, 0.0f);
		Start = End + HandleSize;
		Exact += HandleSize;
	}
	return Parts;
}

FVector2D SSplitter::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	double Along = 0.0;
	double Across = 0.0;
	int32 Count = 0;
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (!Child.GetVisibility().IsCollapsed())
		{
			const FVector2D& Desired = Child.GetDesiredSize();
			Along += FMath::Max(GetAlong(Desired), static_cast<double>(Slot.GetMinSize()));
			Across = FMath::Max(Across, Orientation == Orient_Horizontal ? Desired.Y : Desired.X);
			++Count;
		}
	}
	return MakeVector(Along + HandleSize * FMath::Max(Count - 1, 0), Across);
}

void SSplitter::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const double Across = Orientation == Orient_Horizontal ? Size.Y : Size.X;
	for (const FPart& Part : LayOut(AllottedGeometry))
	{
		const TSharedRef<SWidget>& Child = Children[Part.Index].GetWidget();
		ArrangedChildren.AddWidget(Child->GetVisibility(),
			FArrangedWidget(Child, AllottedGeometry.MakeChild(MakeVector(Part.Start, 0.0), MakeVector(Part.Size, Across))));
	}
}

int32 SSplitter::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	FArrangedChildren Arranged(EVisibility::Visible, OutDrawElements.GetClip());
	ArrangeChildren(AllottedGeometry, Arranged);
	int32 MaxLayer = LayerId;
	for (int32 Index = 0; Index < Arranged.Num(); ++Index)
	{
		const FArrangedWidget& Child = Arranged[Index];
		OutDrawElements.PushClip(Child.Geometry.GetLayoutBoundingRect());
		const FSlateRect Culling = OutDrawElements.GetClip();
		MaxLayer =
			FMath::Max(MaxLayer, Child.Widget->Paint(Args, Child.Geometry, Culling, OutDrawElements, LayerId, InWidgetStyle, bEnabled));
		OutDrawElements.PopClip();
	}

	const int32 Handle = DraggedHandle != INDEX_NONE ? DraggedHandle : (IsDirectlyHovered() && bEnabled ? HoveredHandle : INDEX_NONE);
	const FParts Parts = Handle != INDEX_NONE ? LayOut(AllottedGeometry) : FParts();
	if (Handle != INDEX_NONE && Handle + 1 < Parts.Num())
	{
		constexpr float LineWidth = 2.0f;
		const FVector2D& Size = AllottedGeometry.GetLocalSize();
		const double Across = Orientation == Orient_Horizontal ? Size.Y : Size.X;
		const double Line = Parts[Handle].Start + Parts[Handle].Size + (HandleSize - LineWidth) * 0.5;
		FLinearColor Color = FAppStyle::GetColor("Colors.Accent") * InWidgetStyle.GetColorAndOpacityTint();
		Color.A *= DraggedHandle != INDEX_NONE ? 1.0f : 0.6f;
		OutDrawElements.AddBox(AllottedGeometry.ToDevice(MakeVector(Line, 0.0), MakeVector(LineWidth, Across)), Color.ToFColorSRGB());
	}
	return MaxLayer;
}

// A handle beside a slot that cannot be resized moves the next one that can.
bool SSplitter::FindResized(const FParts& Parts, int32 Handle, int32& OutBefore, int32& OutAfter) const
{
	OutBefore = Handle;
	while (OutBefore >= 0 && !Children[Parts[OutBefore].Index].CanBeResized())
	{
		--OutBefore;
	}
	OutAfter = Handle + 1;
	while (OutAfter < Parts.Num() && !Children[Parts[OutAfter].Index].CanBeResized())
	{
		++OutAfter;
	}
	return OutBefore >= 0 && OutAfter < Parts.Num();
}

int32 SSplitter::FindHandle(const FGeometry& Geometry, const FVector2D& Position) const
{
	const double Along = GetAlong(Geometry.AbsoluteToLocal(Position));
	const FParts Parts = LayOut(Geometry);
	for (int32 Handle = 0; Handle + 1 < Parts.Num(); ++Handle)
	{
		const double Start = Parts[Handle].Start + Parts[Handle].Size;
		int32 Before = 0;
		int32 After = 0;
		if (Along >= Start && Along < Start + HandleSize)
		{
			return FindResized(Parts, Handle, Before, After) ? Handle : INDEX_NONE;
		}
	}
	return INDEX_NONE;
}

// The pair as a whole keeps its size; nobody else moves.
void SSplitter::DragTo(const FGeometry& Geometry, double Along)
{
	FParts Parts = LayOut(Geometry);
	int32 Before = 0;
	int32 After = 0;
	// Children may have come, gone or collapsed while the handle is held.
	if (DraggedHandle + 1 >= Parts.Num() || !FindResized(Parts, DraggedHandle, Before, After))
	{
		return;
	}
	const double HandleStart = Parts[DraggedHandle].Start + Parts[DraggedHandle].Size;
	const float Both = Parts[Before].Size + Parts[After].Size;
	const float Largest = Both - Parts[After].MinSize;
	if (Parts[Before].MinSize > Largest)
	{
		return;
	}
	const float Wanted = Parts[Before].Size + static_cast<float>(Along - GrabOffset - HandleStart);
	Parts[Before].Size = FMath::Clamp(Wanted, Parts[Before].MinSize, Largest);
	Parts[After].Size = Both - Parts[Before].Size;

	// Every value follows its size: one that was held by its minimum would move the others otherwise.
	float ValueSum = 0.0f;
	float SizeSum = 0.0f;
	for (const FPart& Part : Parts)
	{
		ValueSum += Part.bShares ? Part.Value : 0.0f;
		SizeSum += Part.bShares ? Part.Size : 0.0f;
	}
	if (SizeSum <= 0.0f)
	{
		return;
	}
	ValueSum = ValueSum > 0.0f ? ValueSum : 1.0f;
	for (const FPart& Part : Parts)
	{
		const float NewValue = ValueSum * Part.Size / SizeSum;
		if (Part.bShares && NewValue != Part.Value && Part.Index < Children.Num())
		{
			Children[Part.Index].Resize(NewValue);
		}
	}
}

FReply SSplitter::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const int32 Handle = MouseEvent.GetEffectingButton() == EKeys::LeftMouseButton
		? FindHandle(MyGeometry, MouseEvent.GetScreenSpacePosition())
		: INDEX_NONE;
	if (Handle == INDEX_NONE)
	{
		return FReply::Unhandled();
	}
	const FParts Parts = LayOut(MyGeometry);
	DraggedHandle = Handle;
	GrabOffset = GetAlong(MyGeometry.AbsoluteToLocal(MouseEvent.GetScreenSpacePosition())) - (Parts[Handle].Start + Parts[Handle].Size);
	return FReply::Handled().CaptureMouse(AsShared());
}

// A quick second press drags as well.
FReply SSplitter::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	return OnMouseButtonDown(MyGeometry, MouseEvent);
}

FReply SSplitter::OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (DraggedHandle != INDEX_NONE)
	{
		DragTo(MyGeometry, GetAlong(MyGeometry.AbsoluteToLocal(MouseEvent.GetScreenSpacePosition())));
		return FReply::Handled();
	}
	HoveredHandle = FindHandle(MyGeometry, MouseEvent.GetScreenSpacePosition());
	return FReply::Unhandled();
}

FReply SSplitter::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || DraggedHandle == INDEX_NONE)
	{
		return FReply::Unhandled();
	}
	HoveredHandle = DraggedHandle;
	EndDrag();
	return FReply::Handled().ReleaseMouseCapture();
}

void SSplitter::OnMouseCaptureLost()
{
	EndDrag();
}

// Reported once, however the drag ended.
void SSplitter::EndDrag()
{
	if (DraggedHandle != INDEX_NONE)
	{
		DraggedHandle = INDEX_NONE;
		const FSimpleDelegate Handler = FinishedResizingHandler;
		Handler.ExecuteIfBound();
	}
}

FCursorReply SSplitter::OnCursorQuery(const FGeometry& MyGeometry, const FPointerEvent& CursorEvent) const
{
	if (DraggedHandle == INDEX_NONE && FindHandle(MyGeometry, CursorEvent.GetScreenSpacePosition()) == INDEX_NONE)
	{
		return FCursorReply::Unhandled();
	}
	return FCursorReply::Cursor(Orientation == Orient_Horizontal ? EMouseCursor::ResizeLeftRight : EMouseCursor::ResizeUpDown);
}
