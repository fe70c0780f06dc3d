#pragma once

#include "Host/HostMarginArguments.h"
#include "Host/HostTextWidget.h"
#include "Styling/AppStyle.h"

/** A box with one line of editable text. */
class SLATE_API SEditableTextBox : public SHostTextWidget
{
public:
	SLATE_BEGIN_ARGS(SEditableTextBox) {}
	/** The widget keeps the pointer. Without one: "NormalEditableTextBox". */
	SLATE_STYLE_ARGUMENT(FEditableTextBoxStyle, Style)
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_ATTRIBUTE(FText, HintText)
	SLATE_ATTRIBUTE(FSlateFontInfo, Font)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_ATTRIBUTE(FSlateColor, BackgroundColor)
	SLATE_ATTRIBUTE(bool, IsReadOnly)
	SLATE_ATTRIBUTE(bool, SelectAllTextWhenFocused)
	SLATE_ATTRIBUTE(bool, RevertTextOnEscape)
	/** True unless given. */
	SLATE_ATTRIBUTE(bool, ClearKeyboardFocusOnCommit)
	SLATE_ATTRIBUTE(bool, AllowContextMenu)
	SLATE_ATTRIBUTE(float, MinDesiredWidth)
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	SLATE_EVENT(FOnTextChanged, OnTextChanged)
	SLATE_EVENT(FOnTextCommitted, OnTextCommitted)
	SLATE_EVENT(FOnKeyChar, OnKeyCharHandler)
	SLATE_EVENT(FOnKeyDown, OnKeyDownHandler)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
};
