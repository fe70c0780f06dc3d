#include "Brushes/SlateColorBrush.h"
#include "Brushes/SlateImageBrush.h"
#include "Brushes/SlateNoResource.h"
#include "Brushes/SlateRoundedBoxBrush.h"

FSlateBrush::FSlateBrush() = default;
FSlateBrush::~FSlateBrush() = default;

FSlateBrush::FSlateBrush(ESlateBrushDrawType::Type InDrawAs, FName InResource, const FVector2D& InImageSize, const FSlateColor& InTint)
	: ImageSize(InImageSize)
	, TintColor(InTint)
	, DrawAs(InDrawAs)
	, ResourceName(InResource)
{
}

const FSlateBrush& FSlateBrush::GetUnknownBrush()
{
	struct FUnknownBrush : public FSlateBrush
	{
		FUnknownBrush()
			: FSlateBrush(ESlateBrushDrawType::Box, FName(), FVector2D(16.0, 16.0), FLinearColor(1.0f, 0.0f, 0.0f, 1.0f))
		{
			bUnknown = true;
		}
	};
	static const FUnknownBrush Brush;
	return Brush;
}

FSlateNoResource::FSlateNoResource(const FVector2D& InImageSize)
	: FSlateBrush(ESlateBrushDrawType::NoDrawType, FName(), InImageSize, FLinearColor(1.0f, 1.0f, 1.0f, 1.0f))
{
}

FSlateColorBrush::FSlateColorBrush(const FLinearColor& InColor)
	: FSlateBrush(ESlateBrushDrawType::Box, FName(), FVector2D(0.0, 0.0), InColor)
{
}

FSlateColorBrush::FSlateColorBrush(const FColor& InColor)
	: FSlateColorBrush(FLinearColor(InColor))
{
}

FSlateImageBrush::FSlateImageBrush(const FString& InPath, const FVector2D& InImageSize, const FSlateColor& InTint)
	: FSlateBrush(ESlateBrushDrawType::Image, FName(*InPath), InImageSize, InTint)
{
}

FSlateRoundedBoxBrush::FSlateRoundedBoxBrush(const FSlateColor& InColor, const FVector2D& InImageSize)
	: FSlateBrush(ESlateBrushDrawType::RoundedBox, FName(), InImageSize, InColor)
{
	OutlineSettings.RoundingType = ESlateBrushRoundingType::HalfHeightRadius;
}

FSlateRoundedBoxBrush::FSlateRoundedBoxBrush(const FSlateColor& InColor, float InRadius, const FVector2D& InImageSize)
	: FSlateRoundedBoxBrush(
		  InColor, FVector4(InRadius, InRadius, InRadius, InRadius), FLinearColor(0.0f, 0.0f, 0.0f, 0.0f), 0.0f, InImageSize)
{
}

FSlateRoundedBoxBrush::FSlateRoundedBoxBrush(const FSlateColor& InColor, const FVector4& InRadii, const FVector2D& InImageSize)
	: FSlateRoundedBoxBrush(InColor, InRadii, FLinearColor(0.0f, 0.0f, 0.0f, 0.0f), 0.0f, InImageSize)
{
}

FSlateRoundedBoxBrush::FSlateRoundedBoxBrush(
	const FSlateColor& InColor, float InRadius, const FSlateColor& InOutline, float InOutlineWidth, const FVector2D& InImageSize)
	: FSlateRoundedBoxBrush(InColor, FVector4(InRadius, InRadius, InRadius, InRadius), InOutline, InOutlineWidth, InImageSize)
{
}

FSlateRoundedBoxBrush::FSlateRoundedBoxBrush(
	const FSlateColor& InColor, const FVector4& InRadii, const FSlateColor& InOutline, float InOutlineWidth, const FVector2D& InImageSize)
	: FSlateBrush(ESlateBrushDrawType::RoundedBox, FName(), InImageSize, InColor)
{
	OutlineSettings.CornerRadii = InRadii;
	OutlineSettings.Color = InOutline;
	OutlineSettings.Width = InOutlineWidth;
	OutlineSettings.RoundingType = ESlateBrushRoundingType::FixedRadius;
}
