#include "Style/WidgetAnimator.h"

#include "Math/UnrealMathUtility.h"
#include "Style/AnimationHelper.h"

void FWidgetAnimator::FadeIn(float InDuration)
{
	StartFade(InDuration, true);
}

void FWidgetAnimator::FadeOut(float InDuration)
{
	StartFade(InDuration, false);
}

void FWidgetAnimator::StartFade(float InDuration, bool bInFadingIn)
{
	// Keeps the step of a Tick finite.
	constexpr float ShortestDuration = 0.01f;
	Duration = FMath::Max(InDuration, ShortestDuration);
	Progress = 0.0f;
	TargetOpacity = bInFadingIn ? 1.0f : 0.0f;
	bFadingIn = bInFadingIn;
	bIsAnimating = true;
}

void FWidgetAnimator::Tick(float DeltaTime)
{
	if (!bIsAnimating)
	{
		return;
	}
	Progress += DeltaTime / Duration;
	// The last step is the target itself: no rounding is left over, and nothing moves after it.
	if (Progress < 1.0f)
	{
		CurrentOpacity = FAnimationHelper::CalculateFadeOpacity(Progress, bFadingIn);
	}
	else
	{
		Progress = 1.0f;
		CurrentOpacity = TargetOpacity;
		bIsAnimating = false;
	}
}

void FWidgetAnimator::Reset()
{
	Progress = 0.0f;
	TargetOpacity = 1.0f;
	CurrentOpacity = 1.0f;
	bIsAnimating = false;
	bFadingIn = true;
}
