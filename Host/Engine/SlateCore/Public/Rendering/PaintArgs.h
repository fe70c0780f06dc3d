#pragma once

#include "CoreMinimal.h"

/** What a walk through the tree carries along. */
class FPaintArgs
{
public:
	FPaintArgs(double InTime, float InDelta, bool bInTick)
		: CurrentTime(InTime)
		, DeltaTime(InDelta)
		, bTick(bInTick)
	{
	}
	double GetCurrentTime() const { return CurrentTime; }
	float GetDeltaTime() const { return DeltaTime; }
	/** False when a frame walks the tree again because something was measured late: nothing ticks twice. */
	bool ShouldTick() const { return bTick; }

private:
	double CurrentTime;
	float DeltaTime;
	bool bTick;
};
