#pragma once

#include "CoreMinimal.h"

/** Looks for the fonts that the program is drawn with. */
class FFontCheck
{
public:
	/** A sentence for each missing family, naming its package. */
	static TArray<FString> FindMissing();
};
