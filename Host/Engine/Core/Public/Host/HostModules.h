#pragma once

#include "Modules/ModuleManager.h"

/** Modules that are part of the program itself. Game thread. */
class CORE_API FHostModules
{
public:
	/** Makes Name loadable without a library; a later registration of the name replaces an earlier one. */
	static void Register(FName Name, TFunction<TUniquePtr<IModuleInterface>()> Make);
	static void Unregister(FName Name);
	/** Why the last load failed, in words; empty after a success. */
	static FString GetLastError();
};
