#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <pthread.h>

#include "CoreMinimal.h"
#include "FileCache/ProjectTree.h"
#include "Host/HostTasks.h"
#include "Templates/SharedPointer.h"
#include "Threads/ThreadPulse.h"

namespace Velmora
{
	/** The thread that scans and watches the project folder, and what it hands out. Any thread. */
	class FProjectFileMonitor : public TSharedFromThis<FProjectFileMonitor>
	{
	public:
		explicit FProjectFileMonitor(const FProjectTreeLimits& InLimits = FProjectTreeLimits());

		/** Asks for a scan, of which the first starts the thread. */
		void Request();

		/** As Request, but only the first time. */
		void RequestOnce();

		/**
		 * Ends the thread. A later request starts another, unless the thread was left behind with what it uses: one that stands
		 * still for the whole time, or is at work for FThreadPulse::SlowFactor times as long.
		 */
		void Shutdown(double TimeoutSeconds);

		bool HasCompleted() const { return bHasCompleted; }
		bool IsRunning() const { return bIsRunning; }
		int32 GetCount() const { return Count; }

		/** Never null. */
		std::shared_ptr<const FProjectFileList> GetList() const;

		/** Null when the list is that of another project folder. */
		std::shared_ptr<const FProjectFileList> GetListOf(const std::string& Root) const;

	private:
		using FClock = std::chrono::steady_clock;

		static void* RunThread(void* Self);
		bool StartThread();
		void Run();
		void Wake();

		// The thread's own.
		void Serve(FProjectTree& Tree);
		void FollowRoot(FProjectTree& Tree);
		void FollowEvents(FProjectTree& Tree);
		void Compare(FProjectTree& Tree);
		FClock::time_point GetCompareTime() const;
		FClock::time_point GetUpdateTime() const;
		void ShowChanges(FProjectTree& Tree);
		void DropOldLists();
		void Wait(const FProjectTree& Tree);
		int GetTimeout(const FProjectTree& Tree) const;
		bool TakeRequest();
		void FinishRequest();
		void SetFollowing(bool bInFollowing);

		const FProjectTreeLimits Limits;

		/** Wakes the thread out of its wait. */
		FFileDescriptor WakeSignal;

		mutable std::mutex Mutex;
		std::condition_variable ThreadEnded;
		FThreadPulse Pulse;
		std::shared_ptr<const FProjectFileList> List = std::make_shared<const FProjectFileList>();

		/** The project folder that the list is of. */
		std::string ListRoot;

		/** While a scan is wanted or runs, or changes have been seen that are not in the list yet. */
		std::optional<FHostBackgroundWork> Work;
		pthread_t Thread{};
		bool bHasThread = false;
		bool bThreadHasEnded = false;
		bool bIsShuttingDown = false;
		bool bIsAbandoned = false;
		bool bIsWanted = false;
		bool bWasRequested = false;
		std::atomic<bool> bStop = false;
		std::atomic<bool> bIsRunning = false;
		std::atomic<bool> bHasCompleted = false;
		std::atomic<int32> Count = 0;

		// The thread's own.
		/** Changes have been seen that are not in the list yet. */
		bool bFollows = false;

		/** Lists that somebody may still be reading: who drops the last reference pays for it, and that shall be the thread. */
		std::vector<std::shared_ptr<const FProjectFileList>> OldLists;
		FClock::time_point FirstEvent;
		FClock::time_point LastEvent;
		FClock::time_point LastUpdate;
		FClock::time_point LastCompare;
		FClock::duration UpdateCost{};
		FClock::duration CompareCost{};
	};
}
