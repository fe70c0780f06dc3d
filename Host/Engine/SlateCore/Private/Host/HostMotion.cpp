#include "Host/HostMotion.h"

#include "Host/HostSleep.h"

namespace
{
	bool bMotionReduced = false;
}

bool FHostMotion::IsReduced()
{
	return bMotionReduced;
}

void FHostMotion::SetReduced(bool bReduced)
{
	if (bMotionReduced != bReduced)
	{
		bMotionReduced = bReduced;
		// What moved stands still in the next frame, and the other way round.
		FHostSleep::NoteChange();
	}
}
