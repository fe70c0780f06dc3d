#pragma once

#include "Styling/SlateBrush.h"

/** A plain filled rectangle. */
struct SLATECORE_API FSlateColorBrush : public FSlateBrush
{
	FSlateColorBrush(const FLinearColor& InColor);
	FSlateColorBrush(const FColor& InColor);
};
