#include "Velmora.h"

#include "FileSearch/FileIndexService.h"
#include "Framework/Docking/TabManager.h"
#include "ISettingsModule.h"
#include "Modules/ModuleManager.h"
#include "Settings/VelmoraSettings.h"
#include "Style/VelmoraUIStyles.h"
#include "Textures/SlateIcon.h"
#include "UObject/UObjectGlobals.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

#define LOCTEXT_NAMESPACE "FVelmoraModule"

namespace
{

constexpr float PollSeconds = 1.0f;
constexpr float FileIndexRefreshSeconds = 30.0f;

} // namespace

void FVelmoraModule::StartupModule()
{
	FVelmoraUIStyles::Initialize();
	Velmora::UI::FFileIndexService::Get().StartIndexing();
	FGlobalTabmanager::Get()->RegisterNomadTabSpawner(SVelmoraTab::GetTabName(), FOnSpawnTab::CreateRaw(this, &FVelmoraModule::SpawnTab))
		.SetDisplayName(LOCTEXT("VelmoraTabTitle", "Velmora AI"))
		.SetTooltipText(LOCTEXT("VelmoraTabTooltip", "Open Velmora AI Assistant"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetToolsCategory())
		.SetIcon(FSlateIcon(FVelmoraUIStyles::GetStyleSetName(), "Logo_App_20"));
	if (ISettingsModule* Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->RegisterSettings("Project", "Plugins", "Velmora", LOCTEXT("SettingsName", "Velmora AI"), LOCTEXT("SettingsDescription", "Configure Velmora AI settings"), GetMutableDefault<UVelmoraSettings>());
	}
	TickerHandle = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateRaw(this, &FVelmoraModule::Poll), PollSeconds);
}

void FVelmoraModule::ShutdownModule()
{
	Velmora::UI::FFileIndexService::Get().Shutdown();
	if (TickerHandle.IsValid())
	{
		FTSTicker::RemoveTicker(TickerHandle);
	}
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(SVelmoraTab::GetTabName());
	FVelmoraUIStyles::Shutdown();
}

TSharedRef<SDockTab> FVelmoraModule::SpawnTab(const FSpawnTabArgs& Args)
{
	const TSharedRef<SDockTab> Tab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
	Tab->SetContent(SNew(SVelmoraTab, Tab));
	return Tab;
}

bool FVelmoraModule::Poll(float DeltaTime)
{
	RefreshFileIndex(DeltaTime);
	return true;
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
	RefreshElapsed = 0.0f;
}

#undef LOCTEXT_NAMESPACE

IMPLEMENT_MODULE(FVelmoraModule, VelmoraUI)
