#include "Settings/SettingsModule.h"

#include "Framework/Docking/TabManager.h"
#include "Host/HostModules.h"
#include "Host/HostSettings.h"
#include "Settings/SSettingsPage.h"
#include "Styling/AppStyle.h"
#include "Textures/SlateIcon.h"
#include "Widgets/Docking/SDockTab.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

#define LOCTEXT_NAMESPACE "SettingsModule"

FName FSettingsModule::GetTabName()
{
	return FName(TEXT("ProjectSettings"));
}

void FSettingsModule::StartupModule()
{
	FGlobalTabmanager::Get()
		->RegisterNomadTabSpawner(GetTabName(), FOnSpawnTab::CreateRaw(this, &FSettingsModule::SpawnTab))
		.SetDisplayName(LOCTEXT("TabTitle", "Project Settings"))
		.SetTooltipText(LOCTEXT("TabTooltip", "Edit the settings of the project and its plug-ins"))
		.SetGroup(WorkspaceMenu::GetMenuStructure().GetToolsCategory())
		.SetIcon(FSlateIcon(FAppStyle::GetAppStyleSetName(), TEXT("Icons.Settings")));
}

void FSettingsModule::ShutdownModule()
{
	FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(GetTabName());
}

TSharedRef<SDockTab> FSettingsModule::SpawnTab(const FSpawnTabArgs& Args)
{
	const TSharedRef<SSettingsPage> NewPage = SNew(SSettingsPage, Registry);
	Page = NewPage;
	const TWeakPtr<SSettingsPage> WeakPage = NewPage;
	return SNew(SDockTab)
		.TabRole(ETabRole::NomadTab)
		.OnTabActivated_Lambda(
			[WeakPage](TSharedRef<SDockTab>, ETabActivationCause)
			{
				// Values may have been changed elsewhere while another tab was in front.
				if (const TSharedPtr<SSettingsPage> Shown = WeakPage.Pin())
				{
					Shown->RefreshValues();
				}
			})[NewPage];
}

TSharedPtr<ISettingsSection> FSettingsModule::RegisterSettings(const FName& ContainerName, const FName& CategoryName,
	const FName& SectionName, const FText& DisplayName, const FText& Description, const TWeakObjectPtr<UObject>& SettingsObject)
{
	if (!SettingsObject.IsValid())
	{
		return nullptr;
	}
	const TSharedRef<FSettingsSection> Section =
		MakeShared<FSettingsSection>(ContainerName, CategoryName, SectionName, DisplayName, Description, SettingsObject);
	Registry->Add(Section);
	return Section;
}

TSharedPtr<ISettingsSection> FSettingsModule::RegisterSettings(const FName& ContainerName, const FName& CategoryName,
	const FName& SectionName, const FText& DisplayName, const FText& Description, const TSharedRef<SWidget>& CustomWidget)
{
	const TSharedRef<FSettingsSection> Section = MakeShared<FSettingsSection>(
		ContainerName, CategoryName, SectionName, DisplayName, Description, TWeakObjectPtr<UObject>(), CustomWidget);
	Registry->Add(Section);
	return Section;
}

void FSettingsModule::UnregisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName)
{
	Registry->Remove(ContainerName, CategoryName, SectionName);
}

void FSettingsModule::ShowViewer(const FName& ContainerName, const FName& CategoryName, const FName& SectionName)
{
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(GetTabName()));
	if (const TSharedPtr<SSettingsPage> Shown = Page.Pin())
	{
		Shown->RefreshValues();
		Shown->ShowSection(Registry->Find(ContainerName, CategoryName, SectionName));
	}
}

void FHostSettings::Install()
{
	const FName Name(TEXT("Settings"));
	FHostModules::Register(Name, []() -> TUniquePtr<IModuleInterface> { return TUniquePtr<IModuleInterface>(new FSettingsModule()); });
	FModuleManager::Get().LoadModule(Name);
}

#undef LOCTEXT_NAMESPACE
