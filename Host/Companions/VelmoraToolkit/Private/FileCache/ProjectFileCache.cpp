#include "FileCache/ProjectFileCache.h"

#include "FileCache/ProjectFileScan.h"

namespace Velmora
{
	FProjectFileCache& FProjectFileCache::Get()
	{
		static FProjectFileCache Instance;
		return Instance;
	}

	FProjectFileCache::FProjectFileCache()
		: Scan(MakeShared<FProjectFileScan>())
	{
	}

	void FProjectFileCache::StartIndexing()
	{
		Scan->RequestOnce();
	}

	void FProjectFileCache::RefreshCache()
	{
		Scan->Request();
	}

	bool FProjectFileCache::IsReady() const
	{
		return Scan->HasCompleted();
	}

	bool FProjectFileCache::IsIndexing() const
	{
		return Scan->IsRunning();
	}

	int32 FProjectFileCache::GetFileCount() const
	{
		return Scan->GetEntries()->Num();
	}

	void FProjectFileCache::GetCachedFiles(TArray<FProjectFileCacheEntry>& Out) const
	{
		Out = *Scan->GetEntries();
	}
}
