#pragma once

#include "CoreMinimal.h"

namespace Velmora
{
	/** Knobs of the built-in agent for programs and tests. Read when a turn starts. */
	struct FBuiltInAgentOptions
	{
		/** Seconds that each tool takes at least, so that a person (or a test) can watch it run. Zero for no wait. */
		double MinimumToolSeconds = 0.0;

		/** Somebody can answer a question. Otherwise what would be asked is refused, unless it is allowed here or by a rule. */
		bool bCanAsk = true;

		/** Beginnings of "tool subject", such as "edit_file .vscode/", that are allowed without asking in this run. */
		TArray<FString> AllowedCalls;
	};

	/** Game thread. */
	VELMORACORE_API const FBuiltInAgentOptions& GetBuiltInAgentOptions();
	VELMORACORE_API void SetBuiltInAgentOptions(const FBuiltInAgentOptions& Options);
}
