#pragma once

#include "Widgets/Input/SButton.h"

/** Underlined text that can be followed with the mouse or, once focused, with Enter. */
class SLATE_API SHyperlink : public SButton
{
public:
	SLATE_BEGIN_ARGS(SHyperlink) {}
	SLATE_ATTRIBUTE(FText, Text)
	/** The widget keeps the pointer. Without one: the style "Hyperlink". */
	SLATE_STYLE_ARGUMENT(FHyperlinkStyle, Style)
	/** Another font than the style's; colours stay the link's. */
	SLATE_STYLE_ARGUMENT(FTextBlockStyle, TextStyle)
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	SLATE_EVENT(FSimpleDelegate, OnNavigate)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FReply ExecuteOnClick() override;

private:
	const FHyperlinkStyle* LinkStyle = nullptr;
	const FTextBlockStyle* LinkTextStyle = nullptr;
	FSimpleDelegate NavigateHandler;
};
