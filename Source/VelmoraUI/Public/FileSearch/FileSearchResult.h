#pragma once

#include "CoreMinimal.h"
#include "FileSearch/FileIndexEntry.h"

namespace Velmora::UI
{

	/** A file that matches a query, and how well. */
	struct FFileSearchResult
	{
		FFileSearchResult() = default;

		FFileSearchResult(const FFileIndexEntry& InEntry, int32 InScore)
			: Entry(InEntry)
			, Score(InScore)
		{
		}

		/** Inverted, so that an ascending sort puts the best first. Compares nothing but scores. */
		bool operator<(const FFileSearchResult& Other) const { return Score > Other.Score; }

		FFileIndexEntry Entry;
		/** Above 0 for a match. */
		int32 Score = 0;
	};

} // namespace Velmora::UI
