#pragma once

#include "CoreMinimal.h"
#include "Layout/Margin.h"
#include "Math/Color.h"
#include "Math/Vector4.h"
#include "Styling/SlateColor.h"

namespace ESlateBrushDrawType
{
	enum Type : uint8
	{
		NoDrawType,
		Box,
		Border,
		Image,
		RoundedBox,
	};
}

namespace ESlateBrushRoundingType
{
	enum Type : uint8
	{
		FixedRadius,
		HalfHeightRadius,
	};
}

/** Outline and corners of a rounded box. */
struct FSlateBrushOutlineSettings
{
	FVector4 CornerRadii = FVector4(0.0, 0.0, 0.0, 0.0);
	FSlateColor Color = FSlateColor(FLinearColor(0.0f, 0.0f, 0.0f, 0.0f));
	float Width = 0.0f;
	ESlateBrushRoundingType::Type RoundingType = ESlateBrushRoundingType::HalfHeightRadius;
	bool bUseBrushTransparency = false;
};

/** How an area is filled. Widgets keep the pointer only: a brush lives as a member, a static or in a style set. */
struct SLATECORE_API FSlateBrush
{
	FSlateBrush();
	virtual ~FSlateBrush();

	FVector2D ImageSize = FVector2D(32.0, 32.0);
	FMargin Margin;
	FSlateColor TintColor = FSlateColor(FLinearColor(1.0f, 1.0f, 1.0f, 1.0f));
	FSlateBrushOutlineSettings OutlineSettings;
	ESlateBrushDrawType::Type DrawAs = ESlateBrushDrawType::Image;

	const FVector2D& GetImageSize() const { return ImageSize; }
	FName GetResourceName() const { return ResourceName; }
	/** A surface is filled with the colour that a widget gives it; plain white leaves its resting fill. Others multiply. */
	bool IsSurface() const { return bSurface; }
	void SetSurface(bool bInSurface) { bSurface = bInSurface; }
	/** True for the brush that stands in for an unknown name. */
	bool IsUnknown() const { return bUnknown; }
	static const FSlateBrush& GetUnknownBrush();

protected:
	FSlateBrush(ESlateBrushDrawType::Type InDrawAs, FName InResource, const FVector2D& InImageSize, const FSlateColor& InTint);

	/** Full path of a picture file, empty for plain colour. */
	FName ResourceName;
	bool bSurface = false;
	bool bUnknown = false;
};
