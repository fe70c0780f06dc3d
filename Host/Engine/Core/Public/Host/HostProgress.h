#pragma once

#include "CoreTypes.h"
#include "Internationalization/Text.h"
#include "Templates/Function.h"

/** Work of another thread that the game thread cannot go on without. */
struct FHostLongWork
{
	/** What it is, for the user. Asked again and again while it is shown. */
	TFunction<FText()> GetMessage;

	/** How far it is, from 0 to 1. */
	TFunction<float()> GetFraction;

	/** Waits so many seconds of real time at most. True when the work is over. */
	TFunction<bool(double Seconds)> WaitForEnd;
};

/**
 * Waits for such work. What takes longer than a moment is shown by the program, whose window goes on drawing meanwhile, with
 * everything but the progress out of reach; game-thread tasks and tickers run. Without a hook, and while the clock is
 * simulated, nothing is shown and nothing else runs. Game thread.
 */
class CORE_API FHostProgress
{
public:
	/** Shows the work and returns when it is over, or before, when it can be shown no longer. */
	using FShowHook = TFunction<void(const FHostLongWork& Work)>;
	static void SetShowHook(FShowHook Hook);

	/** Returns when the work is over. */
	static void WaitFor(const FHostLongWork& Work);

	/** The program shows such work now. */
	static bool IsShown();
};
