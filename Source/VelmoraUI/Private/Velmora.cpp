#include "Velmora.h"

#include "CodeIntel/CodeIntelIndexManager.h"
#include "Commands/CodeIntelCommandActions.h"
#include "Commands/CodeIntelCommands.h"
#include "Commands/CodeIntelNotifications.h"
#include "FileSearch/FileIndexService.h"
#include "Framework/Application/SlateApplication.h"
#include "Framework/Commands/UICommandList.h"
#include "Framework/Docking/TabManager.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "Framework/MultiBox/MultiBoxExtender.h"
#include "HAL/PlatformTime.h"
#include "ISettingsModule.h"
#include "LevelEditor.h"
#include "Math/UnrealMathUtility.h"
#include "Modules/ModuleManager.h"
#include "Settings/VelmoraSettings.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/AppStyle.h"
#include "Textures/SlateIcon.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SIndexProgressWidget.h"
#include "Widgets/SNullWidget.h"
#include "Widgets/SVelmoraTab.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

#define LOCTEXT_NAMESPACE "FVelmoraModule"

using Velmora::CodeIntel::FCodeIntelIndexManager;
using Velmora::CodeIntel::FIndexStats;

namespace
{

	constexpr float PollSeconds = 1.0f;
	constexpr float HideSeconds = 3.0f;
	constexpr float FileIndexRefreshSeconds = 30.0f;
	/** Fewer files than these are indexed again without a word, and no word follows another one sooner. */
	constexpr int32 LeastReindexCount = 5;
	constexpr double ReindexNoticeSeconds = 10.0;

	FSlateIcon GetVelmoraIcon()
	{
		return FSlateIcon(FVelmoraUIStyles::GetStyleSetName(), "Logo_App_20");
	}

} // namespace

void FVelmoraModule::StartupModule()
{
	if (!FSlateApplication::IsInitialized())
	{
		// Commandlets and cooking load editor modules, too: there is nobody to show anything to.
		return;
	}
	bIsStarted = true;
	// 1. What the widgets and the menu draw with.
	FVelmoraUIStyles::Initialize();
	// 2. The scan of the project takes a while, and runs while the rest is set up.
	Velmora::UI::FFileIndexService::Get().StartIndexing();
	// 3. What the user reaches: tab, commands, menu and settings. The menu takes the commands along, so they come first.
	RegisterTab();
	RegisterCommands();
	ExtendMenu();
	RegisterSettingsPage();
	// 4. The poll, from now on.
	LastPollTime = FPlatformTime::Seconds();
	TickerHandle = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateRaw(this, &FVelmoraModule::OnTicker), PollSeconds);
}

void FVelmoraModule::ShutdownModule()
{
	if (!bIsStarted)
	{
		return;
	}
	bIsStarted = false;
	// The tab asks for its styles as long as it is shown, and work on the index would report its end.
	CloseTab();
	FCodeIntelCommandActions::CutOffRunningWork();
	HideProgress();
	Velmora::UI::FFileIndexService::Get().Shutdown();
	// Whatever was registered goes again, the styles last: all others may draw.
	if (TickerHandle.IsValid())
	{
		FTSTicker::RemoveTicker(TickerHandle);
	}
	HideProgress();
	ProgressWidget.Reset();
	if (MenuExtender.IsValid() && FModuleManager::Get().IsModuleLoaded("LevelEditor"))
	{
		FModuleManager::GetModuleChecked<FLevelEditorModule>("LevelEditor").GetMenuExtensibilityManager()->RemoveExtender(MenuExtender);
	}
	MenuExtender.Reset();
	CommandList.Reset();
	FCodeIntelCommands::Unregister();
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(SVelmoraTab::GetTabName());
	FVelmoraUIStyles::Shutdown();
}

void FVelmoraModule::CloseTab()
{
	if (const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName())))
	{
		// Others may hold the tab for a while; its content is the module's.
		Tab->RequestCloseTab();
		Tab->SetContent(SNullWidget::NullWidget);
	}
}

void FVelmoraModule::RegisterTab()
{
	FGlobalTabmanager::Get()
		->RegisterNomadTabSpawner(SVelmoraTab::GetTabName(), FOnSpawnTab::CreateRaw(this, &FVelmoraModule::SpawnTab))
		.SetDisplayName(LOCTEXT("VelmoraTabTitle", "Velmora AI"))
		.SetTooltipText(LOCTEXT("VelmoraTabTooltip", "Open Velmora AI Assistant"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetToolsCategory())
		.SetIcon(GetVelmoraIcon());
}

void FVelmoraModule::RegisterCommands()
{
	FCodeIntelCommands::Register();
	CommandList = MakeShared<FUICommandList>();
	FCodeIntelCommandActions::RegisterHandlers(CommandList);
}

void FVelmoraModule::ExtendMenu()
{
	MenuExtender = MakeShared<FExtender>();
	MenuExtender->AddMenuExtension(
		"Programming", EExtensionHook::After, CommandList, FMenuExtensionDelegate::CreateRaw(this, &FVelmoraModule::BuildMenu));
	FModuleManager::LoadModuleChecked<FLevelEditorModule>("LevelEditor").GetMenuExtensibilityManager()->AddExtender(MenuExtender);
}

void FVelmoraModule::RegisterSettingsPage()
{
	if (ISettingsModule* Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->RegisterSettings("Project", "Plugins", "Velmora", LOCTEXT("SettingsName", "Velmora AI"),
			LOCTEXT("SettingsDescription", "Configure Velmora AI settings"), GetMutableDefault<UVelmoraSettings>());
	}
}

TSharedRef<SDockTab> FVelmoraModule::SpawnTab(const FSpawnTabArgs& Args)
{
	const TSharedRef<SDockTab> Tab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
	Tab->SetContent(SNew(SVelmoraTab, Tab));
	return Tab;
}

void FVelmoraModule::BuildMenu(FMenuBuilder& Builder)
{
	Builder.BeginSection("VelmoraCodeIntel", LOCTEXT("VelmoraSection", "Velmora AI"));
	Builder.AddMenuEntry(LOCTEXT("OpenVelmoraMenuItem", "Velmora AI"), LOCTEXT("OpenVelmoraTooltip", "Open Velmora AI Assistant"),
		GetVelmoraIcon(),
		FUIAction(FExecuteAction::CreateLambda([] { FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName())); })));
	Builder.AddMenuSeparator();
	Builder.AddSubMenu(LOCTEXT("CodeIndexSubMenu", "Code Index"), LOCTEXT("CodeIndexSubMenuTooltip", "Code intelligence index operations"),
		FNewMenuDelegate::CreateRaw(this, &FVelmoraModule::BuildCodeIndexMenu), false,
		FSlateIcon(FAppStyle::GetAppStyleSetName(), "Icons.Search"));
	Builder.EndSection();
}

void FVelmoraModule::BuildCodeIndexMenu(FMenuBuilder& Builder)
{
	const FCodeIntelCommands& Commands = FCodeIntelCommands::Get();
	Builder.BeginSection("ProjectIndex", LOCTEXT("ProjectIndexSection", "Project Index"));
	Builder.AddMenuEntry(Commands.RebuildIndex, NAME_None, LOCTEXT("RebuildIndexEntry", "Rebuild Project Index"),
		LOCTEXT("RebuildIndexEntryTooltip", "Rebuild the project code intelligence index from scratch"));
	Builder.AddMenuEntry(Commands.CompactIndex, NAME_None, LOCTEXT("CompactIndexEntry", "Compact Project Index"),
		LOCTEXT("CompactIndexEntryTooltip", "Compact the project index to remove stale data and reduce size"));
	Builder.AddMenuEntry(Commands.ReconcileIndex, NAME_None, LOCTEXT("ReconcileIndexEntry", "Reconcile Project Index"),
		LOCTEXT("ReconcileIndexEntryTooltip", "Scan filesystem for files added or deleted while editor was closed"));
	Builder.EndSection();
	Builder.BeginSection("EngineIndex", LOCTEXT("EngineIndexSection", "Engine Index"));
	Builder.AddMenuEntry(Commands.RebuildEngineIndex, NAME_None, LOCTEXT("RebuildEngineIndexEntry", "Rebuild Engine Index"),
		LOCTEXT("RebuildEngineIndexEntryTooltip", "Build or rebuild the Unreal Engine source code index"));
	Builder.AddMenuEntry(Commands.ClearEngineIndex, NAME_None, LOCTEXT("ClearEngineIndexEntry", "Clear Engine Index"),
		LOCTEXT("ClearEngineIndexEntryTooltip", "Delete the engine index to reclaim disk space"));
	Builder.EndSection();
	Builder.BeginSection("General", LOCTEXT("GeneralSection", "General"));
	Builder.AddMenuEntry(Commands.ViewStatus, NAME_None, LOCTEXT("ViewStatusEntry", "View Index Status"),
		LOCTEXT("ViewStatusEntryTooltip", "View current index status and statistics"));
	Builder.AddMenuEntry(Commands.OpenSettings, NAME_None, LOCTEXT("OpenSettingsEntry", "Code Index Settings..."),
		LOCTEXT("OpenSettingsEntryTooltip", "Open code intelligence settings panel"));
	Builder.EndSection();
}

bool FVelmoraModule::OnTicker(float DeltaTime)
{
	// The ticker hands out the time since the last turn of the loop and not since its last call of this, so the clock is asked.
	const double Now = FPlatformTime::Seconds();
	const float Passed = static_cast<float>(Now - LastPollTime);
	LastPollTime = Now;
	return Poll(Passed);
}

bool FVelmoraModule::Poll(float DeltaTime)
{
	// 1. Builds that anybody started, 2. the end of the last one, 3. the files.
	WatchCodeIndex();
	if (bHidePending)
	{
		HideCountdown -= DeltaTime;
		if (HideCountdown <= 0.0f)
		{
			HideProgress();
			bHidePending = false;
		}
	}
	RefreshFileIndex(DeltaTime);
	return true;
}

void FVelmoraModule::WatchCodeIndex()
{
	static bool bWasBuilding = false;
	static int32 LastQueueSize = 0;
	static double LastNoticeTime = 0.0;

	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	// 1. By its edges: a build that begins and ends between two polls is not reported.
	const bool bBuilding = Manager.IsBuilding();
	if (bBuilding && !bWasBuilding)
	{
		FCodeIntelNotifications::ShowBuildStarted();
		ShowProgress();
	}
	else if (!bBuilding && bWasBuilding)
	{
		FinishProgress();
	}
	bWasBuilding = bBuilding;
	// 2. The queue of files to be indexed again.
	if (!Manager.IsReindexerRunning())
	{
		return;
	}
	const int32 QueueSize = Manager.GetReindexerQueueSize();
	const double Now = FPlatformTime::Seconds();
	if (QueueSize >= LeastReindexCount && QueueSize > LastQueueSize && Now - LastNoticeTime > ReindexNoticeSeconds)
	{
		FCodeIntelNotifications::ShowReindexActive(QueueSize);
		LastNoticeTime = Now;
	}
	// Only growth is reported: a queue that is worked off needs no word.
	LastQueueSize = QueueSize;
}

void FVelmoraModule::ShowProgress()
{
	if (bProgressVisible)
	{
		return;
	}
	if (!ProgressWidget.IsValid())
	{
		ProgressWidget = SNew(SIndexProgressWidget);
	}
	ProgressWidget->Reset();
	bProgressVisible = true;
}

void FVelmoraModule::FinishProgress()
{
	const FCodeIntelIndexManager& Manager = FCodeIntelIndexManager::Get();
	// A build that failed leaves the last good index, which then counts as a success: the manager does not tell them apart.
	const FIndexStats Stats = Manager.GetIndexStats();
	const bool bSuccess = Manager.IsIndexReady();
	if (bSuccess)
	{
		FCodeIntelNotifications::ShowBuildComplete(Stats.EstimatedSymbols, Stats.LastBuildTimeSeconds);
	}
	else
	{
		FCodeIntelNotifications::ShowBuildFailed(TEXT("Index build failed - check log for details"));
	}
	if (ProgressWidget.IsValid())
	{
		const int32 Seconds = FMath::FloorToInt32(Stats.LastBuildTimeSeconds + 0.5);
		ProgressWidget->SetComplete(bSuccess,
			bSuccess ? FText::Format(LOCTEXT("BuildSuccessMsg", "Successfully indexed {0} symbols in {1}s"),
						   FText::AsNumber(Stats.EstimatedSymbols), FText::AsNumber(Seconds))
					 : LOCTEXT("BuildFailedMsg", "Index build failed - see log for details"));
	}
	bHidePending = true;
	HideCountdown = HideSeconds;
}

void FVelmoraModule::HideProgress()
{
	bProgressVisible = false;
}

void FVelmoraModule::RefreshFileIndex(float DeltaTime)
{
	RefreshElapsed += DeltaTime;
	if (RefreshElapsed < FileIndexRefreshSeconds)
	{
		return;
	}
	Velmora::UI::FFileIndexService& Index = Velmora::UI::FFileIndexService::Get();
	if (Index.IsReady() && !Index.IsIndexing())
	{
		Index.RefreshIndex();
	}
	// Also when no scan was started: it is tried again after as long.
	RefreshElapsed = 0.0f;
}

#undef LOCTEXT_NAMESPACE

IMPLEMENT_MODULE(FVelmoraModule, VelmoraUI)
