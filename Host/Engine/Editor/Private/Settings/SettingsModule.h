#pragma once

#include "ISettingsModule.h"
#include "Settings/SettingsRegistry.h"

class FSpawnTabArgs;
class SDockTab;
class SSettingsPage;

/** Keeps the sections and shows them in a tab of the dock area. */
class FSettingsModule final : public ISettingsModule
{
public:
	/** The name of the tab. */
	static FName GetTabName();

	virtual void StartupModule() override;
	virtual void ShutdownModule() override;
	virtual TSharedPtr<ISettingsSection> RegisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName,
		const FText& DisplayName, const FText& Description, const TWeakObjectPtr<UObject>& SettingsObject) override;
	virtual TSharedPtr<ISettingsSection> RegisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName,
		const FText& DisplayName, const FText& Description, const TSharedRef<SWidget>& CustomWidget) override;
	virtual void UnregisterSettings(const FName& ContainerName, const FName& CategoryName, const FName& SectionName) override;
	virtual void ShowViewer(const FName& ContainerName, const FName& CategoryName, const FName& SectionName) override;

private:
	TSharedRef<SDockTab> SpawnTab(const FSpawnTabArgs& Args);

	/** Shared with the page, which may outlive the module. */
	const TSharedRef<FSettingsRegistry> Registry = MakeShared<FSettingsRegistry>();
	TWeakPtr<SSettingsPage> Page;
};
