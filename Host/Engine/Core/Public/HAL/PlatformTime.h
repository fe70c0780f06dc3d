#pragma once

#include "HAL/Platform.h"

struct CORE_API FPlatformTime
{
	/** Monotonic, from an arbitrary origin. */
	static double Seconds();
	/** Ticks of Cycles64, in seconds. */
	static double GetSecondsPerCycle64() { return 1e-9; }
	static uint64 Cycles64();
	static double ToSeconds64(uint64 Cycles) { return (double)Cycles * GetSecondsPerCycle64(); }
	static double ToMilliseconds64(uint64 Cycles) { return (double)Cycles * 1e-6; }
};
