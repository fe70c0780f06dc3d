#pragma once

#include "CoreMinimal.h"

/** Looks for the fonts that the program is drawn with. */
class FFontCheck
{
public:
	/** A sentence for each missing family, naming its package. */
	static TArray<FString> FindMissing();
	/** One sentence for all scripts that no font has letters for, with the packages; empty when there are none. */
	static FString FindMissingScripts();
};
