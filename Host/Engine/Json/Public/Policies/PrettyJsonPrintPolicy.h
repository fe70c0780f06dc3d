#pragma once

#include "CoreTypes.h"

/** Tabs, CR LF, an object value on a line of its own. */
template <class CharType>
struct TPrettyJsonPrintPolicy
{
	static constexpr bool bPretty = true;
};
