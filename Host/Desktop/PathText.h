#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/** Paths where there is little room. Pure. */
namespace PathText
{
	/**
	 * The path with an ellipsis in place of its first folders, as few as it takes; the file's name is kept, and of one that is too long
	 * itself its end.
	 * @param Measure  How wide a text is, in the unit of Width.
	 */
	FString Shorten(const FString& Path, float Width, TFunctionRef<float(const FString&)> Measure);
}
