#include "FileCache/ProjectFileMonitor.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "Host/HostFileNames.h"
#include "Host/HostSystemErrors.h"
#include "Host/ProjectFolder.h"

DEFINE_LOG_CATEGORY_STATIC(LogProjectFileCache, Log, All);

namespace Velmora
{
	namespace
	{
		using namespace std::chrono_literals;

		/** Changes are taken up when nothing has happened for so long … */
		constexpr auto QuietTime = 40ms;

		/** … or this long after the first of them, so that steady changes are seen, too. */
		constexpr auto LongestDelay = 250ms;

		/** A slow update is followed by a rest, but never by a longer one. */
		constexpr auto LongestRest = 1000ms;

		constexpr auto FollowInterval = 20ms;

		/** How often a project folder that has gone is looked for. */
		constexpr auto ReturnInterval = 500ms;

		/** How often folders without a watch are looked at, at most. */
		constexpr auto CompareInterval = 1000ms;
		constexpr auto DropInterval = 1000ms;
	}

	FProjectFileMonitor::FProjectFileMonitor(const FProjectTreeLimits& InLimits)
		: Limits(InLimits)
		, WakeSignal(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
	{
	}

	void FProjectFileMonitor::Request()
	{
		{
			const std::scoped_lock Lock(Mutex);
			bWasRequested = true;
			if (bIsShuttingDown || bIsAbandoned || !StartThread())
			{
				return;
			}
			bIsWanted = true;
			bIsRunning = true;
			if (!Work)
			{
				Work.emplace();
			}
		}
		Wake();
	}

	void FProjectFileMonitor::RequestOnce()
	{
		{
			const std::scoped_lock Lock(Mutex);
			if (bWasRequested)
			{
				return;
			}
		}
		Request();
	}

	bool FProjectFileMonitor::StartThread()
	{
		if (bHasThread)
		{
			return true;
		}
		// Without it the thread could be asked for nothing. There may have been too many open files when this object was made.
		if (!WakeSignal.IsOpen())
		{
			WakeSignal = FFileDescriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
		}
		if (!WakeSignal.IsOpen())
		{
			UE_LOG(LogProjectFileCache, Error, TEXT("The files of the project are not listed: %s"),
				*HostFileNameFromBytes(HostDescribeSystemError(errno)));
			return false;
		}
		bStop = false;
		auto Self = std::make_unique<TSharedRef<FProjectFileMonitor>>(AsShared());
		if (pthread_create(&Thread, nullptr, &FProjectFileMonitor::RunThread, Self.get()) != 0)
		{
			UE_LOG(LogProjectFileCache, Error, TEXT("No thread could be started, so the files of the project are not listed"));
			return false;
		}
		Self.release();
		bHasThread = true;
		return true;
	}

	void* FProjectFileMonitor::RunThread(void* Self)
	{
		const std::unique_ptr<TSharedRef<FProjectFileMonitor>> Owner(static_cast<TSharedRef<FProjectFileMonitor>*>(Self));
		(*Owner)->Run();
		return nullptr;
	}

	void FProjectFileMonitor::Wake()
	{
		const uint64_t One = 1;
		// A full counter wakes as well.
		HostRetryInterrupted([this, &One] { return write(WakeSignal.Get(), &One, sizeof(One)); });
	}

	void FProjectFileMonitor::Shutdown(double TimeoutSeconds)
	{
		std::unique_lock Lock(Mutex);
		if (!bHasThread || bIsShuttingDown || bIsAbandoned)
		{
			return;
		}
		bIsShuttingDown = true;
		bStop = true;
		Wake();
		const EThreadWait End = Pulse.WaitUntil(Lock, ThreadEnded, TimeoutSeconds, [this] { return bThreadHasEnded; });
		bIsAbandoned = End != EThreadWait::Ended;
		bIsWanted = false;
		bIsRunning = false;
		Work.reset();
		if (bIsAbandoned)
		{
			pthread_detach(Thread);
			UE_LOG(LogProjectFileCache, Warning, TEXT("%s, so the scan of the project is left behind"),
				End == EThreadWait::Silent ? TEXT("The file system does not answer") : TEXT("The file system is too slow"));
		}
		else
		{
			// Past its last use of the lock, so this takes no time.
			pthread_join(Thread, nullptr);
		}
		bHasThread = false;
		bThreadHasEnded = false;
		bIsShuttingDown = false;
	}

	std::shared_ptr<const FProjectFileList> FProjectFileMonitor::GetList() const
	{
		const std::scoped_lock Lock(Mutex);
		return List;
	}

	bool FProjectFileMonitor::TakeRequest()
	{
		const std::scoped_lock Lock(Mutex);
		return std::exchange(bIsWanted, false);
	}

	void FProjectFileMonitor::FinishRequest()
	{
		const std::scoped_lock Lock(Mutex);
		bHasCompleted = true;
		bFollows = false;
		if (!bIsWanted)
		{
			bIsRunning = false;
			Work.reset();
		}
	}

	void FProjectFileMonitor::SetFollowing(bool bInFollowing)
	{
		const std::scoped_lock Lock(Mutex);
		bFollows = bInFollowing;
		if (bFollows && !Work && !bStop)
		{
			Work.emplace();
		}
		else if (!bFollows && !bIsRunning)
		{
			Work.reset();
		}
	}

	void FProjectFileMonitor::Run()
	{
		{
			const std::scoped_lock Lock(Mutex);
			Pulse.Add();
		}
		{
			bFollows = false;
			FProjectTree Tree(Limits, bStop);
			while (!bStop)
			{
				if (TakeRequest())
				{
					Serve(Tree);
				}
				else
				{
					FollowEvents(Tree);
				}
				DropOldLists();
				if (!bStop)
				{
					Wait(Tree);
				}
			}
			OldLists.clear();
		}
		const std::scoped_lock Lock(Mutex);
		Pulse.Remove();
		bThreadHasEnded = true;
		ThreadEnded.notify_all();
	}

	void FProjectFileMonitor::Serve(FProjectTree& Tree)
	{
		const std::string Folder = HostFileNameToBytes(GetProjectFolder());
		if (Folder.empty() && !Tree.IsRootInPlace())
		{
			// The path is kept, so that the project's return is seen.
			Tree.Clear();
		}
		else
		{
			Tree.SetRoot(Folder);
		}
		const FClock::time_point Start = FClock::now();
		Tree.TakeEvents();
		Compare(Tree);
		if (Tree.HasUnwatchedFolders())
		{
			// What was written to files in there is not seen from their folders.
			Tree.NoteGaps();
		}
		if (Tree.Update())
		{
			LastUpdate = FClock::now();
			UpdateCost = LastUpdate - Start;
			ShowChanges(Tree);
			FinishRequest();
		}
	}

	void FProjectFileMonitor::Compare(FProjectTree& Tree)
	{
		const FClock::time_point Start = FClock::now();
		Tree.QueueChanged();
		LastCompare = FClock::now();
		CompareCost = LastCompare - Start;
	}

	void FProjectFileMonitor::FollowRoot(FProjectTree& Tree)
	{
		const std::string Folder = HostFileNameToBytes(GetProjectFolder());
		if (Folder == Tree.GetRoot())
		{
			Tree.SetRoot(Folder);
		}
		else if (Folder.empty())
		{
			Tree.Clear();
		}
		// Another project takes effect with the next request.
	}

	void FProjectFileMonitor::FollowEvents(FProjectTree& Tree)
	{
		const FClock::time_point Now = FClock::now();
		if (!Tree.GetRoot().empty() && !Tree.IsRootInPlace())
		{
			FollowRoot(Tree);
		}
		else if (Tree.HasUnwatchedFolders() && Now >= GetCompareTime())
		{
			Compare(Tree);
		}
		const bool bHasNew = Tree.TakeEvents();
		if (!Tree.HasWork())
		{
			// A project that has gone leaves an empty list and nothing to wait for.
			ShowChanges(Tree);
			if (bFollows)
			{
				SetFollowing(false);
			}
			return;
		}
		if (!bFollows)
		{
			FirstEvent = Now;
			SetFollowing(true);
		}
		LastEvent = bHasNew ? Now : LastEvent;
		if (FClock::now() < GetUpdateTime() || !Tree.Update())
		{
			return;
		}
		LastUpdate = FClock::now();
		UpdateCost = LastUpdate - Now;
		ShowChanges(Tree);
		SetFollowing(false);
	}

	void FProjectFileMonitor::ShowChanges(FProjectTree& Tree)
	{
		if (Tree.TakeListChanged())
		{
			std::shared_ptr<const FProjectFileList> New = Tree.MakeList();
			const std::scoped_lock Lock(Mutex);
			Count = New->Num();
			ListRoot = Tree.GetRoot();
			List.swap(New);
			OldLists.push_back(std::move(New));
		}
		const FProjectFileChanges Changes = Tree.TakeChanges();
		if (Changes.bMayBeMore || Changes.Written.Num() > 0 || Changes.Removed.Num() > 0)
		{
			FProjectFileListeners::Broadcast(Changes);
		}
	}

	std::shared_ptr<const FProjectFileList> FProjectFileMonitor::GetListOf(const std::string& Root) const
	{
		const std::scoped_lock Lock(Mutex);
		return ListRoot == Root ? List : nullptr;
	}

	void FProjectFileMonitor::DropOldLists()
	{
		OldLists.erase(
			std::remove_if(OldLists.begin(), OldLists.end(), [](const auto& Old) { return Old.use_count() == 1; }), OldLists.end());
	}

	FProjectFileMonitor::FClock::time_point FProjectFileMonitor::GetCompareTime() const
	{
		return LastCompare + std::max<FClock::duration>(CompareInterval, 20 * CompareCost);
	}

	FProjectFileMonitor::FClock::time_point FProjectFileMonitor::GetUpdateTime() const
	{
		const FClock::time_point Rested = LastUpdate + std::min<FClock::duration>(3 * UpdateCost, LongestRest);
		return std::max<FClock::time_point>(Rested, std::min<FClock::time_point>(LastEvent + QuietTime, FirstEvent + LongestDelay));
	}

	int FProjectFileMonitor::GetTimeout(const FProjectTree& Tree) const
	{
		const FClock::time_point Now = FClock::now();
		FClock::time_point Until = OldLists.empty() ? FClock::time_point::max() : Now + DropInterval;
		if (bFollows)
		{
			Until = std::min<FClock::time_point>(GetUpdateTime(), Now + FollowInterval);
		}
		else if (!Tree.GetRoot().empty() && !Tree.IsRootInPlace())
		{
			Until = std::min<FClock::time_point>(Until, Now + ReturnInterval);
		}
		else if (Tree.HasUnwatchedFolders())
		{
			Until = std::min(Until, GetCompareTime());
		}
		if (Until == FClock::time_point::max())
		{
			return -1;
		}
		return static_cast<int>(
			std::clamp<int64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(Until - Now + 999us).count(), 0, 60000));
	}

	void FProjectFileMonitor::Wait(const FProjectTree& Tree)
	{
		// While changes are awaited the watch is asked now and then: a flood of them shall not wake the thread for each.
		pollfd Descriptors[] = { { WakeSignal.Get(), POLLIN, 0 }, { bFollows ? -1 : Tree.GetWatchDescriptor(), POLLIN, 0 } };
		if (poll(Descriptors, std::size(Descriptors), GetTimeout(Tree)) > 0 && Descriptors[0].revents != 0)
		{
			uint64_t Ignored = 0;
			HostRetryInterrupted([this, &Ignored] { return read(WakeSignal.Get(), &Ignored, sizeof(Ignored)); });
		}
	}
}
