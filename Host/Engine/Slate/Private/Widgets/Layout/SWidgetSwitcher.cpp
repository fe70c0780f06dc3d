#include "Widgets/Layout/SWidgetSwitcher.h"

#include "Layout/LayoutUtils.h"

SWidgetSwitcher::SWidgetSwitcher()
	: Children(this)
{
	SetCanTick(false);
}

void SWidgetSwitcher::Construct(const FArguments& InArgs)
{
	Children.AddSlots(InArgs._Slots);
	AssignSizeAttribute(WidgetIndex, InArgs._WidgetIndex);
}

const SWidgetSwitcher::FSlot* SWidgetSwitcher::GetActiveSlot() const
{
	const int32 Index = WidgetIndex.Get();
	return Index >= 0 && Index < Children.Num() ? &Children[Index] : nullptr;
}

FVector2D SWidgetSwitcher::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	const FSlot* Slot = GetActiveSlot();
	if (!Slot || Slot->GetWidgetRef().GetVisibility().IsCollapsed())
	{
		return FVector2D(0, 0);
	}
	return Slot->GetWidgetRef().GetDesiredSize() + Slot->GetPadding().GetDesiredSize();
}

void SWidgetSwitcher::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const FSlot* Slot = GetActiveSlot();
	if (!Slot)
	{
		return;
	}
	const TSharedRef<SWidget>& Widget = Slot->GetWidget();
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	const FVector2D& Desired = Widget->GetDesiredSize();
	const FMargin Padding = Slot->GetPadding();
	const FAlignedAxis X = AlignChild(Slot->GetHorizontalAlignment(), static_cast<float>(Size.X), static_cast<float>(Desired.X), Padding);
	const FAlignedAxis Y = AlignChild(Slot->GetVerticalAlignment(), static_cast<float>(Size.Y), static_cast<float>(Desired.Y), Padding);
	ArrangedChildren.AddWidget(Widget->GetVisibility(),
		FArrangedWidget(Widget, AllottedGeometry.MakeChild(FVector2D(X.Offset, Y.Offset), FVector2D(X.Size, Y.Size))));
}
