#pragma once

#include "CoreMinimal.h"

/** Whether an active timer goes on. */
enum class EActiveTimerReturnType : uint8
{
	Stop,
	Continue,
};

/** Called with the current time and the time since the last call. */
DECLARE_DELEGATE_RetVal_TwoParams(EActiveTimerReturnType, FWidgetActiveTimerDelegate, double, float);

/** A registered timer; unregister with it. */
class FActiveTimerHandle
{
public:
	FActiveTimerHandle(float InPeriod, FWidgetActiveTimerDelegate InFunction, double InNextTime)
		: Function(MoveTemp(InFunction))
		, NextTime(InNextTime)
		, LastTime(InNextTime)
		, Period(InPeriod)
	{
	}
	FWidgetActiveTimerDelegate Function;
	double NextTime;
	double LastTime;
	float Period;
};
