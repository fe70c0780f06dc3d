#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

namespace Velmora::CodeIntel
{
	/** Figures of an index. All zero and empty when there is none. */
	struct FIndexStats
	{
		/** An index exists and can be queried. */
		bool bIsReady = false;
		int32 TotalFiles = 0;
		int32 FailedFiles = 0;
		int32 EstimatedSymbols = 0;

		/** On disk, in megabytes. */
		double IndexSizeMB = 0.0;

		/** Of the last full build. */
		double LastBuildTimeSeconds = 0.0;
		FString RootPath;
	};

	/**
	 * The code intelligence indexes: one of the project, one of the engine source. Any thread; status queries never wait for
	 * what runs.
	 *
	 * The program starts and ends the manager (Host/CodeIndexControl.h). Outside of that time it reports that it is not
	 * initialised, and every command returns at once with nothing done. A build that fails leaves the last good index in use,
	 * so that a ready index alone does not tell that it succeeded.
	 */
	class VELMORATOOLKIT_API FCodeIntelIndexManager
	{
	public:
		static FCodeIntelIndexManager& Get();

		/** The manager has started. */
		bool IsInitialized() const;

		bool IsIndexReady() const;
		bool IsBuilding() const;
		FIndexStats GetIndexStats() const;

		/** Builds the project index and returns when it is done. @param bForce  Also when the index is up to date. */
		void RebuildIndex(bool bForce);

		/** Makes the project index as small as it can be and returns when it is done. */
		void CompactIndex();

		/** The part that keeps the project index up to date is running. */
		bool IsReindexerRunning() const;

		/** Files that wait to be indexed again. */
		int32 GetReindexerQueueSize() const;

		/**
		 * Compares the index with the disk in the background.
		 *
		 * @param Done  Called once on the game thread with the files found deleted and those newly queued. Both are
		 *              zero while there is no index.
		 */
		void ReconcileFileChangesAsync(TFunction<void(int32 Deleted, int32 New)> Done);

		/** Creates the engine index object on first use. */
		void InitializeEngineIndex();
		bool IsEngineIndexInitialized() const;
		bool IsEngineIndexReady() const;
		bool IsEngineIndexBuilding() const;
		FIndexStats GetEngineIndexStats() const;

		/** As RebuildIndex. */
		void RebuildEngineIndex(bool bForce);

		/** Deletes the engine index. */
		void ClearEngineIndex();
		bool IsEngineReindexerRunning() const;

		/** As ReconcileFileChangesAsync. */
		void ReconcileEngineFileChangesAsync(TFunction<void(int32 Deleted, int32 New)> Done);
	};
}
