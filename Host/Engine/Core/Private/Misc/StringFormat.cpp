#include "Misc/StringFormat.h"

#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"

#include <charconv>
#include <cmath>
#include <string>

// Printf for 16-bit text, written out because the C library's follows the locale and knows no 16-bit characters. Which
// argument a placeholder may have is checked by the compiler where the format is a literal (see the header); here it is
// only formatted.

namespace UE::StringFormat
{
	namespace
	{
		/** Sign or prefix, then body, padded to the width. Zeros go between the two. */
		void AppendPadded(FString& Out, const FSpec& Spec, const char* Prefix, FStringView Body, bool bZeroAllowed)
		{
			int32 PrefixLen = (int32)std::char_traits<char>::length(Prefix);
			int32 Fill = Spec.Width - PrefixLen - Body.Len();
			const bool bZeros = Spec.bZero && !Spec.bLeft && bZeroAllowed;
			for (; !Spec.bLeft && !bZeros && Fill > 0; --Fill)
			{
				Out.AppendChar(TEXT(' '));
			}
			while (*Prefix)
			{
				Out.AppendChar((TCHAR)*Prefix++);
			}
			for (; bZeros && Fill > 0; --Fill)
			{
				Out.AppendChar(TEXT('0'));
			}
			Out.Append(Body);
			for (; Fill > 0; --Fill)
			{
				Out.AppendChar(TEXT(' '));
			}
		}

		void AppendNarrow(FString& Out, const FSpec& Spec, const char* Prefix, const std::string& Body, bool bZeroAllowed)
		{
			const std::u16string Wide(Body.begin(), Body.end());
			AppendPadded(Out, Spec, Prefix, FStringView(Wide.data(), (int32)Wide.size()), bZeroAllowed);
		}

		const char* SignOf(bool bNegative, const FSpec& Spec)
		{
			return bNegative ? "-" : (Spec.bPlus ? "+" : (Spec.bSpace ? " " : ""));
		}

		// 1. The value as C reads it. 2. Its digits. 3. Digits up to the precision. 4. Sign or prefix, and padding; a
		// precision switches padding with zeros off.
		void AppendInteger(FString& Out, const FSpec& Spec, const FArg& Arg)
		{
			const bool bNarrow = Arg.Kind == EArg::Int || Arg.Kind == EArg::Char;
			const bool bDecimalSigned = Spec.Conversion == 'd' || Spec.Conversion == 'i';
			int64 Signed = Arg.Integer;
			if (bNarrow && bDecimalSigned)
			{
				Signed = (int32)Arg.Integer; // As C reads it: %d of an unsigned value is its signed twin.
			}
			const bool bNegative = bDecimalSigned && Signed < 0;
			uint64 Magnitude = bNegative ? 0 - (uint64)Signed : (uint64)Signed;
			if (bNarrow && !bDecimalSigned)
			{
				Magnitude = (uint32)Arg.Integer;
			}
			const int32 Base = Spec.Conversion == 'x' || Spec.Conversion == 'X' ? 16 : (Spec.Conversion == 'o' ? 8 : 10);
			char Buffer[72];
			const char* End = std::to_chars(Buffer, Buffer + sizeof(Buffer), Magnitude, Base).ptr;
			std::string Body(static_cast<const char*>(Buffer), End);
			if (Spec.Conversion == 'X')
			{
				for (char& Each : Body)
				{
					Each = (char)FChar::ToUpper((TCHAR)Each);
				}
			}
			if (Spec.Precision == 0 && Magnitude == 0)
			{
				Body.clear();
			}
			if ((int32)Body.size() < Spec.Precision)
			{
				Body.insert(0, (std::size_t)Spec.Precision - Body.size(), '0');
			}
			const char* Prefix = bDecimalSigned ? SignOf(bNegative, Spec) : "";
			if (Spec.bAlternate && Magnitude != 0 && Base == 16)
			{
				Prefix = Spec.Conversion == 'X' ? "0X" : "0x";
			}
			AppendNarrow(Out, Spec, Prefix, Body, Spec.Precision == INDEX_NONE);
		}

		// Digits come from std::to_chars, which is exact and knows no locale.
		void AppendFloat(FString& Out, const FSpec& Spec, double Value)
		{
			const bool bUpper = FChar::IsUpper(Spec.Conversion);
			const TCHAR Kind = FChar::ToLower(Spec.Conversion);
			const bool bNegative = std::signbit(Value);
			std::string Body;
			if (!std::isfinite(Value))
			{
				Body = std::isnan(Value) ? "nan" : "inf";
			}
			else
			{
				const std::chars_format Format =
					Kind == 'f' ? std::chars_format::fixed : (Kind == 'e' ? std::chars_format::scientific : std::chars_format::general);
				const int32 Precision = Spec.Precision == INDEX_NONE ? 6 : Spec.Precision;
				Body.resize((std::size_t)Precision + 340); // The largest double has 309 digits before the point.
				const std::to_chars_result Result =
					std::to_chars(Body.data(), Body.data() + Body.size(), std::fabs(Value), Format, Precision);
				Body.resize((std::size_t)(Result.ptr - Body.data()));
			}
			if (bUpper)
			{
				for (char& Each : Body)
				{
					Each = (char)FChar::ToUpper((TCHAR)Each);
				}
			}
			AppendNarrow(Out, Spec, SignOf(bNegative, Spec), Body, std::isfinite(Value));
		}

		void AppendText(FString& Out, const FSpec& Spec, FStringView Text)
		{
			AppendPadded(Out, Spec, "", Spec.Precision == INDEX_NONE ? Text : Text.Left(Spec.Precision), false);
		}

		void AppendOne(FString& Out, const FSpec& Spec, const FArg& Arg)
		{
			switch (Spec.Conversion)
			{
			case 'f':
			case 'F':
			case 'g':
			case 'G':
			case 'e':
			case 'E':
				AppendFloat(Out, Spec, Arg.Float);
				break;
			case 'c':
			{
				const TCHAR Char = (TCHAR)Arg.Integer;
				AppendPadded(Out, Spec, "", FStringView(&Char, 1), false);
				break;
			}
			case 's':
			case 'S':
				if (Arg.Kind == EArg::AnsiString)
				{
					AppendText(Out, Spec, FUTF8ToTCHAR(Arg.AnsiString ? Arg.AnsiString : "(null)").Get());
				}
				else if (Arg.String && Spec.Precision != INDEX_NONE)
				{
					AppendText(
						Out, Spec, FStringView(Arg.String, FCString::Strnlen(Arg.String, (SIZE_T)Spec.Precision))); // May lack its null.
				}
				else
				{
					AppendText(Out, Spec, Arg.String ? Arg.String : TEXT("(null)"));
				}
				break;
			case 'p':
			{
				FSpec Hex = Spec;
				Hex.Conversion = 'x';
				Hex.bAlternate = true;
				FArg Address;
				Address.Kind = EArg::Int64;
				Address.Integer = (int64) reinterpret_cast<PTRINT>(Arg.Pointer);
				AppendInteger(Out, Hex, Address);
				break;
			}
			default:
				AppendInteger(Out, Spec, Arg);
				break;
			}
		}
	}

	// 1. Plain text up to the next percent sign. 2. A doubled one stands for itself. 3. A placeholder, whose width and
	// precision may be arguments of their own before the value.
	void Append(FString& Out, const TCHAR* Format, const FArg* Args, int32 NumArgs)
	{
		int32 Next = 0;
		const auto Take = [&]() -> const FArg&
		{
			check(Next < NumArgs);
			return Args[Next++];
		};
		for (;;)
		{
			const TCHAR* Plain = Format;
			while (*Format && *Format != '%')
			{
				++Format;
			}
			Out.AppendChars(Plain, (int32)(Format - Plain));
			if (!*Format)
			{
				return;
			}
			++Format;
			if (*Format == '%')
			{
				Out.AppendChar(TEXT('%'));
				++Format;
				continue;
			}
			FSpec Spec;
			Format = ParseSpec(Format, Spec);
			if (Spec.bStarWidth)
			{
				Spec.Width = (int32)Take().Integer;
				if (Spec.Width < 0)
				{
					Spec.bLeft = true;
					Spec.Width = -Spec.Width;
				}
			}
			if (Spec.bStarPrecision)
			{
				Spec.Precision = (int32)Take().Integer;
				Spec.Precision = Spec.Precision < 0 ? INDEX_NONE : Spec.Precision;
			}
			AppendOne(Out, Spec, Take());
		}
	}
}
