#include "Async/Async.h"

#include "Containers/UnrealString.h"
#include "Host/HostBackgroundPause.h"
#include "Host/HostTasks.h"
#include "Logging/LogMacros.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

// Work off the game thread and back to it.
//
// Plain pthreads and not std::thread: starting one may fail when the system has no more, and that is no reason to end
// the program. Work that finds no thread waits for the pool; when there is no pool either it runs in place, late but not
// lost.
//
// Nothing is ever run or destroyed under a lock. What a task holds may be the last owner of something whose destructor
// queues another task.

DEFINE_LOG_CATEGORY_STATIC(LogHostTasks, Log, All);

namespace
{
	using FTask = TUniqueFunction<void()>;

	std::atomic<std::thread::id> GameThreadId{ std::thread::id() };
	thread_local bool bBackgroundThread = false;

	/** What is to be called before the task that this thread queues next. */
	thread_local TFunction<void()> NextTaskNote;

	FTask TakeNote(FTask&& Task)
	{
		TFunction<void()> Note = static_cast<TFunction<void()>&&>(NextTaskNote);
		NextTaskNote.Reset();
		return [Note = static_cast<TFunction<void()>&&>(Note), Task = static_cast<FTask&&>(Task)]
		{
			Note();
			Task();
		};
	}

	/** Tasks for the game thread, in the order in which they came. */
	class FGameThreadQueue
	{
	public:
		void Add(FTask&& Plain)
		{
			FTask Task = NextTaskNote ? TakeNote(static_cast<FTask&&>(Plain)) : static_cast<FTask&&>(Plain);
			std::shared_ptr<const TFunction<void()>> Hook;
			{
				const std::lock_guard<std::mutex> Lock(Mutex);
				Queue.emplace_back(NextNumber++, static_cast<FTask&&>(Task));
				Hook = WakeHook;
			}
			if (Hook && *Hook)
			{
				(*Hook)();
			}
		}

		// Runs what was there at the beginning. A task that queues another one is not followed by it in the same run,
		// else two tasks that queue each other would keep the frame for ever.
		int32 Run()
		{
			uint64 End = 0;
			{
				const std::lock_guard<std::mutex> Lock(Mutex);
				End = NextNumber;
			}
			int32 Count = 0;
			for (;; ++Count)
			{
				if (MaxPerRun > 0 && Count >= MaxPerRun)
				{
					return Count;
				}
				FTask Task;
				{
					const std::lock_guard<std::mutex> Lock(Mutex);
					if (Queue.empty() || Queue.front().first >= End)
					{
						return Count;
					}
					Task = static_cast<FTask&&>(Queue.front().second);
					Queue.pop_front();
				}
				Task();
			}
		}

		void SetMaxPerRun(int32 Count) { MaxPerRun = Count; }

		bool HasPending()
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			return !Queue.empty();
		}

		void Drop()
		{
			std::deque<std::pair<uint64, FTask>> Gone; // Destroyed outside the lock: what a task holds may queue again.
			const std::lock_guard<std::mutex> Lock(Mutex);
			Gone.swap(Queue);
		}

		void SetWakeHook(TFunction<void()>&& Hook)
		{
			auto Shared = std::make_shared<const TFunction<void()>>(static_cast<TFunction<void()>&&>(Hook));
			const std::lock_guard<std::mutex> Lock(Mutex);
			WakeHook.swap(Shared);
		}

	private:
		std::mutex Mutex;
		std::deque<std::pair<uint64, FTask>> Queue;
		uint64 NextNumber = 0;
		/** Game thread alone. */
		int32 MaxPerRun = 0;
		std::shared_ptr<const TFunction<void()>> WakeHook;
	};

	/** A bounded pool, and threads that were asked for by name. */
	class FBackground
	{
	public:
		~FBackground() { Shutdown(); }

		// Threads are started as work comes in, up to one per processor: a program that never asks has none.
		void AddToPool(FTask&& Task)
		{
			{
				const std::lock_guard<std::mutex> Lock(Mutex);
				Queue.push_back(static_cast<FTask&&>(Task));
				const std::size_t Wanted = std::min<std::size_t>(MaxWorkers(), Running + Queue.size());
				while (Workers.size() < Wanted)
				{
					pthread_t Worker;
					if (pthread_create(&Worker, nullptr, &FBackground::RunWorker, this) != 0)
					{
						break;
					}
					Workers.push_back(Worker);
				}
				if (!Workers.empty())
				{
					Changed.notify_all();
					return;
				}
			}
			// Not one thread to be had: better late than never.
			UE_LOG(LogHostTasks, Warning, TEXT("No background thread could be started; running the task in place"));
			RunOneHere();
		}

		// A task that may block for long gets a thread of its own, so that the pool's few are never all asleep.
		void AddThread(FTask&& Task)
		{
			JoinFinished();
			std::unique_lock<std::mutex> Lock(Mutex);
			FOwnThread& Own = OwnThreads.emplace_back();
			Own.Owner = this;
			Own.Task = static_cast<FTask&&>(Task);
			if (pthread_create(&Own.Thread, nullptr, &FBackground::RunOwn, &Own) != 0)
			{
				FTask Moved = static_cast<FTask&&>(Own.Task);
				OwnThreads.pop_back();
				Lock.unlock();
				AddToPool(static_cast<FTask&&>(Moved));
			}
		}

		int32 GetCount()
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			return CountLocked();
		}

		bool Wait(double Seconds)
		{
			std::unique_lock<std::mutex> Lock(Mutex);
			return Changed.wait_for(
				Lock, std::chrono::duration<double>(std::max(0.0, Seconds)), [this] { return CountLocked() <= PausedCount; });
		}

		/** Work that goes on only when somebody answers. */
		void AddPaused(int32 Difference)
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			PausedCount += Difference;
			Changed.notify_all();
		}

		/** Work that runs elsewhere. */
		void AddForeign(int32 Difference)
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			ForeignCount += Difference;
			Changed.notify_all();
		}

		// Waits for all work, also for what that work queues meanwhile, and then lets the threads go. New work starts
		// new ones.
		void Shutdown()
		{
			if (bBackgroundThread)
			{
				UE_LOG(LogHostTasks, Error, TEXT("A background task cannot shut the background threads down"));
				return;
			}
			std::unique_lock<std::mutex> Lock(Mutex);
			Changed.wait(Lock, [this] { return CountLocked() == 0; });
			bStopping = true;
			std::vector<pthread_t> Joining;
			Joining.swap(Workers);
			Changed.notify_all();
			Lock.unlock();
			for (const pthread_t Worker : Joining)
			{
				pthread_join(Worker, nullptr);
			}
			JoinFinished();
			Lock.lock();
			bStopping = false;
		}

	private:
		struct FOwnThread
		{
			FBackground* Owner = nullptr;
			FTask Task;
			pthread_t Thread{};
			bool bFinished = false;
		};

		// Two at least, so that one slow task does not stop all others on a machine with one processor.
		static std::size_t MaxWorkers() { return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 8); }

		// Waiting, running and foreign work alike: the program may end when nothing is left.
		int32 CountLocked() const
		{
			const auto IsRunning = [](const FOwnThread& Own) { return !Own.bFinished; };
			return ForeignCount + int32(Queue.size() + Running) + int32(std::count_if(OwnThreads.begin(), OwnThreads.end(), IsRunning));
		}

		static void* RunWorker(void* Self)
		{
			bBackgroundThread = true;
			static_cast<FBackground*>(Self)->Work();
			return nullptr;
		}

		static void* RunOwn(void* Argument)
		{
			bBackgroundThread = true;
			FOwnThread& Own = *static_cast<FOwnThread*>(Argument);
			{
				const FTask Task = static_cast<FTask&&>(Own.Task);
				Task();
			}
			FBackground& Owner = *Own.Owner;
			const std::lock_guard<std::mutex> Lock(Owner.Mutex);
			Own.bFinished = true;
			Owner.Changed.notify_all();
			return nullptr;
		}

		void Work()
		{
			std::unique_lock<std::mutex> Lock(Mutex);
			for (;;)
			{
				Changed.wait(Lock, [this] { return bStopping || !Queue.empty(); });
				if (Queue.empty())
				{
					return;
				}
				RunFront(Lock);
			}
		}

		void RunOneHere()
		{
			std::unique_lock<std::mutex> Lock(Mutex);
			if (!Queue.empty())
			{
				RunFront(Lock);
			}
		}

		void RunFront(std::unique_lock<std::mutex>& Lock)
		{
			{
				const FTask Task = static_cast<FTask&&>(Queue.front());
				Queue.pop_front();
				++Running;
				Lock.unlock();
				Task();
				NextTaskNote.Reset();
				// What the task holds is destroyed here, outside the lock.
			}
			Lock.lock();
			--Running;
			Changed.notify_all();
		}

		// A thread that has finished still holds memory until it is joined. Taken out of the list under the lock and
		// joined outside.
		void JoinFinished()
		{
			std::list<FOwnThread> Finished;
			{
				const std::lock_guard<std::mutex> Lock(Mutex);
				for (auto Position = OwnThreads.begin(); Position != OwnThreads.end();)
				{
					const auto Next = std::next(Position);
					if (Position->bFinished)
					{
						Finished.splice(Finished.end(), OwnThreads, Position);
					}
					Position = Next;
				}
			}
			for (const FOwnThread& Own : Finished)
			{
				pthread_join(Own.Thread, nullptr);
			}
		}

		std::mutex Mutex;
		std::condition_variable Changed;
		std::deque<FTask> Queue;
		std::vector<pthread_t> Workers;
		std::list<FOwnThread> OwnThreads;
		std::size_t Running = 0;
		int32 ForeignCount = 0;
		int32 PausedCount = 0;
		bool bStopping = false;
	};

	FGameThreadQueue& GetGameThreadQueue()
	{
		// Never destroyed: a thread that was left behind on a dead disk may still post while the process goes down.
		static FGameThreadQueue* const Queue = std::make_unique<FGameThreadQueue>().release();
		return *Queue;
	}

	FBackground& GetBackground()
	{
		static FBackground Background;
		return Background;
	}
}

// Before anybody has said which thread it is, it is the process's first one.
bool IsInGameThread()
{
	const std::thread::id Id = GameThreadId.load(std::memory_order_relaxed);
	return Id != std::thread::id() ? Id == std::this_thread::get_id() : syscall(SYS_gettid) == getpid();
}

void HostAsyncPrivate::Run(EAsyncExecution Execution, TUniqueFunction<void()> Task)
{
	switch (Execution)
	{
	case EAsyncExecution::TaskGraphMainThread:
		GetGameThreadQueue().Add(static_cast<FTask&&>(Task));
		return;
	case EAsyncExecution::Thread:
	case EAsyncExecution::ThreadIfForkSafe:
		GetBackground().AddThread(static_cast<FTask&&>(Task));
		return;
	case EAsyncExecution::TaskGraph:
	case EAsyncExecution::ThreadPool:
	case EAsyncExecution::LargeThreadPool:
		GetBackground().AddToPool(static_cast<FTask&&>(Task));
		return;
	}
}

void AsyncTask(ENamedThreads::Type Thread, TUniqueFunction<void()> Task)
{
	HostAsyncPrivate::Run(Thread == ENamedThreads::GameThread ? EAsyncExecution::TaskGraphMainThread : EAsyncExecution::TaskGraph,
		static_cast<FTask&&>(Task));
}

void FHostTasks::SetGameThread()
{
	GameThreadId.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

int32 FHostTasks::RunGameThreadTasks()
{
	return GetGameThreadQueue().Run();
}

void FHostTasks::SetMaxTasksPerRun(int32 Count)
{
	GetGameThreadQueue().SetMaxPerRun(Count);
}

bool FHostTasks::HasPending()
{
	return GetGameThreadQueue().HasPending();
}

void FHostTasks::BeforeNextTask(TFunction<void()> Note)
{
	NextTaskNote = static_cast<TFunction<void()>&&>(Note);
}

void FHostTasks::SetWakeHook(TFunction<void()> Hook)
{
	GetGameThreadQueue().SetWakeHook(static_cast<TFunction<void()>&&>(Hook));
}

bool FHostTasks::WaitForBackground(double TimeoutSeconds)
{
	return GetBackground().Wait(TimeoutSeconds);
}

int32 FHostTasks::GetBackgroundCount()
{
	return GetBackground().GetCount();
}

void FHostTasks::Shutdown()
{
	GetBackground().Shutdown();
	GetGameThreadQueue().Drop();
}

FHostBackgroundWork::FHostBackgroundWork()
{
	GetBackground().AddForeign(1);
}

FHostBackgroundWork::~FHostBackgroundWork()
{
	GetBackground().AddForeign(-1);
}

FHostBackgroundPause::FHostBackgroundPause()
{
	GetBackground().AddPaused(1);
}

FHostBackgroundPause::~FHostBackgroundPause()
{
	GetBackground().AddPaused(-1);
}
