#include "Host/HostFileNames.h"

namespace
{
	constexpr uint32 RawByteBase = 0xDC00; // A byte 0x80..0xFF stands at this base plus its value.

	bool IsRawByte(TCHAR Unit)
	{
		return Unit >= 0xDC80 && Unit <= 0xDCFF;
	}

	bool IsHigh(TCHAR Unit)
	{
		return Unit >= 0xD800 && Unit <= 0xDBFF;
	}

	bool IsLow(TCHAR Unit)
	{
		return Unit >= 0xDC00 && Unit <= 0xDFFF;
	}

	void AppendCodePoint(std::string& Out, uint32 Code)
	{
		if (Code < 0x80)
		{
			Out.push_back(char(Code));
		}
		else if (Code < 0x800)
		{
			Out.push_back(char(0xC0 | (Code >> 6)));
			Out.push_back(char(0x80 | (Code & 0x3F)));
		}
		else if (Code < 0x10000)
		{
			Out.push_back(char(0xE0 | (Code >> 12)));
			Out.push_back(char(0x80 | ((Code >> 6) & 0x3F)));
			Out.push_back(char(0x80 | (Code & 0x3F)));
		}
		else
		{
			Out.push_back(char(0xF0 | (Code >> 18)));
			Out.push_back(char(0x80 | ((Code >> 12) & 0x3F)));
			Out.push_back(char(0x80 | ((Code >> 6) & 0x3F)));
			Out.push_back(char(0x80 | (Code & 0x3F)));
		}
	}

	/** Length of the valid UTF-8 sequence at the start, 0 when there is none. */
	std::size_t DecodeOne(std::string_view Bytes, uint32& OutCode)
	{
		const auto At = [Bytes](std::size_t Index) -> uint32 { return Index < Bytes.size() ? uint8(Bytes[Index]) : 0u; };
		const uint32 First = At(0);
		if (First < 0x80)
		{
			OutCode = First;
			return 1;
		}
		const std::size_t Length = First >= 0xC2 && First <= 0xDF ? 2
			: First >= 0xE0 && First <= 0xEF					  ? 3
			: First >= 0xF0 && First <= 0xF4					  ? 4
																  : 0;
		if (Length == 0)
		{
			return 0;
		}
		OutCode = First & (0x7F >> Length);
		for (std::size_t Index = 1; Index < Length; ++Index)
		{
			if ((At(Index) & 0xC0) != 0x80)
			{
				return 0;
			}
			OutCode = (OutCode << 6) | (At(Index) & 0x3F);
		}
		const bool bOverlong = (Length == 3 && OutCode < 0x800) || (Length == 4 && OutCode < 0x10000);
		const bool bSurrogate = OutCode >= 0xD800 && OutCode <= 0xDFFF;
		return bOverlong || bSurrogate || OutCode > 0x10FFFF ? 0 : Length;
	}
}

std::string HostFileNameToBytes(FStringView Name)
{
	std::string Out;
	Out.reserve(std::size_t(Name.Len()));
	for (int32 Index = 0; Index < Name.Len(); ++Index)
	{
		const TCHAR Unit = Name[Index];
		if (IsHigh(Unit) && Index + 1 < Name.Len() && IsLow(Name[Index + 1]))
		{
			AppendCodePoint(Out, 0x10000 + ((uint32(Unit) - 0xD800) << 10) + (uint32(Name[Index + 1]) - 0xDC00));
			++Index;
		}
		else if (IsRawByte(Unit))
		{
			Out.push_back(char(uint32(Unit) - RawByteBase));
		}
		else
		{
			AppendCodePoint(Out, IsHigh(Unit) || IsLow(Unit) ? 0xFFFD : uint32(Unit));
		}
	}
	return Out;
}

FString HostFileNameFromBytes(std::string_view Bytes)
{
	FString Out;
	Out.Reserve(int32(Bytes.size()));
	while (!Bytes.empty())
	{
		uint32 Code = 0;
		const std::size_t Length = DecodeOne(Bytes, Code);
		if (Length == 0)
		{
			Out.AppendChar(TCHAR(RawByteBase + uint8(Bytes.front())));
			Bytes.remove_prefix(1);
			continue;
		}
		if (Code >= 0x10000)
		{
			Out.AppendChar(TCHAR(0xD800 + ((Code - 0x10000) >> 10)));
			Out.AppendChar(TCHAR(0xDC00 + ((Code - 0x10000) & 0x3FF)));
		}
		else
		{
			Out.AppendChar(TCHAR(Code));
		}
		Bytes.remove_prefix(Length);
	}
	return Out;
}
