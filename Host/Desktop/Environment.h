#pragma once

#include "CoreMinimal.h"

/** The folder that the program was started in, absolute. */
FString GetWorkingFolder();

/** A path from the command line, made absolute. */
FString MakeAbsolute(const FString& Path);

/** Pixels per unit that the environment asks for (GDK_SCALE), or 1. */
float GetEnvironmentScale();

/** Where programs keep what belongs to the user: XDG_DATA_HOME, or ".local/share" at home. Empty when the user has no home. */
FString GetUserDataFolder();
