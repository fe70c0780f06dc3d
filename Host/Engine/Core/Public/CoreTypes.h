#pragma once

#include "HAL/Platform.h"
#include "Math/NumericLimits.h"
