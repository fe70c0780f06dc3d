#include "Containers/StringConv.h"

#include "Host/HostUtf8.h"

void FTCHARToUTF8::Append(std::string& Out, FStringView Text)
{
	Out.reserve(Out.size() + (std::size_t)Text.Len());
	const TCHAR* const End = Text.end();
	for (const TCHAR* It = Text.begin(); It < End; ++It)
	{
		uint32 Code = *It;
		if (Code < 0x80)
		{
			Out.push_back((char)Code);
			continue;
		}
		if (Code >= 0xd800 && Code <= 0xdfff)
		{
			if (Code <= 0xdbff && It + 1 < End && It[1] >= 0xdc00 && It[1] <= 0xdfff)
			{
				Code = 0x10000 + ((Code - 0xd800) << 10) + ((uint32) * ++It - 0xdc00);
			}
			else
			{
				Code = 0xfffd;
			}
		}
		HostAppendUtf8(Out, Code);
	}
}

void FUTF8ToTCHAR::Append(std::u16string& Out, const ANSICHAR* Text, int32 Length)
{
	if (Length <= 0)
	{
		return;
	}
	Out.reserve(Out.size() + (std::size_t)Length);
	const unsigned char* It = reinterpret_cast<const unsigned char*>(Text);
	const unsigned char* const End = It + Length;
	while (It < End)
	{
		const unsigned char Lead = *It++;
		if (Lead < 0x80)
		{
			Out.push_back(Lead);
			continue;
		}
		// The second byte's range keeps out overlong forms, surrogates and what lies above U+10FFFF.
		int32 Following = 0;
		uint32 Code = 0;
		unsigned char Low = 0x80;
		unsigned char High = 0xbf;
		if (Lead >= 0xc2 && Lead <= 0xdf)
		{
			Following = 1;
			Code = Lead & 0x1f;
		}
		else if (Lead >= 0xe0 && Lead <= 0xef)
		{
			Following = 2;
			Code = Lead & 0x0f;
			Low = Lead == 0xe0 ? 0xa0 : 0x80;
			High = Lead == 0xed ? 0x9f : 0xbf;
		}
		else if (Lead >= 0xf0 && Lead <= 0xf4)
		{
			Following = 3;
			Code = Lead & 0x07;
			Low = Lead == 0xf0 ? 0x90 : 0x80;
			High = Lead == 0xf4 ? 0x8f : 0xbf;
		}
		bool bGood = Following > 0;
		for (; bGood && Following > 0; --Following)
		{
			if (It >= End || *It < Low || *It > High)
			{
				bGood = false;
				break;
			}
			Code = Code << 6 | (*It++ & 0x3f);
			Low = 0x80;
			High = 0xbf;
		}
		if (!bGood)
		{
			Out.push_back(0xfffd); // For the longest piece that could have begun a character.
		}
		else if (Code < 0x10000)
		{
			Out.push_back((TCHAR)Code);
		}
		else
		{
			Out.push_back((TCHAR)(0xd800 + ((Code - 0x10000) >> 10)));
			Out.push_back((TCHAR)(0xdc00 + ((Code - 0x10000) & 0x3ff)));
		}
	}
}
