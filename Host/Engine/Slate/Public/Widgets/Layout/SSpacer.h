#pragma once

#include "Widgets/SLeafWidget.h"

/** Empty room. */
class SLATE_API SSpacer : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SSpacer) {}
	SLATE_ATTRIBUTE(FVector2D, Size)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void SetSize(TAttribute<FVector2D> InSize) { AssignSizeAttribute(Size, MoveTemp(InSize)); }

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	TAttribute<FVector2D> Size = FVector2D(0, 0);
};
