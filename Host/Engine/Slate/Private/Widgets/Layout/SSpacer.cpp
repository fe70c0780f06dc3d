#include "Widgets/Layout/SSpacer.h"

void SSpacer::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	SetSize(InArgs._Size);
}

int32 SSpacer::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	return LayerId;
}

FVector2D SSpacer::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	return Size.Get();
}
