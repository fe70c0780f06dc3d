#pragma once

#include "Host/HostWindow.h"
#include "Templates/SharedPointer.h"

/**
 * Text and everything else larger or smaller than the screen's scale makes it, in steps from 50 to 200 percent. There is one window;
 * the zoom is the program's, and is kept in a file of the user's. Game thread.
 */
class FWindowZoom
{
public:
	/** The window as all others are to see it: the same one, with the scale multiplied by the zoom. */
	static TSharedRef<IHostWindow> Wrap(const TSharedRef<IHostWindow>& Window);

	/** One step larger (1), smaller (-1), or back to the screen's scale (0). Needs the application. */
	static void Step(int32 Direction);
	static int32 GetPercent();

	/** Takes over what the file holds, and keeps changes there; an empty path keeps nothing and begins at 100. */
	static void Load(const FString& Path);
};
