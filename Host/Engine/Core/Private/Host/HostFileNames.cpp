#include "Host/HostFileNames.h"

#include "Host/HostUtf8.h"

#include <algorithm>

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
}

std::string HostFileNameToBytes(FStringView Name)
{
	std::string Out;
	Out.reserve(std::size_t(Name.Len()));
	const TCHAR* const Units = Name.GetData();
	for (int32 Index = 0; Index < Name.Len(); ++Index)
	{
		// Whole texts go this way, too: a stretch of ASCII is copied at once.
		const int32 PlainEnd =
			static_cast<int32>(std::find_if(Units + Index, Units + Name.Len(), [](TCHAR Unit) { return Unit >= 0x80; }) - Units);
		if (PlainEnd > Index)
		{
			const std::size_t Known = Out.size();
			Out.resize(Known + std::size_t(PlainEnd - Index));
			std::transform(Units + Index, Units + PlainEnd, Out.data() + Known, [](TCHAR Unit) { return static_cast<char>(Unit); });
			Index = PlainEnd - 1;
			continue;
		}
		const TCHAR Unit = Units[Index];
		if (IsHigh(Unit) && Index + 1 < Name.Len() && IsLow(Name[Index + 1]))
		{
			HostAppendUtf8(Out, 0x10000 + ((uint32(Unit) - 0xD800) << 10) + (uint32(Name[Index + 1]) - 0xDC00));
			++Index;
		}
		else if (IsRawByte(Unit))
		{
			Out.push_back(char(uint32(Unit) - RawByteBase));
		}
		else
		{
			HostAppendUtf8(Out, IsHigh(Unit) || IsLow(Unit) ? 0xFFFD : uint32(Unit));
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
		char32_t Code = 0;
		const std::size_t Length = HostDecodeUtf8(Bytes, Code);
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
