#pragma once

#include "Misc/Char.h"

/** The C string functions for TCHAR. Strings end with a null unit; none of them follows the process locale. */
struct CORE_API FCString
{
	static int32 Strlen(const TCHAR* String);
	static int32 Strnlen(const TCHAR* String, SIZE_T StringSize);
	static int32 Stricmp(const TCHAR* A, const TCHAR* B);
	/** Leading white space, a sign and digits; what follows is ignored. 0 without digits; clamped to the type's range. */
	static int32 Atoi(const TCHAR* String);
	static float Atof(const TCHAR* String);
	static double Atod(const TCHAR* String);
	/** OutEnd, if not null, is set behind the last unit used. Base 2 to 36, or 0 for the C prefixes. */
	static int32 Strtoi(const TCHAR* Start, TCHAR** OutEnd, int32 Base);
	static int64 Strtoi64(const TCHAR* Start, TCHAR** OutEnd, int32 Base);
	static uint64 Strtoui64(const TCHAR* Start, TCHAR** OutEnd, int32 Base);
	/** "true", "yes", "on" (ignoring case) or a number other than 0. */
	static bool ToBool(const TCHAR* String);
	/** Optional sign, digits, at most one point. */
	static bool IsNumeric(const TCHAR* String);
};
