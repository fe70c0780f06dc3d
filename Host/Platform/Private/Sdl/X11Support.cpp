#include "Sdl/X11Support.h"

#include "PlatformState.h"

#include <SDL.h>
#include <SDL_syswm.h>

#include <cstdint>
#include <cstdio>
#include <unistd.h>

// Last: its macros have common names.
#include <X11/Xlib.h>

namespace
{
	Display* GetDisplay(SDL_Window* Window)
	{
		SDL_SysWMinfo Info;
		SDL_VERSION(&Info.version);
		if (Window && SDL_GetWindowWMInfo(Window, &Info) && Info.subsystem == SDL_SYSWM_X11)
		{
			return Info.info.x11.display;
		}
		return nullptr;
	}

	int KeepQuiet(Display*)
	{
		return 0; // The sentence comes from EndProcess.
	}

	void EndProcess(Display*, void*)
	{
		PlatformState::CallDisplayLost();
		std::fputs("The connection to the display was lost. What could be saved is saved; the program ends.\n", stderr);
		std::fflush(nullptr);
		// No destructors: they would talk to a display that is gone.
		_exit(1);
	}
}

namespace X11Support
{
	void WatchDisplay(SDL_Window* Window)
	{
		if (Display* const Connection = GetDisplay(Window))
		{
			XSetIOErrorHandler(&KeepQuiet);
			XSetIOErrorExitHandler(Connection, &EndProcess, nullptr);
		}
	}

	bool HasClipboardOwner(SDL_Window* Window)
	{
		return GetClipboardOwner(Window) != 0;
	}

	unsigned long GetClipboardOwner(SDL_Window* Window)
	{
		Display* const Connection = GetDisplay(Window);
		return Connection ? XGetSelectionOwner(Connection, XInternAtom(Connection, "CLIPBOARD", 0)) : 0;
	}

	size_t GetMaxClipboardBytes(SDL_Window* Window)
	{
		Display* const Connection = GetDisplay(Window);
		if (!Connection)
		{
			return SIZE_MAX;
		}
		const long Extended = XExtendedMaxRequestSize(Connection);
		const long Words = Extended > 0 ? Extended : XMaxRequestSize(Connection);
		// Room for the request's own head.
		return static_cast<size_t>(Words) * 4 - 1024;
	}
}
