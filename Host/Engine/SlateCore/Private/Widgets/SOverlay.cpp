#include "Widgets/SOverlay.h"

#include "Layout/LayoutUtils.h"

SOverlay::SOverlay()
	: Children(this)
{
	SetCanTick(false);
}

void SOverlay::Construct(const FArguments& InArgs)
{
	Children.AddSlots(InArgs._Slots);
}

FVector2D SOverlay::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	FVector2D Largest(0, 0);
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FOverlaySlot& Slot = Children[Index];
		const SWidget& Child = Slot.GetWidgetRef();
		if (!Child.GetVisibility().IsCollapsed())
		{
			const FVector2D Wanted = Child.GetDesiredSize() + Slot.GetPadding().GetDesiredSize();
			Largest = FVector2D(FMath::Max(Largest.X, Wanted.X), FMath::Max(Largest.Y, Wanted.Y));
		}
	}
	return Largest;
}

void SOverlay::OnArrangeChildren(const FGeometry& AllottedGeometry, FArrangedChildren& ArrangedChildren) const
{
	const FVector2D& Size = AllottedGeometry.GetLocalSize();
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		const FOverlaySlot& Slot = Children[Index];
		const TSharedRef<SWidget>& Child = Slot.GetWidget();
		const EVisibility ChildVisibility = Child->GetVisibility();
		if (!ArrangedChildren.Accepts(ChildVisibility))
		{
			continue;
		}
		const FVector2D& Desired = Child->GetDesiredSize();
		const FMargin Padding = Slot.GetPadding();
		const FAlignedAxis X =
			AlignChild(Slot.GetHorizontalAlignment(), static_cast<float>(Size.X), static_cast<float>(Desired.X), Padding);
		const FAlignedAxis Y = AlignChild(Slot.GetVerticalAlignment(), static_cast<float>(Size.Y), static_cast<float>(Desired.Y), Padding);
		ArrangedChildren.AddWidget(
			FArrangedWidget(Child, AllottedGeometry.MakeChild(FVector2D(X.Offset, Y.Offset), FVector2D(X.Size, Y.Size))));
	}
}
