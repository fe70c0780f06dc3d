#include "Widgets/Input/SEditableText.h"

void SEditableText::Construct(const FArguments& InArgs)
{
	FHostTextSetup NewSetup = MakeHostLineSetup(InArgs);
	NewSetup.ForegroundColor = InArgs._ColorAndOpacity;
	NewSetup.TextStyle = InArgs._Style;
	SetUp(MoveTemp(NewSetup));
}
