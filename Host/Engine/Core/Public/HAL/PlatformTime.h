#pragma once

#include "HAL/Platform.h"

struct CORE_API FPlatformTime
{
	/** Monotonic, from an arbitrary origin. */
	static double Seconds();
};
