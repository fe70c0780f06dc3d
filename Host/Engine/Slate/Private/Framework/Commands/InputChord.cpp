#include "Framework/Commands/InputChord.h"

FText FInputChord::GetInputText() const
{
	if (!IsValidChord())
	{
		return FText::GetEmpty();
	}
	FString Text;
	Text += bCtrl ? TEXT("Ctrl+") : TEXT("");
	Text += bAlt ? TEXT("Alt+") : TEXT("");
	Text += bShift ? TEXT("Shift+") : TEXT("");
	Text += bCmd ? TEXT("Super+") : TEXT("");
	return FText::FromString(Text + Key.ToString());
}
