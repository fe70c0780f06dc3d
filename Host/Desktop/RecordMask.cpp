#include "RecordMask.h"

namespace
{
	TCHAR MaskUnit(TCHAR Unit)
	{
		if (Unit >= TEXT('A') && Unit <= TEXT('Z'))
		{
			return TEXT('X');
		}
		if (Unit >= TEXT('0') && Unit <= TEXT('9'))
		{
			return TEXT('0');
		}
		// Beyond ASCII each unit counts for itself: places in the text stay what they are.
		const bool bIsSign = static_cast<uint32>(Unit) < 0x80;
		return bIsSign && !(Unit >= TEXT('a') && Unit <= TEXT('z')) ? Unit : TEXT('x');
	}

	/** The place of the quote that ends the string which begins there, or the end. */
	int32 FindStringEnd(FStringView Text, int32 Begin)
	{
		int32 Index = Begin + 1;
		while (Index < Text.Len() && Text[Index] != TEXT('"'))
		{
			Index += Text[Index] == TEXT('\\') ? 2 : 1;
		}
		return FMath::Min(Index, Text.Len());
	}

	bool IsName(FStringView Text, int32 StringEnd)
	{
		int32 Index = StringEnd + 1;
		while (Index < Text.Len() && Text[Index] <= TEXT(' '))
		{
			++Index;
		}
		return Index < Text.Len() && Text[Index] == TEXT(':');
	}

	int32 FindBareEnd(FStringView Text, int32 Begin)
	{
		const FStringView Signs(TEXT("\",:[]{}"));
		const auto IsWord = [&Text, &Signs](int32 At)
		{
			int32 Found = INDEX_NONE;
			return Text[At] > TEXT(' ') && !Signs.FindChar(Text[At], Found);
		};
		int32 Index = Begin + 1;
		while (IsWord(Begin) && Index < Text.Len() && IsWord(Index))
		{
			++Index;
		}
		return Index;
	}

	/** Numbers and the three words of the format stay such; what is none of them may be anything. */
	void AppendMaskedBare(FString& Out, FStringView Bare)
	{
		const bool bIsWord = Bare.Equals(TEXT("true")) || Bare.Equals(TEXT("false")) || Bare.Equals(TEXT("null"));
		const TCHAR First = Bare[0];
		const bool bIsNumber = First == TEXT('-') || (First >= TEXT('0') && First <= TEXT('9'));
		for (const TCHAR Unit : Bare)
		{
			const bool bIsDigit = Unit >= TEXT('0') && Unit <= TEXT('9');
			const bool bIsExponent = bIsNumber && (Unit == TEXT('e') || Unit == TEXT('E'));
			// No number begins with a 0 that more follow.
			Out.AppendChar(bIsDigit ? TEXT('1') : bIsWord || bIsExponent ? Unit : MaskUnit(Unit));
		}
	}

	/** An escape becomes one letter: what it stands for says something, too. */
	void AppendMaskedString(FString& Out, FStringView Inside)
	{
		for (int32 Index = 0; Index < Inside.Len(); ++Index)
		{
			if (Inside[Index] != TEXT('\\'))
			{
				Out.AppendChar(MaskUnit(Inside[Index]));
				continue;
			}
			const TCHAR Letter = ++Index < Inside.Len() ? Inside[Index] : TEXT('\0');
			if (Letter == TEXT('n') || Letter == TEXT('t') || Letter == TEXT('"') || Letter == TEXT('\\') || Letter == TEXT('/'))
			{
				Out.AppendChar(TEXT('\\'));
				Out.AppendChar(Letter);
				continue;
			}
			Index += Letter == TEXT('u') ? 4 : 0;
			Out.AppendChar(TEXT('x'));
		}
	}
}

FString FRecordMask::MaskText(FStringView Text)
{
	FString Masked;
	Masked.Reserve(Text.Len());
	for (const TCHAR Unit : Text)
	{
		Masked.AppendChar(MaskUnit(Unit));
	}
	return Masked;
}

FString FRecordMask::MaskProgress(const FString& Text)
{
	const FString Step = TEXT("Executing step");
	return Text.StartsWith(Step, ESearchCase::CaseSensitive) ? Step + MaskText(FStringView(Text).RightChop(Step.Len())) : MaskText(Text);
}

FString FRecordMask::MaskJson(FStringView Text)
{
	FString Masked;
	Masked.Reserve(Text.Len());
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		const TCHAR Unit = Text[Index];
		if (Unit != TEXT('"'))
		{
			const int32 End = FindBareEnd(Text, Index);
			AppendMaskedBare(Masked, Text.Mid(Index, End - Index));
			Index = End - 1;
			continue;
		}
		const int32 End = FindStringEnd(Text, Index);
		const FStringView Inside = Text.Mid(Index + 1, End - Index - 1);
		Masked.AppendChar(TEXT('"'));
		if (IsName(Text, End))
		{
			Masked.Append(Inside);
		}
		else
		{
			AppendMaskedString(Masked, Inside);
		}
		if (End < Text.Len())
		{
			Masked.AppendChar(TEXT('"'));
		}
		Index = End;
	}
	return Masked;
}

FKey FRecordMask::MaskKey(const FKey& Key, const FModifierKeysState& Modifiers)
{
	static const FKey Digits[] = { EKeys::Zero, EKeys::One, EKeys::Two, EKeys::Three, EKeys::Four, EKeys::Five, EKeys::Six, EKeys::Seven,
		EKeys::Eight, EKeys::Nine, EKeys::NumPadZero, EKeys::NumPadOne, EKeys::NumPadTwo, EKeys::NumPadThree, EKeys::NumPadFour,
		EKeys::NumPadFive, EKeys::NumPadSix, EKeys::NumPadSeven, EKeys::NumPadEight, EKeys::NumPadNine };
	if (Modifiers.IsControlDown() || Modifiers.IsAltDown() || Modifiers.IsCommandDown())
	{
		return Key;
	}
	bool bTypes = Key.ToString().Len() == 1;
	for (const FKey& Digit : Digits)
	{
		bTypes = bTypes || Key == Digit;
	}
	return bTypes ? EKeys::X : Key;
}
