#pragma once

#include "CoreMinimal.h"
#include "Input/Events.h"

/**
 * Scrolls the messages while the prompt has the keyboard: pages and ends with Ctrl, lines by the arrows with Alt. Game thread.
 */
class FMessageScroll
{
public:
	/** False when the key is for somebody else. */
	static bool HandleKey(const FKeyEvent& KeyEvent);
};
