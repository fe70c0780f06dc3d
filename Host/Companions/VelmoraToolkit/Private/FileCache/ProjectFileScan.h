#pragma once

#include <atomic>
#include <mutex>

#include "CoreMinimal.h"
#include "FileCache/ProjectFileCache.h"
#include "Templates/SharedPointer.h"

namespace Velmora
{
	/** What cache and scanning thread share. Any thread. */
	class FProjectFileScan : public TSharedFromThis<FProjectFileScan>
	{
	public:
		/** Runs a scan on a thread of its own, or notes that another is wanted while one runs. */
		void Request();

		/** As Request, but only the first time. */
		void RequestOnce();

		bool HasCompleted() const { return bHasCompleted; }
		bool IsRunning() const { return bIsRunning; }

		/** Never null. The array is not changed any more once it can be seen here. */
		TSharedRef<const TArray<FProjectFileCacheEntry>> GetEntries() const;

	private:
		void RunUntilSatisfied();

		mutable std::mutex Mutex;
		TSharedRef<const TArray<FProjectFileCacheEntry>> Entries = MakeShared<TArray<FProjectFileCacheEntry>>();
		bool bIsWanted = false;
		bool bWasRequested = false;
		std::atomic<bool> bIsRunning = false;
		std::atomic<bool> bHasCompleted = false;
	};

	/** What the extension of a file says it is for. Pure. */
	EProjectFileType ClassifyProjectFile(const FString& Path);
}
