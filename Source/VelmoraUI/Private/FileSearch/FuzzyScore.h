#pragma once

#include "CoreMinimal.h"
#include "Containers/StringView.h"

namespace Velmora::UI
{

	/** The score of FFileIndexService::CalculateFuzzyScore, for text that need not be a string of its own. Allocates nothing. */
	int32 ScoreFuzzyMatch(FStringView Path, FStringView Query);

} // namespace Velmora::UI
