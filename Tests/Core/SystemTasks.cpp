#include "Async/Async.h"
#include "HAL/PlatformProcess.h"
#include "Host/HostLog.h"
#include "Host/HostBackgroundPause.h"
#include "Host/HostTasks.h"
#include "Logging/LogMacros.h"
#include "Misc/Paths.h"
#include "Misc/Timespan.h"
#include "Support/Base/Printers.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <set>
#include <mutex>
#include <string>
#include <future>
#include <optional>
#include <thread>
#include <unistd.h>

DEFINE_LOG_CATEGORY_STATIC(LogSystemTasks, Log, All);

namespace
{
	/** Leaves no task behind for the next test. */
	class SystemTasks : public ::testing::Test
	{
	protected:
		void SetUp() override { FHostTasks::SetGameThread(); }
		void TearDown() override
		{
			FHostTasks::SetWakeHook(nullptr);
			FHostTasks::Shutdown();
		}
	};

	/** Goes down after everything that the program has made since its start, like a thread that was left behind on a dead disk. */
	struct FLeftBehind
	{
		~FLeftBehind()
		{
			for (int32 Count = 0; bArmed && Count < 5000; ++Count)
			{
				UE_LOG(LogSystemTasks, Log, TEXT("line %d of a thread that nobody waits for"), Count);
				AsyncTask(ENamedThreads::GameThread, [Folder = FPaths::ConvertRelativePathToFull(TEXT("x"))] {});
			}
			if (bArmed &&
				(!FHostTasks::HasPending() ||
					Utf8(FHostLog::GetRecentLines().Last().Text) != "line 4999 of a thread that nobody waits for"))
			{
				_exit(3);
			}
		}
		bool bArmed = false;
	};

	FLeftBehind LeftBehind;
}

TEST_F(SystemTasks, GameThreadTasksRunInOrder)
{
	std::string Order;
	AsyncTask(ENamedThreads::GameThread,
		[&Order]
		{
			Order += "a";
			AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "d"; });
		});
	AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "b"; });
	EXPECT_TRUE(FHostTasks::HasPending());
	EXPECT_EQ(FHostTasks::RunGameThreadTasks(), 2);
	EXPECT_EQ(Order, "ab") << "what a task queues waits for the next frame";
	EXPECT_EQ(FHostTasks::RunGameThreadTasks(), 1);
	EXPECT_EQ(Order, "abd");
	EXPECT_FALSE(FHostTasks::HasPending());
}

TEST_F(SystemTasks, ANoteIsCalledBeforeTheTaskThatItsThreadQueuesNext)
{
	std::string Order;
	std::atomic<bool> bQueued{ false };
	AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
		[&]
		{
			FHostTasks::BeforeNextTask([&Order] { Order += "n"; });
			while (!bQueued)
			{
				std::this_thread::yield();
			}
			AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "b"; });
			AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "c"; });
			FHostTasks::BeforeNextTask([&Order] { Order += "x"; });
		});
	AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "a"; });
	bQueued = true;
	ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
	// Whatever thread this one gets, the note that was not used is gone.
	for (int32 Count = 0; Count < 16; ++Count)
	{
		AsyncTask(
			ENamedThreads::AnyBackgroundThreadNormalTask, [&Order] { AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "."; }); });
	}
	ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
	FHostTasks::RunGameThreadTasks();
	EXPECT_EQ(Order, "anbc................");
}

TEST_F(SystemTasks, AModalLoopGoesOnWithTheQueue)
{
	std::string Order;
	AsyncTask(ENamedThreads::GameThread,
		[&Order]
		{
			Order += "(";
			FHostTasks::RunGameThreadTasks();
			Order += ")";
		});
	AsyncTask(ENamedThreads::GameThread, [&Order] { Order += "b"; });
	EXPECT_EQ(FHostTasks::RunGameThreadTasks(), 1);
	EXPECT_EQ(Order, "(b)");
}

TEST_F(SystemTasks, ResultsComeBack)
{
	EXPECT_TRUE(IsInGameThread());
	TFuture<bool> Inside = Async(EAsyncExecution::Thread, [] { return IsInGameThread(); });
	EXPECT_FALSE(Inside.Get());
	auto Owned = std::make_unique<int>(7);
	std::atomic<bool> bCompleted{ false };
	TFuture<std::unique_ptr<int>> Future = Async(
		EAsyncExecution::ThreadPool, [Owned = std::move(Owned)]() mutable { return std::move(Owned); },
		[&bCompleted] { bCompleted = true; });
	EXPECT_EQ(*Future.Consume(), 7) << "what only moves can go there and back";
	EXPECT_FALSE(Future.IsValid());
	EXPECT_TRUE(FHostTasks::WaitForBackground(10.0));
	EXPECT_TRUE(bCompleted);

	TFuture<void> OnGameThread = Async(EAsyncExecution::TaskGraphMainThread, [] {});
	EXPECT_FALSE(OnGameThread.WaitFor(FTimespan::FromSeconds(0.001)));
	FHostTasks::RunGameThreadTasks();
	EXPECT_TRUE(OnGameThread.IsReady());
	OnGameThread.Get();

	TPromise<FString> Promise;
	TFuture<FString> Promised = Promise.GetFuture();
	EXPECT_FALSE(Promised.IsReady());
	Promise.SetValue(TEXT("kept"));
	EXPECT_EQ(Utf8(Promised.Get()), "kept");
}

TEST_F(SystemTasks, ManyTasksOnFewThreads)
{
	std::mutex Mutex;
	std::set<std::thread::id> Threads;
	std::atomic<int> Count{ 0 };
	for (int32 Index = 0; Index < 2000; ++Index)
	{
		AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
			[&]
			{
				const std::lock_guard<std::mutex> Lock(Mutex);
				Threads.insert(std::this_thread::get_id());
				++Count;
			});
	}
	EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
	EXPECT_EQ(Count, 2000);
	EXPECT_LE(Threads.size(), 8u);
	EXPECT_EQ(FHostTasks::GetBackgroundCount(), 0);
}

TEST_F(SystemTasks, WakesTheLoopFromAnyThread)
{
	std::atomic<int> Wakes{ 0 };
	FHostTasks::SetWakeHook([&Wakes] { ++Wakes; });
	AsyncTask(ENamedThreads::GameThread, [] {});
	Async(EAsyncExecution::Thread, [] { AsyncTask(ENamedThreads::GameThread, [] {}); }).Wait();
	EXPECT_EQ(Wakes, 2);
}

TEST_F(SystemTasks, WorkOnAThreadOfSomebodyElseIsWaitedForToo)
{
	auto Work = std::make_unique<FHostBackgroundWork>();
	EXPECT_EQ(FHostTasks::GetBackgroundCount(), 1);
	EXPECT_FALSE(FHostTasks::WaitForBackground(0.01));
	std::thread Ender([&Work] { Work.reset(); });
	EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
	Ender.join();
}

TEST_F(SystemTasks, WorkThatWaitsForSomebodyIsNotWaitedFor)
{
	std::promise<void> Answer;
	std::optional<FHostBackgroundPause> Pause;
	std::promise<void> IsAsking;
	const auto Work = Async(EAsyncExecution::Thread,
		[&]
		{
			Pause.emplace();
			IsAsking.set_value();
			Answer.get_future().wait();
		});
	IsAsking.get_future().wait();
	EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
	// Who answers ends the pause, so that the work counts before it runs.
	Pause.reset();
	EXPECT_FALSE(FHostTasks::WaitForBackground(0.01));
	Answer.set_value();
	EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
}

TEST_F(SystemTasks, WaitingHasALimitAndShutdownFinishesWhatWasBegun)
{
	std::atomic<bool> bDone{ false };
	Async(EAsyncExecution::Thread,
		[&bDone]
		{
			FPlatformProcess::Sleep(0.1f);
			bDone = true;
		});
	EXPECT_FALSE(FHostTasks::WaitForBackground(0.01));
	const auto Held = std::make_shared<int>(0);
	AsyncTask(ENamedThreads::GameThread, [Held] {});
	FHostTasks::Shutdown();
	EXPECT_TRUE(bDone);
	EXPECT_EQ(Held.use_count(), 1) << "what was left for the game thread is let go";
	EXPECT_EQ(Async(EAsyncExecution::TaskGraph, [] { return 5; }).Get(), 5) << "a later task starts threads again";
}

TEST_F(SystemTasks, WhoIsLeftBehindMayLogAndPostWhileTheProcessGoesDown)
{
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	EXPECT_EXIT(
		{
			UE_LOG(LogSystemTasks, Log, TEXT("from here on there is a log"));
			AsyncTask(ENamedThreads::GameThread, [] {});
			FHostTasks::RunGameThreadTasks();
			LeftBehind.bArmed = true;
			std::exit(0);
		},
		::testing::ExitedWithCode(0), "");
}
