#include "Widgets/Input/SMultiLineEditableTextBox.h"

void SMultiLineEditableTextBox::Construct(const FArguments& InArgs)
{
	FHostTextSetup NewSetup;
	NewSetup.BoxStyle =
		InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FEditableTextBoxStyle>(TEXT("NormalEditableTextBox"));
	Marshaller = InArgs._Marshaller;
	NewSetup.Text = InArgs._Text;
	NewSetup.HintText = InArgs._HintText;
	NewSetup.Font = InArgs._Font;
	NewSetup.ForegroundColor = InArgs._ForegroundColor;
	if (InArgs._TextStyle)
	{
		NewSetup.Font = NewSetup.Font.IsSet() ? NewSetup.Font : TAttribute<FSlateFontInfo>(InArgs._TextStyle->Font);
		NewSetup.ForegroundColor =
			NewSetup.ForegroundColor.IsSet() ? NewSetup.ForegroundColor : TAttribute<FSlateColor>(InArgs._TextStyle->ColorAndOpacity);
	}
	NewSetup.BackgroundColor = InArgs._BackgroundColor;
	NewSetup.IsReadOnly = InArgs._IsReadOnly;
	NewSetup.AllowMultiLine = InArgs._AllowMultiLine.IsSet() ? InArgs._AllowMultiLine : TAttribute<bool>(true);
	NewSetup.AutoWrapText = InArgs._AutoWrapText;
	NewSetup.WrapTextAt = InArgs._WrapTextAt;
	NewSetup.AllowContextMenu = InArgs._AllowContextMenu.IsSet() ? InArgs._AllowContextMenu : TAttribute<bool>(true);
	NewSetup.SelectAllTextWhenFocused = InArgs._SelectAllTextWhenFocused;
	NewSetup.ClearTextSelectionOnFocusLoss = InArgs._ClearTextSelectionOnFocusLoss;
	NewSetup.RevertTextOnEscape = InArgs._RevertTextOnEscape;
	NewSetup.ClearKeyboardFocusOnCommit = InArgs._ClearKeyboardFocusOnCommit;
	NewSetup.bAlwaysShowScrollbars = InArgs._AlwaysShowScrollbars;
	NewSetup.NewLineModifier = InArgs._ModiferKeyForNewLine;
	NewSetup.Padding = InArgs._Padding;
	if (InArgs._Margin.IsSet())
	{
		const TAttribute<FMargin> Padding = InArgs._Padding.IsSet() ? InArgs._Padding : TAttribute<FMargin>(NewSetup.BoxStyle->Padding);
		const TAttribute<FMargin> Margin = InArgs._Margin;
		NewSetup.Padding = TAttribute<FMargin>::CreateLambda(
			[Padding, Margin]()
			{
				const FMargin Outer = Padding.Get();
				const FMargin Inner = Margin.Get();
				return FMargin(Outer.Left + Inner.Left, Outer.Top + Inner.Top, Outer.Right + Inner.Right, Outer.Bottom + Inner.Bottom);
			});
	}
	NewSetup.OnTextChanged = InArgs._OnTextChanged;
	NewSetup.OnTextCommitted = InArgs._OnTextCommitted;
	NewSetup.OnKeyCharHandler = InArgs._OnKeyCharHandler;
	NewSetup.OnKeyDownHandler = InArgs._OnKeyDownHandler;
	NewSetup.OnCursorMoved = InArgs._OnCursorMoved;
	SetUp(MoveTemp(NewSetup));
}
