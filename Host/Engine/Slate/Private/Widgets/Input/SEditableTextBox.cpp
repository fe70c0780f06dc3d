#include "Widgets/Input/SEditableTextBox.h"

void SEditableTextBox::Construct(const FArguments& InArgs)
{
	FHostTextSetup NewSetup;
	NewSetup.BoxStyle =
		InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FEditableTextBoxStyle>(TEXT("NormalEditableTextBox"));
	NewSetup.Text = InArgs._Text;
	NewSetup.HintText = InArgs._HintText;
	NewSetup.Font = InArgs._Font;
	NewSetup.ForegroundColor = InArgs._ForegroundColor;
	NewSetup.BackgroundColor = InArgs._BackgroundColor;
	NewSetup.IsReadOnly = InArgs._IsReadOnly;
	NewSetup.SelectAllTextWhenFocused = InArgs._SelectAllTextWhenFocused;
	NewSetup.RevertTextOnEscape = InArgs._RevertTextOnEscape;
	NewSetup.ClearKeyboardFocusOnCommit =
		InArgs._ClearKeyboardFocusOnCommit.IsSet() ? InArgs._ClearKeyboardFocusOnCommit : TAttribute<bool>(true);
	NewSetup.AllowContextMenu = InArgs._AllowContextMenu.IsSet() ? InArgs._AllowContextMenu : TAttribute<bool>(true);
	NewSetup.MinDesiredWidth = InArgs._MinDesiredWidth;
	NewSetup.Padding = InArgs._Padding;
	NewSetup.OnTextChanged = InArgs._OnTextChanged;
	NewSetup.OnTextCommitted = InArgs._OnTextCommitted;
	NewSetup.OnKeyCharHandler = InArgs._OnKeyCharHandler;
	NewSetup.OnKeyDownHandler = InArgs._OnKeyDownHandler;
	SetUp(MoveTemp(NewSetup));
}
