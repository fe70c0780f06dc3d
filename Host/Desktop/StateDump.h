#pragma once

#include "CoreMinimal.h"

class FChatViewModel;

/** Writes what is on screen and in the conversation, for people who automate the program. With a simulated clock nothing in it depends on
 * the machine. */
class FStateDump
{
public:
	/** One JSON object in the engine's pretty form. ViewModel may be null. */
	static FString Make(const FChatViewModel* ViewModel);
};
