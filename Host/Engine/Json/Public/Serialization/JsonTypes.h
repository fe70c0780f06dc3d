#pragma once

#include "CoreTypes.h"
#include "Logging/LogMacros.h"

JSON_API DECLARE_LOG_CATEGORY_EXTERN(LogJson, Log, All);

/** Kind of a value. */
enum class EJson
{
	None,
	Null,
	String,
	Number,
	Boolean,
	Array,
	Object,
};

/** "String", "Number", ... Static storage. */
JSON_API const TCHAR* LexToString(EJson Type);
