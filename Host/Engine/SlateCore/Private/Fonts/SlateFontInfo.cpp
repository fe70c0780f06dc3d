#include "Fonts/SlateFontInfo.h"

namespace
{
	const FName& GetMonoName()
	{
		static const FName Name(TEXT("Mono"));
		return Name;
	}
}

bool FSlateFontInfo::IsMonospace() const
{
	return FamilyName == GetMonoName() || TypefaceFontName == GetMonoName();
}

bool FSlateFontInfo::IsBold() const
{
	static const FName Bold(TEXT("Bold"));
	static const FName BoldItalic(TEXT("BoldItalic"));
	return TypefaceFontName == Bold || TypefaceFontName == BoldItalic;
}

bool FSlateFontInfo::IsItalic() const
{
	static const FName Italic(TEXT("Italic"));
	static const FName BoldItalic(TEXT("BoldItalic"));
	return TypefaceFontName == Italic || TypefaceFontName == BoldItalic;
}

uint32 GetTypeHash(const FSlateFontInfo& Font)
{
	uint32 Hash = GetTypeHash(Font.TypefaceFontName);
	Hash = HashCombine(Hash, GetTypeHash(Font.FamilyName));
	Hash = HashCombine(Hash, GetTypeHash(Font.Size));
	return HashCombine(Hash, GetTypeHash(Font.LetterSpacing));
}
