#include "Misc/Guid.h"

#include "Host/HostClock.h"
#include "Misc/AssertionMacros.h"

#include <atomic>
#include <sys/random.h>

FString FGuid::ToString(EGuidFormats Format) const
{
	switch (Format)
	{
	case EGuidFormats::DigitsLower:
		return ToString(EGuidFormats::Digits).ToLower();
	case EGuidFormats::DigitsWithHyphens:
		return FString::Printf(TEXT("%08X-%04X-%04X-%04X-%04X%08X"), A, B >> 16, B & 0xffffu, C >> 16, C & 0xffffu, D);
	case EGuidFormats::DigitsWithHyphensLower:
		return ToString(EGuidFormats::DigitsWithHyphens).ToLower();
	case EGuidFormats::DigitsWithHyphensInBraces:
		return TEXT("{") + ToString(EGuidFormats::DigitsWithHyphens) + TEXT("}");
	case EGuidFormats::DigitsWithHyphensInParentheses:
		return TEXT("(") + ToString(EGuidFormats::DigitsWithHyphens) + TEXT(")");
	case EGuidFormats::Digits:
		break;
	}
	return FString::Printf(TEXT("%08X%08X%08X%08X"), A, B, C, D);
}

FGuid FGuid::NewGuid()
{
	uint32 Words[4];
	// Requests of this size are never cut short once the kernel's source is ready.
	const ssize_t Got = getrandom(Words, sizeof(Words), 0);
	check(Got == (ssize_t)sizeof(Words));
	if (FHostClock::IsSimulated())
	{
		// Users are shown the first digits, and a run in simulated time must show the same ones each time. The rest keeps apart
		// what several such runs have made.
		static std::atomic<uint32> Count{ 0 };
		Words[0] = (Count.fetch_add(1) + 1) * 2654435769u;
	}
	Words[1] = (Words[1] & 0xffff0fffu) | 0x00004000u;
	Words[2] = (Words[2] & 0x3fffffffu) | 0x80000000u;
	return FGuid(Words[0], Words[1], Words[2], Words[3]);
}

bool FGuid::Parse(const FString& GuidString, FGuid& OutGuid)
{
	FString Text = GuidString;
	if ((Text.StartsWith(TEXT("{")) && Text.EndsWith(TEXT("}"))) || (Text.StartsWith(TEXT("(")) && Text.EndsWith(TEXT(")"))))
	{
		Text.MidInline(1, Text.Len() - 2);
	}
	if (Text.Len() == 36 && Text[8] == '-' && Text[13] == '-' && Text[18] == '-' && Text[23] == '-')
	{
		Text.ReplaceInline(TEXT("-"), TEXT(""));
	}
	if (Text.Len() != 32)
	{
		return false;
	}
	for (const TCHAR Each : Text)
	{
		if (!FChar::IsHexDigit(Each))
		{
			return false;
		}
	}
	const auto Word = [&Text](int32 Index) { return (uint32)FCString::Strtoui64(*Text.Mid(Index * 8, 8), nullptr, 16); };
	OutGuid = FGuid(Word(0), Word(1), Word(2), Word(3));
	return true;
}
