#include "Text/FontCheck.h"

#include <fontconfig/fontconfig.h>
#include <string_view>

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

	/** Scripts that people write in here, common letters of each, and what has them. */
	struct FWantedScript
	{
		std::u32string_view Letters;
		const TCHAR* Name;
		const TCHAR* Package;
	};
	constexpr FWantedScript WantedScripts[] = {
		{ U"\u4E2D\u6587\u7684\u8FD9", TEXT("Chinese"), TEXT("fonts-noto-cjk") },
		{ U"\u3042\u30A2\u65E5", TEXT("Japanese"), TEXT("fonts-noto-cjk") },
		{ U"\uD55C\uAE00", TEXT("Korean"), TEXT("fonts-noto-cjk") },
		{ U"\u0E01\u0E34\u0E48", TEXT("Thai"), TEXT("fonts-noto-core") },
		{ U"\u0627\u0644\u0645", TEXT("Arabic"), TEXT("fonts-noto-core") },
		{ U"\u0915\u093F\u094D", TEXT("Hindi"), TEXT("fonts-noto-core") },
		{ U"\u0BA4\u0BCD\u0BBF", TEXT("Tamil"), TEXT("fonts-noto-core") },
	};

	/**
	 * By the letters and not by the languages that a font is for: it is for none of which it lacks a single rare letter. The font
	 * cache knows the letters, so no file is opened.
	 */
	bool HasFontWith(std::u32string_view Letters)
	{
		FcPattern* Pattern = FcPatternCreate();
		FcCharSet* Wanted = FcCharSetCreate();
		for (const char32_t Letter : Letters)
		{
			FcCharSetAddChar(Wanted, Letter);
		}
		FcPatternAddCharSet(Pattern, FC_CHARSET, Wanted);
		FcObjectSet* Objects = FcObjectSetBuild(FC_FAMILY, nullptr);
		FcFontSet* Found = FcFontList(nullptr, Pattern, Objects);
		const bool bHas = Found && Found->nfont > 0;
		if (Found)
		{
			FcFontSetDestroy(Found);
		}
		FcObjectSetDestroy(Objects);
		FcCharSetDestroy(Wanted);
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
		if (!HasFontWith(Script.Letters))
		{
			Names.Add(Script.Name);
			Packages.AddUnique(Script.Package);
		}
	}
	return Names.IsEmpty() ? FString()
						   : FString::Printf(TEXT("There is no font for %s: boxes stand for its letters. Please install %s."),
								 *FString::Join(Names, TEXT(", ")), *FString::Join(Packages, TEXT(" ")));
}
