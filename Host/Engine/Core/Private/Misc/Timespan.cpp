#include "Misc/Timespan.h"

#include "Math/UnrealMathUtility.h"

FString FTimespan::ToString() const
{
	const TCHAR* const Sign = Ticks < 0 ? TEXT("-") : TEXT("+");
	const FString Time = FString::Printf(TEXT("%02d:%02d:%02d.%03d"), FMath::Abs(GetHours()), FMath::Abs(GetMinutes()),
		FMath::Abs(GetSeconds()), FMath::Abs(GetFractionMilli()));
	// Days only where there are some.
	return GetDays() == 0 ? Sign + Time : FString::Printf(TEXT("%s%d.%s"), Sign, FMath::Abs(GetDays()), *Time);
}

FTimespan FTimespan::FromSeconds(double Seconds)
{
	return FTimespan(FMath::RoundToInt64(Seconds * ETimespan::TicksPerSecond));
}
