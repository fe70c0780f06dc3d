#include "Host/HostUtf8.h"

void HostAppendUtf8(std::string& Out, char32_t Character)
{
	if (Character < 0x80)
	{
		Out.push_back(static_cast<char>(Character));
		return;
	}
	const int Following = Character < 0x800 ? 1 : Character < 0x10000 ? 2 : 3;
	constexpr unsigned Leads[] = { 0x00, 0xC0, 0xE0, 0xF0 };
	Out.push_back(static_cast<char>(Leads[Following] | (Character >> (6 * Following))));
	for (int Place = Following - 1; Place >= 0; --Place)
	{
		Out.push_back(static_cast<char>(0x80 | ((Character >> (6 * Place)) & 0x3F)));
	}
}

std::size_t HostDecodeUtf8(std::string_view Bytes, char32_t& OutCharacter)
{
	const auto ByteAt = [Bytes](std::size_t Index) -> char32_t
	{ return Index < Bytes.size() ? static_cast<unsigned char>(Bytes[Index]) : U'\0'; };
	const char32_t Lead = ByteAt(0);
	if (Lead < 0x80)
	{
		OutCharacter = Lead;
		return Bytes.empty() ? 0 : 1;
	}
	const std::size_t Length = Lead >= 0xC2 && Lead < 0xE0 ? 2 : Lead >= 0xE0 && Lead < 0xF0 ? 3 : Lead >= 0xF0 && Lead < 0xF5 ? 4 : 0;
	char32_t Character = Lead & (0x7Fu >> Length);
	for (std::size_t Index = 1; Index < Length; ++Index)
	{
		if ((ByteAt(Index) & 0xC0) != 0x80)
		{
			return 0;
		}
		Character = (Character << 6) | (ByteAt(Index) & 0x3F);
	}
	const bool bIsOverlong = (Length == 3 && Character < 0x800) || (Length == 4 && Character < 0x10000);
	const bool bIsSurrogate = Character >= 0xD800 && Character < 0xE000;
	if (Length == 0 || bIsOverlong || bIsSurrogate || Character > 0x10FFFF)
	{
		return 0;
	}
	OutCharacter = Character;
	return Length;
}
