#pragma once

#include "CoreTypes.h"

/** No blank and no line end between the parts. */
template <class CharType>
struct TCondensedJsonPrintPolicy
{
	static constexpr bool bPretty = false;
};
