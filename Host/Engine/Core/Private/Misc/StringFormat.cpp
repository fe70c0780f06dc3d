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
		void AppendPadded(FString& Out, const FPlaceholder& Placeholder, const char* Prefix, FStringView Body, bool bZeroAllowed)
		{
			int32 PrefixLen = (int32)std::char_traits<char>::length(Prefix);
			int32 Fill = Placeholder.Width - PrefixLen - Body.Len();
			const bool bZeros = Placeholder.bZero && !Placeholder.bLeft && bZeroAllowed;
			for (; !Placeholder.bLeft && !bZeros && Fill > 0; --Fill)
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

		void AppendNarrow(FString& Out, const FPlaceholder& Placeholder, const char* Prefix, const std::string& Body, bool bZeroAllowed)
		{
			const std::u16string Wide(Body.begin(), Body.end());
			AppendPadded(Out, Placeholder, Prefix, FStringView(Wide.data(), (int32)Wide.size()), bZeroAllowed);
		}

		const char* SignOf(bool bNegative, const FPlaceholder& Placeholder)
		{
			return bNegative ? "-" : (Placeholder.bPlus ? "+" : (Placeholder.bSpace ? " " : ""));
		}

		// 1. The value as C reads it. 2. Its digits. 3. Digits up to the precision. 4. Sign or prefix, and padding; a
		// precision switches padding with zeros off.
		void AppendInteger(FString& Out, const FPlaceholder& Placeholder, const FArg& Arg)
		{
			const bool bNarrow = Arg.Kind == EArg::Int || Arg.Kind == EArg::Char;
			const bool bDecimalSigned = Placeholder.Conversion == 'd' || Placeholder.Conversion == 'i';
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
			const int32 Base =
				Placeholder.Conversion == 'x' || Placeholder.Conversion == 'X' ? 16 : (Placeholder.Conversion == 'o' ? 8 : 10);
			char Buffer[72];
			const char* End = std::to_chars(Buffer, Buffer + sizeof(Buffer), Magnitude, Base).ptr;
			std::string Body(static_cast<const char*>(Buffer), End);
			if (Placeholder.Conversion == 'X')
			{
				for (char& Each : Body)
				{
					Each = (char)FChar::ToUpper((TCHAR)Each);
				}
			}
			if (Placeholder.Precision == 0 && Magnitude == 0)
			{
				Body.clear();
			}
			if ((int32)Body.size() < Placeholder.Precision)
			{
				Body.insert(0, (std::size_t)Placeholder.Precision - Body.size(), '0');
			}
			const char* Prefix = bDecimalSigned ? SignOf(bNegative, Placeholder) : "";
			if (Placeholder.bAlternate && Magnitude != 0 && Base == 16)
			{
				Prefix = Placeholder.Conversion == 'X' ? "0X" : "0x";
			}
			AppendNarrow(Out, Placeholder, Prefix, Body, Placeholder.Precision == INDEX_NONE);
		}

		// Digits come from std::to_chars, which is exact and knows no locale.
		void AppendFloat(FString& Out, const FPlaceholder& Placeholder, double Value)
		{
			const bool bUpper = FChar::IsUpper(Placeholder.Conversion);
			const TCHAR Kind = FChar::ToLower(Placeholder.Conversion);
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
				const int32 Precision = Placeholder.Precision == INDEX_NONE ? 6 : Placeholder.Precision;
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
			AppendNarrow(Out, Placeholder, SignOf(bNegative, Placeholder), Body, std::isfinite(Value));
		}

		void AppendText(FString& Out, const FPlaceholder& Placeholder, FStringView Text)
		{
			AppendPadded(Out, Placeholder, "", Placeholder.Precision == INDEX_NONE ? Text : Text.Left(Placeholder.Precision), false);
		}

		void AppendOne(FString& Out, const FPlaceholder& Placeholder, const FArg& Arg)
		{
			const TCHAR Lower = FChar::ToLower(Placeholder.Conversion);
			if (Lower == 'f' || Lower == 'g' || Lower == 'e')
			{
				AppendFloat(Out, Placeholder, Arg.Float);
				return;
			}
			switch (Placeholder.Conversion)
			{
			case 'c':
			{
				const TCHAR Char = (TCHAR)Arg.Integer;
				AppendPadded(Out, Placeholder, "", FStringView(&Char, 1), false);
				break;
			}
			case 's':
			case 'S':
				if (Arg.Kind == EArg::AnsiString)
				{
					AppendText(Out, Placeholder, FUTF8ToTCHAR(Arg.AnsiString ? Arg.AnsiString : "(null)").Get());
				}
				else if (Arg.String && Placeholder.Precision != INDEX_NONE)
				{
					AppendText(Out, Placeholder,
						FStringView(Arg.String, FCString::Strnlen(Arg.String, (SIZE_T)Placeholder.Precision))); // May lack its null.
				}
				else
				{
					AppendText(Out, Placeholder, Arg.String ? Arg.String : TEXT("(null)"));
				}
				break;
			case 'p':
			{
				FPlaceholder Hex = Placeholder;
				Hex.Conversion = 'x';
				Hex.bAlternate = true;
				FArg Address;
				Address.Kind = EArg::Int64;
				Address.Integer = (int64) reinterpret_cast<PTRINT>(Arg.Pointer);
				AppendInteger(Out, Hex, Address);
				break;
			}
			default:
				AppendInteger(Out, Placeholder, Arg);
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
			FPlaceholder Placeholder;
			Format = ParsePlaceholder(Format, Placeholder);
			if (Placeholder.bStarWidth)
			{
				Placeholder.Width = (int32)Take().Integer;
				if (Placeholder.Width < 0)
				{
					Placeholder.bLeft = true;
					Placeholder.Width = -Placeholder.Width;
				}
			}
			if (Placeholder.bStarPrecision)
			{
				Placeholder.Precision = (int32)Take().Integer;
				Placeholder.Precision = Placeholder.Precision < 0 ? INDEX_NONE : Placeholder.Precision;
			}
			AppendOne(Out, Placeholder, Take());
		}
	}
}
