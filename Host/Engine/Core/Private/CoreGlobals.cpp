#include "CoreGlobals.h"

DEFINE_LOG_CATEGORY(LogTemp);
