#include "Widgets/Input/SEditableText.h"

void SEditableText::Construct(const FArguments& InArgs)
{
	FHostTextSetup NewSetup;
	NewSetup.Text = InArgs._Text;
	NewSetup.HintText = InArgs._HintText;
	NewSetup.Font = InArgs._Font;
	NewSetup.ForegroundColor = InArgs._ColorAndOpacity;
	NewSetup.IsReadOnly = InArgs._IsReadOnly;
	NewSetup.SelectAllTextWhenFocused = InArgs._SelectAllTextWhenFocused;
	NewSetup.RevertTextOnEscape = InArgs._RevertTextOnEscape;
	NewSetup.ClearKeyboardFocusOnCommit =
		InArgs._ClearKeyboardFocusOnCommit.IsSet() ? InArgs._ClearKeyboardFocusOnCommit : TAttribute<bool>(true);
	NewSetup.AllowContextMenu = InArgs._AllowContextMenu.IsSet() ? InArgs._AllowContextMenu : TAttribute<bool>(true);
	NewSetup.MinDesiredWidth = InArgs._MinDesiredWidth;
	NewSetup.TextStyle = InArgs._Style;
	NewSetup.OnTextChanged = InArgs._OnTextChanged;
	NewSetup.OnTextCommitted = InArgs._OnTextCommitted;
	NewSetup.OnKeyCharHandler = InArgs._OnKeyCharHandler;
	NewSetup.OnKeyDownHandler = InArgs._OnKeyDownHandler;
	SetUp(MoveTemp(NewSetup));
}
