#pragma once

#include <memory>

#include "CodeIntel/CodeIndex.h"

namespace Velmora::CodeIntel
{
	/** The indexes of the process, as the manager and its control share them. Any thread. */
	class FCodeIndexes
	{
	public:
		/** Null before the start, after the end, and for an engine that was not asked for. */
		static std::shared_ptr<FCodeIndex> GetProject();
		static std::shared_ptr<FCodeIndex> GetEngine();

		/** Nothing happens before the start or when there is one. */
		static void MakeEngine();
	};
}
