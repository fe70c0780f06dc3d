#pragma once

#include "CoreMinimal.h"
#include "Logging/LogMacros.h"

/** The module's only log category. Nothing is written to it: bad syntax is text, not an error. */
VELMORAUI_API DECLARE_LOG_CATEGORY_EXTERN(LogMarkdownParser, Log, VeryVerbose);
