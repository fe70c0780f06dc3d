#include "Widgets/Layout/SWrapBox.h"

#include "Layout/LayoutUtils.h"

#include <algorithm>

// Lines are broken when the box is measured, at the width of the last frame, and again when it is arranged at another
// one. The result is kept with the width, so that a box of unchanged children breaks no lines at all, and what the children want
// is kept with it, so that another width costs a walk over numbers.

namespace
{
	/** Longer than any line: nothing wraps. */
	constexpr float EndlessLine = 1.0e9f;
	/** What rounding may add to the children of a line before one of them is moved to the next. */
	constexpr float LineTolerance = 0.01f;
}

void SWrapBox::FSlot::Construct(const FSlotArguments& Arguments)
{
	ConstructLayout(Arguments);
}

SWrapBox::SWrapBox()
	: Children(this)
{
	SetCanTick(false);
}

void SWrapBox::Construct(const FArguments& InArgs)
{
	AssignSizeAttribute(PreferredSize, InArgs._PreferredSize);
	HAlign = InArgs._HAlign;
	InnerSlotPadding = InArgs._InnerSlotPadding;
	Orientation = InArgs._Orientation;
	bUseAllottedSize = InArgs._UseAllottedSize;
	Children.AddSlots(InArgs._Slots);
}

float SWrapBox::GetLineLength(float Allotted) const
{
	if (!bUseAllottedSize)
	{
		return PreferredSize.Get();
	}
	return Allotted > 0.0f ? Allotted : EndlessLine;
}

// A paragraph may have millions of children, and a new width asks for its lines three times. Only a change of the children is a
// reason to go to each of them.
void SWrapBox::PrepassChildren(float LayoutScale, bool bOwnChange)
{
	const bool bNothingNew =
		bOnlyBreaksAnew && bWantedKept && KeptScale == LayoutScale && KeptCount == Children.Num() && !HasSizeBindings();
	bOnlyBreaksAnew = false;
	if (bNothingNew)
	{
		return;
	}
	WatchChildren();
	bWantedKept = false;
	KeptScale = LayoutScale;
	KeptCount = Children.Num();
	SPanel::PrepassChildren(LayoutScale, bOwnChange);
}

void SWrapBox::OnChildChanged(SWidget& Child)
{
	bWantedKept = false;
}

void SWrapBox::CollectWanted() const
{
	const bool bHorizontal = Orientation == Orient_Horizontal;
	Placed.Reset();
	Placed.Reserve(Children.Num());
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (Child.GetVisibility().IsCollapsed())
		{
			continue;
		}
		const FVector2D Size = Child.GetDesiredSize() + Slot.GetPadding().GetDesiredSize();
		FPlaced& Place = Placed.AddDefaulted_GetRef();
		Place.Index = Index;
		Place.WantedAlong = static_cast<float>(bHorizontal ? Size.X : Size.Y);
		Place.WantedAcross = static_cast<float>(bHorizontal ? Size.Y : Size.X);
	}
	bWantedKept = true;
}

// Greedy. A child wider than a line gets one of its own.
FVector2D SWrapBox::BreakLines(float LineLength) const
{
	const bool bHorizontal = Orientation == Orient_Horizontal;
	const float Gap = static_cast<float>(bHorizontal ? InnerSlotPadding.X : InnerSlotPadding.Y);
	const float LineGap = static_cast<float>(bHorizontal ? InnerSlotPadding.Y : InnerSlotPadding.X);
	if (!bWantedKept)
	{
		CollectWanted();
	}
	Lines.Reset();
	float Longest = 0.0f;
	// Length of all children in one line.
	float Natural = 0.0f;
	for (int32 PlaceIndex = 0; PlaceIndex < Placed.Num(); ++PlaceIndex)
	{
		FPlaced& Place = Placed[PlaceIndex];
		const float Length = FMath::Min(Place.WantedAlong, LineLength);
		const bool bFirst = Lines.Num() == 0;
		if (bFirst || Lines.Last().Length + Gap + Length > LineLength + LineTolerance)
		{
			FLine Line;
			Line.Across = bFirst ? 0.0f : Lines.Last().Across + Lines.Last().Thickness + LineGap;
			Line.FirstPlaced = PlaceIndex;
			Lines.Add(Line);
		}
		FLine& Line = Lines.Last();
		Place.Line = Lines.Num() - 1;
		Place.Along = Line.FirstPlaced == PlaceIndex ? 0.0f : Line.Length + Gap;
		Line.Length = Place.Along + Length;
		Line.Thickness = FMath::Max(Line.Thickness, Place.WantedAcross);
		Longest = FMath::Max(Longest, Line.Length);
		Natural = bFirst ? Place.WantedAlong : Natural + Gap + Place.WantedAlong;
	}
	const float Along = bUseAllottedSize ? Natural : Longest;
	const float Across = Lines.Num() > 0 ? Lines.Last().Across + Lines.Last().Thickness : 0.0f;
	BrokenLength = LineLength;
	Broken = bHorizontal ? FVector2D(Along, Across) : FVector2D(Across, Along);
	return Broken;
}

FVector2D SWrapBox::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return Measured = BreakLines(GetLineLength(LastAllotted));
}

int32 SWrapBox::FindFirstInView(const FGeometry& AllottedGeometry, const FSlateRect* Clip, double& OutViewEnd) const
{
	const bool bHorizontal = Orientation == Orient_Horizontal;
	const float LineGap = static_cast<float>(bHorizontal ? InnerSlotPadding.Y : InnerSlotPadding.X);
	// Lines that overlap by a negative gap are not in order by their ends.
	if (!Clip || LineGap < 0.0f)
	{
		return 0;
	}
	// Some room for paddings that reach out of a line.
	constexpr double Overhang = 32.0;
	const double Scale = AllottedGeometry.GetAccumulatedScale();
	const FVector2D& Corner = AllottedGeometry.GetAbsolutePosition();
	const double ViewBegin = (bHorizontal ? Clip->Top - Corner.Y : Clip->Left - Corner.X) / Scale - Overhang;
	OutViewEnd = (bHorizontal ? Clip->Bottom - Corner.Y : Clip->Right - Corner.X) / Scale + Overhang;
	const FLine* Begin = Lines.GetData();
	const FLine* Found = std::lower_bound(
		Begin, Begin + Lines.Num(), ViewBegin, [](const FLine& Line, double Where) { return Line.Across + Line.Thickness < Where; });
	return Found == Begin + Lines.Num() ? Placed.Num() : Found->FirstPlaced;
}

void SWrapBox::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const bool bHorizontal = Orientation == Orient_Horizontal;
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const float Allotted = static_cast<float>(bHorizontal ? Size.X : Size.Y);
	if (Allotted > 0.0f)
	{
		LastAllotted = Allotted;
	}
	const float LineLength = GetLineLength(Allotted);
	// As broken when measured, unless something may have changed since.
	const bool bUnchanged = !NeedsPrepass() && !HasSizeBindings();
	bWantedKept = bWantedKept && bUnchanged;
	const FVector2D Desired = BrokenLength == LineLength && bUnchanged ? Broken : BreakLines(LineLength);
	if (!Desired.Equals(Measured, 0.01))
	{
		const_cast<SWrapBox*>(this)->Invalidate(EInvalidateWidgetReason::Layout);
		bOnlyBreaksAnew = bUnchanged;
	}
	const float Room = bUseAllottedSize || Allotted > 0.0f ? Allotted : LineLength;
	const EHorizontalAlignment Alignment = HAlign.Get();
	int32 CurrentLine = -1;
	float Start = 0.0f;
	double ViewEnd = static_cast<double>(EndlessLine);
	const int32 FirstPlaced = FindFirstInView(AllottedGeometry, ArrangedChildren.GetClip(), ViewEnd);
	for (int32 PlaceIndex = FirstPlaced; PlaceIndex < Placed.Num(); ++PlaceIndex)
	{
		const FPlaced& Place = Placed[PlaceIndex];
		const FSlot& Slot = Children[Place.Index];
		const FLine& Line = Lines[Place.Line];
		if (Line.Across > ViewEnd)
		{
			break;
		}
		if (Place.Line != CurrentLine)
		{
			CurrentLine = Place.Line;
			const float Slack = FMath::Max(Room - Line.Length, 0.0f);
			Start = Alignment == HAlign_Center ? Slack * 0.5f : (Alignment == HAlign_Right ? Slack : 0.0f);
		}
		const float Along = Start + Place.Along;
		const TSharedRef<SWidget>& Widget = Slot.GetWidget();
		const FVector2D& Wanted = Widget->GetDesiredSize();
		const FMargin Padding = Slot.GetPadding();
		const float Length = FMath::Min(Place.WantedAlong, LineLength);
		const float SlotX = bHorizontal ? Length : Line.Thickness;
		const float SlotY = bHorizontal ? Line.Thickness : Length;
		const FAlignedAxis X = AlignChild(Slot.GetHorizontalAlignment(), SlotX, static_cast<float>(Wanted.X), Padding);
		const FAlignedAxis Y = AlignChild(Slot.GetVerticalAlignment(), SlotY, static_cast<float>(Wanted.Y), Padding);
		const FVector2D Position =
			bHorizontal ? FVector2D(Along + X.Offset, Line.Across + Y.Offset) : FVector2D(Line.Across + X.Offset, Along + Y.Offset);
		ArrangedChildren.AddWidget(
			Widget->GetVisibility(), FArrangedWidget(Widget, AllottedGeometry.MakeChild(Position, FVector2D(X.Size, Y.Size))));
	}
}
