#pragma once

#include "CoreMinimal.h"

/**
 * Makes runs repeat exactly: the clock moves by a sixtieth of a second a frame, however long the frame takes. Background
 * work takes no simulated time: each frame waits for its end, and of what it hands over one task is run a frame, so that
 * a turn of the agent can still be watched, paused and stopped.
 */
class FSimulatedTime
{
public:
	static void Begin(FDateTime LocalStart);
	/** Before each frame. Does nothing to real time. */
	static void BeginFrame();
};
