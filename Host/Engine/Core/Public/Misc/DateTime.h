#pragma once

#include "Misc/Timespan.h"

enum class EDayOfWeek
{
	Monday,
	Tuesday,
	Wednesday,
	Thursday,
	Friday,
	Saturday,
	Sunday
};

enum class EMonthOfYear
{
	January = 1,
	February,
	March,
	April,
	May,
	June,
	July,
	August,
	September,
	October,
	November,
	December
};

/** A point in time, in ticks of 100 nanoseconds since 1 January 0001. Knows no time zone: the caller does. */
struct FDateTime
{
	constexpr FDateTime() = default;
	constexpr explicit FDateTime(int64 InTicks)
		: Ticks(InTicks)
	{
	}
	/** The fields must be valid; see Validate. */
	CORE_API FDateTime(int32 Year, int32 Month, int32 Day, int32 Hour = 0, int32 Minute = 0, int32 Second = 0, int32 Millisecond = 0);

	constexpr int64 GetTicks() const { return Ticks; }
	CORE_API void GetDate(int32& OutYear, int32& OutMonth, int32& OutDay) const;
	FDateTime GetDate() const { return FDateTime(Ticks - Ticks % ETimespan::TicksPerDay); }
	int32 GetYear() const { return Field(0); }
	/** 1 to 366. */
	CORE_API int32 GetDayOfYear() const;
	EDayOfWeek GetDayOfWeek() const { return (EDayOfWeek)(Ticks / ETimespan::TicksPerDay % 7); }
	int32 GetHour() const { return (int32)(Ticks / ETimespan::TicksPerHour % 24); }
	/** 1 to 12. */
	int32 GetHour12() const { return (GetHour() + 11) % 12 + 1; }
	int32 GetMinute() const { return (int32)(Ticks / ETimespan::TicksPerMinute % 60); }
	int32 GetSecond() const { return (int32)(Ticks / ETimespan::TicksPerSecond % 60); }
	int32 GetMillisecond() const { return (int32)(Ticks / ETimespan::TicksPerMillisecond % 1000); }
	bool IsMorning() const { return GetHour() < 12; }

	/** yyyy.mm.dd-hh.mm.ss */
	CORE_API FString ToString() const;
	/**
	 * After %: a am/pm, A AM/PM, d day, D day of year, m month, y and Y year, h and H hour, M minute, S second, s millisecond.
	 * Another letter stands for itself.
	 */
	CORE_API FString ToString(const TCHAR* Format) const;

	/** Local time of the host clock. */
	CORE_API static FDateTime Now();
	CORE_API static FDateTime UtcNow();
	static FDateTime FromUnixTimestamp(int64 UnixTime) { return FDateTime(UnixEpochTicks + UnixTime * ETimespan::TicksPerSecond); }
	/** The form of ToString(), milliseconds behind a point or colon allowed. False, and OutDateTime untouched, on anything else. */
	CORE_API static bool Parse(const FString& DateTimeString, FDateTime& OutDateTime);
	/** A date, or a date and a time with optional fraction and zone; the result is UTC. False on anything else. */
	CORE_API static bool ParseIso8601(const TCHAR* DateTimeString, FDateTime& OutDateTime);
	static constexpr FDateTime MinValue() { return FDateTime(0); }
	/** The last tick of the year 9999. */
	static constexpr FDateTime MaxValue() { return FDateTime(3652059 * ETimespan::TicksPerDay - 1); }
	CORE_API static bool Validate(int32 Year, int32 Month, int32 Day, int32 Hour, int32 Minute, int32 Second, int32 Millisecond);
	CORE_API static int32 DaysInMonth(int32 Year, int32 Month);
	static constexpr bool IsLeapYear(int32 Year) { return Year % 4 == 0 && (Year % 100 != 0 || Year % 400 == 0); }

	constexpr FDateTime operator+(FTimespan Other) const { return FDateTime(Ticks + Other.GetTicks()); }
	constexpr FDateTime operator-(FTimespan Other) const { return FDateTime(Ticks - Other.GetTicks()); }
	constexpr FTimespan operator-(FDateTime Other) const { return FTimespan(Ticks - Other.Ticks); }
	constexpr FDateTime& operator+=(FTimespan Other)
	{
		Ticks += Other.GetTicks();
		return *this;
	}
	constexpr FDateTime& operator-=(FTimespan Other)
	{
		Ticks -= Other.GetTicks();
		return *this;
	}
	constexpr bool operator==(const FDateTime&) const = default;
	constexpr auto operator<=>(const FDateTime& Other) const = default;
	friend constexpr uint32 GetTypeHash(const FDateTime& DateTime) { return GetTypeHash(DateTime.Ticks); }

private:
	static constexpr int64 UnixEpochTicks = 719162 * ETimespan::TicksPerDay;
	/** 0 year, 1 month, 2 day. */
	CORE_API int32 Field(int32 Index) const;
	int64 Ticks = 0;
};
