#include "Style/AnimationHelper.h"

#include "Math/UnrealMathUtility.h"

float FAnimationHelper::EaseIn(float T)
{
	const float Share = FMath::Clamp(T, 0.0f, 1.0f);
	return Share * Share;
}

float FAnimationHelper::EaseOut(float T)
{
	const float Share = FMath::Clamp(T, 0.0f, 1.0f);
	return Share * (2.0f - Share);
}

float FAnimationHelper::EaseInOut(float T)
{
	const float Share = FMath::Clamp(T, 0.0f, 1.0f);
	// Two cubic halves that meet at one half, with the same slope.
	if (Share < 0.5f)
	{
		return 4.0f * Share * Share * Share;
	}
	const float Rest = 2.0f * Share - 2.0f;
	return 0.5f * Rest * Rest * Rest + 1.0f;
}

float FAnimationHelper::CalculateFadeOpacity(float Progress, bool bFadeIn)
{
	const float Eased = EaseInOut(Progress);
	return bFadeIn ? Eased : 1.0f - Eased;
}

FLinearColor FAnimationHelper::LerpColor(const FLinearColor& A, const FLinearColor& B, float T)
{
	// In linear light and channel by channel, which is how the colours are given.
	const float Eased = EaseInOut(T);
	return FLinearColor(A.R + (B.R - A.R) * Eased, A.G + (B.G - A.G) * Eased, A.B + (B.B - A.B) * Eased, A.A + (B.A - A.A) * Eased);
}
