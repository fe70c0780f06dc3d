#pragma once

#include "CoreMinimal.h"
#include "FileCache/ProjectFileCache.h"

namespace Velmora::UI
{

	/** A record of a snapshot that matches a query. */
	struct FRankedFile
	{
		int32 Score = 0;
		/** Of the display path, with which the record's path begins. */
		int32 DisplayLength = 0;
		/** In the snapshot. */
		int32 Index = 0;
	};

	/**
	 * Keeps the best of the files it is offered. Holds twice the limit at most, whatever the number offered. No two files rank
	 * alike, so the outcome does not depend on the order of the offers.
	 */
	class FBestFiles
	{
	public:
		/** @param InRecords  The snapshot that the indices count in; must outlive this. */
		FBestFiles(const TArray<FProjectFileCacheEntry>& InRecords, int32 InLimit);

		void Offer(const FRankedFile& File);

		/** Best first. */
		TArray<FRankedFile> Take();

	private:
		/** The rule that orders the results. */
		bool IsBetter(const FRankedFile& A, const FRankedFile& B) const;
		bool HasLesserName(const FRankedFile& A, const FRankedFile& B) const;
		void DropWorse();

		const TArray<FProjectFileCacheEntry>& Records;
		const int32 Limit;
		/** The best are among these. */
		TArray<FRankedFile> Kept;
		/** What a file must be better than, once there are as many as the limit. */
		FRankedFile Worst;
		bool bHasWorst = false;
	};

} // namespace Velmora::UI
