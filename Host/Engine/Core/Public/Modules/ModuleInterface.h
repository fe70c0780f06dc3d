#pragma once

#include "CoreTypes.h"

/** A part of the program that is started and shut down by name. Game thread. */
class CORE_API IModuleInterface
{
public:
	virtual ~IModuleInterface() = default;
	/** Right after the module was made. */
	virtual void StartupModule() {}
	/** Before the module is destroyed. */
	virtual void ShutdownModule() {}
	virtual void PreUnloadCallback() {}
	virtual void PostLoadCallback() {}
};

class FDefaultModuleImpl : public IModuleInterface
{
};
