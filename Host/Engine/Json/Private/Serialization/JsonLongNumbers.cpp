#include "Serialization/JsonLongNumbers.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <string>

namespace
{
	bool IsOfNumber(TCHAR Unit)
	{
		constexpr FStringView Others = TEXTVIEW("+-.eE");
		int32 Place = INDEX_NONE;
		return FChar::IsDigit(Unit) || Others.FindChar(Unit, Place);
	}

	/** Passes over the digits at Index. @return How many there are. */
	int32 SkipDigits(const std::string& Text, std::size_t& Index)
	{
		const std::size_t Begin = Index;
		while (Index < Text.size() && Text[Index] >= '0' && Text[Index] <= '9')
		{
			++Index;
		}
		return int32(Index - Begin);
	}

	/** Whether Text is a good number of more digits than a double holds exactly, or one with an exponent. */
	bool IsLongNumber(const std::string& Text)
	{
		std::size_t Index = Text[0] == '-' ? 1 : 0;
		const bool bLeadingZero = Text[Index] == '0';
		int32 Digits = SkipDigits(Text, Index);
		if (Digits == 0 || (bLeadingZero && Digits > 1))
		{
			return false;
		}
		if (Text[Index] == '.')
		{
			const int32 Fraction = SkipDigits(Text, ++Index);
			if (Fraction == 0)
			{
				return false;
			}
			Digits += Fraction;
		}
		const bool bExponent = Text[Index] == 'e' || Text[Index] == 'E';
		if (bExponent)
		{
			++Index;
			Index += Text[Index] == '+' || Text[Index] == '-' ? 1 : 0;
			if (SkipDigits(Text, Index) == 0)
			{
				return false;
			}
		}
		return Index == Text.size() && (bExponent || Digits > std::numeric_limits<double>::digits10);
	}
}

TArray<FJsonLongNumber> TakeJsonLongNumbers(FString& Text)
{
	static const locale_t PointLocale = newlocale(LC_ALL_MASK, "C", nullptr);
	TArray<FJsonLongNumber> LongNumbers;
	std::string Number;
	int32 Ordinal = 0;
	bool bInString = false;
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		const TCHAR Letter = Text[Index];
		if (bInString || (Letter != TEXT('-') && !FChar::IsDigit(Letter)))
		{
			Index += bInString && Letter == TEXT('\\') ? 1 : 0;
			bInString = bInString != (Letter == TEXT('"'));
			continue;
		}
		const int32 Begin = Index;
		for (Number.clear(); Index < Text.Len() && IsOfNumber(Text[Index]); ++Index)
		{
			Number += char(Text[Index]);
		}
		if (IsLongNumber(Number))
		{
			LongNumbers.Add({ Ordinal, strtod_l(Number.c_str(), nullptr, PointLocale) });
			Text[Begin] = TEXT('0');
			std::fill(&Text[Begin] + 1, &Text[Begin] + Number.size(), TEXT(' '));
		}
		++Ordinal;
		--Index;
	}
	return LongNumbers;
}
