#pragma once

#include "CoreMinimal.h"
#include "Input/Events.h"
#include "InputCoreTypes.h"
#include "Templates/Function.h"

/** Who hears keys before the window does, such as a screen reader with commands of its own. Game thread. */
class SLATE_API FHostKeyWatch
{
public:
	/** Answers whether it keeps the key to itself; the window sees nothing of it then. */
	using FListener = TFunction<bool(const FKey& Key, const FModifierKeysState& Modifiers, bool bDown)>;

	/** One at a time; null ends it. */
	static void SetListener(FListener Listener);

	// What the router asks.
	static bool TakesKey(const FKey& Key, const FModifierKeysState& Modifiers, bool bDown);
	/** True for what is typed by a key that was kept. */
	static bool TakesText();
};
