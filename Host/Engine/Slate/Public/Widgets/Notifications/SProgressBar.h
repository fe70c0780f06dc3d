#pragma once

#include "Styling/SlateTypes.h"
#include "Widgets/SLeafWidget.h"

/** Shows a fraction. Without one a piece of the bar wanders along it. */
class SLATE_API SProgressBar : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SProgressBar)
		: _FillColorAndOpacity(FSlateColor(FLinearColor::White))
	{
	}
	SLATE_STYLE_ARGUMENT(FProgressBarStyle, Style)
	/** From 0 to 1; clamped. */
	SLATE_ATTRIBUTE(TOptional<float>, Percent)
	SLATE_ATTRIBUTE(FSlateColor, FillColorAndOpacity)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	const FProgressBarStyle* Style = nullptr;
	TAttribute<TOptional<float>> Percent;
	TAttribute<FSlateColor> FillColorAndOpacity;
};
