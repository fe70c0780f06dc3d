#pragma once

#include "Framework/SlateDelegates.h"
#include "Host/HostMarginArguments.h"
#include "Styling/SlateBrush.h"
#include "Styling/SlateColor.h"
#include "Widgets/SCompoundWidget.h"

/** Draws a brush behind its content. ColorAndOpacity tints the content only, BorderBackgroundColor the brush only. */
class SLATE_API SBorder : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SBorder)
		: _BorderBackgroundColor(FSlateColor(FLinearColor::White))
		, _ColorAndOpacity(FLinearColor::White)
		, _Padding(FMargin(2.0f))
	{
	}
	/** The widget keeps the pointer. Null, the default, draws nothing. */
	SLATE_ATTRIBUTE(const FSlateBrush*, BorderImage)
	SLATE_ATTRIBUTE(FSlateColor, BorderBackgroundColor)
	SLATE_ATTRIBUTE(FLinearColor, ColorAndOpacity)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	SLATE_ARGUMENT_DEFAULT(EHorizontalAlignment, HAlign) = HAlign_Fill;
	SLATE_ARGUMENT_DEFAULT(EVerticalAlignment, VAlign) = VAlign_Fill;
	SLATE_EVENT(FPointerEventHandler, OnMouseButtonDown)
	SLATE_EVENT(FPointerEventHandler, OnMouseButtonUp)
	SLATE_EVENT(FPointerEventHandler, OnMouseDoubleClick)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	void SetContent(const TSharedRef<SWidget>& InContent) { ChildSlot.AttachWidget(InContent); }
	const TSharedRef<SWidget>& GetContent() const { return ChildSlot.GetWidget(); }
	FSlateColor GetBorderBackgroundColor() const { return BorderBackgroundColor.Get(); }

	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	TAttribute<const FSlateBrush*> BorderImage = static_cast<const FSlateBrush*>(nullptr);
	TAttribute<FSlateColor> BorderBackgroundColor = FSlateColor(FLinearColor::White);
	FPointerEventHandler MouseButtonDownHandler;
	FPointerEventHandler MouseButtonUpHandler;
	FPointerEventHandler MouseDoubleClickHandler;
};
