#pragma once

#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "Modules/ModuleManager.h"
#include "Templates/SharedPointer.h"

class FExtender;
class FMenuBuilder;
class FSpawnTabArgs;
class FUICommandList;
class SDockTab;
class SIndexProgressWidget;

/** Wires the user interface into the editor while the module is loaded. */
class VELMORAUI_API FVelmoraModule : public IModuleInterface
{
public:
	virtual void StartupModule() override;
	virtual void ShutdownModule() override;

private:
	void CloseTab();
	void RegisterTab();
	void RegisterCommands();
	void ExtendMenu();
	void RegisterSettingsPage();
	TSharedRef<SDockTab> SpawnTab(const FSpawnTabArgs& Args);
	void BuildMenu(FMenuBuilder& Builder);
	void BuildCodeIndexMenu(FMenuBuilder& Builder);

	/** Called about once a second while the module is loaded. The ticker's delta is that of the editor's loop. */
	bool OnTicker(float DeltaTime);
	/** @param DeltaTime  Seconds since the last poll. */
	bool Poll(float DeltaTime);
	/** Tells by toasts when a build of the project index begins and ends, whoever started it, and when much is indexed again. */
	void WatchCodeIndex();
	void ShowProgress();
	void FinishProgress();
	void HideProgress();
	/** Has the project scanned again every so often, but not while a scan runs or before the first one is complete. */
	void RefreshFileIndex(float DeltaTime);

	/** Not without a Slate application. */
	bool bIsStarted = false;
	TSharedPtr<FUICommandList> CommandList;
	TSharedPtr<FExtender> MenuExtender;
	/** Made at the first build, and fed with builds; it stands in no window. */
	TSharedPtr<SIndexProgressWidget> ProgressWidget;
	/** The progress widget follows a build, or still shows its end. */
	bool bProgressVisible = false;
	FTSTicker::FDelegateHandle TickerHandle;
	/** Platform time. */
	double LastPollTime = 0.0;
	bool bHidePending = false;
	/** Seconds until the progress widget is hidden. */
	float HideCountdown = 0.0f;
	/** Seconds since the index was last due for a refresh. */
	float RefreshElapsed = 0.0f;
};
