#include "TimerManager.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
	class Timers : public ::testing::Test
	{
	protected:
		void TearDown() override { Manager.Reset(); }

		FTimerDelegate Note(const std::string& Name)
		{
			return FTimerDelegate::CreateLambda([this, Name] { Calls.push_back(Name); });
		}

		/** Names of the calls made within that many seconds, in order. */
		std::vector<std::string> After(float Seconds)
		{
			Calls.clear();
			for (int Step = 0; Step < static_cast<int>(Seconds * 10.0f + 0.5f); ++Step)
			{
				FTSTicker::GetCoreTicker().Tick(0.1f);
			}
			return Calls;
		}

		TSharedPtr<FTimerManager> Manager = MakeShared<FTimerManager>();
		std::vector<std::string> Calls;
	};
	using FNames = std::vector<std::string>;
}

TEST_F(Timers, CallOnceOrAgainAndAgain)
{
	FTimerHandle Once;
	FTimerHandle Loop;
	FTimerHandle Late;
	Manager->SetTimer(Once, Note("once"), 1.0f, false);
	Manager->SetTimer(Loop, Note("loop"), 2.0f, true);
	Manager->SetTimer(Late, Note("late"), 1.0f, true, 2.5f);
	EXPECT_TRUE(Manager->IsTimerActive(Once));
	EXPECT_EQ(After(0.9f), FNames());
	EXPECT_EQ(After(0.5f), FNames({ "once" }));
	EXPECT_FALSE(Manager->IsTimerActive(Once));
	EXPECT_EQ(After(3.0f), FNames({ "loop", "late", "late", "loop" }));
	Manager->ClearTimer(Loop);
	EXPECT_FALSE(Loop.IsValid());
	EXPECT_EQ(After(1.0f), FNames({ "late" }));
}

TEST_F(Timers, AHandleTakesANewTimeAndNoneForZero)
{
	FTimerHandle Handle;
	Manager->SetTimer(Handle, Note("old"), 1.0f, false);
	Manager->SetTimer(Handle, Note("new"), 2.0f, false);
	EXPECT_EQ(After(1.5f), FNames());
	EXPECT_EQ(After(1.0f), FNames({ "new" }));
	Manager->SetTimer(Handle, Note("never"), 1.0f, true);
	Manager->SetTimer(Handle, Note("never"), 0.0f, true);
	EXPECT_EQ(After(3.0f), FNames());
	Manager->SetTimerForNextTick(Note("next"));
	EXPECT_EQ(After(0.1f), FNames({ "next" }));
}

TEST_F(Timers, MayBeStartedAndClearedFromInside)
{
	FTimerHandle Handle;
	Manager->SetTimer(Handle,
		FTimerDelegate::CreateLambda(
			[&]
			{
				Calls.push_back("first");
				Manager->SetTimer(Handle, Note("second"), 0.5f, false);
			}),
		0.5f, false);
	EXPECT_EQ(After(1.5f), FNames({ "first", "second" }));
	Manager->SetTimer(Handle,
		FTimerDelegate::CreateLambda(
			[&]
			{
				Calls.push_back("loop");
				Manager->ClearTimer(Handle);
			}),
		0.5f, true);
	EXPECT_EQ(After(2.0f), FNames({ "loop" }));
}

TEST_F(Timers, EndWithTheirManagerAndWithTheirObject)
{
	struct FCounter : TSharedFromThis<FCounter>
	{
		void Count() { ++Number; }
		int Number = 0;
	};
	TSharedPtr<FCounter> Counter = MakeShared<FCounter>();
	FTimerHandle Handle;
	FTimerHandle Other;
	Manager->SetTimer(Handle, FTimerDelegate::CreateSP(Counter.Get(), &FCounter::Count), 0.5f, true);
	Manager->SetTimer(Other, Note("other"), 1.0f, true);
	After(1.0f);
	EXPECT_EQ(Counter->Number, 2);
	Counter.Reset();
	EXPECT_EQ(After(1.0f), FNames({ "other" }));
	EXPECT_FALSE(Manager->IsTimerActive(Handle));
	Manager.Reset();
	EXPECT_EQ(After(3.0f), FNames());
}
