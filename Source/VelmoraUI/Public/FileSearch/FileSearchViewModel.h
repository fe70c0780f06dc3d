#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "FileSearch/FileSearchResult.h"
#include "Templates/SharedPointer.h"

namespace Velmora::UI
{

	DECLARE_MULTICAST_DELEGATE_OneParam(FOnResultsChanged, const TArray<FFileSearchResult>&);
	DECLARE_MULTICAST_DELEGATE(FOnIndexStatusChanged);

	/**
	 * Query and results of one dropdown. A new query is searched for at once, and listeners have heard of its results when the
	 * call returns. Does not listen to the index: a query set before the index is ready stays without results. Game thread.
	 */
	class VELMORAUI_API FFileSearchViewModel : public TSharedFromThis<FFileSearchViewModel>
	{
	public:
		/** The query that is already set, letter case included, does nothing. */
		void SetSearchQuery(const FString& Query);

		/** Empties query and results; listeners hear of it also when both were empty. */
		void ClearSearch();

		const FString& GetSearchQuery() const { return SearchQuery; }

		/** Best first. */
		const TArray<FFileSearchResult>& GetFilteredResults() const { return FilteredResults; }

		int32 GetResultCount() const { return FilteredResults.Num(); }

		/** Of the whole index, folders included. */
		int32 GetIndexedFileCount() const;
		bool IsIndexing() const;
		bool IsReady() const;

		/** Called whenever the results were replaced. A listener may set another query. */
		FOnResultsChanged& OnResultsChanged() { return ResultsChangedEvent; }

		/** Has no sender yet. */
		FOnIndexStatusChanged& OnIndexStatusChanged() { return IndexStatusChangedEvent; }

	private:
		FString SearchQuery;
		TArray<FFileSearchResult> FilteredResults;
		int32 MaxResults = 50;
		FOnResultsChanged ResultsChangedEvent;
		FOnIndexStatusChanged IndexStatusChangedEvent;
	};

} // namespace Velmora::UI
