#pragma once

#include "Styling/SlateBrush.h"

/** A filled box with rounded corners and an outline inside its edge. Without a radius the corners take half the height. */
struct SLATECORE_API FSlateRoundedBoxBrush : public FSlateBrush
{
	FSlateRoundedBoxBrush(const FSlateColor& InColor, const FVector2D& InImageSize = FVector2D(0.0, 0.0));
	FSlateRoundedBoxBrush(const FSlateColor& InColor, float InRadius, const FVector2D& InImageSize = FVector2D(0.0, 0.0));
	FSlateRoundedBoxBrush(const FSlateColor& InColor, const FVector4& InRadii, const FVector2D& InImageSize = FVector2D(0.0, 0.0));
	FSlateRoundedBoxBrush(const FSlateColor& InColor, float InRadius, const FSlateColor& InOutline, float InOutlineWidth,
		const FVector2D& InImageSize = FVector2D(0.0, 0.0));
	FSlateRoundedBoxBrush(const FSlateColor& InColor, const FVector4& InRadii, const FSlateColor& InOutline, float InOutlineWidth,
		const FVector2D& InImageSize = FVector2D(0.0, 0.0));
};
