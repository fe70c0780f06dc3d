#pragma once

#include "CoreMinimal.h"

/** Outline of glyphs. The host draws none; the record is here so that fonts compare and copy whole. */
struct FFontOutlineSettings
{
	int32 OutlineSize = 0;
	bool operator==(const FFontOutlineSettings& Other) const { return OutlineSize == Other.OutlineSize; }
};

/** A font by family, typeface and size. A plain value, cheap to copy and compare. */
struct SLATECORE_API FSlateFontInfo
{
	/** "Regular", "Bold", "Italic", "BoldItalic" or "Mono"; an unknown name takes the first. */
	FName TypefaceFontName;
	/** Points at 96 dots per inch: 12 points are 16 pixels at scale 1. */
	float Size = 10.0f;
	/** Extra advance between letters in thousandths of the font's size. */
	int32 LetterSpacing = 0;
	FFontOutlineSettings OutlineSettings;
	/** Family that the typeface is looked up in: empty for the default family, "Mono" once a font was made as "Mono". */
	FName FamilyName;

	FSlateFontInfo() = default;
	FSlateFontInfo(FName InFamily, float InSize, FName InTypeface)
		: TypefaceFontName(InTypeface)
		, Size(InSize)
		, FamilyName(InFamily)
	{
	}

	bool IsMonospace() const;
	bool IsBold() const;
	bool IsItalic() const;
	bool operator==(const FSlateFontInfo& Other) const
	{
		return TypefaceFontName == Other.TypefaceFontName && Size == Other.Size && LetterSpacing == Other.LetterSpacing &&
			OutlineSettings == Other.OutlineSettings && FamilyName == Other.FamilyName;
	}
	bool operator!=(const FSlateFontInfo& Other) const { return !(*this == Other); }
};

SLATECORE_API uint32 GetTypeHash(const FSlateFontInfo& Font);
