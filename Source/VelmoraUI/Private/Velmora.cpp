#include "Velmora.h"

#include "Framework/Docking/TabManager.h"
#include "Style/VelmoraUIStyles.h"
#include "Textures/SlateIcon.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

#define LOCTEXT_NAMESPACE "FVelmoraModule"

void FVelmoraModule::StartupModule()
{
	FVelmoraUIStyles::Initialize();
	FGlobalTabmanager::Get()->RegisterNomadTabSpawner(SVelmoraTab::GetTabName(), FOnSpawnTab::CreateRaw(this, &FVelmoraModule::SpawnTab))
		.SetDisplayName(LOCTEXT("VelmoraTabTitle", "Velmora AI"))
		.SetTooltipText(LOCTEXT("VelmoraTabTooltip", "Open Velmora AI Assistant"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetToolsCategory())
		.SetIcon(FSlateIcon(FVelmoraUIStyles::GetStyleSetName(), "Logo_App_20"));
}

void FVelmoraModule::ShutdownModule()
{
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(SVelmoraTab::GetTabName());
	FVelmoraUIStyles::Shutdown();
}

TSharedRef<SDockTab> FVelmoraModule::SpawnTab(const FSpawnTabArgs& Args)
{
	const TSharedRef<SDockTab> Tab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
	Tab->SetContent(SNew(SVelmoraTab, Tab));
	return Tab;
}

#undef LOCTEXT_NAMESPACE

IMPLEMENT_MODULE(FVelmoraModule, VelmoraUI)
