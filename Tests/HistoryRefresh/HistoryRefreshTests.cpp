#include "Host/HostTasks.h"
#include "Support/Base/TempFolder.h"
#include "Support/TestAgent.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/SChatWindow.h"
#include "Widgets/VelmoraWidgetTest.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>

namespace
{

	std::atomic<int32> DeathCount{ 0 };
	std::atomic<int32> StrayDeathCount{ 0 };

	/** Tells where it dies. */
	class SMortalChatWindow : public SChatWindow
	{
	public:
		~SMortalChatWindow() override
		{
			++DeathCount;
			StrayDeathCount += IsInGameThread() ? 0 : 1;
		}
	};

	int32 GetNumberOfCycles()
	{
		const char* const Given = std::getenv("VELMORA_HISTORY_CYCLES");
		const int32 Count = Given ? std::atoi(Given) : 0;
		return Count > 0 ? Count : 2000;
	}

	unsigned GetSeed()
	{
		const char* const Given = std::getenv("VELMORA_HISTORY_SEED");
		return Given ? static_cast<unsigned>(std::strtoul(Given, nullptr, 10)) : std::random_device()();
	}

	/** Gives workers time, down to the moment in which they hold a window. */
	void Dawdle(std::mt19937& Random)
	{
		const auto End = std::chrono::steady_clock::now() + std::chrono::microseconds(Random() % 150);
		while (std::chrono::steady_clock::now() < End)
		{
			std::this_thread::yield();
		}
	}

} // namespace

/** Windows that come and go while their workers read the store. To be run under the thread sanitizer. */
class FHistoryRefreshTest : public FVelmoraWidgetTest
{
protected:
	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		Agent = MakeShared<FTestAgent>();
		ViewModel = MakeShared<FChatViewModel>();
		ASSERT_TRUE(ViewModel->Initialize(Agent));
	}

	void TearDown() override
	{
		FHostTasks::WaitForBackground(60.0);
		FHostTasks::RunGameThreadTasks();
		FVelmoraWidgetTest::TearDown();
	}

	TSharedPtr<SMortalChatWindow> OpenWindow()
	{
		const TSharedPtr<SMortalChatWindow> Window = SNew(SMortalChatWindow);
		Window->SetConversationHistorySaveDirForTests(EmptyStore.At());
		Window->SetViewModel(ViewModel);
		return Window;
	}

	/** False when the refreshes do not come to an end. */
	static bool RunUntilIdle(const SChatWindow& Window)
	{
		const auto Limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
		while (Window.IsConversationHistoryRefreshInFlightForTests())
		{
			FHostTasks::RunGameThreadTasks();
			std::this_thread::yield();
			if (std::chrono::steady_clock::now() > Limit)
			{
				return false;
			}
		}
		return true;
	}

	FTempFolder EmptyStore;
	TSharedPtr<FTestAgent> Agent;
	TSharedPtr<FChatViewModel> ViewModel;
};

TEST_F(FHistoryRefreshTest, NoRefreshIsLostAndNoWindowDiesElsewhere)
{
	const unsigned Seed = GetSeed();
	const int32 CycleCount = GetNumberOfCycles();
	RecordProperty("seed", std::to_string(Seed));
	SCOPED_TRACE("VELMORA_HISTORY_SEED=" + std::to_string(Seed));
	std::mt19937 Random(Seed);
	DeathCount = 0;
	StrayDeathCount = 0;
	for (int32 Cycle = 0; Cycle < CycleCount; ++Cycle)
	{
		TSharedPtr<SMortalChatWindow> Window = OpenWindow();
		for (int32 Step = Random() % 4; Step > 0; --Step)
		{
			Dawdle(Random);
			if (Random() % 2)
			{
				FHostTasks::RunGameThreadTasks();
			}
			Window->RequestConversationHistoryRefreshForTests();
		}
		if (Cycle % 4 == 0)
		{
			// The list that is there in the end was made after the last request, for only since then there is something to list.
			Agent->HoldConversation(TEXT("new"));
			const uint64 IdBefore = Window->GetConversationHistoryRefreshRequestIdForTests();
			Window->RequestConversationHistoryRefreshForTests();
			ASSERT_TRUE(RunUntilIdle(*Window));
			ASSERT_GT(Window->GetConversationHistoryRefreshRequestIdForTests(), IdBefore);
			ASSERT_FALSE(Window->IsConversationHistoryRefreshQueuedForTests());
			ASSERT_EQ(Window->GetConversationDropdownOptionCountForTests(), 1);
			Agent->Metadata.Reset();
		}
		else
		{
			Dawdle(Random);
		}
		Window.Reset();
		if (Random() % 8 == 0)
		{
			FHostTasks::RunGameThreadTasks();
		}
	}
	ASSERT_TRUE(FHostTasks::WaitForBackground(60.0));
	FHostTasks::RunGameThreadTasks();
	EXPECT_EQ(DeathCount.load(), CycleCount);
	EXPECT_EQ(StrayDeathCount.load(), 0) << "a window died on a worker";
}
