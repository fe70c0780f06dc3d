#pragma once

#include "CoreMinimal.h"
#include "Styling/ISlateStyle.h"

/** The basic look. The host has one look; this is the same set as FAppStyle's. */
class SLATECORE_API FCoreStyle
{
public:
	static const ISlateStyle& Get();
	/** The default font: "Regular", "Bold", "Italic", "BoldItalic" or "Mono" in points; an unknown typeface takes the first. */
	static FSlateFontInfo GetDefaultFontStyle(
		FName InTypefaceFontName, float InSize, const FFontOutlineSettings& InOutlineSettings = FFontOutlineSettings());
};
