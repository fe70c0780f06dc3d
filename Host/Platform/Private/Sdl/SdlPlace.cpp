#include "Sdl/SdlPlace.h"

#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

namespace
{
	/** So much of a window must be on a monitor for a hand to take hold of it. */
	constexpr int MinSeenWidth = 160;
	constexpr int MinSeenHeight = 60;
	constexpr int MaxWindowSide = 16384;

	bool CanBeReached(const SDL_Rect& Place)
	{
		for (int Display = 0; Display < SDL_GetNumVideoDisplays(); ++Display)
		{
			SDL_Rect Usable = {};
			SDL_Rect Seen = {};
			if (SDL_GetDisplayUsableBounds(Display, &Usable) == 0 && SDL_IntersectRect(&Usable, &Place, &Seen) && Seen.w >= MinSeenWidth &&
				Seen.h >= MinSeenHeight)
			{
				return true;
			}
		}
		return false;
	}
}

FIntPoint SdlPlace::FitSize(const FIntPoint& Wanted)
{
	SDL_Rect Usable = {};
	const bool bIsKnown = SDL_GetDisplayUsableBounds(0, &Usable) == 0 && Usable.w > 0 && Usable.h > 0;
	return bIsKnown ? FIntPoint(std::min(Wanted.X, Usable.w), std::min(Wanted.Y, Usable.h)) : Wanted;
}

void SdlPlace::FitFrame(SDL_Window* Window)
{
	// How wide the frame is comes as an event.
	SDL_PumpEvents();
	int Top = 0;
	int Left = 0;
	int Bottom = 0;
	int Right = 0;
	SDL_Rect Usable = {};
	if (SDL_GetWindowBordersSize(Window, &Top, &Left, &Bottom, &Right) != 0 ||
		SDL_GetDisplayUsableBounds(std::max(SDL_GetWindowDisplayIndex(Window), 0), &Usable) != 0)
	{
		return;
	}
	int Width = 0;
	int Height = 0;
	SDL_GetWindowSize(Window, &Width, &Height);
	const int FitWidth = std::min(Width, Usable.w - Left - Right);
	const int FitHeight = std::min(Height, Usable.h - Top - Bottom);
	if (FitWidth > 0 && FitHeight > 0 && (FitWidth < Width || FitHeight < Height))
	{
		SDL_SetWindowSize(Window, FitWidth, FitHeight);
	}
}

bool SdlPlace::Load(const FString& Path, SDL_Rect& OutPlace, bool& bOutMaximised)
{
	std::ifstream File(HostFileNameToBytes(Path));
	SDL_Rect Place = {};
	int Maximised = 0;
	if (!(File >> Place.x >> Place.y >> Place.w >> Place.h >> Maximised) || Place.w < 1 || Place.h < 1 || Place.w > MaxWindowSide ||
		Place.h > MaxWindowSide || !CanBeReached(Place))
	{
		return false;
	}
	OutPlace = Place;
	bOutMaximised = Maximised != 0;
	return true;
}

void SdlPlace::Save(const FString& Path, SDL_Window* Window)
{
	const Uint32 Flags = SDL_GetWindowFlags(Window);
	SDL_Rect Place = {};
	bool bWasMaximised = false;
	// The size that a window goes back to from all of the screen is the one before.
	const bool bIsMaximised = (Flags & SDL_WINDOW_MAXIMIZED) != 0;
	if (!bIsMaximised || !Load(Path, Place, bWasMaximised))
	{
		SDL_GetWindowPosition(Window, &Place.x, &Place.y);
		SDL_GetWindowSize(Window, &Place.w, &Place.h);
		int Top = 0;
		int Left = 0;
		// Places are those of the frame that the window manager draws.
		if (SDL_GetWindowBordersSize(Window, &Top, &Left, nullptr, nullptr) == 0)
		{
			Place.x -= Left;
			Place.y -= Top;
		}
	}
	char Text[96];
	const int Length = std::snprintf(Text, sizeof(Text), "%d %d %d %d %d\n", Place.x, Place.y, Place.w, Place.h, bIsMaximised ? 1 : 0);
	FString Reason;
	(void)HostSaveFile(Path, Text, Length, HostWritePrivate, Reason);
}
