#include "Widgets/SBoxPanel.h"

#include "Host/ChildWatch.h"
#include "Layout/LayoutUtils.h"

#include <algorithm>
#include <array>

// Rows and columns. A short panel looks at all its children in each layout. A long one, such as the messages of a
// conversation, keeps what they want (FKeptSizes): measuring then costs what changed, and arranging what is in view.
// That works only while starts can be looked up, so a panel whose children share room, or reach over each other, is
// arranged as a short one.

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetAuto()
{
	_Size.SizeRule = FSizeParam::SizeRule_Auto;
	return *this;
}

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetFill(TAttribute<float> Weight)
{
	_Size.SizeRule = FSizeParam::SizeRule_Stretch;
	_Size.Value = MoveTemp(Weight);
	return *this;
}

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetMax(TAttribute<float> Size)
{
	_MaxSize = MoveTemp(Size);
	return *this;
}

SBoxPanel::FSlotArguments& SBoxPanel::FSlotArguments::SetMin(TAttribute<float> Size)
{
	_MinSize = MoveTemp(Size);
	return *this;
}

void SBoxPanel::FSlot::Construct(const FSlotArguments& Arguments)
{
	SizeRule = Arguments._Size.SizeRule;
	Weight = Arguments._Size.Value;
	MaxSize = Arguments._MaxSize;
	MinSize = Arguments._MinSize;
	ConstructLayout(Arguments);
	// One note is enough for all attributes of a slot.
	NoteBinding(Arguments._Padding.IsBound() || Weight.IsBound() || MaxSize.IsBound() || MinSize.IsBound());
}

void SBoxPanel::FSlot::SetAuto()
{
	SizeRule = FSizeParam::SizeRule_Auto;
	InvalidateLayout();
}

void SBoxPanel::FSlot::SetFill(TAttribute<float> InWeight)
{
	SizeRule = FSizeParam::SizeRule_Stretch;
	Weight = InWeight;
	InvalidateLayout();
}

namespace
{
	/** Panels of fewer children are as quick without keeping anything. */
	constexpr int32 LongPanel = 32;
	bool bMeasureEveryBoxChild = false;

	float ClampToSlotLimits(float Size, const SBoxPanel::FSlot& Slot)
	{
		const float Max = Slot.GetMaxSize();
		if (Max > 0.0f)
		{
			Size = FMath::Min(Size, Max);
		}
		return FMath::Max(Size, Slot.GetMinSize());
	}
}

struct SBoxPanel::FKeptSizes
{
	FChildWatch Watch;
	/** Of each child along and across the panel, padding included; zero for collapsed ones. */
	TArray<double> Lengths;
	TArray<double> Acrosses;
	/** Start of each child, and the end of the last. */
	TArray<double> Starts;
	/** The first child whose length has changed since the starts were made. */
	int32 FirstChanged = 0;
	double MaxAcross = 0.0;
	/** The children arranged last. */
	int32 ShownBegin = 0;
	int32 ShownEnd = 0;
	/** How far a child may reach out of its slot by negative padding. */
	float Overhang = 0.0f;
	/** The largest across was taken away. */
	bool bMaxAcrossStale = false;
	/** Children share room, or starts do not grow, so that places cannot be looked up. */
	bool bUnsearchable = false;

	void Update()
	{
		if (bMaxAcrossStale)
		{
			bMaxAcrossStale = false;
			MaxAcross =
				Acrosses.Num() > 0 ? FMath::Max(*std::max_element(Acrosses.GetData(), Acrosses.GetData() + Acrosses.Num()), 0.0) : 0.0;
		}
		const int32 Count = Lengths.Num();
		if (Starts.Num() != Count + 1)
		{
			Starts.SetNum(Count + 1);
			FirstChanged = 0;
		}
		Starts[0] = 0.0;
		for (int32 Index = FirstChanged; Index < Count; ++Index)
		{
			Starts[Index + 1] = Starts[Index] + Lengths[Index];
		}
		FirstChanged = Count;
	}
};

SBoxPanel::SBoxPanel(EOrientation InOrientation)
	: Children(this)
	, Orientation(InOrientation)
{
	SetCanTick(false);
}

SBoxPanel::~SBoxPanel() = default;

void SBoxPanel::SetMeasureEverything(bool bInMeasureEverything)
{
	bMeasureEveryBoxChild = bInMeasureEverything;
}

void SBoxPanel::PrepassChildren(float LayoutScale, bool bOwnChange)
{
	const int32 Count = Children.Num();
	if (Count < LongPanel || bMeasureEveryBoxChild)
	{
		Kept.Reset();
		SPanel::PrepassChildren(LayoutScale, bOwnChange);
		return;
	}
	const auto Measure = [this, LayoutScale, Count](int32 Index)
	{
		SWidget& Child = Children.GetChildRefAt(Index);
		if (!Child.GetVisibility().IsCollapsed())
		{
			Child.SlatePrepass(LayoutScale);
		}
		// A bound function may have added or removed children; the next measuring is asked for then.
		if (Children.Num() != Count)
		{
			return false;
		}
		Kept->Watch.SetBound(Index, Child.HasSizeBindings() || Children[Index].HasSizeBinding());
		KeepSize(Index);
		return true;
	};
	if (!Kept || bOwnChange || !HasKeptSizes())
	{
		Kept = MakeUnique<FKeptSizes>();
		WatchChildren();
		Kept->Watch.Reset(Count);
		Kept->Lengths.SetNumZeroed(Count);
		Kept->Acrosses.SetNumZeroed(Count);
		for (int32 Index = 0; Index < Count; ++Index)
		{
			SetChildNumber(Children.GetChildRefAt(Index), Index);
		}
		for (int32 Index = 0; Index < Count && Measure(Index); ++Index)
		{
		}
		return;
	}
	const TArray<int32> Changed = Kept->Watch.TakeChanged();
	for (const int32 Index : Changed)
	{
		if (!Measure(Index))
		{
			return;
		}
	}
	const TArray<int32>& Bound = Kept->Watch.GetBound();
	const int32* const BoundEnd = Bound.GetData() + Bound.Num();
	for (const int32* Index = std::lower_bound(Bound.GetData(), BoundEnd, Kept->ShownBegin); Index != BoundEnd && *Index < Kept->ShownEnd;
		 ++Index)
	{
		if (!Measure(*Index))
		{
			return;
		}
	}
	Kept->Watch.MeasureInTurn(Kept->ShownBegin, Kept->ShownEnd, Kept->bUnsearchable, Measure);
}

void SBoxPanel::OnChildChanged(SWidget& Child)
{
	const int32 Index = GetChildNumber(Child);
	if (Kept && Index >= 0 && Index < Children.Num() && &Children.GetChildRefAt(Index) == &Child)
	{
		Kept->Watch.NoteChanged(Index);
	}
}

void SBoxPanel::KeepSize(int32 Index) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const FSlot& Slot = Children[Index];
	const SWidget& Child = Slot.GetWidgetRef();
	double Length = 0.0;
	double Across = 0.0;
	if (!Child.GetVisibility().IsCollapsed())
	{
		const FVector2D& Desired = Child.GetDesiredSize();
		const FMargin Margin = Slot.GetPadding();
		const FVector2D Padding = Margin.GetDesiredSize();
		Length = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot) + (bVertical ? Padding.Y : Padding.X);
		Across = bVertical ? Desired.X + Padding.X : Desired.Y + Padding.Y;
		const float Before = bVertical ? Margin.Top : Margin.Left;
		const float After = bVertical ? Margin.Bottom : Margin.Right;
		Kept->Overhang = FMath::Max(Kept->Overhang, FMath::Max(-Before, -After));
		Kept->bUnsearchable = Kept->bUnsearchable || !Slot.IsAuto() || !(Length >= 0.0);
	}
	if (Kept->Lengths[Index] != Length)
	{
		Kept->Lengths[Index] = Length;
		Kept->FirstChanged = FMath::Min(Kept->FirstChanged, Index);
	}
	if (Kept->Acrosses[Index] != Across)
	{
		Kept->bMaxAcrossStale = Kept->bMaxAcrossStale || Kept->Acrosses[Index] >= Kept->MaxAcross;
		Kept->MaxAcross = FMath::Max(Kept->MaxAcross, Across);
		Kept->Acrosses[Index] = Across;
	}
}

bool SBoxPanel::HasKeptSizes() const
{
	return Kept && Kept->Lengths.Num() == Children.Num();
}

FVector2D SBoxPanel::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	if (HasKeptSizes())
	{
		Kept->Update();
		return bVertical ? FVector2D(Kept->MaxAcross, Kept->Starts.Last()) : FVector2D(Kept->Starts.Last(), Kept->MaxAcross);
	}
	double Along = 0.0;
	double Across = 0.0;
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (Child.GetVisibility().IsCollapsed())
		{
			continue;
		}
		const FVector2D& Desired = Child.GetDesiredSize();
		const FVector2D Padding = Slot.GetPadding().GetDesiredSize();
		const float ChildAlong = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot);
		Along += ChildAlong + (bVertical ? Padding.Y : Padding.X);
		Across = FMath::Max(Across, bVertical ? Desired.X + Padding.X : Desired.Y + Padding.Y);
	}
	return bVertical ? FVector2D(Across, Along) : FVector2D(Along, Across);
}

void SBoxPanel::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	if (Kept && NeedsPrepass())
	{
		// Something was set since the prepass; it is measured where it is met.
		GetDesiredSize();
	}
	if (HasKeptSizes() && !Kept->bUnsearchable)
	{
		ArrangeKept(AllottedGeometry, ArrangedChildren);
	}
	else
	{
		ArrangeAll(AllottedGeometry, ArrangedChildren);
	}
}

void SBoxPanel::ArrangeKept(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	// What is bound may have changed within this frame.
	for (const int32 Index : Kept->Watch.GetBound())
	{
		KeepSize(Index);
	}
	Kept->Update();
	const double* Starts = Kept->Starts.GetData();
	const int32 Count = Children.Num();
	int32 First = 0;
	double End = Starts[Count];
	if (const FSlateRect* Clip = ArrangedChildren.GetClip())
	{
		const bool bVertical = Orientation == Orient_Vertical;
		const double Scale = AllottedGeometry.GetAccumulatedScale();
		const double Corner = bVertical ? AllottedGeometry.GetAbsolutePosition().Y : AllottedGeometry.GetAbsolutePosition().X;
		// A unit more than needed: what lies just outside costs little, what is missing would be seen.
		const double Margin = Kept->Overhang + 1.0;
		const double ViewBegin = ((bVertical ? Clip->Top : Clip->Left) - Corner) / Scale - Margin;
		const double ViewEnd = ((bVertical ? Clip->Bottom : Clip->Right) - Corner) / Scale + Margin;
		// Starts[i + 1] is where child i ends.
		First = static_cast<int32>(std::lower_bound(Starts + 1, Starts + 1 + Count, ViewBegin) - (Starts + 1));
		End = FMath::Min(End, ViewEnd);
	}
	Kept->ShownBegin = First;
	Kept->ShownEnd = First;
	for (int32 Index = First; Index < Count && Starts[Index] <= End; ++Index)
	{
		Kept->ShownEnd = Index + 1;
		const FSlot& Slot = Children[Index];
		if (Slot.GetWidgetRef().GetVisibility().IsCollapsed())
		{
			continue;
		}
		const FMargin Padding = Slot.GetPadding();
		const float Pads = Orientation == Orient_Vertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right;
		ArrangeChild(AllottedGeometry, Index, Starts[Index], static_cast<float>(Kept->Lengths[Index]) - Pads, ArrangedChildren);
	}
}

void SBoxPanel::ArrangeChild(
	const FGeometry& AllottedGeometry, int32 Index, double Start, float Along, FArrangedChildren& ArrangedChildren) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FSlot& Slot = Children[Index];
	const TSharedRef<SWidget>& Widget = Slot.GetWidget();
	const FMargin Padding = Slot.GetPadding();
	const FVector2D& Desired = Widget->GetDesiredSize();
	const float SlotAlong = Along + (bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right);
	const float SlotX = bVertical ? static_cast<float>(Size.X) : SlotAlong;
	const float SlotY = bVertical ? SlotAlong : static_cast<float>(Size.Y);
	const FAlignedAxis X = AlignChild(Slot.GetHorizontalAlignment(), SlotX, static_cast<float>(Desired.X), Padding);
	const FAlignedAxis Y = AlignChild(Slot.GetVerticalAlignment(), SlotY, static_cast<float>(Desired.Y), Padding);
	const FVector2D Position = bVertical ? FVector2D(X.Offset, Start + Y.Offset) : FVector2D(Start + X.Offset, Y.Offset);
	ArrangedChildren.AddWidget(
		Widget->GetVisibility(), FArrangedWidget(Widget, AllottedGeometry.MakeChild(Position, FVector2D(X.Size, Y.Size))));
}

void SBoxPanel::ArrangeAll(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const bool bVertical = Orientation == Orient_Vertical;
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const float TotalAlong = static_cast<float>(bVertical ? Size.Y : Size.X);

	struct FChild
	{
		int32 Index;
		float Along;
		float Weight;
		bool bOpen;
	};
	// Most panels are short and need no memory of their own here.
	std::array<FChild, LongPanel> Few;
	TArray<FChild> Many;
	if (Children.Num() > LongPanel)
	{
		Many.SetNumUninitialized(Children.Num());
	}
	FChild* const Laid = Many.Num() > 0 ? Many.GetData() : Few.data();
	int32 LaidCount = 0;
	float Fixed = 0.0f;
	float WeightSum = 0.0f;
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FSlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (Child.GetVisibility().IsCollapsed())
		{
			continue;
		}
		const FMargin Padding = Slot.GetPadding();
		Fixed += bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right;
		if (Slot.IsAuto())
		{
			const FVector2D& Desired = Child.GetDesiredSize();
			const float Along = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot);
			Fixed += Along;
			Laid[LaidCount++] = { Index, Along, 0.0f, false };
		}
		else
		{
			const float Weight = FMath::Max(Slot.GetWeight(), 0.0f);
			WeightSum += Weight;
			Laid[LaidCount++] = { Index, 0.0f, Weight, true };
		}
	}

	// Shares by weight; a slot that meets its limit is closed at it, and the rest is shared anew among the others.
	float Remaining = FMath::Max(TotalAlong - Fixed, 0.0f);
	for (bool bSettled = false; !bSettled;)
	{
		bSettled = true;
		float ClosedSize = 0.0f;
		float ClosedWeight = 0.0f;
		for (FChild* Child = Laid; Child != Laid + LaidCount; ++Child)
		{
			if (!Child->bOpen)
			{
				continue;
			}
			const float Share = WeightSum > 0.0f ? Remaining * Child->Weight / WeightSum : 0.0f;
			const float Limited = ClampToSlotLimits(Share, Children[Child->Index]);
			Child->Along = Limited;
			if (Limited != Share)
			{
				Child->bOpen = false;
				ClosedSize += Limited;
				ClosedWeight += Child->Weight;
				bSettled = false;
			}
		}
		Remaining = FMath::Max(Remaining - ClosedSize, 0.0f);
		WeightSum -= ClosedWeight;
	}

	double Start = 0.0;
	for (const FChild* Child = Laid; Child != Laid + LaidCount; ++Child)
	{
		const FMargin Padding = Children[Child->Index].GetPadding();
		ArrangeChild(AllottedGeometry, Child->Index, Start, Child->Along, ArrangedChildren);
		Start += Child->Along + (bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right);
	}
}

SHorizontalBox::SHorizontalBox()
	: SBoxPanel(Orient_Horizontal)
{
}

void SHorizontalBox::Construct(const FArguments& InArgs)
{
	Children.AddSlots(InArgs._Slots);
}

SVerticalBox::SVerticalBox()
	: SBoxPanel(Orient_Vertical)
{
}

void SVerticalBox::Construct(const FArguments& InArgs)
{
	Children.AddSlots(InArgs._Slots);
}
