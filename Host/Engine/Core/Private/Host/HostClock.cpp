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

	std::atomic<bool> bHeld{ false };
	std::atomic<int64> HeldStartUtcTicks{ 0 };
	/** Of the monotonic clock. */
	std::atomic<int64> HeldStartNanoseconds{ 0 };
	/** The thread that holds time sees this one. */
	thread_local bool bHoldsHere = false;
	thread_local int64 HeldMicroseconds = 0;

	int64 ReadNanoseconds(clockid_t Clock)
	{
		std::timespec Time = {};
		clock_gettime(Clock, &Time);
		return (int64)Time.tv_sec * 1000000000 + Time.tv_nsec;
	}

	int64 ReadHeldMicroseconds()
	{
		return (ReadNanoseconds(CLOCK_MONOTONIC) - HeldStartNanoseconds) / 1000;
	}

	/** One way from a count to seconds, so that who reads the count again comes to the same number. */
	double ToSeconds(int64 Microseconds)
	{
		return (double)Microseconds / 1e6;
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
	return IsSimulated() || bHeld ? SimulatedOrigin + GetElapsed() : (double)ReadNanoseconds(CLOCK_MONOTONIC) * 1e-9;
}

int64 FHostClock::UtcNowTicks()
{
	if (IsSimulated() || bHeld)
	{
		const int64 Start = IsSimulated() ? SimulatedStartUtcTicks : HeldStartUtcTicks;
		return Start + std::llround(GetElapsed() * (double)ETimespan::TicksPerSecond);
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
	bHeld = false;
}

void FHostClock::UseSimulatedTime(FDateTime LocalStart)
{
	SimulatedStartUtcTicks = LocalToUtc(LocalStart).GetTicks();
	SimulatedElapsed = 0.0;
	bSimulated = true;
	bHeld = false;
}

void FHostClock::UseHeldTime()
{
	UseRealTime();
	HeldStartUtcTicks = UtcNowTicks();
	HeldStartNanoseconds = ReadNanoseconds(CLOCK_MONOTONIC);
	HeldMicroseconds = 0;
	bHoldsHere = true;
	bHeld = true;
}

void FHostClock::Hold()
{
	HeldMicroseconds = bHeld ? ReadHeldMicroseconds() : HeldMicroseconds;
}

double FHostClock::GetSinceHold()
{
	return bHeld ? ToSeconds(ReadHeldMicroseconds() - HeldMicroseconds) : 0.0;
}

double FHostClock::GetElapsed()
{
	if (IsSimulated())
	{
		return SimulatedElapsed;
	}
	return bHeld ? ToSeconds(bHoldsHere ? HeldMicroseconds : ReadHeldMicroseconds()) : 0.0;
}

void FHostClock::SetElapsed(double Seconds)
{
	if (IsSimulated() && Seconds > SimulatedElapsed)
	{
		SimulatedElapsed = Seconds;
	}
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
