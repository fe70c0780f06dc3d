#include "CodeIntel/CodeIntelIndexManager.h"

#include "Async/Async.h"
#include "CodeIntel/CodeIndexes.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		void ReconcileIndex(const std::shared_ptr<FCodeIndex>& Index, TFunction<void(int32, int32)> Done)
		{
			if (Index)
			{
				Index->Reconcile(MoveTemp(Done));
				return;
			}
			// Nothing to compare without an index; the caller still gets its answer where it expects it.
			AsyncTask(ENamedThreads::GameThread,
				[Done = MoveTemp(Done)]
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
		return FCodeIndexes::GetProject() != nullptr;
	}

	bool FCodeIntelIndexManager::IsIndexReady() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject();
		return Index && Index->IsReady();
	}

	bool FCodeIntelIndexManager::IsBuilding() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject();
		return Index && Index->IsBuilding();
	}

	FIndexStats FCodeIntelIndexManager::GetIndexStats() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject();
		return Index ? Index->GetStats() : FIndexStats();
	}

	void FCodeIntelIndexManager::RebuildIndex(bool bForce)
	{
		if (const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject())
		{
			Index->Rebuild(bForce);
		}
	}

	void FCodeIntelIndexManager::CompactIndex()
	{
		if (const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject())
		{
			Index->Compact();
		}
	}

	bool FCodeIntelIndexManager::IsReindexerRunning() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject();
		return Index && Index->IsReindexerRunning();
	}

	int32 FCodeIntelIndexManager::GetReindexerQueueSize() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetProject();
		return Index ? Index->GetQueueSize() : 0;
	}

	void FCodeIntelIndexManager::ReconcileFileChangesAsync(TFunction<void(int32 Deleted, int32 New)> Done)
	{
		ReconcileIndex(FCodeIndexes::GetProject(), MoveTemp(Done));
	}

	void FCodeIntelIndexManager::InitializeEngineIndex()
	{
		FCodeIndexes::MakeEngine();
	}

	bool FCodeIntelIndexManager::IsEngineIndexInitialized() const
	{
		return FCodeIndexes::GetEngine() != nullptr;
	}

	bool FCodeIntelIndexManager::IsEngineIndexReady() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetEngine();
		return Index && Index->IsReady();
	}

	bool FCodeIntelIndexManager::IsEngineIndexBuilding() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetEngine();
		return Index && Index->IsBuilding();
	}

	FIndexStats FCodeIntelIndexManager::GetEngineIndexStats() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetEngine();
		return Index ? Index->GetStats() : FIndexStats();
	}

	void FCodeIntelIndexManager::RebuildEngineIndex(bool bForce)
	{
		if (const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetEngine())
		{
			Index->Rebuild(bForce);
		}
	}

	void FCodeIntelIndexManager::ClearEngineIndex()
	{
		if (const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetEngine())
		{
			Index->Clear();
		}
	}

	bool FCodeIntelIndexManager::IsEngineReindexerRunning() const
	{
		const std::shared_ptr<FCodeIndex> Index = FCodeIndexes::GetEngine();
		return Index && Index->IsReindexerRunning();
	}

	void FCodeIntelIndexManager::ReconcileEngineFileChangesAsync(TFunction<void(int32 Deleted, int32 New)> Done)
	{
		ReconcileIndex(FCodeIndexes::GetEngine(), MoveTemp(Done));
	}
}
