#include "Host/HostProgress.h"

#include "Host/HostClock.h"

#include <utility>

namespace
{
	/** Work that is over by then is not worth a window that flashes up. */
	constexpr double SilentSeconds = 0.1;
	constexpr double LongWaitSeconds = 3600.0;

	FHostProgress::FShowHook& GetShowHook()
	{
		static FHostProgress::FShowHook Hook;
		return Hook;
	}

	int32 ShownCount = 0;
}

void FHostProgress::SetShowHook(FShowHook Hook)
{
	GetShowHook() = MoveTemp(Hook);
}

void FHostProgress::WaitFor(const FHostLongWork& Work)
{
	// A simulated run repeats exactly, so it must not depend on how long anything took.
	const FShowHook Hook = FHostClock::IsSimulated() ? FShowHook() : GetShowHook();
	if (Hook && !Work.WaitForEnd(SilentSeconds))
	{
		++ShownCount;
		Hook(Work);
		--ShownCount;
	}
	while (!Work.WaitForEnd(LongWaitSeconds))
	{
	}
}

bool FHostProgress::IsShown()
{
	return ShownCount > 0;
}
