#include "Containers/Ticker.h"
#include "Host/HostClock.h"
#include "Support/Base/Printers.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

TEST(SystemTicker, DeltasAreThoseOfTheTick)
{
	FTSTicker Ticker;
	std::vector<float> Slow;
	std::vector<float> Fast;
	Ticker.AddTicker(FTickerDelegate::CreateLambda(
						 [&Slow](float Delta)
						 {
							 Slow.push_back(Delta);
							 return true;
						 }),
		1.0f);
	Ticker.AddTicker(TEXT("Fast"), 0.0f,
		[&Fast](float Delta)
		{
			Fast.push_back(Delta);
			return true;
		});
	EXPECT_FLOAT_EQ(Ticker.GetTimeUntilNextCall(), 0.0f);
	for (int32 Frame = 0; Frame < 10; ++Frame)
	{
		Ticker.Tick(0.1f);
	}
	ASSERT_EQ(Slow.size(), 1u) << "ten tenths make a second";
	EXPECT_FLOAT_EQ(Slow[0], 0.1f) << "not the second that has passed since it was added";
	EXPECT_EQ(Fast.size(), 10u);
	EXPECT_FLOAT_EQ(Fast[3], 0.1f);
	Ticker.Tick(3.5f);
	ASSERT_EQ(Slow.size(), 2u) << "a long gap is one call";
	EXPECT_FLOAT_EQ(Slow[1], 3.5f);
	Ticker.Tick(0.25f);
	Ticker.Tick(0.75f);
	ASSERT_EQ(Slow.size(), 3u);
	EXPECT_FLOAT_EQ(Slow[2], 0.75f);
	Ticker.Tick(-1.0f);
	EXPECT_FLOAT_EQ(Fast.back(), 0.0f) << "time does not run backwards";
}

TEST(SystemTicker, WhatIsAddedInALongTickWaitsItsWholeDelay)
{
	FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31));
	FTSTicker Ticker;
	int32 Calls = 0;
	const auto Count = [&Calls](float)
	{
		++Calls;
		return true;
	};
	Ticker.SetFollowsClock(true);
	Ticker.Tick(0.1f);
	FHostClock::Advance(10.0);
	Ticker.AddTicker(TEXT(""), 1.0f, Count);
	Ticker.Tick(10.0f);
	EXPECT_EQ(Calls, 0) << "the ten seconds were over when it came";
	EXPECT_FLOAT_EQ(Ticker.GetTimeUntilNextCall(), 1.0f);
	FHostClock::Advance(1.0);
	Ticker.Tick(1.0f);
	EXPECT_EQ(Calls, 1);
	FHostClock::UseRealTime();
}

TEST(SystemTicker, CallsThatRepeatAtMuchTheSameTimeComeTogether)
{
	struct FCase
	{
		const char* What;
		/** What passes between two that are added. */
		float Apart;
		std::vector<float> Delays;
		/** Of a minute of a loop that sleeps until a call is due. */
		int32 MostTurns;
		int32 LeastCalls;
	};
	const FCase Cases[] = {
		{ "a little apart", 0.03f, { 1.0f, 1.0f, 1.0f }, 64, 57 },
		{ "one of another beat", 0.2f, { 1.0f, 0.5f }, 122, 48 },
		{ "too far apart to wait for", 0.5f, { 1.0f, 1.0f }, 120, 59 },
		{ "short ones keep their time", 0.01f, { 0.1f, 0.1f }, 1202, 599 },
		{ "one alone", 0.0f, { 1.0f }, 60, 60 },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.What);
		FTSTicker Ticker;
		std::vector<int32> Calls(Case.Delays.size());
		double Now = 0.0;
		double Longest = 0.0;
		for (size_t Index = 0; Index < Case.Delays.size(); ++Index)
		{
			Ticker.AddTicker(TEXT(""), Case.Delays[Index],
				[&Calls, &Now, &Longest, &Case, Index, Last = Now](float) mutable
				{
					EXPECT_GE(Now - Last, Case.Delays[Index] - 1e-3) << "no sooner than after its delay";
					Longest = std::max(Longest, (Now - Last) / Case.Delays[Index]);
					Last = Now;
					return ++Calls[Index] > 0;
				});
			Now += Case.Apart;
			Ticker.Tick(Case.Apart);
		}
		int32 Turns = 0;
		for (const double End = Now + 60.0; Now < End; ++Turns)
		{
			const float Wait = Ticker.GetTimeUntilNextCall();
			Now += Wait;
			Ticker.Tick(Wait);
		}
		EXPECT_LE(Turns, Case.MostTurns);
		EXPECT_GE(*std::min_element(Calls.begin(), Calls.end()), Case.LeastCalls);
		EXPECT_LE(Longest, 1.26);
	}
}

TEST(SystemTicker, ChangesWhileTicking)
{
	FTSTicker Ticker;
	std::string Calls;
	FTSTicker::FDelegateHandle Own;
	FTSTicker::FDelegateHandle Victim;
	Ticker.AddTicker(TEXT(""), 0.0f,
		[&](float)
		{
			Calls += "a";
			FTSTicker::RemoveTicker(Victim);
			return true;
		});
	Own = Ticker.AddTicker(TEXT(""), 0.0f,
		[&](float)
		{
			Calls += "b";
			FTSTicker::RemoveTicker(Own);
			Ticker.AddTicker(TEXT(""), 0.0f,
				[&Calls](float)
				{
					Calls += "d";
					return false;
				});
			return true; // Asks to stay, but has been removed.
		});
	Victim = Ticker.AddTicker(TEXT(""), 0.0f,
		[&](float)
		{
			Calls += "c";
			return true;
		});
	Ticker.Tick(0.1f);
	EXPECT_EQ(Calls, "ab") << "the removed one is not called, the added one not yet";
	EXPECT_FALSE(Own.IsValid());
	Ticker.Tick(0.1f);
	Ticker.Tick(0.1f);
	EXPECT_EQ(Calls, "abada");
	FTSTicker::RemoveTicker(Own);
	FTSTicker::RemoveTicker(FTSTicker::FDelegateHandle());
}

TEST(SystemTicker, ALoopInsideADelegateTicksTheOthers)
{
	FTSTicker Ticker;
	std::string Calls;
	bool bLoop = true;
	Ticker.AddTicker(TEXT(""), 0.0f,
		[&](float)
		{
			Calls += "<";
			if (bLoop)
			{
				bLoop = false;
				Ticker.Tick(0.5f);
			}
			Calls += ">";
			return true;
		});
	Ticker.AddTicker(TEXT(""), 0.0f,
		[&](float)
		{
			Calls += "x";
			return true;
		});
	Ticker.Tick(0.5f);
	EXPECT_EQ(Calls, "<x>") << "not entered twice, and the other one called once for this time";
	Ticker.Tick(0.5f);
	EXPECT_EQ(Calls, "<x><>x");
}

TEST(SystemTicker, HeldValuesGoWithTheTicker)
{
	FTSTicker Ticker;
	const auto Held = std::make_shared<int>(1);
	const FTSTicker::FDelegateHandle Handle = Ticker.AddTicker(TEXT(""), 0.0f, [Held](float) { return true; });
	EXPECT_EQ(Held.use_count(), 2);
	FTSTicker::RemoveTicker(Handle);
	EXPECT_EQ(Held.use_count(), 1);
	Ticker.AddTicker(TEXT(""), 0.0f, [Held](float) { return false; });
	Ticker.Tick(0.1f);
	EXPECT_EQ(Held.use_count(), 1);

	struct FTarget : public TSharedFromThis<FTarget>
	{
		bool Call(float)
		{
			++Calls;
			return true;
		}
		int32 Calls = 0;
	};
	TSharedPtr<FTarget> Target = MakeShared<FTarget>();
	const FTSTicker::FDelegateHandle Weak = Ticker.AddTicker(FTickerDelegate::CreateSP(Target.ToSharedRef(), &FTarget::Call));
	Ticker.Tick(0.1f);
	EXPECT_EQ(Target->Calls, 1);
	Target.Reset();
	Ticker.Tick(0.1f);
	EXPECT_FALSE(Weak.IsValid()) << "a delegate whose object died leaves";
}

TEST(SystemTicker, RemovingWaitsForAnotherThread)
{
	FTSTicker Ticker;
	std::atomic<bool> bInside{ false };
	std::atomic<bool> bLeft{ false };
	const FTSTicker::FDelegateHandle Handle = Ticker.AddTicker(TEXT(""), 0.0f,
		[&](float)
		{
			bInside = true;
			std::this_thread::sleep_for(std::chrono::milliseconds(50));
			bLeft = true;
			return true;
		});
	std::thread Thread([&Ticker] { Ticker.Tick(0.1f); });
	while (!bInside)
	{
		std::this_thread::yield();
	}
	FTSTicker::RemoveTicker(Handle);
	EXPECT_TRUE(bLeft);
	Thread.join();
}
