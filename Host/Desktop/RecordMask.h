#pragma once

#include "CoreMinimal.h"
#include "InputCoreTypes.h"
#include "Input/Events.h"

/**
 * Takes what was said out of a recording and leaves its shape: letters and digits become "x", "X" and "0", one for one; signs and white
 * space stay, so that tables are tables and code is code. Pure.
 */
class FRecordMask
{
public:
	static FString MaskText(FStringView Text);
	/** The same, but for the words by which the window knows that a step of work begins. */
	static FString MaskProgress(const FString& Text);
	/** Values only: a tool's row is made from the names of its parameters. */
	static FString MaskJson(FStringView Text);
	/** A key that types. One that is a command, or moves the caret, stays. */
	static FKey MaskKey(const FKey& Key, const FModifierKeysState& Modifiers);
};
