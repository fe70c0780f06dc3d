#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Delegates/Delegate.h"
#include "Modules/ModuleInterface.h"
#include "Templates/Function.h"
#include "Templates/UniquePtr.h"
#include "UObject/NameTypes.h"

enum class EModuleLoadResult
{
	Success,
	/** No library and no registration of that name. */
	FileNotFound,
	/** The library was refused; the log says why. */
	CouldNotBeLoadedByOS,
	FailedToInitialize,
};

/**
 * Loads modules by name: those that the program registered (Host/HostModules.h), else a shared library "lib<Name>.so"
 * in one of the binary folders, first of all the executable's. A library is taken only if it carries the marker of
 * IMPLEMENT_MODULE itself. Unloading shuts the module down and destroys it, the library stays mapped for good.
 * Names ignore letter case; for a library's file name the spelling counts. Game thread, except IsModuleLoaded.
 */
class CORE_API FModuleManager
{
public:
	static FModuleManager& Get();

	FModuleManager(const FModuleManager&) = delete;
	FModuleManager& operator=(const FModuleManager&) = delete;

	/** @return nullptr, with a line in the log, when it cannot be loaded. */
	IModuleInterface* LoadModule(FName Name);
	IModuleInterface* LoadModuleWithFailureReason(FName Name, EModuleLoadResult& OutResult);
	/** Ends the process when it cannot be loaded. */
	IModuleInterface& LoadModuleChecked(FName Name);
	/** @return nullptr when it is not loaded. */
	IModuleInterface* GetModule(FName Name);
	bool IsModuleLoaded(FName Name) const;
	/** @return False when it was not loaded. */
	bool UnloadModule(FName Name, bool bIsShutdown = false);
	/** Unloads everything, the last loaded first. */
	void UnloadModulesAtShutdown();
	/** A further folder to look for libraries in. */
	void AddBinariesDirectory(const TCHAR* Directory, bool bIsGameDirectory);

	template <typename T>
	static T& LoadModuleChecked(const FName Name)
	{
		return static_cast<T&>(Get().LoadModuleChecked(Name));
	}
	template <typename T>
	static T* GetModulePtr(const FName Name)
	{
		return static_cast<T*>(Get().GetModule(Name));
	}
	template <typename T>
	static T& GetModuleChecked(const FName Name)
	{
		return static_cast<T&>(Get().RequireModule(Name));
	}

private:
	FModuleManager();
	~FModuleManager();
	IModuleInterface& RequireModule(FName Name);

	struct FImpl;
	TUniquePtr<FImpl> Impl;
	friend class FHostModules;
};

/** Once per module, in one source file: how the loader makes the module. The second name is unquoted. */
#define IMPLEMENT_MODULE(ModuleClass, ModuleName) \
	extern "C" __attribute__((visibility("default"))) IModuleInterface* InitializeModule(); \
	extern "C" __attribute__((visibility("default"))) IModuleInterface* InitializeModule() \
	{ \
		return new ModuleClass(); \
	} \
	extern "C" __attribute__((visibility("default"))) void ThisIsAnUnrealEngineModule(); \
	extern "C" __attribute__((visibility("default"))) void ThisIsAnUnrealEngineModule() {}
