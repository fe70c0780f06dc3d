#pragma once

#include "Host/HostLineArguments.h"
#include "Styling/AppStyle.h"

/** One line of text that can be edited, or only selected and copied, without a box around it. As large as its text. */
class SLATE_API SEditableText : public SHostTextWidget
{
public:
	SLATE_BEGIN_ARGS(SEditableText) {}
	/** The widget keeps the pointer. */
	SLATE_STYLE_ARGUMENT(FEditableTextStyle, Style)
	SLATE_ATTRIBUTE(FSlateColor, ColorAndOpacity)
	HOST_LINE_ARGUMENTS()
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
};
