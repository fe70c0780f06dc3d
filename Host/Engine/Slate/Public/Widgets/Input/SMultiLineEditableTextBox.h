#pragma once

#include "Framework/Text/ITextLayoutMarshaller.h"
#include "Host/HostMarginArguments.h"
#include "Host/HostTextWidget.h"
#include "Styling/AppStyle.h"
#include "Widgets/Text/SMultiLineEditableText.h"

/**
 * A box with text of any number of lines. It wants the height of its text and scrolls when it gets less.
 *
 * Enter makes a new line when exactly the modifier ModiferKeyForNewLine is down (none by default); Enter with any other
 * modifier commits the text, and so does losing the focus.
 */
class SLATE_API SMultiLineEditableTextBox : public SHostTextWidget
{
public:
	SLATE_BEGIN_ARGS(SMultiLineEditableTextBox) {}
	/** The widget keeps the pointer. Without one: "NormalEditableTextBox". */
	SLATE_STYLE_ARGUMENT(FEditableTextBoxStyle, Style)
	SLATE_STYLE_ARGUMENT(FTextBlockStyle, TextStyle)
	/** Taken and kept; text is always plain. */
	SLATE_ARGUMENT(TSharedPtr<ITextLayoutMarshaller>, Marshaller)
	SLATE_ATTRIBUTE(FText, Text)
	SLATE_ATTRIBUTE(FText, HintText)
	SLATE_ATTRIBUTE(FSlateFontInfo, Font)
	SLATE_ATTRIBUTE(FSlateColor, ForegroundColor)
	SLATE_ATTRIBUTE(FSlateColor, BackgroundColor)
	SLATE_ATTRIBUTE(bool, IsReadOnly)
	/** True unless given. */
	SLATE_ATTRIBUTE(bool, AllowMultiLine)
	SLATE_ATTRIBUTE(bool, AutoWrapText)
	SLATE_ATTRIBUTE(float, WrapTextAt)
	SLATE_ATTRIBUTE(bool, AllowContextMenu)
	SLATE_ATTRIBUTE(bool, SelectAllTextWhenFocused)
	SLATE_ATTRIBUTE(bool, ClearTextSelectionOnFocusLoss)
	SLATE_ATTRIBUTE(bool, RevertTextOnEscape)
	SLATE_ATTRIBUTE(bool, ClearKeyboardFocusOnCommit)
	SLATE_ARGUMENT_DEFAULT(bool, AlwaysShowScrollbars) = false;
	SLATE_ARGUMENT_DEFAULT(EModifierKey, ModiferKeyForNewLine) = EModifierKey::None;
	/** Between the box and its text. */
	SLATE_ATTRIBUTE(FMargin, Padding)
	HOST_MARGIN_NUMBERS(Padding)
	/** Around the text, besides the padding. */
	SLATE_ATTRIBUTE(FMargin, Margin)
	HOST_MARGIN_NUMBERS(Margin)
	SLATE_EVENT(FOnTextChanged, OnTextChanged)
	SLATE_EVENT(FOnTextCommitted, OnTextCommitted)
	SLATE_EVENT(FOnKeyChar, OnKeyCharHandler)
	SLATE_EVENT(FOnKeyDown, OnKeyDownHandler)
	SLATE_EVENT(SMultiLineEditableText::FOnCursorMoved, OnCursorMoved)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

private:
	TSharedPtr<ITextLayoutMarshaller> Marshaller;
};
