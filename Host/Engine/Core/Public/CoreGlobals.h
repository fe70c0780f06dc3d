#pragma once

#include "Async/TaskGraphInterfaces.h"
#include "Logging/LogMacros.h"
#include "Misc/ConfigCacheIni.h"

/** For lines without a category of their own. */
CORE_API DECLARE_LOG_CATEGORY_EXTERN(LogTemp, Log, All);
