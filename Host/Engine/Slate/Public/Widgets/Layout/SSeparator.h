#pragma once

#include "Styling/SlateColor.h"
#include "Types/SlateEnums.h"
#include "Widgets/SLeafWidget.h"

/** A straight line along its orientation. */
class SLATE_API SSeparator : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SSeparator) {}
	SLATE_ARGUMENT_DEFAULT(EOrientation, Orientation) = Orient_Horizontal;
	SLATE_ARGUMENT_DEFAULT(float, Thickness) = 1.0f;
	/** Unset: the line colour of popups. */
	SLATE_ATTRIBUTE(FSlateColor, ColorAndOpacity)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	TAttribute<FSlateColor> ColorAndOpacity;
	EOrientation Orientation = Orient_Horizontal;
	float Thickness = 1.0f;
};
