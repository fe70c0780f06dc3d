#pragma once

#include "Containers/UnrealString.h"

namespace ETimespan
{
	inline constexpr int64 NanosecondsPerTick = 100;
	inline constexpr int64 TicksPerMicrosecond = 10;
	inline constexpr int64 TicksPerMillisecond = 10000;
	inline constexpr int64 TicksPerSecond = 10000000;
	inline constexpr int64 TicksPerMinute = 600000000;
	inline constexpr int64 TicksPerHour = 36000000000;
	inline constexpr int64 TicksPerDay = 864000000000;
	inline constexpr int64 TicksPerWeek = 6048000000000;
	inline constexpr int64 MaxTicks = 9223372036854775807;
	inline constexpr int64 MinTicks = -9223372036854775807 - 1;
}

/** A length of time, in ticks of 100 nanoseconds; may be negative. */
struct FTimespan
{
	constexpr FTimespan() = default;
	constexpr explicit FTimespan(int64 InTicks)
		: Ticks(InTicks)
	{
	}
	constexpr FTimespan(int32 Hours, int32 Minutes, int32 Seconds)
		: FTimespan(0, Hours, Minutes, Seconds)
	{
	}
	constexpr FTimespan(int32 Days, int32 Hours, int32 Minutes, int32 Seconds, int32 FractionNano = 0)
		: Ticks(Days * ETimespan::TicksPerDay + Hours * ETimespan::TicksPerHour + Minutes * ETimespan::TicksPerMinute +
			  Seconds * ETimespan::TicksPerSecond + FractionNano / ETimespan::NanosecondsPerTick)
	{
	}

	constexpr int64 GetTicks() const { return Ticks; }
	// Whole parts, towards zero.
	constexpr int32 GetDays() const { return (int32)(Ticks / ETimespan::TicksPerDay); }
	constexpr int32 GetHours() const { return (int32)(Ticks / ETimespan::TicksPerHour % 24); }
	constexpr int32 GetMinutes() const { return (int32)(Ticks / ETimespan::TicksPerMinute % 60); }
	constexpr int32 GetSeconds() const { return (int32)(Ticks / ETimespan::TicksPerSecond % 60); }
	constexpr int32 GetFractionMilli() const { return (int32)(Ticks % ETimespan::TicksPerSecond / ETimespan::TicksPerMillisecond); }
	// The whole length in one unit.
	constexpr double GetTotalSeconds() const { return (double)Ticks / ETimespan::TicksPerSecond; }

	/** "+hh:mm:ss.fff", with days in front when there are any. */
	CORE_API FString ToString() const;

	CORE_API static FTimespan FromSeconds(double Seconds);
	static constexpr FTimespan Zero() { return FTimespan(0); }
	static constexpr FTimespan MinValue() { return FTimespan(ETimespan::MinTicks); }
	static constexpr FTimespan MaxValue() { return FTimespan(ETimespan::MaxTicks); }

	constexpr FTimespan operator+(FTimespan Other) const { return FTimespan(Ticks + Other.Ticks); }
	constexpr FTimespan operator-(FTimespan Other) const { return FTimespan(Ticks - Other.Ticks); }
	constexpr FTimespan operator-() const { return FTimespan(-Ticks); }
	constexpr FTimespan operator*(double Scalar) const { return FTimespan((int64)((double)Ticks * Scalar)); }
	constexpr FTimespan operator/(double Scalar) const { return FTimespan((int64)((double)Ticks / Scalar)); }
	constexpr FTimespan operator%(FTimespan Other) const { return FTimespan(Ticks % Other.Ticks); }
	constexpr FTimespan& operator+=(FTimespan Other)
	{
		Ticks += Other.Ticks;
		return *this;
	}
	constexpr FTimespan& operator-=(FTimespan Other)
	{
		Ticks -= Other.Ticks;
		return *this;
	}
	constexpr bool operator==(const FTimespan&) const = default;
	constexpr auto operator<=>(const FTimespan& Other) const = default;
	friend constexpr uint32 GetTypeHash(const FTimespan& Timespan) { return GetTypeHash(Timespan.Ticks); }

private:
	int64 Ticks = 0;
};
