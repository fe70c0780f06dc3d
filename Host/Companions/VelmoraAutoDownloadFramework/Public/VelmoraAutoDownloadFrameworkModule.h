#pragma once

#include "CoreMinimal.h"
#include "Modules/ModuleManager.h"

/** Module "VelmoraAutoDownloadFramework": looks for updates and fetches them. */
class VELMORAAUTODOWNLOADFRAMEWORK_API FVelmoraAutoDownloadFrameworkModule : public IModuleInterface
{
public:
	/**
	 * Starts the download of the update on offer. Game thread. Nothing happens when none is on offer. The gate goes to
	 * Downloading with a percent figure, then to RestartRequired. When there is nothing to download or the download fails, the
	 * offer stays and the gate's message says why.
	 */
	static void TriggerManualDownload();
};
