#include "HAL/PlatformTime.h"
#include "Host/HostClock.h"
#include "Support/Base/Printers.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <thread>

TEST(DateTimes, FieldsThroughTheYears)
{
	EXPECT_EQ(FDateTime(1, 1, 1).GetTicks(), 0);
	EXPECT_EQ(FDateTime::FromUnixTimestamp(1769871845), FDateTime(2026, 1, 31, 15, 4, 5));
	EXPECT_EQ(FDateTime::MaxValue(), FDateTime(9999, 12, 31, 23, 59, 59, 999) + FTimespan(9999));
	// Every day from 1895 to 2105 and the turns of centuries, counted one by one.
	FDateTime Day(1895, 1, 1);
	for (int32 Year = 1895; Year < 2105; ++Year)
	{
		int32 DayOfYear = 0;
		for (int32 Month = 1; Month <= 12; ++Month)
		{
			for (int32 DayOfMonth = 1; DayOfMonth <= FDateTime::DaysInMonth(Year, Month); ++DayOfMonth)
			{
				int32 Fields[3];
				Day.GetDate(Fields[0], Fields[1], Fields[2]);
				ASSERT_TRUE(Fields[0] == Year && Fields[1] == Month && Fields[2] == DayOfMonth)
					<< Year << '/' << Month << '/' << DayOfMonth;
				ASSERT_EQ(Day.GetDayOfYear(), ++DayOfYear);
				ASSERT_EQ(Day, FDateTime(Year, Month, DayOfMonth));
				Day += FTimespan(24, 0, 0);
			}
		}
	}
	EXPECT_EQ(FDateTime(2026, 1, 31).GetDayOfWeek(), EDayOfWeek::Saturday);
	EXPECT_TRUE(FDateTime::IsLeapYear(2000) && !FDateTime::IsLeapYear(1900));
	EXPECT_FALSE(FDateTime::Validate(2025, 2, 29, 0, 0, 0, 0));
}

TEST(DateTimes, Read)
{
	const FDateTime None(0);
	const std::pair<const TCHAR*, FDateTime> Cases[] = {
		{ TEXT("2026-01-31"), FDateTime(2026, 1, 31) },
		{ TEXT("2026-01-31T15:04:05Z"), FDateTime(2026, 1, 31, 15, 4, 5) },
		{ TEXT("2026-01-31T15:04:05.5"), FDateTime(2026, 1, 31, 15, 4, 5, 500) },
		{ TEXT("2026-01-31T15:04:05.1239999+01:30"), FDateTime(2026, 1, 31, 13, 34, 5, 123) },
		{ TEXT("2026-01-31T23:00:00-0200"), FDateTime(2026, 2, 1, 1, 0, 0) },
		{ TEXT("2026-02-30"), None },
		{ TEXT("2026-01-31T25:00:00Z"), None },
		{ TEXT("2026-01-31T15:04:05Zx"), None },
		{ TEXT("2026-1-31"), None },
		{ TEXT("0001-01-01T00:00:00+01:00"), None },
		{ TEXT(""), None },
	};
	for (const auto& [Text, Expected] : Cases)
	{
		FDateTime Result(0);
		EXPECT_EQ(FDateTime::ParseIso8601(Text, Result), Expected != None) << Utf8(Text);
		EXPECT_EQ(Result, Expected) << Utf8(Text);
	}
	FDateTime Parsed(0);
	EXPECT_TRUE(FDateTime::Parse(TEXT("2026.01.31-15.04.05"), Parsed));
	EXPECT_EQ(Parsed, FDateTime(2026, 1, 31, 15, 4, 5));
	EXPECT_FALSE(FDateTime::Parse(TEXT("2026.01.31"), Parsed) || FDateTime::Parse(TEXT("2026.13.31-15.04.05"), Parsed) ||
		FDateTime::Parse(TEXT("x"), Parsed));
	EXPECT_EQ(Parsed, FDateTime(2026, 1, 31, 15, 4, 5));
}

/** Sets the time zone of the process in POSIX form and puts the old one and the real clock back. */
class FTimeZoneTest : public testing::Test
{
protected:
	FTimeZoneTest()
	{
		const char* Old = std::getenv("TZ");
		bHadZone = Old != nullptr;
		OldZone = Old ? Old : "";
	}
	void TearDown() override
	{
		bHadZone ? setenv("TZ", OldZone.c_str(), 1) : unsetenv("TZ");
		tzset();
		FHostClock::UseRealTime();
	}
	static void UseZone(const char* Zone)
	{
		setenv("TZ", Zone, 1);
		tzset();
	}
	std::string OldZone;
	bool bHadZone = false;
};

TEST_F(FTimeZoneTest, DatesAreShownInLocalTime)
{
	const FDateTime Utc(2026, 2, 1, 4, 30, 0);
	UseZone("EST5EDT,M3.2.0,M11.1.0");
	EXPECT_EQ(Utf8(FText::AsDate(Utc, EDateTimeStyle::Short)), "1/31/26");
	EXPECT_EQ(Utf8(FText::AsDate(Utc)), "Jan 31, 2026");
	EXPECT_EQ(Utf8(FText::AsDate(Utc, EDateTimeStyle::Medium)), "Jan 31, 2026");
	EXPECT_EQ(Utf8(FText::AsDate(Utc, EDateTimeStyle::Long)), "January 31, 2026");
	EXPECT_EQ(Utf8(FText::AsDate(Utc, EDateTimeStyle::Full)), "Saturday, January 31, 2026");
	EXPECT_EQ(Utf8(FText::AsDate(Utc, EDateTimeStyle::Short, FText::GetInvariantTimeZone())), "2/1/26");
	UseZone("NZST-12NZDT,M9.5.0,M4.1.0/3");
	EXPECT_EQ(Utf8(FText::AsDate(Utc)), "Feb 1, 2026");
}

TEST_F(FTimeZoneTest, LocalTimeGoesBothWays)
{
	for (const char* Zone : { "UTC0", "EST5EDT,M3.2.0,M11.1.0", "NZST-12NZDT,M9.5.0,M4.1.0/3", "IST-5:30" })
	{
		UseZone(Zone);
		for (FDateTime Local(2026, 1, 1, 12, 0, 0); Local.GetYear() == 2026; Local += FTimespan(24, 0, 0))
		{
			ASSERT_EQ(FHostClock::UtcToLocal(FHostClock::LocalToUtc(Local)), Local) << Zone;
		}
	}
	UseZone("EST5EDT,M3.2.0,M11.1.0");
	EXPECT_EQ(FHostClock::LocalToUtc(FDateTime(2026, 3, 8, 3, 0, 0)), FDateTime(2026, 3, 8, 7, 0, 0));
	EXPECT_EQ(FHostClock::UtcToLocal(FHostClock::LocalToUtc(FDateTime(2026, 3, 8, 2, 30, 0))), FDateTime(2026, 3, 8, 3, 30, 0))
		<< "a skipped hour moves by the gap";
	EXPECT_EQ(FHostClock::LocalToUtc(FDateTime(2026, 11, 1, 0, 59, 0)), FDateTime(2026, 11, 1, 4, 59, 0));
	EXPECT_EQ(FHostClock::LocalToUtc(FDateTime(2026, 11, 1, 2, 0, 0)), FDateTime(2026, 11, 1, 7, 0, 0));
}

TEST_F(FTimeZoneTest, SimulatedTimeStandsStillUntilItIsAdvanced)
{
	UseZone("EST5EDT,M3.2.0,M11.1.0");
	const double RealBefore = FPlatformTime::Seconds();
	FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31, 23, 0, 0));
	const double Start = FPlatformTime::Seconds();
	EXPECT_EQ(FDateTime::Now(), FDateTime(2026, 1, 31, 23, 0, 0));
	EXPECT_EQ(FDateTime::UtcNow(), FDateTime(2026, 2, 1, 4, 0, 0));
	FHostClock::Advance(3600.5);
	EXPECT_DOUBLE_EQ(FPlatformTime::Seconds() - Start, 3600.5);
	EXPECT_EQ(FDateTime::Now(), FDateTime(2026, 2, 1, 0, 0, 0, 500));
	for (int32 Frame = 0; Frame < 600; ++Frame)
	{
		FHostClock::Advance(1.0 / 60.0);
	}
	EXPECT_LE(std::abs((FDateTime::Now() - FDateTime(2026, 2, 1, 0, 0, 10, 500)).GetTicks()), 1) << "small steps do not add up to an error";
	FHostClock::UseRealTime();
	EXPECT_GE(FPlatformTime::Seconds(), RealBefore);
	EXPECT_LT(std::abs((FDateTime::UtcNow() - FDateTime::FromUnixTimestamp(std::time(nullptr))).GetTotalSeconds()), 5.0);
}

TEST_F(FTimeZoneTest, HeldTimeStandsStillForItsThreadAlone)
{
	const auto SeenElsewhere = []
	{
		double Seconds = 0.0;
		std::thread([&Seconds] { Seconds = FHostClock::GetElapsed(); }).join();
		return Seconds;
	};
	UseZone("UTC");
	FHostClock::UseHeldTime();
	EXPECT_FALSE(FHostClock::IsSimulated()) << "it passes by itself";
	const FDateTime Begun = FDateTime::UtcNow();
	const double Start = FPlatformTime::Seconds();
	EXPECT_EQ(FHostClock::GetElapsed(), 0.0);
	std::this_thread::sleep_for(std::chrono::milliseconds(20));
	EXPECT_EQ(FPlatformTime::Seconds(), Start);
	EXPECT_EQ(FDateTime::UtcNow(), Begun);
	EXPECT_GE(SeenElsewhere(), 0.02);
	EXPECT_GE(FHostClock::GetSinceHold(), 0.02);
	FHostClock::Hold();
	const double Held = FHostClock::GetElapsed();
	EXPECT_GE(Held, 0.02);
	EXPECT_EQ(Held, static_cast<double>(std::llround(Held * 1e6)) / 1e6) << "whole microseconds";
	const double Seconds = FPlatformTime::Seconds();
	const FDateTime Now = FDateTime::UtcNow();

	// Whoever knows the beginning and the moment sees the same time, to the bit.
	FHostClock::UseSimulatedTime(FHostClock::UtcToLocal(Begun));
	FHostClock::SetElapsed(Held);
	EXPECT_EQ(FPlatformTime::Seconds(), Seconds);
	EXPECT_EQ(FDateTime::UtcNow(), Now);
	FHostClock::SetElapsed(0.0);
	EXPECT_EQ(FPlatformTime::Seconds(), Seconds) << "never backwards";
	FHostClock::UseRealTime();
	EXPECT_EQ(FHostClock::GetElapsed(), 0.0);
}
