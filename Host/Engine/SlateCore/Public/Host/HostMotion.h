#pragma once

#include "CoreMinimal.h"

/** Whether the host's own widgets keep still: no fades, no blinking caret, nothing that wanders. Game thread. */
class SLATECORE_API FHostMotion
{
public:
	static bool IsReduced();
	static void SetReduced(bool bReduced);
};
