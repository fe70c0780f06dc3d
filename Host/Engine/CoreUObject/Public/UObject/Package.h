#pragma once

#include "UObject/Class.h"
