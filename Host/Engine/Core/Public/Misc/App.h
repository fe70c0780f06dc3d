#pragma once

#include "Containers/UnrealString.h"

/** Facts about the running program. */
struct CORE_API FApp
{
	/** True when nobody can answer a question. */
	static bool IsUnattended();
	static void SetUnattended(bool bUnattended);
	/** File name of the open project without extension, empty when there is none. */
	static const TCHAR* GetProjectName();
	static void SetProjectName(const TCHAR* Name);
};
