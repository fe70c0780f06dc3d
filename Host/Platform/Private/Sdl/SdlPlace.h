#pragma once

#include "CoreMinimal.h"

#include <SDL.h>

/** Where a window stands on the monitors, kept in a small file between runs. Game thread. */
namespace SdlPlace
{
	/** A size that the first monitor has room for, its panels left out. */
	FIntPoint FitSize(const FIntPoint& Wanted);

	/** Makes a window that has just been opened so small that the frame of the window manager fits on its monitor, too. */
	void FitFrame(SDL_Window* Window);

	/** The rectangle that was kept, if enough of it lies on a monitor to take hold of. @return Whether OutPlace was filled. */
	bool Load(const FString& Path, SDL_Rect& OutPlace, bool& bOutMaximised);

	/** What cannot be written is not worth a word: the next window opens where it opens. */
	void Save(const FString& Path, SDL_Window* Window);
}
