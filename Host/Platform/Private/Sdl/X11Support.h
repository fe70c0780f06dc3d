#pragma once

#include <cstddef>

struct SDL_Window;

/** What has to be asked of X11 itself. Everything answers harmlessly when the window is not on X11. */
namespace X11Support
{
	/** When the X server goes away: calls the display-lost handler, says one sentence, ends the process with exit code 1. */
	void WatchDisplay(SDL_Window* Window);
	/** Whether some program says that it has a clipboard. */
	bool HasClipboardOwner(SDL_Window* Window);
	/** Identifies the clipboard's owner, 0 for none. */
	unsigned long GetClipboardOwner(SDL_Window* Window);
	/** The most bytes that one text may have to be handed over at once. */
	size_t GetMaxClipboardBytes(SDL_Window* Window);
}
