#pragma once

#include "CoreMinimal.h"
#include "Modules/ModuleManager.h"

/** Module "VelmoraAutoDownloadFramework": looks for updates and fetches them. */
class VELMORAAUTODOWNLOADFRAMEWORK_API FVelmoraAutoDownloadFrameworkModule : public IModuleInterface
{
public:
	/**
	 * Starts the download of the update on offer. Game thread. Nothing happens when none is on offer. There is
	 * nowhere to download from yet: an offer stays on offer and the gate's message says so.
	 */
	static void TriggerManualDownload();
};
