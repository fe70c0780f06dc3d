#pragma once

#include <cstdint>
#include <sys/types.h>

namespace Velmora
{
	/** A process with all that come from it, as the system sees them now. */
	struct FProcessTree
	{
		int Count = 0;

		/** What they hold of memory; what they share counts for each. */
		uint64_t ResidentBytes = 0;

		static FProcessTree Measure(pid_t Root);
	};
}
