#pragma once

#include "CoreMinimal.h"
#include "PluginDescriptor.h"

/** Reads a ".uplugin" file. False with one sentence when it is missing or broken. */
bool ReadPluginDescription(const FString& Path, FPluginDescriptor& OutDescriptor, FString& OutComplaint);
