#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/** What the user has set for all programs of the desktop, as far as it concerns how we show things. */
struct FHostDesktopSettings
{
	/** A screen reader or another assistive technology runs and wants to know what programs show. */
	bool bAssistiveTechnology = false;
	bool bReducedMotion = false;
	bool bHighContrast = false;

	bool operator==(const FHostDesktopSettings& Other) const
	{
		return bAssistiveTechnology == Other.bAssistiveTechnology && bReducedMotion == Other.bReducedMotion &&
			bHighContrast == Other.bHighContrast;
	}
};

/**
 * Follows the desktop's settings over the session's message bus, on a thread of its own: nothing waits for the bus, and without one
 * nothing is ever told. One at a time. Game thread.
 */
class PLATFORM_API FHostDesktopWatch
{
public:
	/** @param OnChange  Called on the game thread, first when something differs from the defaults. */
	static void Begin(TFunction<void(const FHostDesktopSettings&)> OnChange);
	/** After it nothing is told any more. */
	static void End();
};
