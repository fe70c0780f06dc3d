#include "Framework/Commands/InputChord.h"

namespace
{
	struct FKeySign
	{
		const FKey* Key;
		const TCHAR* Sign;
	};

	// As it is printed on the key, which has little room in a menu. Keys that are not here are called by their names.
	const FKeySign KeySigns[] = {
		{ &EKeys::Zero, TEXT("0") },
		{ &EKeys::One, TEXT("1") },
		{ &EKeys::Two, TEXT("2") },
		{ &EKeys::Three, TEXT("3") },
		{ &EKeys::Four, TEXT("4") },
		{ &EKeys::Five, TEXT("5") },
		{ &EKeys::Six, TEXT("6") },
		{ &EKeys::Seven, TEXT("7") },
		{ &EKeys::Eight, TEXT("8") },
		{ &EKeys::Nine, TEXT("9") },
		{ &EKeys::Semicolon, TEXT(";") },
		{ &EKeys::Equals, TEXT("=") },
		{ &EKeys::Comma, TEXT(",") },
		{ &EKeys::Hyphen, TEXT("-") },
		{ &EKeys::Period, TEXT(".") },
		{ &EKeys::Slash, TEXT("/") },
		{ &EKeys::Tilde, TEXT("`") },
		{ &EKeys::LeftBracket, TEXT("[") },
		{ &EKeys::Backslash, TEXT("\\") },
		{ &EKeys::RightBracket, TEXT("]") },
		{ &EKeys::Apostrophe, TEXT("'") },
		{ &EKeys::Add, TEXT("Num +") },
		{ &EKeys::Subtract, TEXT("Num -") },
		{ &EKeys::Multiply, TEXT("Num *") },
		{ &EKeys::Divide, TEXT("Num /") },
		{ &EKeys::Decimal, TEXT("Num .") },
		{ &EKeys::PageUp, TEXT("Page Up") },
		{ &EKeys::PageDown, TEXT("Page Down") },
		{ &EKeys::SpaceBar, TEXT("Space Bar") },
		{ &EKeys::BackSpace, TEXT("Backspace") },
	};

	FString GetSign(const FKey& Key)
	{
		for (const FKeySign& Row : KeySigns)
		{
			if (*Row.Key == Key)
			{
				return Row.Sign;
			}
		}
		return Key.ToString();
	}
}

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
	return FText::FromString(Text + GetSign(Key));
}
