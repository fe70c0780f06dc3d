#pragma once

#include "CoreMinimal.h"
#include "Brushes/SlateImageBrush.h"
#include "Brushes/SlateNoResource.h"
#include "Styling/ISlateStyle.h"

/** A named set of brushes, fonts, colours and widget styles. Owns what it holds. */
class SLATECORE_API FSlateStyleSet : public ISlateStyle
{
public:
	explicit FSlateStyleSet(const FName& InStyleSetName);
	virtual ~FSlateStyleSet() override;

	virtual const FName& GetStyleSetName() const override { return StyleSetName; }
	void SetContentRoot(const FString& InContentRootDir) { ContentRoot = InContentRootDir; }
	/** A path below the content root with its extension. */
	FString RootToContentDir(const FString& RelativePath, const TCHAR* Extension) const;
	FString RootToContentDir(const FString& RelativePath) const;

	virtual const FSlateBrush* GetBrush(FName PropertyName, const char* Specifier = nullptr) const override;
	virtual FSlateFontInfo GetFontStyle(FName PropertyName, const char* Specifier = nullptr) const override;
	virtual FLinearColor GetColor(FName PropertyName, const char* Specifier = nullptr) const override;
	virtual float GetFloat(FName PropertyName, const char* Specifier = nullptr) const override;
	virtual FMargin GetMargin(FName PropertyName, const char* Specifier = nullptr) const override;

	/** Takes ownership of a brush made with new. */
	template <typename BrushType>
	requires(std::is_base_of_v<FSlateBrush, BrushType>) void Set(FName PropertyName, BrushType* InBrush)
	{
		SetBrush(PropertyName, TUniquePtr<FSlateBrush>(InBrush));
	}
	template <typename StyleType>
	requires(std::is_base_of_v<FSlateWidgetStyle, StyleType>) void Set(FName PropertyName, const StyleType& InStyle)
	{
		SetWidgetStyle(PropertyName, MakeUnique<StyleType>(InStyle));
	}
	void Set(FName PropertyName, const FSlateFontInfo& InFont);
	void Set(FName PropertyName, const FLinearColor& InColor);
	void Set(FName PropertyName, const FSlateColor& InColor) { Set(PropertyName, InColor.GetSpecifiedColor()); }
	void Set(FName PropertyName, float InValue);
	void Set(FName PropertyName, const FVector2D& InValue);
	void Set(FName PropertyName, const FMargin& InValue);

	/** How often any set of this process was asked for a name that it does not know. */
	static int32 GetUnknownNameCount();

protected:
	virtual const FSlateWidgetStyle* FindWidgetStyle(FName TypeName, FName PropertyName) const override;

private:
	void SetBrush(FName PropertyName, TUniquePtr<FSlateBrush> Brush);
	void SetWidgetStyle(FName PropertyName, TUniquePtr<FSlateWidgetStyle> Style);
	void ReportUnknown(const TCHAR* Kind, FName PropertyName) const;

	FName StyleSetName;
	FString ContentRoot;
	TMap<FName, TUniquePtr<FSlateBrush>> Brushes;
	TMap<FName, TUniquePtr<FSlateWidgetStyle>> WidgetStyles;
	TMap<FName, FSlateFontInfo> Fonts;
	TMap<FName, FLinearColor> Colors;
	TMap<FName, float> Floats;
	TMap<FName, FVector2D> Vectors;
	TMap<FName, FMargin> Margins;
	mutable TSet<FName> Reported;
};
