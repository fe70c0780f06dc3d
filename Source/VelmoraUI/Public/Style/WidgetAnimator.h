#pragma once

#include "CoreMinimal.h"

/**
 * One fade, as a value member of a widget that calls Tick from its own and reads GetOpacity into a colour's alpha.
 * A fresh one is opaque and at rest. A new fade starts from its own end: it does not pick up the opacity of a running one.
 */
class VELMORAUI_API FWidgetAnimator
{
public:
	/** Seconds; less than 0.01 counts as 0.01. The opacity changes with the next Tick. */
	void FadeIn(float InDuration);
	void FadeOut(float InDuration);

	/** Seconds since the last call. */
	void Tick(float DeltaTime);

	/** 0 to 1. */
	float GetOpacity() const { return CurrentOpacity; }
	bool IsAnimating() const { return bIsAnimating; }

	/** Back to opaque and at rest. */
	void Reset();

private:
	void StartFade(float InDuration, bool bInFadingIn);

	float Progress = 0.0f;
	float TargetOpacity = 1.0f;
	float CurrentOpacity = 1.0f;
	float Duration = 0.2f;
	bool bIsAnimating = false;
	bool bFadingIn = true;
};
