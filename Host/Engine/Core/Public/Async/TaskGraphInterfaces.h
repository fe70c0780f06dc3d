#pragma once

#include "CoreTypes.h"

/** Where a task is to run. All background names share one pool here. */
namespace ENamedThreads
{
	enum Type : int32
	{
		GameThread,
		AnyThread,
		AnyNormalThreadNormalTask,
		AnyNormalThreadHiPriTask,
		AnyHiPriThreadNormalTask,
		AnyHiPriThreadHiPriTask,
		AnyBackgroundThreadNormalTask,
		AnyBackgroundHiPriTask,
	};
}

/** True on the thread that FHostTasks::SetGameThread named, until then on the process's first thread. */
CORE_API bool IsInGameThread();
