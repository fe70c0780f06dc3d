#pragma once

#include "CoreMinimal.h"
#include "Styling/ISlateStyle.h"

/** The editor's own look. */
class SLATECORE_API FAppStyle
{
public:
	static const ISlateStyle& Get();
	static const FName& GetAppStyleSetName();
	static const FSlateBrush* GetBrush(FName PropertyName, const char* Specifier = nullptr)
	{
		return Get().GetBrush(PropertyName, Specifier);
	}
	static FSlateFontInfo GetFontStyle(FName PropertyName, const char* Specifier = nullptr)
	{
		return Get().GetFontStyle(PropertyName, Specifier);
	}
	static FLinearColor GetColor(FName PropertyName, const char* Specifier = nullptr) { return Get().GetColor(PropertyName, Specifier); }
	static const FSlateBrush* GetNoBrush();
};
