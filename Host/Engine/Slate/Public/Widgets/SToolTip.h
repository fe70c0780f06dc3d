#pragma once

#include "Host/HostMarginArguments.h"
#include "Widgets/IToolTip.h"
#include "Widgets/SCompoundWidget.h"

/** What hovers beside the pointer: a text of at most 320 units' width, or content of the caller's. */
class SLATE_API SToolTip : public SCompoundWidget, public IToolTip
{
public:
	SLATE_BEGIN_ARGS(SToolTip)
		: _TextMargin(FMargin(8.0f, 6.0f))
	{
		_Visibility = EVisibility::HitTestInvisible;
	}
	SLATE_ATTRIBUTE(FText, Text)
	/** Around text and content alike. */
	SLATE_ATTRIBUTE(FMargin, TextMargin)
	HOST_MARGIN_NUMBERS(TextMargin)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	virtual TSharedRef<SWidget> AsWidget() override { return AsShared(); }
	virtual bool HasContent() const override;
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;

private:
	TAttribute<FText> Text;
	bool bOwnContent = false;
};
