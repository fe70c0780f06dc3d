#pragma once

#include "CoreMinimal.h"

/**
 * A name that the list of files has no room for is told whole by a tooltip. The list is as wide as it may become, and its rows are what
 * they are; only those that are in view are looked at, and only while a list is open. Game thread.
 */
class FCutNames
{
public:
	/** Once a frame. */
	static void Update();
};
