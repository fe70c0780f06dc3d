#pragma once

#include "Host/HostTextWidget.h"

/** The arguments that every widget for one line of text takes, with a box around it or without. */
#define HOST_LINE_ARGUMENTS() \
	SLATE_ATTRIBUTE(FText, Text) \
	SLATE_ATTRIBUTE(FText, HintText) \
	SLATE_ATTRIBUTE(FSlateFontInfo, Font) \
	SLATE_ATTRIBUTE(bool, IsReadOnly) \
	SLATE_ATTRIBUTE(bool, SelectAllTextWhenFocused) \
	SLATE_ATTRIBUTE(bool, RevertTextOnEscape) \
	SLATE_ATTRIBUTE(bool, ClearKeyboardFocusOnCommit) \
	SLATE_ATTRIBUTE(bool, AllowContextMenu) \
	SLATE_ATTRIBUTE(float, MinDesiredWidth) \
	SLATE_EVENT(FOnTextChanged, OnTextChanged) \
	SLATE_EVENT(FOnTextCommitted, OnTextCommitted) \
	SLATE_EVENT(FOnKeyChar, OnKeyCharHandler) \
	SLATE_EVENT(FOnKeyDown, OnKeyDownHandler)

/** The set-up that these arguments ask for. Losing the keyboard on Enter and a context menu are there unless switched off. */
template <typename ArgumentsType>
FHostTextSetup MakeHostLineSetup(const ArgumentsType& Arguments)
{
	FHostTextSetup Setup;
	Setup.Text = Arguments._Text;
	Setup.HintText = Arguments._HintText;
	Setup.Font = Arguments._Font;
	Setup.IsReadOnly = Arguments._IsReadOnly;
	Setup.SelectAllTextWhenFocused = Arguments._SelectAllTextWhenFocused;
	Setup.RevertTextOnEscape = Arguments._RevertTextOnEscape;
	Setup.ClearKeyboardFocusOnCommit =
		Arguments._ClearKeyboardFocusOnCommit.IsSet() ? Arguments._ClearKeyboardFocusOnCommit : TAttribute<bool>(true);
	Setup.AllowContextMenu = Arguments._AllowContextMenu.IsSet() ? Arguments._AllowContextMenu : TAttribute<bool>(true);
	Setup.MinDesiredWidth = Arguments._MinDesiredWidth;
	Setup.OnTextChanged = Arguments._OnTextChanged;
	Setup.OnTextCommitted = Arguments._OnTextCommitted;
	Setup.OnKeyCharHandler = Arguments._OnKeyCharHandler;
	Setup.OnKeyDownHandler = Arguments._OnKeyDownHandler;
	return Setup;
}
