#pragma once

#include "IDesktopPlatform.h"

/** Door to the dialogs of the desktop. */
class EDITOR_API FDesktopPlatformModule
{
public:
	/** Null only while the module is not there; here it always is. */
	static IDesktopPlatform* Get();
};
