#include "PathText.h"

namespace
{
	constexpr TCHAR Ellipsis = TEXT('\u2026');

	bool IsSecondHalf(TCHAR Unit)
	{
		return Unit >= 0xDC00 && Unit < 0xE000;
	}
}

FString PathText::Shorten(const FString& Path, float Width, TFunctionRef<float(const FString&)> Measure)
{
	if (Measure(Path) <= Width)
	{
		return Path;
	}
	// 1. Whole folders, the first ones first.
	int32 Begin = 0;
	for (int32 Index = 1; Index < Path.Len(); ++Index)
	{
		if (Path[Index] != TEXT('/') || Index + 1 == Path.Len())
		{
			continue;
		}
		Begin = Index;
		const FString Shorter = FString::Chr(Ellipsis) + Path.Mid(Begin);
		if (Measure(Shorter) <= Width)
		{
			return Shorter;
		}
	}
	// 2. The end of the name says what kind of file it is.
	FString Shorter = FString::Chr(Ellipsis) + Path.Mid(Begin > 0 ? Begin + 1 : 0);
	for (int32 Cut = Begin > 0 ? Begin + 1 : 0; Cut + 1 < Path.Len() && Measure(Shorter) > Width;)
	{
		++Cut;
		Cut += IsSecondHalf(Path[Cut]) ? 1 : 0;
		Shorter = FString::Chr(Ellipsis) + Path.Mid(Cut);
	}
	return Shorter;
}
