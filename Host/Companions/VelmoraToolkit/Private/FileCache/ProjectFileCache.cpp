#include "FileCache/ProjectFileCache.h"

#include "FileCache/ProjectFileMonitor.h"
#include "Host/HostFileNames.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFileCacheControl.h"
#include "Host/ProjectFolder.h"

namespace Velmora
{
	namespace
	{
		constexpr double ShutdownSeconds = 1.0;
	}

	FProjectFileCache& FProjectFileCache::Get()
	{
		static FProjectFileCache Instance;
		return Instance;
	}

	FProjectFileCache::FProjectFileCache()
		: Monitor(MakeShared<FProjectFileMonitor>())
	{
		// What the thread uses must be there before the cache is, so that it goes down after it.
		FHostTasks::GetBackgroundCount();
		GetProjectFolder();
	}

	FProjectFileCache::~FProjectFileCache()
	{
		Monitor->Shutdown(ShutdownSeconds);
	}

	void FProjectFileCache::StartIndexing()
	{
		Monitor->RequestOnce();
	}

	void FProjectFileCache::RefreshCache()
	{
		Monitor->Request();
	}

	bool FProjectFileCache::IsReady() const
	{
		return Monitor->HasCompleted();
	}

	bool FProjectFileCache::IsIndexing() const
	{
		return Monitor->IsRunning();
	}

	int32 FProjectFileCache::GetFileCount() const
	{
		return Monitor->GetCount();
	}

	void FProjectFileCache::GetCachedFiles(TArray<FProjectFileCacheEntry>& Out) const
	{
		Monitor->GetList()->CopyTo(Out);
	}

	void FProjectFileCacheControl::Shutdown()
	{
		FProjectFileCache::Get().Monitor->Shutdown(ShutdownSeconds);
	}

	bool FProjectFileCacheControl::GetSnapshot(const FString& Root, TArray<FProjectFileCacheEntry>& Out)
	{
		const FProjectFileMonitor& Monitor = *FProjectFileCache::Get().Monitor;
		if (!Monitor.HasCompleted() || Monitor.IsRunning())
		{
			return false;
		}
		const std::shared_ptr<const FProjectFileList> List = Monitor.GetListOf(HostFileNameToBytes(Root));
		if (!List)
		{
			return false;
		}
		List->CopyTo(Out);
		return true;
	}
}
