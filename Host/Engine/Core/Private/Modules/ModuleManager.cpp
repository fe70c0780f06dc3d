#include "Modules/ModuleManager.h"

#include "Containers/Map.h"
#include "Containers/StringConv.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformProcess.h"
#include "Host/HostFileNames.h"
#include "Host/HostModules.h"
#include "Logging/LogMacros.h"
#include "Misc/Paths.h"

#include <dlfcn.h>
#include <link.h>
#include <mutex>
#include <string>
#include <string_view>

// Modules come from the program itself or from shared libraries. A library is other people's code that runs at the
// moment of loading, so it is looked at before: it must carry the marker of a module itself, and it must not be a second
// copy of one that is loaded already, which would have data of its own that both sides take for theirs. Unloading never
// unmaps a library: code of it may still stand in delegates and virtual tables.

DEFINE_LOG_CATEGORY_STATIC(LogModuleManager, Log, All);

namespace
{
	using FInitializeModule = IModuleInterface* (*)();

	/** Names that are part of a file name: no separators, nothing that leaves the folder. */
	bool IsPlainName(const FString& Name)
	{
		int32 Found = INDEX_NONE;
		return !Name.IsEmpty() && !Name.FindChar(TEXT('/'), Found) && !Name.FindChar(TEXT('\0'), Found);
	}

	/** The symbol, if the library itself has it; the search of the system looks into the libraries it needs as well. */
	void* FindOwnSymbol(void* Library, const char* Symbol)
	{
		void* Address = dlsym(Library, Symbol);
		Dl_info Info;
		link_map* Map = nullptr;
		if (!Address || dladdr(Address, &Info) == 0 || dlinfo(Library, RTLD_DI_LINKMAP, &Map) != 0 || !Map)
		{
			return nullptr;
		}
		Dl_info Own;
		const bool bKnown = Map->l_ld && dladdr(Map->l_ld, &Own) != 0;
		return bKnown && Own.dli_fbase == Info.dli_fbase ? Address : nullptr;
	}

	/** Where a library of this file name was loaded from; empty if none was. */
	FString FindLoadedLibrary(const FString& FileName)
	{
		struct FSearch
		{
			std::string Ending;
			std::string Found;
		};
		FSearch Search{ "/" + HostFileNameToBytes(FileName), {} };
		dl_iterate_phdr(
			[](dl_phdr_info* Library, std::size_t, void* Data)
			{
				FSearch& Wanted = *static_cast<FSearch*>(Data);
				const std::string_view Path(Library->dlpi_name ? Library->dlpi_name : "");
				if (Path.ends_with(Wanted.Ending))
				{
					Wanted.Found = Path;
				}
				return 0;
			},
			&Search);
		return HostFileNameFromBytes(Search.Found.c_str());
	}
}

struct FModuleManager::FImpl
{
	struct FLoaded
	{
		FName Name;
		TUniquePtr<IModuleInterface> Module;
	};

	IModuleInterface* Find(FName Name) const
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		const FLoaded* Found = Loaded.FindByPredicate([Name](const FLoaded& Entry) { return Entry.Name == Name; });
		return Found ? Found->Module.Get() : nullptr;
	}

	FString FindLibrary(const FString& Name) const
	{
		if (IsPlainName(Name))
		{
			for (const FString& Folder : Folders)
			{
				const FString Path = Folder / (TEXT("lib") + Name + TEXT(".so"));
				if (IFileManager::Get().FileExists(*Path))
				{
					return Path;
				}
			}
		}
		return FString();
	}

	TUniquePtr<IModuleInterface> Make(FName Name, EModuleLoadResult& OutResult)
	{
		LastError.Reset();
		TUniquePtr<IModuleInterface> Module;
		if (const TFunction<TUniquePtr<IModuleInterface>()>* Registered = Makers.Find(Name))
		{
			const TFunction<TUniquePtr<IModuleInterface>()> Maker = *Registered;
			Module = Maker();
		}
		else
		{
			const FString Path = FindLibrary(Name.ToString());
			if (Path.IsEmpty())
			{
				OutResult = EModuleLoadResult::FileNotFound;
				LastError = FString::Printf(TEXT("there is no module or library \"%s\""), *Name.ToString());
				return Module;
			}
			// What is loaded already is found by its name or as the same file. A file that took its place since would be loaded as a
			// second library, whose data both sides take for theirs.
			void* Library = dlopen(HostFileNameToBytes(Path).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
			const FString Other = Library ? FString() : FindLoadedLibrary(FPaths::GetCleanFilename(Path));
			if (!Other.IsEmpty())
			{
				OutResult = EModuleLoadResult::CouldNotBeLoadedByOS;
				LastError = FString::Printf(
					TEXT("%s is not the library that the program was started with (%s), it may have been replaced since; please start ")
						TEXT("the program again"),
					*Path, *Other);
				return Module;
			}
			if (!Library)
			{
				// Never closed again: threads and delegates may point into the library for as long as the process lives.
				Library = dlopen(HostFileNameToBytes(Path).c_str(), RTLD_NOW | RTLD_LOCAL);
			}
			if (!Library)
			{
				const char* Reason = dlerror();
				OutResult = EModuleLoadResult::CouldNotBeLoadedByOS;
				LastError =
					FString::Printf(TEXT("%s cannot be loaded: %s"), *Path, Reason ? UTF8_TO_TCHAR(Reason) : TEXT("no reason given"));
				return Module;
			}
			const FInitializeModule Initialize = reinterpret_cast<FInitializeModule>(FindOwnSymbol(Library, "InitializeModule"));
			if (!FindOwnSymbol(Library, "ThisIsAnUnrealEngineModule") || !Initialize)
			{
				OutResult = EModuleLoadResult::CouldNotBeLoadedByOS;
				LastError = FString::Printf(TEXT("%s is a library, but it has not the marker of a module"), *Path);
				return Module;
			}
			Module = TUniquePtr<IModuleInterface>(Initialize());
		}
		OutResult = Module ? EModuleLoadResult::Success : EModuleLoadResult::FailedToInitialize;
		if (!Module)
		{
			LastError = FString::Printf(TEXT("the module \"%s\" could not be made"), *Name.ToString());
		}
		return Module;
	}

	mutable std::mutex Mutex;
	TArray<FLoaded> Loaded;
	TMap<FName, TFunction<TUniquePtr<IModuleInterface>()>> Makers;
	TArray<FString> Folders;
	FString LastError;
};

FModuleManager::FModuleManager()
	: Impl(MakeUnique<FImpl>())
{
	Impl->Folders.Add(FPlatformProcess::BaseDir());
}

FModuleManager::~FModuleManager() = default;

FModuleManager& FModuleManager::Get()
{
	static FModuleManager Manager;
	return Manager;
}

IModuleInterface* FModuleManager::LoadModule(FName Name)
{
	EModuleLoadResult Result;
	return LoadModuleWithFailureReason(Name, Result);
}

IModuleInterface* FModuleManager::LoadModuleWithFailureReason(FName Name, EModuleLoadResult& OutResult)
{
	OutResult = EModuleLoadResult::Success;
	if (IModuleInterface* Existing = Impl->Find(Name))
	{
		return Existing;
	}
	TUniquePtr<IModuleInterface> Made = Impl->Make(Name, OutResult);
	IModuleInterface* Module = Made.Get();
	if (!Module)
	{
		UE_LOG(LogModuleManager, Warning, TEXT("Module %s: %s"), *Name.ToString(), *Impl->LastError);
		return nullptr;
	}
	{
		// Known before it starts, so that modules may ask for each other while they start.
		const std::lock_guard<std::mutex> Lock(Impl->Mutex);
		Impl->Loaded.Add(FImpl::FLoaded{ Name, MoveTemp(Made) });
	}
	Module->StartupModule();
	Module->PostLoadCallback();
	return Module;
}

IModuleInterface& FModuleManager::LoadModuleChecked(FName Name)
{
	IModuleInterface* Module = LoadModule(Name);
	checkf(Module != nullptr, TEXT("The module %s is needed: %s"), *Name.ToString(), *Impl->LastError);
	return *Module;
}

IModuleInterface* FModuleManager::GetModule(FName Name)
{
	return Impl->Find(Name);
}

IModuleInterface& FModuleManager::RequireModule(FName Name)
{
	IModuleInterface* Module = Impl->Find(Name);
	checkf(Module != nullptr, TEXT("The module %s is not loaded"), *Name.ToString());
	return *Module;
}

bool FModuleManager::IsModuleLoaded(FName Name) const
{
	return Impl->Find(Name) != nullptr;
}

bool FModuleManager::UnloadModule(FName Name, bool bIsShutdown)
{
	IModuleInterface* Module = Impl->Find(Name);
	if (!Module)
	{
		return false;
	}
	Module->PreUnloadCallback();
	Module->ShutdownModule();
	TUniquePtr<IModuleInterface> Gone;
	{
		const std::lock_guard<std::mutex> Lock(Impl->Mutex);
		const int32 Index = Impl->Loaded.IndexOfByPredicate([Module](const FImpl::FLoaded& Entry) { return Entry.Module.Get() == Module; });
		if (Index != INDEX_NONE)
		{
			Gone = MoveTemp(Impl->Loaded[Index].Module);
			Impl->Loaded.RemoveAt(Index);
		}
	}
	return true;
}

void FModuleManager::UnloadModulesAtShutdown()
{
	for (;;)
	{
		FName Name;
		{
			const std::lock_guard<std::mutex> Lock(Impl->Mutex);
			if (Impl->Loaded.Num() == 0)
			{
				return;
			}
			Name = Impl->Loaded.Last().Name;
		}
		UnloadModule(Name, true);
	}
}

void FModuleManager::AddBinariesDirectory(const TCHAR* Directory, bool bIsGameDirectory)
{
	Impl->Folders.AddUnique(FPaths::ConvertRelativePathToFull(Directory));
}

void FHostModules::Register(FName Name, TFunction<TUniquePtr<IModuleInterface>()> Make)
{
	FModuleManager::Get().Impl->Makers.Add(Name, MoveTemp(Make));
}

void FHostModules::Unregister(FName Name)
{
	FModuleManager::Get().Impl->Makers.Remove(Name);
}

FString FHostModules::GetLastError()
{
	return FModuleManager::Get().Impl->LastError;
}
