#include "Host/HostClock.h"

#include "HAL/PlatformTime.h"

#include <atomic>
#include <cmath>
#include <ctime>

// The time of the program: the system's, or a simulated one that stands still until a test moves it on. Local time goes
// by the rules of the zone at that moment; an hour that does not exist is moved over the gap.

namespace
{
	constexpr int64 EpochTicks = 719162 * ETimespan::TicksPerDay; // 1 January 1970.
	constexpr double SimulatedOrigin = 1000.0;

	std::atomic<bool> bSimulated{ false };
	std::atomic<int64> SimulatedStartUtcTicks{ 0 };
	std::atomic<double> SimulatedElapsed{ 0.0 };

	int64 ReadNanoseconds(clockid_t Clock)
	{
		std::timespec Time = {};
		clock_gettime(Clock, &Time);
		return (int64)Time.tv_sec * 1000000000 + Time.tv_nsec;
	}

	/** What local time adds to UTC at a moment. */
	FTimespan LocalOffset(FDateTime Utc)
	{
		int64 Seconds = (Utc.GetTicks() - EpochTicks) / ETimespan::TicksPerSecond;
		Seconds -= (Utc.GetTicks() - EpochTicks) % ETimespan::TicksPerSecond < 0 ? 1 : 0;
		const std::time_t Time = (std::time_t)Seconds;
		std::tm Fields = {};
		return localtime_r(&Time, &Fields) ? FTimespan((int64)Fields.tm_gmtoff * ETimespan::TicksPerSecond) : FTimespan(0);
	}
}

double FHostClock::Seconds()
{
	return IsSimulated() ? SimulatedOrigin + SimulatedElapsed : (double)ReadNanoseconds(CLOCK_MONOTONIC) * 1e-9;
}

int64 FHostClock::UtcNowTicks()
{
	if (IsSimulated())
	{
		return SimulatedStartUtcTicks + std::llround(SimulatedElapsed * (double)ETimespan::TicksPerSecond);
	}
	return EpochTicks + ReadNanoseconds(CLOCK_REALTIME) / ETimespan::NanosecondsPerTick;
}

int64 FHostClock::LocalNowTicks()
{
	return UtcToLocal(FDateTime(UtcNowTicks())).GetTicks();
}

void FHostClock::UseRealTime()
{
	bSimulated = false;
}

void FHostClock::UseSimulatedTime(FDateTime LocalStart)
{
	SimulatedStartUtcTicks = LocalToUtc(LocalStart).GetTicks();
	SimulatedElapsed = 0.0;
	bSimulated = true;
}

void FHostClock::Advance(double Seconds)
{
	if (IsSimulated() && Seconds > 0.0)
	{
		SimulatedElapsed = SimulatedElapsed + Seconds;
	}
}

bool FHostClock::IsSimulated()
{
	return bSimulated;
}

FDateTime FHostClock::UtcToLocal(FDateTime Utc)
{
	return Utc + LocalOffset(Utc);
}

FDateTime FHostClock::LocalToUtc(FDateTime Local)
{
	const FDateTime First = Local - LocalOffset(Local);
	const FDateTime Second = Local - LocalOffset(First);
	// Both agree, or Second is right where the offset changed between the two guesses. A skipped time has no right answer.
	return UtcToLocal(Second) == Local ? Second : First;
}

double FPlatformTime::Seconds()
{
	return FHostClock::Seconds();
}
