#pragma once

#include "Containers/StringView.h"

/** Writes one line to the standard error stream in a single call, so that lines of several threads do not mix. */
void HostPrintError(FStringView Line);
