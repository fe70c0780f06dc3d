#pragma once

#include "CoreMinimal.h"

/** Something that the command line switches, or leaves to the desktop's settings. */
enum class EAccessChoice : uint8
{
	Desktop,
	On,
	Off,
};

/** What the command line asks for. */
struct FDesktopOptions
{
	FString ProjectFolder;
	bool bHeadless = false;
	bool bShowHelp = false;
	bool bShowVersion = false;
	FIntPoint Size = FIntPoint(1280, 800);
	/** The size was asked for: those are pixels, whatever the scale. */
	bool bHasSize = false;
	/** Device pixels per unit; zero takes the environment's GDK_SCALE, or 1. */
	float Scale = 0.0f;
	TOptional<FString> Prompt;
	FString DumpFile;
	FString ScreenshotFile;
	FString ScriptFile;
	/** Where to write down the frames of a session in a window. */
	FString FramesFile;
	/** Where to write the session down, and what to show again. */
	FString RecordFile;
	bool bRecordMasked = false;
	FString ReplayFile;
	/** Of the program, for recordings; no option. */
	FString Version;
	/** Leave no conversation behind. */
	bool bNoHistory = false;
	/** Keep and restore the unsent prompt as a session in a window does. */
	bool bDraft = false;
	/** Who answers: a connection of the user's, or a server for this run; both empty for the built-in agent. */
	FString Connection;
	FString Server;
	/** Instead of the connection's own, or of the first that the server lists. */
	FString Model;
	bool bListConnections = false;
	bool bListModels = false;
	/** Beginnings of "tool subject" that are allowed without asking in this run. */
	TArray<FString> AllowedCalls;
	/** Show the window to screen readers; left to the desktop, when one asks. */
	EAccessChoice Accessibility = EAccessChoice::Desktop;
	EAccessChoice ReducedMotion = EAccessChoice::Desktop;
	EAccessChoice HighContrast = EAccessChoice::Desktop;
	/** Console variables to set before anything is made, in this order. */
	TArray<TPair<FString, FString>> Variables;
	/** The local time at which simulated time begins; unset for real time. */
	TOptional<FDateTime> Now;

	/** Something to do and then to end, instead of a session with a user. */
	bool HasAction() const { return Prompt.IsSet() || !ScriptFile.IsEmpty() || !DumpFile.IsEmpty() || !ScreenshotFile.IsEmpty(); }

	/** Writes something and ends, with prompts that may stand in a pipe before. */
	bool WritesOnly() const { return HasAction() && !Prompt.IsSet() && ScriptFile.IsEmpty(); }

	/**
	 * Reads the arguments behind the program's name.
	 * @return Empty when all is well; else one sentence that says what is wrong.
	 */
	FString Parse(const TArray<FString>& Arguments);
	static FString GetHelp();
};
