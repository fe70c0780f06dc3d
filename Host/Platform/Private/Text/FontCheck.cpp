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

	/** Scripts that people write in here, a word of each, and what has its letters. */
	struct FWantedScript
	{
		const char* Language;
		const TCHAR* Name;
		const TCHAR* Package;
	};
	constexpr FWantedScript WantedScripts[] = {
		{ "zh-cn", TEXT("Chinese"), TEXT("fonts-noto-cjk") },
		{ "ja", TEXT("Japanese"), TEXT("fonts-noto-cjk") },
		{ "ko", TEXT("Korean"), TEXT("fonts-noto-cjk") },
		{ "th", TEXT("Thai"), TEXT("fonts-noto-core") },
		{ "ar", TEXT("Arabic"), TEXT("fonts-noto-core") },
		{ "hi", TEXT("Hindi"), TEXT("fonts-noto-core") },
		{ "ta", TEXT("Tamil"), TEXT("fonts-noto-core") },
	};

	/** By what fonts say that they are for: the letters themselves would take a look into each file. */
	bool HasFontFor(const char* Language)
	{
		FcPattern* Pattern = FcPatternCreate();
		FcLangSet* Languages = FcLangSetCreate();
		FcLangSetAdd(Languages, reinterpret_cast<const FcChar8*>(Language));
		FcPatternAddLangSet(Pattern, FC_LANG, Languages);
		FcObjectSet* Objects = FcObjectSetBuild(FC_FAMILY, nullptr);
		FcFontSet* Found = FcFontList(nullptr, Pattern, Objects);
		const bool bHas = Found && Found->nfont > 0;
		if (Found)
		{
			FcFontSetDestroy(Found);
		}
		FcObjectSetDestroy(Objects);
		FcLangSetDestroy(Languages);
		FcPatternDestroy(Pattern);
		return bHas;
	}

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

FString FFontCheck::FindMissingScripts()
{
	TArray<FString> Names;
	TArray<FString> Packages;
	for (const FWantedScript& Script : WantedScripts)
	{
		if (!HasFontFor(Script.Language))
		{
			Names.Add(Script.Name);
			Packages.AddUnique(Script.Package);
		}
	}
	return Names.IsEmpty() ? FString()
						   : FString::Printf(TEXT("There is no font for %s: boxes stand for its letters. Please install %s."),
								 *FString::Join(Names, TEXT(", ")), *FString::Join(Packages, TEXT(" ")));
}
