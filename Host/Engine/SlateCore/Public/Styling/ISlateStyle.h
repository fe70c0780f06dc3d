#pragma once

#include "CoreMinimal.h"
#include "Fonts/SlateFontInfo.h"
#include "Styling/SlateBrush.h"
#include "Styling/SlateTypes.h"

/**
 * Looks things up by name. An unknown name gives a stand-in that is drawn as a red chequer, is logged once
 * and is counted in FSlateStyleSet::GetUnknownNameCount.
 */
class SLATECORE_API ISlateStyle
{
public:
	virtual ~ISlateStyle();
	virtual const FName& GetStyleSetName() const = 0;
	virtual const FSlateBrush* GetBrush(FName PropertyName, const char* Specifier = nullptr) const = 0;
	virtual FSlateFontInfo GetFontStyle(FName PropertyName, const char* Specifier = nullptr) const = 0;
	virtual FLinearColor GetColor(FName PropertyName, const char* Specifier = nullptr) const = 0;
	virtual float GetFloat(FName PropertyName, const char* Specifier = nullptr) const = 0;
	virtual FMargin GetMargin(FName PropertyName, const char* Specifier = nullptr) const = 0;
	template <typename WidgetStyleType>
	const WidgetStyleType& GetWidgetStyle(FName PropertyName) const
	{
		const FSlateWidgetStyle* Style = FindWidgetStyle(WidgetStyleType::TypeName(), PropertyName);
		return Style ? static_cast<const WidgetStyleType&>(*Style) : WidgetStyleType::GetDefault();
	}

protected:
	virtual const FSlateWidgetStyle* FindWidgetStyle(FName TypeName, FName PropertyName) const = 0;
};
