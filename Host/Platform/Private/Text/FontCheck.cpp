#include "Text/FontCheck.h"

#include <fontconfig/fontconfig.h>

namespace
{
	struct FWantedFont
	{
		const char* Family;
		const TCHAR* Name;
		const TCHAR* Package;
	};
	constexpr FWantedFont WantedFonts[] = {
		{ "Roboto", TEXT("Roboto"), TEXT("fonts-roboto-unhinted") },
		{ "Noto Sans Mono", TEXT("Noto Sans Mono"), TEXT("fonts-noto-mono") },
		{ "Noto Color Emoji", TEXT("Noto Color Emoji"), TEXT("fonts-noto-color-emoji") },
	};

	bool IsInstalled(const char* Family)
	{
		FcPattern* Pattern = FcPatternCreate();
		FcPatternAddString(Pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(Family));
		FcObjectSet* Objects = FcObjectSetBuild(FC_FAMILY, nullptr);
		FcFontSet* Found = FcFontList(nullptr, Pattern, Objects);
		const bool bInstalled = Found && Found->nfont > 0;
		if (Found)
		{
			FcFontSetDestroy(Found);
		}
		FcObjectSetDestroy(Objects);
		FcPatternDestroy(Pattern);
		return bInstalled;
	}
}

TArray<FString> FFontCheck::FindMissing()
{
	TArray<FString> Sentences;
	if (!FcInit())
	{
		Sentences.Add(TEXT("The font configuration cannot be read. Please install the package fontconfig-config."));
		return Sentences;
	}
	for (const FWantedFont& Font : WantedFonts)
	{
		if (!IsInstalled(Font.Family))
		{
			Sentences.Add(
				FString::Printf(TEXT("The font %s is not installed, another one stands in for it. Please install the package %s."),
					Font.Name, Font.Package));
		}
	}
	return Sentences;
}
