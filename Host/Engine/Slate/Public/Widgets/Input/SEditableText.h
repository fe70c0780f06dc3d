#pragma once

#include "Host/HostTextWidget.h"
#include "Styling/AppStyle.h"

/** One line of text that can be edited, or only selected and copied, without a box around it. As large as its text. */
class SLATE_API SEditableText : public SHostTextWidget
{
public:
	SLATE_BEGIN_ARGS(SEditableText) {}
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_ATTRIBUTE(FText, HintText)
	/** The widget keeps the pointer. */
	SLATE_STYLE_ARGUMENT(FEditableTextStyle, Style)
	SLATE_ATTRIBUTE(FSlateFontInfo, Font)
	SLATE_ATTRIBUTE(FSlateColor, ColorAndOpacity)
	SLATE_ATTRIBUTE(bool, IsReadOnly)
	SLATE_ATTRIBUTE(bool, SelectAllTextWhenFocused)
	SLATE_ATTRIBUTE(bool, RevertTextOnEscape)
	/** True unless given. */
	SLATE_ATTRIBUTE(bool, ClearKeyboardFocusOnCommit)
	SLATE_ATTRIBUTE(bool, AllowContextMenu)
	SLATE_ATTRIBUTE(float, MinDesiredWidth)
	SLATE_EVENT(FOnTextChanged, OnTextChanged)
	SLATE_EVENT(FOnTextCommitted, OnTextCommitted)
	SLATE_EVENT(FOnKeyChar, OnKeyCharHandler)
	SLATE_EVENT(FOnKeyDown, OnKeyDownHandler)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
};
