#include "SimulatedTime.h"

#include "ConversationPrinter.h"
#include "Host/HostClock.h"
#include "Host/HostTasks.h"

namespace
{
	constexpr double SimulatedFrameSeconds = 1.0 / 60.0;
	/** Background work that takes longer than this is not waited for, and the run no longer repeats. */
	constexpr double MaxBackgroundSeconds = 300.0;
}

void FSimulatedTime::Begin(FDateTime LocalStart)
{
	FHostClock::UseSimulatedTime(LocalStart);
	FHostTasks::SetMaxTasksPerRun(1);
}

void FSimulatedTime::BeginFrame()
{
	if (!FHostClock::IsSimulated())
	{
		return;
	}
	if (!FHostTasks::WaitForBackground(MaxBackgroundSeconds))
	{
		PrintToStandardError(TEXT("velmora: Work in the background does not end; this run may differ from others.\n"));
	}
	FHostClock::Advance(SimulatedFrameSeconds);
}
