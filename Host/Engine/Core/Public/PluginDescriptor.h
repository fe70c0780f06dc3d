#pragma once

#include "Containers/UnrealString.h"

/** What a plug-in says about itself. */
struct FPluginDescriptor
{
	int32 Version = 0;
	FString VersionName;
	FString FriendlyName;
	FString Description;
	FString Category;
	FString CreatedBy;
	bool bCanContainContent = false;
};
