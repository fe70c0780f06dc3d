#pragma once

#include "CoreMinimal.h"

struct FDesktopOptions;

/** What the command line says about the model that answers. Opens no connection but for --list-models. */
namespace ConnectionChoice
{
	/** Chooses who answers. Empty, or a sentence that says what is wrong. */
	FString Select(const FDesktopOptions& Options);

	/** Does --list-connections or --list-models. The exit code. */
	int32 List(const FDesktopOptions& Options);
}
