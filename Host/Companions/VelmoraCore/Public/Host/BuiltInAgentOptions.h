#pragma once

#include "CoreMinimal.h"

namespace Velmora
{
	/** Knobs of the built-in agent for programs and tests. Read when a turn starts. */
	struct FBuiltInAgentOptions
	{
		/** Seconds that each tool takes at least, so that a person (or a test) can watch it run. Zero for no wait. */
		double MinimumToolSeconds = 0.0;
	};

	/** Game thread. */
	VELMORACORE_API const FBuiltInAgentOptions& GetBuiltInAgentOptions();
	VELMORACORE_API void SetBuiltInAgentOptions(const FBuiltInAgentOptions& Options);
}
