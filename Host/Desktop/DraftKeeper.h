#pragma once

#include "Containers/Ticker.h"
#include "CoreMinimal.h"
#include "DraftFile.h"
#include "Host/HostDelayedWork.h"

#include <mutex>

class SHostTextWidget;
class SWidget;

/**
 * Keeps the prompt that was not sent yet, with the files attached to it, in a file, less than a second old, and puts it back when a prompt
 * box appears: after the program came to a sudden end, and after its tab was closed. An empty box leaves no file. The file is the user's
 * alone. Game thread; writing is done on a thread of its own.
 */
class FDraftKeeper
{
public:
	explicit FDraftKeeper(const FString& InPath);
	/** Writes what stands in the box. */
	~FDraftKeeper();
	FDraftKeeper(const FDraftKeeper&) = delete;
	FDraftKeeper& operator=(const FDraftKeeper&) = delete;

	/** Looks at the box; called by itself four times a second while there are frames. */
	void Look();
	/** Before each turn of the loop: goes on looking when there was a frame, without which no text changes. */
	void NoteTurn();
	/** Writes what was seen last, and waits for it. Any thread; for a program that must end at once. */
	void Finish() { Writer.Finish(); }

private:
	/** The box that stood there at the last look, or one that has appeared since. */
	TSharedPtr<SHostTextWidget> FindBox();
	void Restore(SHostTextWidget& NewBox);
	/** What a box that went away has left, or else the file. */
	void ReadStored(FString& OutText, TArray<FString>& OutFiles);
	/** On the writer's thread. */
	void Write();

	const FDraftFile File;
	const FString& Path;
	TWeakPtr<SWidget> Box;
	std::mutex Mutex;
	/** The text that the file is to hold. Shared, not copied: it may be long. */
	FText Text;
	/** The files above the box. */
	TArray<FString> Files;
	/** What was told last about the file; empty while it can be written. Writer's thread. */
	FString Failure;
	void StartLooking();

	/** Not valid while nothing happens. */
	FTSTicker::FDelegateHandle Ticker;
	uint64 SeenFrames = 0;
	/** Last: its thread uses the others. */
	FHostDelayedWork Writer;
};
