#include "Misc/CString.h"

#include "Containers/StringView.h"

#include <charconv>
#include <cmath>
#include <limits>

// Numbers read as the C library reads them, with two differences: the locale is never asked (a point is a point), and a
// value that does not fit becomes the nearest one that does.

namespace
{
	const TCHAR* SkipBlanks(const TCHAR* String)
	{
		while (FChar::IsWhitespace(*String))
		{
			++String;
		}
		return String;
	}

	int32 DigitValue(TCHAR Char)
	{
		if (FChar::IsDigit(Char))
		{
			return Char - '0';
		}
		const TCHAR Lower = Char < 128 ? FChar::ToLower(Char) : (TCHAR)0;
		return Lower >= 'a' && Lower <= 'z' ? Lower - 'a' + 10 : 99;
	}

	/** Magnitude and sign of the number at Start; the magnitude stops at the largest value. */
	uint64 ParseInteger(const TCHAR* Start, const TCHAR*& OutEnd, int32 Base, bool& bOutNegative)
	{
		OutEnd = Start;
		bOutNegative = false;
		const TCHAR* It = SkipBlanks(Start);
		if (*It == '+' || *It == '-')
		{
			bOutNegative = *It++ == '-';
		}
		if ((Base == 0 || Base == 16) && It[0] == '0' && (It[1] == 'x' || It[1] == 'X') && DigitValue(It[2]) < 16)
		{
			It += 2;
			Base = 16;
		}
		else if (Base == 0)
		{
			Base = *It == '0' ? 8 : 10;
		}
		uint64 Value = 0;
		for (; DigitValue(*It) < Base; ++It)
		{
			const uint64 Digit = (uint64)DigitValue(*It);
			Value = Value > (std::numeric_limits<uint64>::max() - Digit) / (uint64)Base ? std::numeric_limits<uint64>::max()
																						: Value * (uint64)Base + Digit;
			OutEnd = It + 1;
		}
		return Value;
	}

	int32 CompareUpTo(const TCHAR* A, const TCHAR* B, SIZE_T Count, bool bIgnoreCase)
	{
		for (; Count > 0; --Count, ++A, ++B)
		{
			const TCHAR X = bIgnoreCase ? FChar::ToLower(*A) : *A;
			const TCHAR Y = bIgnoreCase ? FChar::ToLower(*B) : *B;
			if (X != Y)
			{
				return X < Y ? -1 : 1;
			}
			if (!X)
			{
				break;
			}
		}
		return 0;
	}
}

int32 FCString::Strlen(const TCHAR* String)
{
	return (int32)std::char_traits<TCHAR>::length(String);
}

int32 FCString::Strnlen(const TCHAR* String, SIZE_T StringSize)
{
	SIZE_T Length = 0;
	while (Length < StringSize && String[Length])
	{
		++Length;
	}
	return (int32)Length;
}

int32 FCString::Stricmp(const TCHAR* A, const TCHAR* B)
{
	return CompareUpTo(A, B, std::numeric_limits<SIZE_T>::max(), true);
}

int64 FCString::Strtoi64(const TCHAR* Start, TCHAR** OutEnd, int32 Base)
{
	const TCHAR* End;
	bool bNegative;
	const uint64 Magnitude = ParseInteger(Start, End, Base, bNegative);
	if (OutEnd)
	{
		*OutEnd = const_cast<TCHAR*>(End);
	}
	const uint64 Highest = (uint64)std::numeric_limits<int64>::max();
	if (bNegative)
	{
		return Magnitude > Highest ? std::numeric_limits<int64>::min() : -(int64)Magnitude;
	}
	return (int64)(Magnitude > Highest ? Highest : Magnitude);
}

uint64 FCString::Strtoui64(const TCHAR* Start, TCHAR** OutEnd, int32 Base)
{
	const TCHAR* End;
	bool bNegative;
	const uint64 Magnitude = ParseInteger(Start, End, Base, bNegative);
	if (OutEnd)
	{
		*OutEnd = const_cast<TCHAR*>(End);
	}
	return bNegative ? 0 - Magnitude : Magnitude;
}

int32 FCString::Strtoi(const TCHAR* Start, TCHAR** OutEnd, int32 Base)
{
	const int64 Value = Strtoi64(Start, OutEnd, Base);
	if (Value > std::numeric_limits<int32>::max())
	{
		return std::numeric_limits<int32>::max();
	}
	return Value < std::numeric_limits<int32>::min() ? std::numeric_limits<int32>::min() : (int32)Value;
}

int32 FCString::Atoi(const TCHAR* String)
{
	return Strtoi(String, nullptr, 10);
}

// Longest prefix that is a number; anything else is zero.
double FCString::Atod(const TCHAR* String)
{
	// Only the units a number can have are looked at, so the copy stays short.
	const TCHAR* It = SkipBlanks(String);
	if (*It == '+')
	{
		++It;
	}
	std::string Narrow;
	while (*It < 128 && (FChar::IsAlnum(*It) || *It == '+' || *It == '-' || *It == '.'))
	{
		Narrow.push_back((char)*It++);
	}
	double Value = 0.0;
	const std::from_chars_result Result = std::from_chars(Narrow.data(), Narrow.data() + Narrow.size(), Value);
	if (Result.ec == std::errc::result_out_of_range)
	{
		// Too large or too small: the exponent's sign tells which.
		const bool bSmall = Narrow.find("e-") != std::string::npos || Narrow.find("E-") != std::string::npos ||
			(Narrow.find_first_not_of("-.0") != std::string::npos && Narrow.find('.') < Narrow.find_first_of("123456789"));
		Value = bSmall ? 0.0 : HUGE_VAL;
		return Narrow[0] == '-' ? -Value : Value;
	}
	return Result.ec == std::errc() ? Value : 0.0;
}

float FCString::Atof(const TCHAR* String)
{
	return (float)Atod(String);
}

bool FCString::ToBool(const TCHAR* String)
{
	return Stricmp(String, TEXT("true")) == 0 || Stricmp(String, TEXT("yes")) == 0 || Stricmp(String, TEXT("on")) == 0 || Atoi(String) != 0;
}

bool FCString::IsNumeric(const TCHAR* String)
{
	if (*String == '-' || *String == '+')
	{
		++String;
	}
	bool bHasPoint = false;
	bool bHasDigit = false;
	for (; *String; ++String)
	{
		if (*String == '.' && !bHasPoint)
		{
			bHasPoint = true;
		}
		else if (FChar::IsDigit(*String))
		{
			bHasDigit = true;
		}
		else
		{
			return false;
		}
	}
	return bHasDigit;
}
