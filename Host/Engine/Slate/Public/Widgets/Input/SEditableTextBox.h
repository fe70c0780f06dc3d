#pragma once

#include "Host/HostMarginArguments.h"
#include "Host/HostLineArguments.h"
#include "Styling/AppStyle.h"

/** A box with one line of editable text. */
class SLATE_API SEditableTextBox : public SHostTextWidget
{
public:
	SLATE_BEGIN_ARGS(SEditableTextBox) {}
	/** The widget keeps the pointer. Without one: "NormalEditableTextBox". */
	SLATE_STYLE_ARGUMENT(FEditableTextBoxStyle, Style)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_ATTRIBUTE(FSlateColor, BackgroundColor)
	HOST_LINE_ARGUMENTS()
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
};
