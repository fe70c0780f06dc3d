#pragma once

#include "Framework/SlateDelegates.h"
#include "Host/HostMarginArguments.h"
#include "Styling/SlateTypes.h"
#include "Widgets/SCompoundWidget.h"

class SImage;

/** A header with an arrow and, below it, a body that a click on the header (or Space or Enter on it) shows and hides. */
class SLATE_API SExpandableArea : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SExpandableArea)
		: _BorderBackgroundColor(FSlateColor(FLinearColor::White))
		, _BodyBorderBackgroundColor(FSlateColor(FLinearColor::White))
		, _Padding(FMargin(0.0f))
	{
	}
	SLATE_STYLE_ARGUMENT(FExpandableAreaStyle, Style)
	/** Around header and body; the widget keeps the pointer. Unset: "ExpandableArea.Border". */
	SLATE_ARGUMENT(const FSlateBrush*, BorderImage)
	SLATE_ATTRIBUTE(FSlateColor, BorderBackgroundColor)
	/** Behind the body. Unset: nothing. */
	SLATE_ARGUMENT(const FSlateBrush*, BodyBorderImage)
	SLATE_ATTRIBUTE(FSlateColor, BodyBorderBackgroundColor)
	/** Around arrow and header content. Unset: room for the arrow at the sides, none above and below. */
	SLATE_ATTRIBUTE(FMargin, HeaderPadding)
	HOST_MARGIN_NUMBERS(HeaderPadding)
	/** Around the body. */
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	/** Title of a header without content of its own. */
	SLATE_ATTRIBUTE(FText, AreaTitle)
	SLATE_ATTRIBUTE(FSlateFontInfo, AreaTitleFont)
	SLATE_ARGUMENT_DEFAULT(bool, InitiallyCollapsed) = false;
	/** Of the body, units; zero or less means none. */
	SLATE_ARGUMENT_DEFAULT(float, MaxHeight) = 0.0f;
	/** Taken and without effect: this host never animates it. */
	SLATE_ARGUMENT_DEFAULT(bool, AllowAnimatedTransition) = true;
	SLATE_EVENT(FOnBooleanValueChanged, OnAreaExpansionChanged)
	SLATE_NAMED_SLOT(FArguments, HeaderContent);
	SLATE_NAMED_SLOT(FArguments, BodyContent);
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** Announces a change, not a value that is the same. */
	void SetExpanded(bool bExpanded);
	bool IsExpanded() const { return bAreaExpanded; }

	virtual void DescribeAccess(FHostAccess& Out) const override;
	virtual FReply DoAccessAction() override;

private:
	FReply OnHeaderClicked();
	const FSlateBrush* GetArrow() const { return bAreaExpanded ? &Style->ExpandedImage : &Style->CollapsedImage; }
	TSharedRef<SWidget> MakeHeader(const FArguments& InArgs);
	TSharedRef<SWidget> MakeBody(const FArguments& InArgs);

	const FExpandableAreaStyle* Style = nullptr;
	TSharedPtr<SImage> Arrow;
	TSharedPtr<SWidget> Body;
	FOnBooleanValueChanged ExpansionChangedHandler;
	bool bAreaExpanded = true;
};
