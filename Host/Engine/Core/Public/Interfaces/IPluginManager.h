#pragma once

#include "Containers/Array.h"
#include "Containers/StringView.h"
#include "Containers/UnrealString.h"
#include "PluginDescriptor.h"
#include "Templates/SharedPointer.h"

/** A plug-in that is part of the running program. */
class CORE_API IPlugin
{
public:
	virtual ~IPlugin() = default;
	virtual const FString& GetName() const = 0;
	/** Absolute, without final slash. */
	virtual FString GetBaseDir() const = 0;
	virtual const FPluginDescriptor& GetDescriptor() const = 0;
	virtual bool IsEnabled() const = 0;
};

/** The plug-ins that the program has registered (Host/HostPlugins.h). Any thread. */
class CORE_API IPluginManager
{
public:
	static IPluginManager& Get();
	virtual ~IPluginManager() = default;
	/** Ignores letter case. @return Null when there is none. */
	virtual TSharedPtr<IPlugin> FindPlugin(FStringView Name) = 0;
};
