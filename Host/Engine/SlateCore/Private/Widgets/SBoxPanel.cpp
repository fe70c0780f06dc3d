#include "Widgets/SBoxPanel.h"

#include "Layout/LayoutUtils.h"

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
	Size = Arguments._Size;
	MaxSize = Arguments._MaxSize;
	MinSize = Arguments._MinSize;
	ConstructLayout(Arguments);
	// One note is enough for all attributes of a slot.
	NoteBinding(Arguments._Padding.IsBound() || Size.Value.IsBound() || MaxSize.IsBound() || MinSize.IsBound());
}

void SBoxPanel::FSlot::SetMaxHeight(TAttribute<float> InSize)
{
	MaxSize = MoveTemp(InSize);
	InvalidateLayout();
}

void SBoxPanel::FSlot::SetAuto()
{
	Size.SizeRule = FSizeParam::SizeRule_Auto;
	InvalidateLayout();
}

void SBoxPanel::FSlot::SetFill(TAttribute<float> Weight)
{
	Size.SizeRule = FSizeParam::SizeRule_Stretch;
	Size.Value = MoveTemp(Weight);
	InvalidateLayout();
}

SBoxPanel::SBoxPanel(EOrientation InOrientation)
	: Children(this)
	, Orientation(InOrientation)
{
	SetCanTick(false);
}

namespace
{
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

FVector2D SBoxPanel::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	double Along = 0.0;
	double Across = 0.0;
	const bool bVertical = Orientation == Orient_Vertical;
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
	TArray<FChild> Laid;
	Laid.Reserve(Children.Num());
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
		if (Slot.GetSizeRule().SizeRule == FSizeParam::SizeRule_Auto)
		{
			const FVector2D& Desired = Child.GetDesiredSize();
			const float Along = ClampToSlotLimits(static_cast<float>(bVertical ? Desired.Y : Desired.X), Slot);
			Fixed += Along;
			Laid.Add({ Index, Along, 0.0f, false });
		}
		else
		{
			const float Weight = FMath::Max(Slot.GetSizeRule().Value.Get(), 0.0f);
			WeightSum += Weight;
			Laid.Add({ Index, 0.0f, Weight, true });
		}
	}

	// Shares by weight; a slot that meets its limit is closed at it, and the rest is shared anew among the others.
	float Remaining = FMath::Max(TotalAlong - Fixed, 0.0f);
	for (bool bSettled = false; !bSettled;)
	{
		bSettled = true;
		float ClosedSize = 0.0f;
		float ClosedWeight = 0.0f;
		for (FChild& Child : Laid)
		{
			if (!Child.bOpen)
			{
				continue;
			}
			const float Share = WeightSum > 0.0f ? Remaining * Child.Weight / WeightSum : 0.0f;
			const float Limited = ClampToSlotLimits(Share, Children[Child.Index]);
			Child.Along = Limited;
			if (Limited != Share)
			{
				Child.bOpen = false;
				ClosedSize += Limited;
				ClosedWeight += Child.Weight;
				bSettled = false;
			}
		}
		Remaining = FMath::Max(Remaining - ClosedSize, 0.0f);
		WeightSum -= ClosedWeight;
	}

	float Offset = 0.0f;
	for (const FChild& Child : Laid)
	{
		const FSlot& Slot = Children[Child.Index];
		const TSharedRef<SWidget>& Widget = Slot.GetWidget();
		const FMargin Padding = Slot.GetPadding();
		const FVector2D& Desired = Widget->GetDesiredSize();
		const float SlotAlong = Child.Along + (bVertical ? Padding.Top + Padding.Bottom : Padding.Left + Padding.Right);
		const float SlotX = bVertical ? static_cast<float>(Size.X) : SlotAlong;
		const float SlotY = bVertical ? SlotAlong : static_cast<float>(Size.Y);
		const FAlignedAxis X = AlignChild(Slot.GetHorizontalAlignment(), SlotX, static_cast<float>(Desired.X), Padding);
		const FAlignedAxis Y = AlignChild(Slot.GetVerticalAlignment(), SlotY, static_cast<float>(Desired.Y), Padding);
		const FVector2D Position = bVertical ? FVector2D(X.Offset, Offset + Y.Offset) : FVector2D(Offset + X.Offset, Y.Offset);
		ArrangedChildren.AddWidget(Widget->GetVisibility(), FArrangedWidget(Widget, AllottedGeometry.MakeChild(Position, FVector2D(X.Size, Y.Size))));
		Offset += SlotAlong;
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
