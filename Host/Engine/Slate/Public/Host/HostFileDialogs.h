#pragma once

#include "CoreMinimal.h"

/** What a save dialog is asked for. */
struct FHostSaveDialog
{
	FString Title;
	/** Where the dialog begins. A folder that does not exist is made when the user saves there. */
	FString Folder;
	/** What stands in the name box at first. */
	FString File;
	/** Pairs of a label and patterns: "Text (*.txt)|*.txt|Pictures (*.png;*.jpg)|*.png;*.jpg". */
	FString FileTypes;
	/** A folder is asked for: there is neither a name nor a filter. */
	bool bChoosesFolder = false;
};

/** A save dialog that waits for an answer. */
struct FHostOpenSaveDialog
{
	FString Title;
	FString Folder;
	FString Name;
	/** What the dialog has refused last, and why; empty when nothing. */
	FString Problem;
	/** Its button is "Choose" then, not "Save". */
	bool bChoosesFolder = false;
};

/**
 * The save dialog: a modal window of the program with the folders and files of a place, a name box and a filter.
 * Replacing a file is asked first. What cannot be saved to is told in the dialog, which stays open.
 *
 * A program without a screen cannot be asked by a user: there a dialog takes a queued answer, or is cancelled and says so
 * on the standard error stream, unless FHostDialogs::SetAnswering says that somebody answers. Game thread only.
 */
class SLATE_API FHostFileDialogs
{
public:
	/** Asks and waits. @return False when cancelled. OutFile is absolute, its name is as typed. */
	static bool AskForSaveFile(const FHostSaveDialog& Dialog, FString& OutFile);

	/** Asks for a folder that is there, beginning at that one or the nearest one above it. @return False when cancelled. */
	static bool AskForFolder(const FString& Title, const FString& Folder, FString& OutFolder);

	/** Answers the next save dialog without showing it: a path, relative to the dialog's folder, or empty to cancel. */
	static void QueueAnswer(const FString& Path);

	/** The topmost open dialog. */
	static TOptional<FHostOpenSaveDialog> GetOpen();
	/**
	 * Types a path into the open dialog's name box and saves, as a user would; a file of that name is replaced without
	 * asking. @return Empty when the dialog closes; else a sentence, the dialog's own where it has refused.
	 */
	static FString AnswerOpen(const FString& Path);
	/** Presses "Save" (or "Choose") or "Cancel" in the open dialog, ignoring case. False when there is no such button or dialog. */
	static bool PressOpen(const FString& ButtonName);
};
