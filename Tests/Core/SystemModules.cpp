#include "HAL/IConsoleManager.h"
#include "Host/HostLog.h"
#include "Host/HostModules.h"
#include "Modules/ModuleManager.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <filesystem>
#include <link.h>

namespace
{
	std::string Events;

	class FNamedModule : public IModuleInterface
	{
	public:
		explicit FNamedModule(const char* InName)
			: Name(InName)
		{
		}
		~FNamedModule() override { Events += "~" + Name; }
		void StartupModule() override { Events += "+" + Name; }
		void ShutdownModule() override { Events += "-" + Name; }
		std::string Name;
	};

	class SystemModules : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
			Events.clear();
		}
		void TearDown() override
		{
			FModuleManager::Get().UnloadModulesAtShutdown();
			FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		}
	};

	int32 Counter(const TCHAR* Name)
	{
		const IConsoleVariable* Variable = IConsoleManager::Get().FindConsoleVariable(Name);
		return Variable ? Variable->GetInt() : 0;
	}
}

TEST_F(SystemModules, LoadsALibraryAndKeepsItMapped)
{
	FModuleManager& Manager = FModuleManager::Get();
	EXPECT_EQ(FModuleManager::GetModulePtr<IModuleInterface>("CoreTestModule"), nullptr);
	// Copies of the library, which other tests load, count in the same variables.
	const int32 Starts = Counter(TEXT("system.TestModule.Starts"));
	const int32 Stops = Counter(TEXT("system.TestModule.Stops"));
	IModuleInterface* Module = Manager.LoadModule("CoreTestModule");
	ASSERT_NE(Module, nullptr) << Utf8(FHostModules::GetLastError());
	EXPECT_EQ(&FModuleManager::LoadModuleChecked<IModuleInterface>("coretestmodule"), Module);
	EXPECT_EQ(Counter(TEXT("system.TestModule.Starts")), Starts + 1);
	EXPECT_TRUE(Manager.UnloadModule("CoreTestModule"));
	EXPECT_FALSE(Manager.IsModuleLoaded("CoreTestModule"));
	EXPECT_EQ(Counter(TEXT("system.TestModule.Stops")), Stops + 1) << "the library and its variables are still there";
	EXPECT_FALSE(Manager.UnloadModule("CoreTestModule"));
	EXPECT_NE(Manager.LoadModule("CoreTestModule"), nullptr);
	EXPECT_EQ(Counter(TEXT("system.TestModule.Starts")), Starts + 2);
}

TEST_F(SystemModules, RefusesWhatIsNoModule)
{
	FTempFolder Temp;
	Temp.Write("libBroken.so", "not a library");
	FModuleManager& Manager = FModuleManager::Get();
	Manager.AddBinariesDirectory(*Temp.At(), false);
	const std::tuple<const char*, EModuleLoadResult, const char*> Cases[] = {
		{ "Core", EModuleLoadResult::CouldNotBeLoadedByOS, "has not the marker" },
		{ "CoreTestLibrary", EModuleLoadResult::CouldNotBeLoadedByOS, "has not the marker" },
		{ "Broken", EModuleLoadResult::CouldNotBeLoadedByOS, "cannot be loaded" },
		{ "Nowhere", EModuleLoadResult::FileNotFound, "there is no module" },
		{ "../bin/libCoreTestModule", EModuleLoadResult::FileNotFound, "there is no module" },
	};
	for (const auto& [Name, Expected, Words] : Cases)
	{
		SCOPED_TRACE(Name);
		EModuleLoadResult Result = EModuleLoadResult::Success;
		EXPECT_EQ(Manager.LoadModuleWithFailureReason(Name, Result), nullptr);
		EXPECT_EQ(Result, Expected);
		EXPECT_NE(Utf8(FHostModules::GetLastError()).find(Words), std::string::npos) << Utf8(FHostModules::GetLastError());
		EXPECT_FALSE(Manager.IsModuleLoaded(Name));
	}
}

TEST_F(SystemModules, RefusesASecondCopyOfALibraryBeforeAnyOfItRuns)
{
	FTempFolder Temp;
	const std::filesystem::path Library = std::filesystem::canonical("/proc/self/exe").parent_path() / "libCoreTestModule.so";
	for (const char* Folder : { "First", "Second" })
	{
		std::filesystem::create_directory(Temp.AtBytes(Folder));
		std::filesystem::copy_file(Library, Temp.AtBytes(Folder) + "/libCoreTestTwin.so");
		FModuleManager::Get().AddBinariesDirectory(*Temp.At(UTF8_TO_TCHAR(Folder)), false);
	}
	ASSERT_NE(FModuleManager::Get().LoadModule("CoreTestTwin"), nullptr) << Utf8(FHostModules::GetLastError());
	EXPECT_TRUE(FModuleManager::Get().UnloadModule("CoreTestTwin"));
	EXPECT_NE(FModuleManager::Get().LoadModule("CoreTestTwin"), nullptr) << "the same one may start again";
	EXPECT_TRUE(FModuleManager::Get().UnloadModule("CoreTestTwin"));

	std::filesystem::remove_all(Temp.AtBytes("First"));
	const auto CountLibraries = []()
	{
		int Count = 0;
		dl_iterate_phdr([](dl_phdr_info*, std::size_t, void* Data) { return ++*static_cast<int*>(Data), 0; }, &Count);
		return Count;
	};
	const int Before = CountLibraries();
	EModuleLoadResult Result = EModuleLoadResult::Success;
	EXPECT_EQ(FModuleManager::Get().LoadModuleWithFailureReason("CoreTestTwin", Result), nullptr);
	EXPECT_EQ(Result, EModuleLoadResult::CouldNotBeLoadedByOS);
	EXPECT_EQ(CountLibraries(), Before) << "nothing of it was loaded";
	EXPECT_NE(Utf8(FHostModules::GetLastError()).find("please start the program again"), std::string::npos)
		<< Utf8(FHostModules::GetLastError());
}

TEST_F(SystemModules, RegisteredModulesStartAndStopInOrder)
{
	FHostModules::Register("SystemTestA", [] { return TUniquePtr<IModuleInterface>(new FNamedModule("A")); });
	FHostModules::Register("SystemTestB", [] { return TUniquePtr<IModuleInterface>(new FNamedModule("B")); });
	FModuleManager& Manager = FModuleManager::Get();
	Manager.LoadModule("SystemTestA");
	Manager.LoadModule("SystemTestB");
	Manager.LoadModule("SystemTestA");
	Manager.UnloadModulesAtShutdown();
	EXPECT_EQ(Events, "+A+B-B~B-A~A");
	FHostModules::Unregister("SystemTestA");
	FHostModules::Unregister("SystemTestB");
	EXPECT_EQ(Manager.LoadModule("SystemTestA"), nullptr);
}
