#pragma once

#include "Host/HostWindow.h"
#include "Templates/Function.h"

/** How the program's window begins. */
struct FHostWindowOptions
{
	FString Title;
	/** Pixels on screen; at least 1 by 1, at most 16,384 by 16,384. */
	FIntPoint PixelSize = FIntPoint(1280, 800);
	/** Device pixels per layout unit. X11 tells none, so it comes from an option or the environment. */
	float Scale = 1.0f;
	/** No smaller than this by hand; zero for any size. */
	FIntPoint MinPixelSize = FIntPoint(0, 0);
	/** PNG file shown by the window manager; empty for none. */
	FString IconPath;
	/** File that keeps place and size from one window to the next; empty for none. What it holds counts before PixelSize. */
	FString PlacePath;
	/** What does not fit on the monitor becomes smaller. */
	bool bFitsMonitor = false;
};

/**
 * What touches the machine: windows, fonts and text shaping, clipboard, and the opening of addresses and files.
 * Game thread, where nothing else is said.
 */
class PLATFORM_API FHostPlatform
{
public:
	/** Reads the font configuration and puts the process's text shaper in its place (ITextShaper). Once, at start. */
	static void InstallTextShaper();
	/** One sentence for each font that is wanted and not installed, with the Debian package that has it. */
	static TArray<FString> FindMissingFonts();
	/** One sentence for the scripts that no installed font has letters for, with their packages; empty when there is none. */
	static FString FindMissingScripts();

	/**
	 * A window on the screen. The clipboard is the desktop's from then on.
	 * @param OutError  Filled with a sentence when the result is null, as when there is no display.
	 */
	static TSharedPtr<IHostWindow> CreateDesktopWindow(const FHostWindowOptions& Options, FString& OutError);
	/**
	 * What is selected on screen, for programs that paste it by the middle button. Without a desktop window, and for a text that is
	 * too long for the X server, nothing happens.
	 */
	static void SetPrimarySelection(const FString& Text);
	/** A picture in memory that behaves like a window. The clipboard is one within the process. Needs no display. */
	static TSharedRef<IHostWindow> CreateHeadlessWindow(const FIntPoint& PixelSize, float Scale);

	/**
	 * Serves the launch of addresses and files (FHostServices) by rules: web and mail addresses and plain files open in
	 * the desktop's program for them, whatever could run is asked for first, and what cannot be meant is refused. Sources open
	 * in the editor that VISUAL or EDITOR names, where none is named as plain files; so do other texts where VISUAL names one that is
	 * known to have a window. No shell is ever in between.
	 * @param bStartNothing  Records and prints the target on the standard error stream instead, for runs without a user.
	 */
	static void InstallLauncher(bool bStartNothing);
	/**
	 * Shows a text in the program itself, at a line from 1 or, with 0, at its beginning: asked for where the user has named no editor and
	 * the desktop has no opener. Game thread. None takes it away.
	 */
	static void SetSourceViewer(TFunction<void(const FString& Path, int32 Line)> Viewer);
	/** What was opened, or would have been; oldest first, at most 1,000. Any thread. */
	static TArray<FString> GetRecordedTargets();
	static void ClearRecordedTargets();

	/** Told, in a sentence for the user, when the clipboard or an opening failed. Game thread. Without one the log says it. */
	static void SetProblemHandler(TFunction<void(const FString&)> Handler);
	/** A signal (SIGTERM, SIGINT) has told the program to end: nobody is there to be asked. */
	static bool IsToldToEnd();
	/**
	 * Called when the display server went away, on the thread that noticed, to save what is not saved. It must not paint
	 * or pump. The process then says one sentence on the standard error stream and ends with exit code 1.
	 */
	static void SetDisplayLostHandler(TFunction<void()> Handler);
};
