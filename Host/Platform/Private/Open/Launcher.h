#pragma once

#include "Host/HostServices.h"

/** Opens addresses and files in the desktop's programs. Any thread; questions are asked on the game thread only. */
class FLauncher
{
public:
	/** Serves FHostServices::Launch. See FHostPlatform::InstallLauncher. */
	static void Install(bool bStartNothing);

private:
	static bool Launch(const FHostLaunchRequest& Request, bool bStartNothing, FString& OutError);
	static bool AskUser(const FHostLaunchRequest& Request, const FString& Target, const FString& Reason);
	/** Runs the desktop's opener with exactly one argument and no shell in between. */
	static bool Start(const FString& Target, FString& OutError);
};
