#pragma once

#include "CoreMinimal.h"

/** A message dialog that waits for an answer. */
struct FHostOpenDialog
{
	FString Title;
	FString Message;
	/** From left to right: "Yes", "No", ... */
	TArray<FString> Buttons;
};

/**
 * Shows the engine's message dialogs as modal windows of the program. Escape and the close mark answer No or Cancel;
 * the default answer is the primary button and has the keyboard.
 *
 * A program without a screen cannot be asked by a user: there a dialog takes a queued answer, or the default one, which
 * it prints on the standard error stream, unless SetAnswering says that somebody answers. Game thread only.
 */
class SLATE_API FHostDialogs
{
public:
	/** Takes over FMessageDialog. The application must exist when a dialog opens. */
	static void Install();
	/** Gives it back and forgets queued answers. */
	static void Uninstall();

	/** The topmost last. */
	static TArray<FHostOpenDialog> GetOpenDialogs();
	/** Answers the topmost dialog by a button's name, ignoring case; it closes in the next frame. False when there is no such button or
	 * dialog. */
	static bool AnswerOpenDialog(const FString& ButtonName);
	/** Answers the topmost dialog as Escape does. Returns the button taken, empty without a dialog. */
	static FString DismissOpenDialog();
	/** Answers the next dialog that has such a button, without showing it. */
	static void QueueAnswer(const FString& ButtonName);
	/** True: dialogs open without a screen too and wait for AnswerOpenDialog or synthetic input. */
	static void SetAnswering(bool bInAnswering);
	static bool IsAnswering();
};
