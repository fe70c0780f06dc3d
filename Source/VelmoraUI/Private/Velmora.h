#pragma once

#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "Modules/ModuleManager.h"

class FSpawnTabArgs;
class SDockTab;

/** Wires the user interface into the editor while the module is loaded. */
class VELMORAUI_API FVelmoraModule : public IModuleInterface
{
public:
	virtual void StartupModule() override;
	virtual void ShutdownModule() override;

private:
	TSharedRef<SDockTab> SpawnTab(const FSpawnTabArgs& Args);

	/** Called once a second while the module is loaded. */
	bool Poll(float DeltaTime);

	/** Has the project scanned again every so often, but not while a scan runs or before the first one is complete. */
	void RefreshFileIndex(float DeltaTime);

	FTSTicker::FDelegateHandle TickerHandle;
	/** Seconds since the index was last due for a refresh. */
	float RefreshElapsed = 0.0f;
};
