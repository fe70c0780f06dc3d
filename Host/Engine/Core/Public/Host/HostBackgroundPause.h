#pragma once

#include "CoreTypes.h"

/**
 * Marks a piece of background work that goes on only when somebody answers: who waits for background work does not wait for it, from
 * construction to destruction. Who answers ends it before the work is woken, so that nobody takes a run that goes on for one that
 * rests. A shutdown waits for it all the same. Any thread; another one may destroy it.
 */
class CORE_API FHostBackgroundPause
{
public:
	FHostBackgroundPause();
	~FHostBackgroundPause();
	FHostBackgroundPause(const FHostBackgroundPause&) = delete;
	FHostBackgroundPause& operator=(const FHostBackgroundPause&) = delete;
};
