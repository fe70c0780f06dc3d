#pragma once

#include "Misc/DateTime.h"

/**
 * The one clock of the process: everything that tells or measures time reads it. Real in the program; in tests and scripts
 * simulated, where time stands still between calls of Advance. Reading is safe on any thread, switching belongs to the main one.
 */
class CORE_API FHostClock
{
public:
	/** Never runs backwards while the kind of time stays the same. The origin is arbitrary. */
	static double Seconds();
	static int64 UtcNowTicks();
	static int64 LocalNowTicks();

	static void UseRealTime();
	/** The local date and time to begin at. Seconds() begins at 1000 again, so that runs repeat exactly. */
	static void UseSimulatedTime(FDateTime LocalStart);
	/** Moves simulated time forward. Does nothing to real time. */
	static void Advance(double Seconds);
	/** The same, to so long after its beginning; never backwards. */
	static void SetElapsed(double Seconds);

	/**
	 * Real time that stands still for the calling thread between calls of Hold, in whole microseconds: whoever writes down the
	 * moments of Hold knows every time that this thread has seen. Other threads see it pass. Seconds() begins at 1000.
	 */
	static void UseHeldTime();
	/** Takes the time on, to now. Does nothing to other kinds of time. */
	static void Hold();
	/** Real seconds since the last Hold. */
	static double GetSinceHold();
	/** Seconds since simulated or held time began, as the calling thread sees it. */
	static double GetElapsed();
	static bool IsSimulated();

	/** By the rules of the process's time zone at that moment. */
	static FDateTime UtcToLocal(FDateTime Utc);
	/** Of a local time that exists twice one is chosen; one that is skipped moves by the gap. */
	static FDateTime LocalToUtc(FDateTime Local);
};
