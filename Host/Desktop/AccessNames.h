#pragma once

#include "CoreMinimal.h"

/** What the program knows of the chat's widgets, for those who do not see them (FAccessRules). */
class FAccessNames
{
public:
	static void Install();
	static void Uninstall();
};
