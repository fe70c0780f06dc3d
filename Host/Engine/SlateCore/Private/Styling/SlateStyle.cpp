#include "Styling/SlateStyle.h"

#include "Logging/LogMacros.h"
#include "Misc/Paths.h"
#include "Styling/SlateStyleRegistry.h"
#include "Textures/SlateIcon.h"

DEFINE_LOG_CATEGORY_STATIC(LogSlateStyle, Log, All);

namespace
{
	int32 UnknownNameCount = 0;

	/** The key of a look-up: name and specifier run together, as in "Button" and ".Hovered". */
	FName JoinSpecifier(FName PropertyName, const char* Specifier)
	{
		return Specifier ? FName(*(PropertyName.ToString() + FString(UTF8_TO_TCHAR(Specifier)))) : PropertyName;
	}

	/** Style sets hold one widget style per class and name. */
	FName JoinType(FName TypeName, FName PropertyName)
	{
		// Kept, since it is asked for each text that is made.
		thread_local TMap<TPair<FName, FName>, FName> JoinedNames;
		FName& Joined = JoinedNames.FindOrAdd(TPair<FName, FName>(TypeName, PropertyName));
		if (Joined.IsNone())
		{
			Joined = FName(*(TypeName.ToString() + TEXT("/") + PropertyName.ToString()));
		}
		return Joined;
	}

	TMap<FName, const ISlateStyle*>& GetRegisteredStyles()
	{
		static TMap<FName, const ISlateStyle*> Styles;
		return Styles;
	}
}

ISlateStyle::~ISlateStyle() = default;

FSlateStyleSet::FSlateStyleSet(const FName& InStyleSetName)
	: StyleSetName(InStyleSetName)
{
}

FSlateStyleSet::~FSlateStyleSet() = default;

FString FSlateStyleSet::RootToContentDir(const FString& RelativePath, const TCHAR* Extension) const
{
	return (ContentRoot / RelativePath) + Extension;
}

FString FSlateStyleSet::RootToContentDir(const FString& RelativePath) const
{
	return ContentRoot / RelativePath;
}

int32 FSlateStyleSet::GetUnknownNameCount()
{
	return UnknownNameCount;
}

void FSlateStyleSet::ReportUnknown(const TCHAR* Kind, FName PropertyName) const
{
	++UnknownNameCount;
	bool bAlreadyReported = false;
	Reported.Add(PropertyName, &bAlreadyReported);
	if (!bAlreadyReported)
	{
		UE_LOG(LogSlateStyle, Warning, TEXT("Style set %s has no %s named %s"), *StyleSetName.ToString(), Kind, *PropertyName.ToString());
	}
}

const FSlateBrush* FSlateStyleSet::GetBrush(FName PropertyName, const char* Specifier) const
{
	const FName Key = JoinSpecifier(PropertyName, Specifier);
	if (const TUniquePtr<FSlateBrush>* Found = Brushes.Find(Key))
	{
		return Found->Get();
	}
	ReportUnknown(TEXT("brush"), Key);
	return &FSlateBrush::GetUnknownBrush();
}

FSlateFontInfo FSlateStyleSet::GetFontStyle(FName PropertyName, const char* Specifier) const
{
	const FName Key = JoinSpecifier(PropertyName, Specifier);
	if (const FSlateFontInfo* Found = Fonts.Find(Key))
	{
		return *Found;
	}
	// A text style's font can be asked for by the style's name.
	if (const TUniquePtr<FSlateWidgetStyle>* Text = WidgetStyles.Find(JoinType(FTextBlockStyle::TypeName(), Key)))
	{
		return static_cast<const FTextBlockStyle&>(**Text).Font;
	}
	ReportUnknown(TEXT("font"), Key);
	return FTextBlockStyle::GetDefault().Font;
}

FLinearColor FSlateStyleSet::GetColor(FName PropertyName, const char* Specifier) const
{
	const FName Key = JoinSpecifier(PropertyName, Specifier);
	if (const FLinearColor* Found = Colors.Find(Key))
	{
		return *Found;
	}
	ReportUnknown(TEXT("colour"), Key);
	return FLinearColor(1.0f, 0.0f, 0.0f, 1.0f);
}

float FSlateStyleSet::GetFloat(FName PropertyName, const char* Specifier) const
{
	const FName Key = JoinSpecifier(PropertyName, Specifier);
	if (const float* Found = Floats.Find(Key))
	{
		return *Found;
	}
	ReportUnknown(TEXT("number"), Key);
	return 0.0f;
}

FMargin FSlateStyleSet::GetMargin(FName PropertyName, const char* Specifier) const
{
	const FName Key = JoinSpecifier(PropertyName, Specifier);
	if (const FMargin* Found = Margins.Find(Key))
	{
		return *Found;
	}
	ReportUnknown(TEXT("margin"), Key);
	return FMargin();
}

void FSlateStyleSet::Set(FName PropertyName, const FSlateFontInfo& InFont)
{
	Fonts.Add(PropertyName, InFont);
}

void FSlateStyleSet::Set(FName PropertyName, const FLinearColor& InColor)
{
	Colors.Add(PropertyName, InColor);
}

void FSlateStyleSet::Set(FName PropertyName, float InValue)
{
	Floats.Add(PropertyName, InValue);
}

void FSlateStyleSet::Set(FName PropertyName, const FVector2D& InValue)
{
	Vectors.Add(PropertyName, InValue);
}

void FSlateStyleSet::Set(FName PropertyName, const FMargin& InValue)
{
	Margins.Add(PropertyName, InValue);
}

void FSlateStyleSet::SetBrush(FName PropertyName, TUniquePtr<FSlateBrush> Brush)
{
	Brushes.Add(PropertyName, MoveTemp(Brush));
}

void FSlateStyleSet::SetWidgetStyle(FName PropertyName, TUniquePtr<FSlateWidgetStyle> Style)
{
	WidgetStyles.Add(JoinType(Style->GetTypeName(), PropertyName), MoveTemp(Style));
}

const FSlateWidgetStyle* FSlateStyleSet::FindWidgetStyle(FName TypeName, FName PropertyName) const
{
	const FName Key = JoinType(TypeName, PropertyName);
	if (const TUniquePtr<FSlateWidgetStyle>* Found = WidgetStyles.Find(Key))
	{
		return Found->Get();
	}
	ReportUnknown(TEXT("widget style"), Key);
	return nullptr;
}

void FSlateStyleRegistry::RegisterSlateStyle(const ISlateStyle& InSlateStyle)
{
	GetRegisteredStyles().Add(InSlateStyle.GetStyleSetName(), &InSlateStyle);
}

void FSlateStyleRegistry::UnRegisterSlateStyle(const ISlateStyle& InSlateStyle)
{
	UnRegisterSlateStyle(InSlateStyle.GetStyleSetName());
}

void FSlateStyleRegistry::UnRegisterSlateStyle(const FName StyleName)
{
	GetRegisteredStyles().Remove(StyleName);
}

const ISlateStyle* FSlateStyleRegistry::FindSlateStyle(const FName& InSlateStyleName)
{
	const ISlateStyle* const* Found = GetRegisteredStyles().Find(InSlateStyleName);
	return Found ? *Found : nullptr;
}

const FSlateBrush* FSlateIcon::GetIcon() const
{
	if (!IsSet())
	{
		return nullptr;
	}
	const ISlateStyle* Set = FSlateStyleRegistry::FindSlateStyle(StyleSetName);
	return Set ? Set->GetBrush(StyleName) : &FSlateBrush::GetUnknownBrush();
}
