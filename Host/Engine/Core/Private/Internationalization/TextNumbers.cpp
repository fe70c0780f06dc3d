#include "Internationalization/Text.h"

#include <charconv>
#include <cmath>
#include <string>

// Numbers for people: commas between thousands, at most three decimals and halves to the even neighbour, unless options ask for
// something else. Done on decimal digits, because a double is not what is written: 2.6755 is stored a little lower and would round the
// other way.

namespace
{
	/** A number in decimal digits: Whole and Fraction without sign. */
	struct FDecimal
	{
		std::string Whole;
		std::string Fraction;
		bool bNegative = false;
	};

	/** Decimals of a number without options, as the editor writes it. */
	constexpr std::size_t MostDecimals = 3;

	/** The shortest digits that read back as the same double, so that 0.2855 rounds as it is written. */
	FDecimal ToDecimal(double Value)
	{
		char Buffer[1100];
		const std::to_chars_result Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), std::fabs(Value), std::chars_format::fixed);
		const std::string Text(Buffer, Result.ptr);
		const std::size_t Point = Text.find('.');
		FDecimal Decimal;
		Decimal.bNegative = std::signbit(Value);
		Decimal.Whole = Text.substr(0, Point);
		Decimal.Fraction = Point == std::string::npos ? std::string() : Text.substr(Point + 1);
		return Decimal;
	}

	/** Whether what is cut off makes the last digit one more: halves go to the even neighbour. */
	bool RoundsUp(const FDecimal& Decimal, const std::string& Dropped)
	{
		const bool bRest = Dropped.find_first_not_of('0', 1) != std::string::npos;
		if (Dropped[0] != '5' || bRest)
		{
			return Dropped[0] >= '5';
		}
		return (Decimal.Fraction.back() - '0') % 2 == 1;
	}

	void AddOneInLastPlace(FDecimal& Decimal)
	{
		for (std::string* Digits : { &Decimal.Fraction, &Decimal.Whole })
		{
			for (std::size_t Index = Digits->size(); Index-- > 0;)
			{
				if ((*Digits)[Index] != '9')
				{
					++(*Digits)[Index];
					return;
				}
				(*Digits)[Index] = '0';
			}
		}
		Decimal.Whole.insert(0, 1, '1');
	}

	FText Write(FDecimal Decimal)
	{
		// 1. Round to the decimals that are shown; zeros at the end say nothing.
		if (Decimal.Fraction.size() > MostDecimals)
		{
			const std::string Dropped = Decimal.Fraction.substr(MostDecimals);
			Decimal.Fraction.resize(MostDecimals);
			if (RoundsUp(Decimal, Dropped))
			{
				AddOneInLastPlace(Decimal);
			}
		}
		Decimal.Fraction.resize(Decimal.Fraction.find_last_not_of('0') + 1);

		// 2. Sign and whole part, a comma before each group of three.
		FString Result;
		if (Decimal.bNegative)
		{
			Result += TEXT('-');
		}
		for (std::size_t Index = 0; Index < Decimal.Whole.size(); ++Index)
		{
			if (Index > 0 && (Decimal.Whole.size() - Index) % 3 == 0)
			{
				Result += TEXT(',');
			}
			Result += Decimal.Whole[Index];
		}

		// 3. What is left of the decimals.
		if (!Decimal.Fraction.empty())
		{
			Result += TEXT('.');
			for (const char Digit : Decimal.Fraction)
			{
				Result += Digit;
			}
		}
		return FText::FromString(MoveTemp(Result));
	}

	FText WriteInteger(uint64 Magnitude, bool bNegative)
	{
		return Write({ std::to_string(Magnitude), std::string(), bNegative });
	}
}

FText FText::AsNumber(int64 Value)
{
	return WriteInteger(Value < 0 ? 0 - (uint64)Value : (uint64)Value, Value < 0);
}

FText FText::AsNumber(uint64 Value)
{
	return WriteInteger(Value, false);
}

FText FText::AsNumber(double Value)
{
	if (std::isnan(Value))
	{
		return FText::FromString(TEXT("NaN"));
	}
	if (std::isinf(Value))
	{
		return FText::FromString(FString(Value < 0 ? TEXT("-\u221e") : TEXT("\u221e")));
	}
	return Write(ToDecimal(Value));
}
