#include "Support/UiDriver.h"

#include "Async/Async.h"
#include "Host/HostClock.h"
#include "Host/HostDialogs.h"
#include "Host/HostProgress.h"
#include "Widgets/Layout/SBox.h"

#include <atomic>
#include <future>

/** Work that ends when the window has done what it should. */
class FProgressWindowTest : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostDialogs::Install();
		Show(SNew(SBox).Tag(TEXT("Below")));
		// In simulated time nothing is shown.
		FHostClock::UseRealTime();
	}
	void TearDown() override
	{
		App().SetFrameHook(nullptr);
		FHostDialogs::Uninstall();
		FWidgetTest::TearDown();
	}

	/** Runs a step before each turn until one says that the work is over, and waits for it meanwhile. */
	void WaitWith(const std::function<bool(int32 Turn)>& Step)
	{
		std::promise<void> Promise;
		std::future<void> Done = Promise.get_future();
		int32 Turn = 0;
		App().SetFrameHook(
			[&]()
			{
				if (Turn >= 0 && Step(++Turn))
				{
					Promise.set_value();
					Turn = -1;
				}
			});
		FHostLongWork Work;
		Work.GetMessage = [this]() { return FText::FromString(FString::FromInt(Files) + TEXT(" files")); };
		Work.GetFraction = [this]() { return Files / 400.0f; };
		Work.WaitForEnd = [&Done](double Seconds)
		{ return Done.wait_for(std::chrono::duration<double>(Seconds)) == std::future_status::ready; };
		FHostProgress::WaitFor(Work);
		App().SetFrameHook(nullptr);
	}

	int32 Files = 0;
};

TEST_F(FProgressWindowTest, FramesGoOnAndShowHowFarItIs)
{
	const uint64 FramesBefore = App().GetFrameStats().PaintedFrames;
	std::vector<std::string> Seen;
	WaitWith(
		[&](int32 Turn)
		{
			EXPECT_TRUE(FHostProgress::IsShown());
			EXPECT_TRUE(App().GetActiveModalWindow().IsValid()) << "the rest is out of reach";
			if (Turn > 1)
			{
				for (const std::string& Text : VisibleTexts())
				{
					Seen.push_back(Text);
				}
			}
			Files += 100;
			return Files == 400;
		});
	EXPECT_GE(App().GetFrameStats().PaintedFrames, FramesBefore + 3);
	for (const char* Text : { "Please wait", "100 files", "300 files" })
	{
		EXPECT_NE(std::find(Seen.begin(), Seen.end(), Text), Seen.end()) << Text;
	}
	EXPECT_FALSE(FHostProgress::IsShown());
	EXPECT_FALSE(App().GetActiveModalWindow().IsValid());
}

TEST_F(FProgressWindowTest, NothingButItsEndEndsTheWait)
{
	bool bEnded = false;
	WaitWith(
		[&](int32 Turn)
		{
			if (Turn == 5)
			{
				App().GetMessageHandler().OnKeyDown(EKeys::Escape, FModifierKeysState(), false);
			}
			if (Turn == 10)
			{
				App().GetActiveModalWindow()->RequestDestroyWindow();
			}
			if (Turn == 6 || Turn == 15)
			{
				EXPECT_TRUE(App().GetActiveModalWindow().IsValid()) << Turn;
			}
			bEnded = Turn == 20;
			return bEnded;
		});
	EXPECT_TRUE(bEnded);
}

TEST_F(FProgressWindowTest, WhatIsOverSoonAndSimulatedTimeShowNothing)
{
	const uint64 TurnsBefore = App().GetFrameStats().TurnCount;
	FHostLongWork Work;
	Work.GetMessage = [] { return FText::GetEmpty(); };
	Work.GetFraction = [] { return 0.0f; };
	Work.WaitForEnd = [](double) { return true; };
	FHostProgress::WaitFor(Work);
	int32 Waits = 0;
	Work.WaitForEnd = [&Waits](double) { return ++Waits == 3; };
	FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31));
	FHostProgress::WaitFor(Work);
	EXPECT_EQ(Waits, 3);
	EXPECT_EQ(App().GetFrameStats().TurnCount, TurnsBefore);
}
