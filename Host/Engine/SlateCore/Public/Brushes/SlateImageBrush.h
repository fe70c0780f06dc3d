#pragma once

#include "Styling/SlateBrush.h"

/** A picture file, drawn at the given size unless the widget says otherwise. */
struct SLATECORE_API FSlateImageBrush : public FSlateBrush
{
	/** @param InPath  Full path with extension. A file that cannot be read is drawn as a red chequer. */
	FSlateImageBrush(
		const FString& InPath, const FVector2D& InImageSize, const FSlateColor& InTint = FSlateColor(FLinearColor(1.0f, 1.0f, 1.0f, 1.0f)));
};
