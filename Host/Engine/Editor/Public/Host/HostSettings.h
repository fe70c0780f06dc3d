#pragma once

#include "CoreTypes.h"

/** The program's side of the settings page. Game thread. */
class EDITOR_API FHostSettings
{
public:
	/** Makes the module "Settings" loadable and loads it, so that modules that come later can register their settings. */
	static void Install();
};
