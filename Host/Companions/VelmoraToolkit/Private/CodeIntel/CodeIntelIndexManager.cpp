#include "CodeIntel/CodeIntelIndexManager.h"

#include "Async/Async.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Nothing to compare without an index; the caller still gets its answer where it expects it. */
		void AnswerNothingReconciled(TFunction<void(int32, int32)> Done)
		{
			AsyncTask(ENamedThreads::GameThread, [Done = MoveTemp(Done)]
			{
				if (Done)
				{
					Done(0, 0);
				}
			});
		}
	}

	FCodeIntelIndexManager& FCodeIntelIndexManager::Get()
	{
		static FCodeIntelIndexManager Instance;
		return Instance;
	}

	bool FCodeIntelIndexManager::IsInitialized() const
	{
		return false;
	}

	bool FCodeIntelIndexManager::IsIndexReady() const
	{
		return false;
	}

	bool FCodeIntelIndexManager::IsBuilding() const
	{
		return false;
	}

	FIndexStats FCodeIntelIndexManager::GetIndexStats() const
	{
		return FIndexStats();
	}

	void FCodeIntelIndexManager::RebuildIndex(bool)
	{
	}

	void FCodeIntelIndexManager::CompactIndex()
	{
	}

	bool FCodeIntelIndexManager::IsReindexerRunning() const
	{
		return false;
	}

	int32 FCodeIntelIndexManager::GetReindexerQueueSize() const
	{
		return 0;
	}

	void FCodeIntelIndexManager::ReconcileFileChangesAsync(TFunction<void(int32 Deleted, int32 New)> Done)
	{
		AnswerNothingReconciled(MoveTemp(Done));
	}

	void FCodeIntelIndexManager::InitializeEngineIndex()
	{
	}

	bool FCodeIntelIndexManager::IsEngineIndexInitialized() const
	{
		return false;
	}

	bool FCodeIntelIndexManager::IsEngineIndexReady() const
	{
		return false;
	}

	bool FCodeIntelIndexManager::IsEngineIndexBuilding() const
	{
		return false;
	}

	FIndexStats FCodeIntelIndexManager::GetEngineIndexStats() const
	{
		return FIndexStats();
	}

	void FCodeIntelIndexManager::RebuildEngineIndex(bool)
	{
	}

	void FCodeIntelIndexManager::ClearEngineIndex()
	{
	}

	bool FCodeIntelIndexManager::IsEngineReindexerRunning() const
	{
		return false;
	}

	void FCodeIntelIndexManager::ReconcileEngineFileChangesAsync(TFunction<void(int32 Deleted, int32 New)> Done)
	{
		AnswerNothingReconciled(MoveTemp(Done));
	}
}
