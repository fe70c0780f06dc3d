#pragma once

#include "CoreMinimal.h"

/** Base of all styles that a style set can hold. */
struct SLATECORE_API FSlateWidgetStyle
{
	virtual ~FSlateWidgetStyle();
	/** Name of the style's class; a style set looks up by class and name. */
	virtual FName GetTypeName() const = 0;
};
