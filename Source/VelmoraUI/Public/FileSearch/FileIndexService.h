#pragma once

#include "CoreMinimal.h"
#include "FileSearch/FileIndexEntry.h"
#include "FileSearch/FileSearchResult.h"
#include "HAL/CriticalSection.h"
#include "Misc/Optional.h"

#include <atomic>

namespace Velmora
{
	enum class EProjectFileType : uint8;
	struct FProjectFileCacheEntry;
}

namespace Velmora::UI
{

	/**
	 * The door to the files of the project: their state, and the search for those that match a query. The list itself is
	 * kept and scanned by the project file cache; every call reads the cache as it is at that moment. Nothing blocks and
	 * nothing fails.
	 */
	class VELMORAUI_API FFileIndexService
	{
	public:
		static FFileIndexService& Get();

		/** Starts the cache. The scan runs in the background. */
		void StartIndexing();

		/** Asks for a new scan, also when one is running. */
		void RefreshIndex();

		/** Gives the service's own memory back. The cache goes on; may be called again. */
		void Shutdown();

		/** Records of the cache, folders included. */
		int32 GetFileCount() const;

		/** A scan has been completed. */
		bool IsReady() const;

		/** A scan is running. */
		bool IsIndexing() const;

		/**
		 * The files whose display paths match, folders left out, in a list of their own. Searches on the calling thread.
		 *
		 * Best score first; of equal scores the shorter display path, then the lesser file name, then the lesser path.
		 * The order is the same in every run.
		 *
		 * @return Empty when the query is empty, when the index is not ready, and when nothing matches.
		 */
		TArray<FFileSearchResult> SearchFiles(const FString& Query, int32 MaxResults) const;

		/**
		 * How well a path matches: 0 for not at all, more for better. Letter case does not matter. A query that stands in
		 * the path as it is scores by its first place (100 to 200), one whose characters only follow each other scores by
		 * their number, by those after slashes, and by the gaps. Any thread; allocates nothing.
		 */
		static int32 CalculateFuzzyScore(const FString& FilePath, const FString& Query);

		/** By the name alone; the disk is not touched. */
		static EFileType ClassifyFile(const FString& FilePath);

		/** True for a path that scans leave out. */
		static bool ShouldIgnorePath(const FString& Path);

	private:
		FFileIndexService() = default;
		~FFileIndexService();
		FFileIndexService(const FFileIndexService&) = delete;
		FFileIndexService& operator=(const FFileIndexService&) = delete;

		/** The records of the cache as entries, folders included, in the cache's order. */
		TArray<FFileIndexEntry> ScanFilesystem();

		/** Leaves the array alone: walking the disk is the cache's business. */
		void ScanDirectory(const FString& Directory, TArray<FFileIndexEntry>& OutEntries);

		/** Takes over a finished scan. With an error text or without a result the earlier entries stay. */
		void OnIndexingComplete(TOptional<TArray<FFileIndexEntry>>&& Result, double ElapsedSeconds, const FString& ErrorMessage);

		static FFileIndexEntry CreateEntry(const FProjectFileCacheEntry& Record);
		static EFileType ConvertFileType(EProjectFileType Type);

		/** The path; that of an asset loses its extension. */
		static FString CreateDisplayPath(const FString& FilePath);

		/** Filled by OnIndexingComplete alone; the search reads the cache. */
		TArray<FFileIndexEntry> Entries;
		/** Guards Entries. Nothing else is called while it is held. */
		FCriticalSection EntriesLock;
		std::atomic<bool> bIsIndexing = false;
		std::atomic<bool> bIsReady = false;
		std::atomic<bool> bShutdownRequested = false;
	};

} // namespace Velmora::UI
