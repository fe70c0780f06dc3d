#pragma once

#include "CoreMinimal.h"
#include "DesktopOptions.h"
#include "Templates/Function.h"

class FChatMessage;
class FChatViewModel;

/**
 * What the program does for those who see little or nothing, or whom motion disturbs: shows the window to assistive technologies when
 * one asks, says aloud what appears, keeps still, raises the contrast. Follows the command line, else the desktop's settings.
 * Game thread.
 */
class FAccessSupport
{
public:
	/**
	 * @param bHasUser  Somebody works in the window; else only what the command line asks for is done.
	 * @param OnLook    Called whenever contrast and motion have been set; null where they are not to be, since somebody else says them.
	 */
	void Start(const FDesktopOptions& Options, bool bHasUser, TFunction<void()> OnLook);
	void End();
	/** Before each turn of the loop. Costs nothing while nobody listens, nor without a frame since the last call. */
	void NoteTurn();

private:
	static void ShowWindow();
	void Forget();
	/** What was said in the conversation since the last call. */
	void SayMessages(const FChatViewModel& ViewModel);
	void SayTools(const FChatMessage& Group);
	void SayToasts();

	uint64 SeenFrames = 0;
	/** By address alone: never used. */
	const FChatViewModel* SeenViewModel = nullptr;
	const FChatMessage* LastSeen = nullptr;
	int32 SeenCount = 0;
	/** Of the group of tool runs that came last. */
	const FChatMessage* ToolGroup = nullptr;
	int32 SaidTools = 0;
	FString SaidStatus;
	TArray<FString> SeenToasts;
};
