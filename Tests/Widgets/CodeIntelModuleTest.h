#pragma once

#include "CodeIntel/CodeIntelIndexManager.h"
#include "Commands/CodeIntelCommandActions.h"
#include "Commands/CodeIntelCommands.h"
#include "Commands/CodeIntelNotifications.h"
#include "Companions/TemporaryProject.h"
#include "Framework/Commands/UICommandList.h"
#include "Framework/Docking/TabManager.h"
#include "Host/CodeIndexControl.h"
#include "Host/HostLevelEditor.h"
#include "Host/HostModules.h"
#include "Host/HostNotifications.h"
#include "Host/HostSettings.h"
#include "Host/HostTasks.h"
#include "Modules/ModuleManager.h"
#include "Settings/VelmoraSettings.h"
#include "UObject/UObjectGlobals.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/Layout/SBox.h"

#include <chrono>
#include <fstream>
#include <thread>

/** The module loaded into an editor without windows, with a real code index whose extractor the test writes. */
class FCodeIntelModuleTest : public FVelmoraWidgetTest
{
protected:
	using FManager = Velmora::CodeIntel::FCodeIntelIndexManager;
	using FControl = Velmora::CodeIntel::FCodeIndexControl;
	using FActions = FCodeIntelCommandActions;

	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		FVelmoraUIStyles::Shutdown();
		Folder = Project.Root.native() + "-index";
		std::filesystem::create_directories(Folder);
		Options.ProjectFolder = UTF8_TO_TCHAR(Project.Root.c_str());
		Options.ProjectIndexPath = UTF8_TO_TCHAR((Folder / "project.db").c_str());
		Options.FindEngineFolder = [Engine = FString(UTF8_TO_TCHAR((Folder / "engine").c_str()))] { return Engine; };
		Options.EngineIndexPath = UTF8_TO_TCHAR((Folder / "engine.db").c_str());
		std::filesystem::create_directories(Folder / "engine");
		std::ofstream(Folder / "engine" / "Core.cpp") << "int CoreValue;\n";
		Project.Write("One.cpp", "int First;\nint Second;\n");
		FHostLevelEditor::Install();
		FHostSettings::Install();
		ASSERT_NE(FModuleManager::Get().LoadModule("VelmoraUI"), nullptr);
		Show(Root);
	}

	void TearDown() override
	{
		Go();
		FControl::Shutdown();
		Settle();
		// The watch keeps what it saw last for good.
		PumpFrame(1.0);
		SetEngineIncluded(false);
		FCodeIntelNotifications::DismissAll();
		FHostNotifications::Clear();
		FGlobalTabmanager::Get()->CloseAllTabs();
		for (const char* Name : { "VelmoraUI", "Settings", "LevelEditor" })
		{
			FModuleManager::Get().UnloadModule(Name);
			FHostModules::Unregister(Name);
		}
		std::error_code Error;
		std::filesystem::remove_all(Folder, Error);
		FVelmoraWidgetTest::TearDown();
	}

	static FManager& Manager() { return FManager::Get(); }
	static void SetEngineIncluded(bool bIncluded) { GetMutableDefault<UVelmoraSettings>()->bIncludeEngineSource = bIncluded; }

	/** The extractor waits for Go, so that a build goes on for as long as the test wants. */
	void HoldBuilds()
	{
		const std::filesystem::path Script = Folder / "extractor";
		std::ofstream(Script) << "#!/bin/sh\ncat >/dev/null\nwhile [ ! -e '" << (Folder / "go").native() << "' ]; do sleep 0.02; done\n";
		std::filesystem::permissions(Script, std::filesystem::perms::owner_all);
		Options.Extractor.Program = UTF8_TO_TCHAR(Script.c_str());
		Options.Extractor.BatchSeconds = 60.0;
	}
	void Go() { std::ofstream(Folder / "go") << "go"; }

	void Start()
	{
		FControl::Initialize(Options);
		Settle();
	}

	/** What runs in the background comes to its end, and what it tells is shown. */
	void Settle()
	{
		EXPECT_TRUE(FHostTasks::WaitForBackground(60.0));
		FHostTasks::RunGameThreadTasks();
		PumpFrame();
	}

	static bool WaitUntil(TFunctionRef<bool()> Condition)
	{
		const auto End = std::chrono::steady_clock::now() + std::chrono::seconds(30);
		while (!Condition() && std::chrono::steady_clock::now() < End)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(2));
		}
		return Condition();
	}

	/** "[2] Text" for each toast, the oldest first; they are gone afterwards. */
	FTextList TakeToasts()
	{
		PumpFrame();
		const FTextList List = Toasts();
		FHostNotifications::Clear();
		return List;
	}

	static std::string Failed(const std::string& Reason) { return "[3] Index build failed: " + Reason; }

	/** The window's content, and what menus belong to. */
	TSharedRef<SBox> Root = SNew(SBox);
	FTemporaryProject Project;
	std::filesystem::path Folder;
	Velmora::CodeIntel::FCodeIndexOptions Options;
};
