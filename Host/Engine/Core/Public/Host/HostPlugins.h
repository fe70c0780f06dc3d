#pragma once

#include "Interfaces/IPluginManager.h"

/** Fills the plug-in manager. The program reads the description file, since this room knows no file format. Any thread. */
class CORE_API FHostPlugins
{
public:
	/** A second registration of the name replaces the first. BaseDir is made absolute. */
	static void RegisterPlugin(const FString& Name, const FString& BaseDir, const FString& VersionName);
	static void RegisterPlugin(const FString& Name, const FString& BaseDir, const FPluginDescriptor& Descriptor);
	static void UnregisterPlugin(const FString& Name);
};
