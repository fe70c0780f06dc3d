#include "FileSearch/FileSearchViewModel.h"

#include "FileSearch/FileIndexService.h"

namespace Velmora::UI
{

	void FFileSearchViewModel::SetSearchQuery(const FString& Query)
	{
		// By letter case, although the search ignores it: the query is kept as it was typed.
		if (Query.Equals(SearchQuery, ESearchCase::CaseSensitive))
		{
			return;
		}
		SearchQuery = Query;
		const FFileIndexService& Index = FFileIndexService::Get();
		// Before the first scan is complete nothing is found, and an empty list says less than half a list would.
		if (!SearchQuery.IsEmpty() && Index.IsReady())
		{
			FilteredResults = Index.SearchFiles(SearchQuery, MaxResults);
		}
		else
		{
			FilteredResults.Empty();
		}
		ResultsChangedEvent.Broadcast(FilteredResults);
	}

	void FFileSearchViewModel::ClearSearch()
	{
		SearchQuery.Empty();
		FilteredResults.Empty();
		ResultsChangedEvent.Broadcast(FilteredResults);
	}

	int32 FFileSearchViewModel::GetIndexedFileCount() const
	{
		return FFileIndexService::Get().GetFileCount();
	}

	bool FFileSearchViewModel::IsIndexing() const
	{
		return FFileIndexService::Get().IsIndexing();
	}

	bool FFileSearchViewModel::IsReady() const
	{
		return FFileIndexService::Get().IsReady();
	}

} // namespace Velmora::UI
