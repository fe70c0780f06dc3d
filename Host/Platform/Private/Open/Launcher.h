#pragma once

#include "Host/HostServices.h"
#include "Open/OpenRules.h"

struct FEditorCommand;

/** Opens addresses and files in the desktop's programs, sources in the user's editor. Any thread; questions are asked on the game thread
 * only. */
class FLauncher
{
public:
	/** Serves FHostServices::Launch. See FHostPlatform::InstallLauncher. */
	static void Install(bool bStartNothing);

private:
	static bool Launch(const FHostLaunchRequest& Request, bool bStartNothing, FString& OutError);
	static bool AskUser(const FHostLaunchRequest& Request, const FString& Target, const FString& Reason);
	/** Empty for the desktop's program. */
	static FEditorCommand ChooseEditor(const FHostLaunchRequest& Request, const FOpenFileFacts& Facts);
	/** Checks what the disk and the rules say about a file. @param bIsViewed  This program shows it, and runs nothing. */
	static FOpenDecision JudgeFile(
		const FHostLaunchRequest& Request, const FOpenFileFacts& Facts, const FEditorCommand& Editor, bool bIsViewed);
	/** Runs the editor, at the line where that can be said, or without one the desktop's opener. */
	static bool Start(const FString& Target, int32 Line, const FEditorCommand& Editor, FString& OutError);
};
