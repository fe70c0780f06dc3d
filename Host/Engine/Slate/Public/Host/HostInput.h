#pragma once

#include "Input/Events.h"

/**
 * Input where the platform's enters, so that what a script, the program itself or a test does goes the whole way that a
 * user's hand would go. Game thread; handled at once.
 */
namespace HostInput
{
	/** Down, the text that the key types by itself (a letter or a blank, and none with Ctrl or Alt), up. */
	SLATE_API void PressKey(const FKey& Key, const FModifierKeysState& Modifiers = FModifierKeysState());
	/** Line feeds go as the key Enter, which they are to every box, and tabs as the key Tab; what stands between them is text. */
	SLATE_API void Type(FStringView Text, bool bTabsAreText = false);
	/** Moves there and presses and releases the left button, with no frame in between. Device pixels. */
	SLATE_API void Click(const FVector2D& Position);
}
