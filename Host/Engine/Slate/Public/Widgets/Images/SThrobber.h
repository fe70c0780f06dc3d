#pragma once

#include "Widgets/SLeafWidget.h"

/** A row of discs, one of them bright and moving on every 0.4 seconds: something is at work. Changes only then. */
class SLATE_API SThrobber : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SThrobber) {}
	SLATE_ARGUMENT_DEFAULT(int32, NumPieces) = 3;
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual void DescribeAccess(FHostAccess& Out) const override;
	/** Which disc is bright at a time in seconds. */
	static int32 GetBrightPiece(double Time, int32 NumPieces);

protected:
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	int32 NumPieces = 3;
};
