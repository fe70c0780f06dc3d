#include "Containers/StringConv.h"

#include "Host/HostUtf8.h"

// Between UTF-8 and UTF-16. Neither direction can fail: what is no character becomes U+FFFD, one for each piece that
// could have begun a character, as the Unicode standard recommends. Positions after a mistake are therefore the same in
// every program.

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

namespace
{
	/** What the first byte of a character says about the bytes after it. */
	struct FUtf8Lead
	{
		/** Bytes that follow; zero when no character begins with this byte. */
		int32 Following = 0;
		/** The lead's own part of the code. */
		uint32 Code = 0;
		/** Range of the second byte; it keeps out overlong forms, surrogates and what lies above U+10FFFF. */
		unsigned char Low = 0x80;
		unsigned char High = 0xbf;
	};

	FUtf8Lead ReadLead(unsigned char Lead)
	{
		if (Lead >= 0xc2 && Lead <= 0xdf)
		{
			return { 1, Lead & 0x1fu };
		}
		if (Lead >= 0xe0 && Lead <= 0xef)
		{
			return { 2, Lead & 0x0fu, (unsigned char)(Lead == 0xe0 ? 0xa0 : 0x80), (unsigned char)(Lead == 0xed ? 0x9f : 0xbf) };
		}
		if (Lead >= 0xf0 && Lead <= 0xf4)
		{
			return { 3, Lead & 0x07u, (unsigned char)(Lead == 0xf0 ? 0x90 : 0x80), (unsigned char)(Lead == 0xf4 ? 0x8f : 0xbf) };
		}
		return {};
	}

	/**
	 * Takes the bytes after a lead. @return The character, or U+FFFD for the longest piece that could have begun one; what is
	 * wrong is not taken and may begin a character itself.
	 */
	uint32 TakeRest(FUtf8Lead Lead, const unsigned char*& It, const unsigned char* End)
	{
		if (Lead.Following == 0)
		{
			return 0xfffd;
		}
		for (; Lead.Following > 0; --Lead.Following)
		{
			if (It >= End || *It < Lead.Low || *It > Lead.High)
			{
				return 0xfffd;
			}
			Lead.Code = Lead.Code << 6 | (*It++ & 0x3f);
			Lead.Low = 0x80;
			Lead.High = 0xbf;
		}
		return Lead.Code;
	}
}

void FUTF8ToTCHAR::Append(std::u16string& Out, const ANSICHAR* Text, int32 Length)
{
	if (Length <= 0)
	{
		return;
	}
	// Never more units than bytes.
	Out.reserve(Out.size() + (std::size_t)Length);
	const unsigned char* It = reinterpret_cast<const unsigned char*>(Text);
	const unsigned char* const End = It + Length;
	while (It < End)
	{
		const unsigned char Lead = *It++;
		const uint32 Code = Lead < 0x80 ? Lead : TakeRest(ReadLead(Lead), It, End);
		if (Code < 0x10000)
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
