#pragma once

#include "Styling/SlateBrush.h"
#include "Styling/SlateColor.h"
#include "Widgets/SLeafWidget.h"

/** A mouse event handed to an owner. */
DECLARE_DELEGATE_RetVal_TwoParams(FReply, FPointerEventHandler, const FGeometry&, const FPointerEvent&)

	/** Draws a brush. Without a brush it draws nothing and has no size. */
	class SLATECORE_API SImage : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SImage)
		: _ColorAndOpacity(FSlateColor(FLinearColor(1.0f, 1.0f, 1.0f, 1.0f)))
	{
	}
	SLATE_ATTRIBUTE(const FSlateBrush*, Image)
	SLATE_ATTRIBUTE(FSlateColor, ColorAndOpacity)
	/** Takes the place of the brush's own size. */
	SLATE_ATTRIBUTE(TOptional<FVector2D>, DesiredSizeOverride)
	SLATE_EVENT(FPointerEventHandler, OnMouseButtonDown)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void SetImage(TAttribute<const FSlateBrush*> InImage);
	void SetColorAndOpacity(const TAttribute<FSlateColor>& InColorAndOpacity) { ColorAndOpacity = InColorAndOpacity; }
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	TAttribute<const FSlateBrush*> Image = static_cast<const FSlateBrush*>(nullptr);
	TAttribute<FSlateColor> ColorAndOpacity;
	TAttribute<TOptional<FVector2D>> DesiredSizeOverride;
	FPointerEventHandler OnMouseDown;
};
