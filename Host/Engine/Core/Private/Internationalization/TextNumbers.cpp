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

	/** The shortest digits that read back as the same double, so that 0.285 rounds as it is written. */
	FDecimal ToDecimal(double Value, int32 Shift)
	{
		char Buffer[1100];
		const std::to_chars_result Result = std::to_chars(Buffer, Buffer + sizeof(Buffer), std::fabs(Value), std::chars_format::fixed);
		const std::string Text(Buffer, Result.ptr);
		const std::size_t Point = Text.find('.');
		FDecimal Decimal;
		Decimal.bNegative = std::signbit(Value);
		Decimal.Whole = Text.substr(0, Point);
		Decimal.Fraction = Point == std::string::npos ? std::string() : Text.substr(Point + 1);
		for (; Shift > 0; --Shift)
		{
			Decimal.Whole.push_back(Decimal.Fraction.empty() ? '0' : Decimal.Fraction[0]);
			Decimal.Fraction.erase(0, 1);
		}
		return Decimal;
	}

	bool RoundsUp(const FDecimal& Decimal, const std::string& Dropped, ERoundingMode Mode)
	{
		if (Dropped.find_first_not_of('0') == std::string::npos)
		{
			return false;
		}
		const bool bAboveHalf = Dropped[0] > '5' || (Dropped[0] == '5' && Dropped.find_first_not_of('0', 1) != std::string::npos);
		const bool bHalf = Dropped[0] == '5' && !bAboveHalf;
		const char Last = !Decimal.Fraction.empty() ? Decimal.Fraction.back() : (Decimal.Whole.empty() ? '0' : Decimal.Whole.back());
		switch (Mode)
		{
		case HalfToEven:
			return bAboveHalf || (bHalf && (Last - '0') % 2 == 1);
		case HalfFromZero:
			return bAboveHalf || bHalf;
		case HalfToZero:
			return bAboveHalf;
		case FromZero:
			return true;
		case ToZero:
			return false;
		case ToNegativeInfinity:
			return Decimal.bNegative;
		case ToPositiveInfinity:
			return !Decimal.bNegative;
		}
		return false;
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

	FText Write(FDecimal Decimal, const FNumberFormattingOptions& Options, const TCHAR* Suffix)
	{
		const std::size_t MaxFraction = (std::size_t)(Options.MaximumFractionalDigits < 0 ? 0 : Options.MaximumFractionalDigits);
		if (Decimal.Fraction.size() > MaxFraction)
		{
			const std::string Dropped = Decimal.Fraction.substr(MaxFraction);
			Decimal.Fraction.resize(MaxFraction);
			if (RoundsUp(Decimal, Dropped, Options.RoundingMode))
			{
				AddOneInLastPlace(Decimal);
			}
		}
		while (
			!Decimal.Fraction.empty() && (int32)Decimal.Fraction.size() > Options.MinimumFractionalDigits && Decimal.Fraction.back() == '0')
		{
			Decimal.Fraction.pop_back();
		}
		while ((int32)Decimal.Fraction.size() < Options.MinimumFractionalDigits && Decimal.Fraction.size() < MaxFraction)
		{
			Decimal.Fraction.push_back('0');
		}
		Decimal.Whole.erase(
			0, Decimal.Whole.find_first_not_of('0') == std::string::npos ? Decimal.Whole.size() : Decimal.Whole.find_first_not_of('0'));
		if ((int32)Decimal.Whole.size() > Options.MaximumIntegralDigits)
		{
			Decimal.Whole.erase(
				0, Decimal.Whole.size() - (std::size_t)(Options.MaximumIntegralDigits < 0 ? 0 : Options.MaximumIntegralDigits));
		}
		if ((int32)Decimal.Whole.size() < Options.MinimumIntegralDigits)
		{
			Decimal.Whole.insert(0, (std::size_t)Options.MinimumIntegralDigits - Decimal.Whole.size(), '0');
		}

		FString Result;
		if (Decimal.bNegative)
		{
			Result += TEXT('-');
		}
		else if (Options.AlwaysSign)
		{
			Result += TEXT('+');
		}
		for (std::size_t Index = 0; Index < Decimal.Whole.size(); ++Index)
		{
			if (Options.UseGrouping && Index > 0 && (Decimal.Whole.size() - Index) % 3 == 0)
			{
				Result += TEXT(',');
			}
			Result += Decimal.Whole[Index];
		}
		if (!Decimal.Fraction.empty())
		{
			Result += TEXT('.');
			for (const char Digit : Decimal.Fraction)
			{
				Result += Digit;
			}
		}
		Result += Suffix;
		return FText::FromString(MoveTemp(Result));
	}

	FText WriteDouble(double Value, int32 Shift, const FNumberFormattingOptions& Options, const TCHAR* Suffix)
	{
		if (std::isnan(Value))
		{
			return FText::FromString(TEXT("NaN"));
		}
		if (std::isinf(Value))
		{
			return FText::FromString(FString(Value < 0 ? TEXT("-\u221e") : TEXT("\u221e")) + Suffix);
		}
		return Write(ToDecimal(Value, Shift), Options, Suffix);
	}

	FText WriteInteger(uint64 Magnitude, bool bNegative, const FNumberFormattingOptions* Options)
	{
		FDecimal Decimal;
		Decimal.Whole = std::to_string(Magnitude);
		Decimal.bNegative = bNegative;
		return Write(std::move(Decimal), Options ? *Options : FNumberFormattingOptions::DefaultWithGrouping(), TEXT(""));
	}
}

const FNumberFormattingOptions& FNumberFormattingOptions::DefaultWithGrouping()
{
	static const FNumberFormattingOptions Options;
	return Options;
}

const FNumberFormattingOptions& FNumberFormattingOptions::DefaultNoGrouping()
{
	static const FNumberFormattingOptions Options = FNumberFormattingOptions().SetUseGrouping(false);
	return Options;
}

FText FText::AsNumber(int64 Value, const FNumberFormattingOptions* Options, const FCulturePtr&)
{
	return WriteInteger(Value < 0 ? 0 - (uint64)Value : (uint64)Value, Value < 0, Options);
}

FText FText::AsNumber(uint64 Value, const FNumberFormattingOptions* Options, const FCulturePtr&)
{
	return WriteInteger(Value, false, Options);
}

FText FText::AsNumber(double Value, const FNumberFormattingOptions* Options, const FCulturePtr&)
{
	return WriteDouble(Value, 0, Options ? *Options : FNumberFormattingOptions::DefaultWithGrouping(), TEXT(""));
}

FText FText::AsPercent(double Value, const FNumberFormattingOptions* Options, const FCulturePtr&)
{
	static const FNumberFormattingOptions WholePercent = FNumberFormattingOptions().SetMaximumFractionalDigits(0);
	return WriteDouble(Value, 2, Options ? *Options : WholePercent, TEXT("%"));
}
