#pragma once

#include "Containers/ContainersFwd.h"
#include "HAL/Platform.h"

#include <type_traits>

// The printf family for TCHAR. A literal is checked against its arguments by the compiler; numbers never follow the process locale.
namespace UE::StringFormat
{
	enum class EArg : uint8
	{
		Int,
		Int64,
		Size,
		Float,
		Char,
		String,
		AnsiString,
		Pointer,
		Bad
	};

	template <typename T>
	consteval EArg KindOf()
	{
		if constexpr (std::is_same_v<T, TCHAR> || std::is_same_v<T, char>)
		{
			return EArg::Char;
		}
		else if constexpr (std::is_floating_point_v<T>)
		{
			return EArg::Float;
		}
		else if constexpr (std::is_same_v<T, unsigned long> || std::is_same_v<T, long>)
		{
			return EArg::Size;
		}
		else if constexpr (std::is_integral_v<T> || (std::is_enum_v<T> && std::is_convertible_v<T, int64>))
		{
			return sizeof(T) == 8 ? EArg::Int64 : EArg::Int;
		}
		else if constexpr (std::is_same_v<T, const TCHAR*> || std::is_same_v<T, TCHAR*>)
		{
			return EArg::String;
		}
		else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>)
		{
			return EArg::AnsiString;
		}
		else if constexpr (std::is_pointer_v<T> || std::is_null_pointer_v<T>)
		{
			return EArg::Pointer;
		}
		else
		{
			return EArg::Bad;
		}
	}

	struct FArg
	{
		EArg Kind = EArg::Bad;
		bool bSigned = false;
		union
		{
			int64 Integer;
			double Float;
			const TCHAR* String;
			const char* AnsiString;
			const void* Pointer;
		};
	};

	template <typename T>
	FArg MakeArg(const T& Value)
	{
		FArg Arg;
		Arg.Kind = KindOf<T>();
		if constexpr (KindOf<T>() == EArg::Float)
		{
			Arg.Float = (double)Value;
		}
		else if constexpr (KindOf<T>() == EArg::String)
		{
			Arg.String = Value;
		}
		else if constexpr (KindOf<T>() == EArg::AnsiString)
		{
			Arg.AnsiString = Value;
		}
		else if constexpr (KindOf<T>() == EArg::Pointer)
		{
			Arg.Pointer = (const void*)Value;
		}
		else
		{
			Arg.Integer = (int64)Value;
			if constexpr (std::is_enum_v<T>)
			{
				Arg.bSigned = std::is_signed_v<std::underlying_type_t<T>>;
			}
			else
			{
				Arg.bSigned = std::is_signed_v<T>;
			}
		}
		return Arg;
	}

	/** The conversion at Format, which points behind the percent sign. */
	struct FPlaceholder
	{
		bool bLeft = false;
		bool bPlus = false;
		bool bSpace = false;
		bool bZero = false;
		bool bAlternate = false;
		bool bStarWidth = false;
		bool bStarPrecision = false;
		int32 Width = 0;
		/** INDEX_NONE when not given. */
		int32 Precision = INDEX_NONE;
		/** 'l' for ll, 'z', 'h' for a narrow string, or 0. */
		char Length = 0;
		TCHAR Conversion = 0;
	};

	/** A flag of a placeholder. @return False when the character is none. */
	constexpr bool ReadFlag(TCHAR Char, FPlaceholder& Out)
	{
		switch (Char)
		{
		case '-':
			return Out.bLeft = true;
		case '+':
			return Out.bPlus = true;
		case ' ':
			return Out.bSpace = true;
		case '0':
			return Out.bZero = true;
		case '#':
			return Out.bAlternate = true;
		default:
			return false;
		}
	}

	/** A width or a precision: digits, or a star for an argument that tells it. Long numbers end early, so that none overflows. */
	constexpr const TCHAR* ReadSize(const TCHAR* Format, int32& OutSize, bool& bOutStar)
	{
		if (*Format == '*')
		{
			bOutStar = true;
			++Format;
		}
		for (; *Format >= '0' && *Format <= '9' && OutSize < 100000; ++Format)
		{
			OutSize = OutSize * 10 + (*Format - '0');
		}
		return Format;
	}

	/** Reads flags, width, precision, length and conversion after a percent sign. @return What follows them. */
	constexpr const TCHAR* ParsePlaceholder(const TCHAR* Format, FPlaceholder& Out)
	{
		while (ReadFlag(*Format, Out))
		{
			++Format;
		}
		Format = ReadSize(Format, Out.Width, Out.bStarWidth);
		if (*Format == '.')
		{
			Out.Precision = 0;
			Format = ReadSize(Format + 1, Out.Precision, Out.bStarPrecision);
		}
		if (*Format == 'l' && Format[1] == 'l')
		{
			Out.Length = 'l';
			Format += 2;
		}
		else if (*Format == 'z' || *Format == 'h' || *Format == 'l')
		{
			Out.Length = *Format == 'l' ? 'L' : (char)*Format;
			++Format;
		}
		Out.Conversion = *Format;
		return *Format ? Format + 1 : Format;
	}

	constexpr bool Accepts(const FPlaceholder& Placeholder, EArg Kind)
	{
		switch (Placeholder.Conversion)
		{
		case 'd':
		case 'i':
		case 'u':
		case 'x':
		case 'X':
		case 'o':
			return Placeholder.Length == 'l' ? Kind == EArg::Int64
				: Placeholder.Length == 'z'	 ? Kind == EArg::Size
											 : Placeholder.Length == 0 && (Kind == EArg::Int || Kind == EArg::Char);
		case 'c':
			return Placeholder.Length == 0 && (Kind == EArg::Char || Kind == EArg::Int);
		case 'f':
		case 'F':
		case 'g':
		case 'G':
		case 'e':
		case 'E':
			return Placeholder.Length == 0 && Kind == EArg::Float;
		case 's':
			return Placeholder.Length == 'h' ? Kind == EArg::AnsiString : Placeholder.Length == 0 && Kind == EArg::String;
		case 'S':
			return Placeholder.Length == 0 && Kind == EArg::AnsiString;
		case 'p':
			return Placeholder.Length == 0 && (Kind == EArg::Pointer || Kind == EArg::String || Kind == EArg::AnsiString);
		default:
			return false;
		}
	}

	// Not constexpr: reaching one of these while a literal is checked is the compile error, and its name says what is wrong.
	inline void FormatHasMoreConversionsThanArguments() {}
	inline void FormatHasFewerConversionsThanArguments() {}
	inline void FormatConversionDoesNotFitItsArgument() {}

	/** A format literal that fits arguments of the given types. Anything else does not compile. */
	template <typename... ArgTypes>
	struct TCheckedFormat
	{
		template <std::size_t N>
		consteval TCheckedFormat(const TCHAR (&Literal)[N])
			: Text(Literal)
		{
			constexpr EArg Kinds[] = { KindOf<ArgTypes>()..., EArg::Bad };
			std::size_t Next = 0;
			for (const TCHAR* Format = Literal; *Format;)
			{
				if (*Format++ != '%')
				{
					continue;
				}
				if (*Format == '%')
				{
					++Format;
					continue;
				}
				FPlaceholder Placeholder;
				Format = ParsePlaceholder(Format, Placeholder);
				for (int32 Star = (Placeholder.bStarWidth ? 1 : 0) + (Placeholder.bStarPrecision ? 1 : 0); Star > 0; --Star)
				{
					if (Next >= sizeof...(ArgTypes))
					{
						FormatHasMoreConversionsThanArguments();
					}
					else if (Kinds[Next] != EArg::Int)
					{
						FormatConversionDoesNotFitItsArgument();
					}
					++Next;
				}
				if (Next >= sizeof...(ArgTypes))
				{
					FormatHasMoreConversionsThanArguments();
				}
				else if (!Accepts(Placeholder, Kinds[Next]))
				{
					FormatConversionDoesNotFitItsArgument();
				}
				++Next;
			}
			if (Next < sizeof...(ArgTypes))
			{
				FormatHasFewerConversionsThanArguments();
			}
		}
		const TCHAR* Text;
	};

	/** Appends to Out. Format and arguments fit. */
	CORE_API void Append(FString& Out, const TCHAR* Format, const FArg* Args, int32 NumArgs);
}
