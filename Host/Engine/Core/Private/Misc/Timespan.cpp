#include "Misc/Timespan.h"

#include "Math/UnrealMathUtility.h"

FString FTimespan::ToString() const
{
	return ToString(GetDays() == 0 ? TEXT("%n%h:%m:%s.%f") : TEXT("%n%d.%h:%m:%s.%f"));
}

FString FTimespan::ToString(const TCHAR* Format) const
{
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
		case 'n':
			Result.AppendChar(Ticks < 0 ? TEXT('-') : TEXT('+'));
			break;
		case 'd':
			Result += FString::FromInt(FMath::Abs((int64)GetDays()));
			break;
		case 'h':
			Result += FString::Printf(TEXT("%02d"), FMath::Abs(GetHours()));
			break;
		case 'm':
			Result += FString::Printf(TEXT("%02d"), FMath::Abs(GetMinutes()));
			break;
		case 's':
			Result += FString::Printf(TEXT("%02d"), FMath::Abs(GetSeconds()));
			break;
		case 'f':
			Result += FString::Printf(TEXT("%03d"), FMath::Abs(GetFractionMilli()));
			break;
		case 'u':
			Result += FString::Printf(TEXT("%06d"), FMath::Abs(GetFractionMicro()));
			break;
		case 't':
			Result += FString::Printf(TEXT("%09d"), FMath::Abs(GetFractionNano()));
			break;
		case 'D':
			Result += FString::Printf(TEXT("%f"), FMath::Abs(GetTotalDays()));
			break;
		case 'H':
			Result += FString::Printf(TEXT("%f"), FMath::Abs(GetTotalHours()));
			break;
		case 'M':
			Result += FString::Printf(TEXT("%f"), FMath::Abs(GetTotalMinutes()));
			break;
		case 'S':
			Result += FString::Printf(TEXT("%f"), FMath::Abs(GetTotalSeconds()));
			break;
		default:
			Result.AppendChar(*Format);
			break;
		}
	}
	return Result;
}

FTimespan FTimespan::FromSeconds(double Seconds)
{
	return FTimespan(FMath::RoundToInt64(Seconds * ETimespan::TicksPerSecond));
}
