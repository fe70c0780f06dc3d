#include "FileCache/ProjectFileCache.h"

#include "FileCache/ProjectFileMonitor.h"
#include "Host/HostFileNames.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFileCacheControl.h"
#include "Host/ProjectFolder.h"

#include <mutex>

namespace Velmora
{
	namespace
	{
		constexpr double ShutdownSeconds = 1.0;

		struct FSeamSlot
		{
			std::mutex Mutex;
			std::shared_ptr<IProjectFileSeam> Seam;
		};

		FSeamSlot& GetSeamSlot()
		{
			static FSeamSlot Slot;
			return Slot;
		}

		std::shared_ptr<IProjectFileSeam> GetSeam()
		{
			FSeamSlot& Slot = GetSeamSlot();
			const std::lock_guard<std::mutex> Lock(Slot.Mutex);
			return Slot.Seam;
		}

		struct FCacheStatus
		{
			bool bReady = false;
			bool bIndexing = false;
			int32 Count = 0;
		};

		FCacheStatus ReadStatus(const FProjectFileMonitor& Monitor)
		{
			FCacheStatus Status;
			Status.bReady = Monitor.HasCompleted();
			Status.bIndexing = Monitor.IsRunning();
			Status.Count = Monitor.GetCount();
			if (const std::shared_ptr<IProjectFileSeam> Seam = GetSeam())
			{
				Seam->GetStatus(Status.bReady, Status.bIndexing, Status.Count);
			}
			return Status;
		}
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
		if (const std::shared_ptr<IProjectFileSeam> Seam = GetSeam(); !Seam || Seam->MayScan())
		{
			Monitor->RequestOnce();
		}
	}

	void FProjectFileCache::RefreshCache()
	{
		if (const std::shared_ptr<IProjectFileSeam> Seam = GetSeam(); !Seam || Seam->MayScan())
		{
			Monitor->Request();
		}
	}

	bool FProjectFileCache::IsReady() const
	{
		return ReadStatus(*Monitor).bReady;
	}

	bool FProjectFileCache::IsIndexing() const
	{
		return ReadStatus(*Monitor).bIndexing;
	}

	int32 FProjectFileCache::GetFileCount() const
	{
		return ReadStatus(*Monitor).Count;
	}

	void FProjectFileCache::GetCachedFiles(TArray<FProjectFileCacheEntry>& Out) const
	{
		Monitor->GetList()->CopyTo(Out);
		if (const std::shared_ptr<IProjectFileSeam> Seam = GetSeam())
		{
			Seam->GetFiles(Out);
		}
	}

	void FProjectFileCacheControl::SetSeam(std::shared_ptr<IProjectFileSeam> Seam)
	{
		FSeamSlot& Slot = GetSeamSlot();
		// The former one is let go of outside the lock.
		const std::lock_guard<std::mutex> Lock(Slot.Mutex);
		Slot.Seam.swap(Seam);
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
