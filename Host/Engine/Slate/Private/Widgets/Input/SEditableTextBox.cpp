#include "Widgets/Input/SEditableTextBox.h"

void SEditableTextBox::Construct(const FArguments& InArgs)
{
	FHostTextSetup NewSetup = MakeHostLineSetup(InArgs);
	NewSetup.BoxStyle =
		InArgs._Style ? InArgs._Style : &FAppStyle::Get().GetWidgetStyle<FEditableTextBoxStyle>(TEXT("NormalEditableTextBox"));
	NewSetup.ForegroundColor = InArgs._ForegroundColor;
	NewSetup.BackgroundColor = InArgs._BackgroundColor;
	NewSetup.Padding = InArgs._Padding;
	SetUp(MoveTemp(NewSetup));
}
