#pragma once

#include "Input/Events.h"
#include "InputCoreTypes.h"

#include <atk/atk.h>

/**
 * Keys as screen readers hear them, before the window does: that is how their own commands work while the window has the keyboard.
 * Each key is a question to them that waits for its answer.
 */
namespace AtkKeys
{
	void Install(AtkUtilClass& Util);
	/** True when somebody keeps the key. */
	bool Tell(const FKey& Key, const FModifierKeysState& Modifiers, bool bDown);
}
