#pragma once

#include "Styling/SlateBrush.h"

/** Draws nothing. */
struct SLATECORE_API FSlateNoResource : public FSlateBrush
{
	explicit FSlateNoResource(const FVector2D& InImageSize = FVector2D(0.0, 0.0));
};
