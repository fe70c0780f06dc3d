#pragma once

#include "CoreMinimal.h"

/** Easing curves. Pure; every parameter T or Progress is a share of the way and is clamped to 0 to 1 first. */
class VELMORAUI_API FAnimationHelper
{
public:
	/** Starts slowly. */
	static float EaseIn(float T);

	/** Ends slowly. */
	static float EaseOut(float T);

	/** Starts and ends slowly; symmetric about the middle. */
	static float EaseInOut(float T);

	/** Opacity of a fade that has come this far. */
	static float CalculateFadeOpacity(float Progress, bool bFadeIn);

	/** From A to B in linear space, alpha included, eased at both ends. */
	static FLinearColor LerpColor(const FLinearColor& A, const FLinearColor& B, float T);
};
