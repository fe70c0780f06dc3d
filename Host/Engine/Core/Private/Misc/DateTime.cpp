#include "Misc/DateTime.h"

#include "Containers/StringConv.h"
#include "Host/HostClock.h"
#include "Math/UnrealMathUtility.h"

#include <algorithm>
#include <ctime>
#include <locale.h>
#include <string>
#include <string_view>

// Dates of the Gregorian calendar as ticks of 100 ns since the first day of year 1, without time zone. The
// C library is asked for the words of a formatted date alone: its functions follow the locale and the environment.

namespace
{
	constexpr int32 DaysBeforeMonth[] = { 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365 };

	// Every fourth year is a leap year, but of full centuries only every fourth.
	int64 DaysBeforeYear(int32 Year)
	{
		const int64 Y = Year - 1;
		return Y * 365 + Y / 4 - Y / 100 + Y / 400;
	}

	/** Reads a number of MinDigits to MaxDigits digits and moves behind it. */
	bool ReadNumber(const TCHAR*& It, int32 MinDigits, int32 MaxDigits, int32& OutValue)
	{
		OutValue = 0;
		int32 Digits = 0;
		for (; Digits < MaxDigits && FChar::IsDigit(*It); ++Digits, ++It)
		{
			OutValue = OutValue * 10 + (*It - '0');
		}
		return Digits >= MinDigits;
	}

	/** The milliseconds of a fraction of any length; further digits are dropped. */
	int32 ReadFraction(const TCHAR*& It)
	{
		int32 Milliseconds = 0;
		for (int32 Weight = 100; FChar::IsDigit(*It); Weight /= 10, ++It)
		{
			Milliseconds += Weight * (*It - '0');
		}
		return Milliseconds;
	}

	/** "Z", "+hh", "+hhmm", "+hh:mm" or nothing, to the end of the text. */
	bool ReadZone(const TCHAR* It, FTimespan& OutOffset)
	{
		OutOffset = FTimespan(0);
		if (*It == 'Z' || *It == 'z')
		{
			return It[1] == 0;
		}
		if (*It == '+' || *It == '-')
		{
			const int32 Sign = *It++ == '-' ? -1 : 1;
			int32 Hours = 0;
			int32 Minutes = 0;
			if (!ReadNumber(It, 2, 2, Hours))
			{
				return false;
			}
			if (*It)
			{
				It += *It == ':' ? 1 : 0;
				if (!ReadNumber(It, 2, 2, Minutes))
				{
					return false;
				}
			}
			if (Hours > 23 || Minutes > 59)
			{
				return false;
			}
			OutOffset = FTimespan(Sign * Hours, Sign * Minutes, 0);
		}
		return *It == 0;
	}
}

FDateTime::FDateTime(int32 Year, int32 Month, int32 Day, int32 Hour, int32 Minute, int32 Second, int32 Millisecond)
{
	check(Validate(Year, Month, Day, Hour, Minute, Second, Millisecond));
	const int64 Days = DaysBeforeYear(Year) + DaysBeforeMonth[Month - 1] + (Month > 2 && IsLeapYear(Year) ? 1 : 0) + Day - 1;
	Ticks = Days * ETimespan::TicksPerDay + Hour * ETimespan::TicksPerHour + Minute * ETimespan::TicksPerMinute +
		Second * ETimespan::TicksPerSecond + Millisecond * ETimespan::TicksPerMillisecond;
}

// 1. The year, guessed from its average length (146097 days in 400 years) and put right by one at most.
void FDateTime::GetDate(int32& OutYear, int32& OutMonth, int32& OutDay) const
{
	const int64 Days = Ticks / ETimespan::TicksPerDay;
	int32 Year = (int32)(Days * 400 / 146097) + 1; // At most one off.
	while (DaysBeforeYear(Year) > Days)
	{
		--Year;
	}
	while (DaysBeforeYear(Year + 1) <= Days)
	{
		++Year;
	}
	// 2. Month and day, by counting the months off.
	int32 Rest = (int32)(Days - DaysBeforeYear(Year));
	int32 Month = 1;
	while (Rest >= DaysInMonth(Year, Month))
	{
		Rest -= DaysInMonth(Year, Month);
		++Month;
	}
	OutYear = Year;
	OutMonth = Month;
	OutDay = Rest + 1;
}

int32 FDateTime::Field(int32 Index) const
{
	int32 Fields[3];
	GetDate(Fields[0], Fields[1], Fields[2]);
	return Fields[Index];
}

int32 FDateTime::GetDayOfYear() const
{
	return (int32)(Ticks / ETimespan::TicksPerDay - DaysBeforeYear(GetYear())) + 1;
}

int32 FDateTime::DaysInMonth(int32 Year, int32 Month)
{
	check(Month >= 1 && Month <= 12);
	return Month == 2 && IsLeapYear(Year) ? 29 : DaysBeforeMonth[Month] - DaysBeforeMonth[Month - 1];
}

bool FDateTime::Validate(int32 Year, int32 Month, int32 Day, int32 Hour, int32 Minute, int32 Second, int32 Millisecond)
{
	return Year >= 1 && Year <= 9999 && Month >= 1 && Month <= 12 && Day >= 1 && Day <= DaysInMonth(Year, Month) && Hour >= 0 &&
		Hour <= 23 && Minute >= 0 && Minute <= 59 && Second >= 0 && Second <= 59 && Millisecond >= 0 && Millisecond <= 999;
}

FString FDateTime::ToString() const
{
	return ToString(TEXT("%Y.%m.%d-%H.%M.%S"));
}

FString FDateTime::ToString(const TCHAR* Format) const
{
	int32 Year;
	int32 Month;
	int32 Day;
	GetDate(Year, Month, Day);
	FString Result;
	for (; *Format; ++Format)
	{
		if (*Format != '%' || !Format[1])
		{
			Result.AppendChar(*Format);
			continue;
		}
		switch (*++Format)
		{
		case 'a':
			Result += IsMorning() ? TEXT("am") : TEXT("pm");
			break;
		case 'A':
			Result += IsMorning() ? TEXT("AM") : TEXT("PM");
			break;
		case 'd':
			Result += FString::Printf(TEXT("%02d"), Day);
			break;
		case 'D':
			Result += FString::Printf(TEXT("%03d"), GetDayOfYear());
			break;
		case 'm':
			Result += FString::Printf(TEXT("%02d"), Month);
			break;
		case 'y':
			Result += FString::Printf(TEXT("%02d"), Year % 100);
			break;
		case 'Y':
			Result += FString::Printf(TEXT("%04d"), Year);
			break;
		case 'h':
			Result += FString::Printf(TEXT("%02d"), GetHour12());
			break;
		case 'H':
			Result += FString::Printf(TEXT("%02d"), GetHour());
			break;
		case 'M':
			Result += FString::Printf(TEXT("%02d"), GetMinute());
			break;
		case 'S':
			Result += FString::Printf(TEXT("%02d"), GetSecond());
			break;
		case 's':
			Result += FString::Printf(TEXT("%03d"), GetMillisecond());
			break;
		default:
			Result.AppendChar(*Format);
			break;
		}
	}
	return Result;
}

FDateTime FDateTime::Now()
{
	return FDateTime(FHostClock::LocalNowTicks());
}

FDateTime FDateTime::UtcNow()
{
	return FDateTime(FHostClock::UtcNowTicks());
}

// What ToString writes: six numbers with separators, and perhaps a fraction. OutDateTime is left alone on failure.
bool FDateTime::Parse(const FString& DateTimeString, FDateTime& OutDateTime)
{
	int32 Fields[7] = {};
	int32 Count = 0;
	const TCHAR* It = *DateTimeString;
	while (Count < 6 && ReadNumber(It, 1, Count == 0 ? 4 : 2, Fields[Count]))
	{
		++Count;
		if (Count < 6)
		{
			if (*It != '.' && *It != '-' && *It != ':' && *It != ' ')
			{
				return false;
			}
			++It;
		}
	}
	if (Count == 6 && (*It == '.' || *It == ':') && FChar::IsDigit(It[1]))
	{
		++It;
		Fields[6] = ReadFraction(It);
	}
	if (Count < 6 || *It || !Validate(Fields[0], Fields[1], Fields[2], Fields[3], Fields[4], Fields[5], Fields[6]))
	{
		return false;
	}
	OutDateTime = FDateTime(Fields[0], Fields[1], Fields[2], Fields[3], Fields[4], Fields[5], Fields[6]);
	return true;
}

// 1. The date, which may stand alone. 2. Hours and minutes; seconds and their fraction may be missing. 3. The zone,
// which is taken off so that the result is UTC. 4. A day that does not exist, or a result out of range, is refused.
bool FDateTime::ParseIso8601(const TCHAR* DateTimeString, FDateTime& OutDateTime)
{
	int32 Year;
	int32 Month;
	int32 Day;
	int32 Hour = 0;
	int32 Minute = 0;
	int32 Second = 0;
	int32 Millisecond = 0;
	FTimespan Offset(0);
	const TCHAR* It = DateTimeString;
	if (!It || !ReadNumber(It, 4, 4, Year) || *It++ != '-' || !ReadNumber(It, 2, 2, Month) || *It++ != '-' || !ReadNumber(It, 2, 2, Day))
	{
		return false;
	}
	if (*It)
	{
		if ((*It != 'T' && *It != 't') || !ReadNumber(++It, 2, 2, Hour) || *It++ != ':' || !ReadNumber(It, 2, 2, Minute))
		{
			return false;
		}
		if (*It == ':')
		{
			if (!ReadNumber(++It, 2, 2, Second))
			{
				return false;
			}
			if ((*It == '.' || *It == ',') && FChar::IsDigit(It[1]))
			{
				++It;
				Millisecond = ReadFraction(It);
			}
		}
		if (!ReadZone(It, Offset))
		{
			return false;
		}
	}
	if (!Validate(Year, Month, Day, Hour, Minute, Second, Millisecond))
	{
		return false;
	}
	const FDateTime Result = FDateTime(Year, Month, Day, Hour, Minute, Second, Millisecond) - Offset;
	if (Result < MinValue() || Result > MaxValue())
	{
		return false;
	}
	OutDateTime = Result;
	return true;
}
