#pragma once

#include "Internationalization/Text.h"
