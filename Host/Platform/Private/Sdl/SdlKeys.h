#pragma once

#include "Input/Events.h"
#include "InputCoreTypes.h"

#include <SDL.h>

/** SDL's names of keys, buttons and modifiers in ours. Pure. */
namespace SdlKeys
{
	/**
	 * The key by what it types, so that shortcuts follow the keyboard's layout; by its place where the layout types no
	 * Latin letter there. Invalid when we have no name for it.
	 */
	FKey FromKeysym(const SDL_Keysym& Keysym);
	/** Invalid for buttons beyond the fifth. */
	FKey FromMouseButton(uint8 Button);
	FModifierKeysState FromModifiers(uint16 Modifiers);
}
