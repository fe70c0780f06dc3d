#include "ChatWindowTest.h"
#include "CodeIntelModuleTest.h"

#include "FileSearchProject.h"
#include "History/FileHistoryTracker.h"
#include "Host/HostSleep.h"
#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SErrorNotification.h"
#include "Widgets/SIndexProgressWidget.h"
#include "Widgets/SLoadingIndicator.h"

namespace
{
	/** What may pass until something is on screen that nobody has touched anything for. */
	constexpr double SoonSeconds = 0.2;

	bool IsPainted(const std::string& Text)
	{
		for (const TSharedRef<SWidget>& Widget : FWidgetFinder::FindByText(UTF8_TO_TCHAR(Text.c_str())))
		{
			const FSlateRect Rect = Widget->GetCachedGeometry().GetLayoutBoundingRect();
			if (Rect.Width() > 0.0f && Rect.Bottom <= 800.0f)
			{
				return true;
			}
		}
		return false;
	}
}

/** Widgets in a Slate that sleeps: only their own timers bring frames. */
template <typename BaseType>
class TSleepingTest : public BaseType
{
protected:
	/** Waits until nothing moves any more. */
	void FallAsleep()
	{
		this->SleepStrictly();
		// What one piece of background work hands over may begin the next: the history is read again when that was asked meanwhile.
		for (int32 Round = 0; Round < 3; ++Round)
		{
			FHostTasks::WaitForBackground(20.0);
			this->LetTimePass(3.0);
		}
		ExpectRest();
	}

	/** No timer, no frame, and what is on screen is what a frame would show. */
	void ExpectRest()
	{
		EXPECT_EQ(FHostSleep::GetActiveTimerCount(), 0);
		EXPECT_EQ(this->CountFrames(2.0), 0);
		const TArray<FSlateDrawElement> Shown = this->App().GetLastElements().GetElements();
		this->PumpFrame();
		EXPECT_TRUE(Shown == this->App().GetLastElements().GetElements()) << "the last frame was not the last one needed";
		this->LetTimePass(3.0);
	}

	/** What has just been shown settles within a second, and then nothing moves. */
	void ExpectRestSoon()
	{
		this->LetTimePass(1.0);
		ExpectRest();
	}

	/** Seconds until the picture changes. */
	double WaitForChange(double Seconds)
	{
		const TArray<FSlateDrawElement> Shown = this->App().GetLastElements().GetElements();
		return this->WaitFor([this, &Shown]() { return !(Shown == this->App().GetLastElements().GetElements()); }, Seconds);
	}
};

class FSleepingChat : public TSleepingTest<FChatWindowTest>
{
protected:
	void SetUp() override
	{
		FChatWindowTest::SetUp();
		Connect();
		FallAsleep();
	}

	void FillConversation(int32 Count)
	{
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Agent->FireMessage(
				FString::Printf(TEXT("message %d of many, over more than one line of the window when it is long enough"), Index));
		}
		FallAsleep();
	}
};

TEST_F(FSleepingChat, AtRestNothingIsRegisteredAndTheHistoryIsNotRead)
{
	const uint64 Refreshes = Window->GetConversationHistoryRefreshRequestIdForTests();
	EXPECT_EQ(CountFrames(300.0), 0);
	EXPECT_EQ(Window->GetConversationHistoryRefreshRequestIdForTests(), Refreshes) << "its minute counts while the window ticks";
	FillConversation(300);
	EXPECT_EQ(CountFrames(60.0), 0);
	EXPECT_EQ(FHostSleep::GetActiveTimerCount(), 0);
}

TEST_F(FSleepingChat, AMessageIsOnScreenSoonAndThenNothingMoves)
{
	Agent->FireMessage(TEXT("nobody touched anything"));
	EXPECT_LE(WaitFor([]() { return IsPainted("nobody touched anything"); }, 5.0), SoonSeconds);
	ExpectRestSoon();
	// The next one after a while that is shorter than a batch.
	Agent->FireMessage(TEXT("second"));
	LetTimePass(0.05);
	Agent->FireMessage(TEXT("third"));
	EXPECT_LE(WaitFor([]() { return IsPainted("third"); }, 5.0), SoonSeconds);
	ExpectRestSoon();
}

TEST_F(FSleepingChat, TheListFollowsItsEnd)
{
	FillConversation(100);
	Agent->FireMessage(TEXT("the last of all"));
	EXPECT_LE(WaitFor([]() { return IsPainted("the last of all"); }, 5.0), SoonSeconds);
	LetTimePass(1.0);
	const FSlateRect Row = GetRect(*FindByText("the last of all"));
	const FSlateRect List = GetRect(*FindByTag("MessageList"));
	EXPECT_LE(Row.Bottom, List.Bottom);
	EXPECT_GE(Row.Bottom, List.Bottom - 40.0f);
	ExpectRest();
}

TEST_F(FSleepingChat, ABusyAgentIsWatched)
{
	Agent->FireState(EState::Thinking);
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	LetTimePass(1.0);
	Agent->State = EState::ExecutingTools; // What only polling finds.
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	LetTimePass(1.0);
	Agent->FireMessage(TEXT("in between"));
	EXPECT_LE(WaitFor([]() { return IsPainted("in between"); }, 5.0), SoonSeconds);
	Agent->FireState(EState::Ready);
	ExpectRestSoon();
}

TEST_F(FSleepingChat, ToolRunsAreShownAsTheyGo)
{
	Agent->FireToolStarted(TEXT("1"), TEXT("read_file"), TEXT("{\"path\":\"Source/One.cpp\"}"));
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	ExpectRestSoon();
	Agent->FireToolStarted(TEXT("2"), TEXT("read_file"), TEXT("{\"path\":\"Source/Two.cpp\"}"));
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	Agent->FireToolCompleted(TEXT("2"), TEXT("read_file"));
	Agent->FireToolCompleted(TEXT("1"), TEXT("read_file"));
	ExpectRestSoon();
}

TEST_F(FSleepingChat, ChangedFilesAreListedWhenTheirToolEnds)
{
	Agent->FireToolStarted(TEXT("1"), TEXT("write_file"), TEXT("{\"path\":\"Source/One.cpp\"}"));
	ExpectRestSoon();
	FFileHistoryTracker::Get().AddOperation(TEXT("c1"), TEXT("g"), { TEXT("Source/One.cpp"), 1, FDateTime::Now() });
	Agent->FireToolCompleted(TEXT("1"), TEXT("write_file"));
	EXPECT_LE(WaitFor([]() { return IsPainted("Changed Files (1)"); }, 5.0), SoonSeconds);
	ExpectRestSoon();
	FFileHistoryTracker::Get().RemoveGroup(TEXT("c1"), TEXT("g"));
}

TEST_F(FSleepingChat, TheGateIsFollowed)
{
	const auto IsPromptShown = []()
	{
		const TSharedPtr<SWidget> Box = FWidgetFinder::FindByTag(TEXT("InputTextBox"));
		return Box && FWidgetFinder::IsShown(*Box) && Box->GetCachedGeometry().GetLayoutBoundingRect().Height() > 0.0f;
	};
	SetGate(EGate::Checking);
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	EXPECT_FALSE(IsPromptShown());
	EXPECT_NEAR(CountFrames(10.0), 100, 20) << "looked at ten times a second";
	SetGate(EGate::Ready);
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	EXPECT_TRUE(IsPromptShown());
	ExpectRestSoon();

	SetGate(EGate::UpdateAvailable);
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	ExpectRestSoon();
	SetGate(EGate::Downloading, TEXT("Downloading 10%"));
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	SetGate(EGate::Downloading, TEXT("Downloading 60%"));
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
}

TEST_F(FSleepingChat, WhatARefreshOfTheHistoryFindsComesWithAFrame)
{
	Window->RequestConversationHistoryRefreshForTests();
	ASSERT_TRUE(FHostTasks::WaitForBackground(20.0));
	EXPECT_GE(CountFrames(0.1), 1);
	ExpectRestSoon();
}

TEST_F(FSleepingChat, AttachedFilesAreShown)
{
	ViewModel->AddContextFile(TEXT("Source/Attached.cpp"));
	EXPECT_LE(WaitFor([]() { return IsPainted("Attached.cpp"); }, 5.0), SoonSeconds);
	ExpectRestSoon();
}

TEST_F(FSleepingChat, AWindowOutOfSightLetsSlateSleep)
{
	const TSharedRef<SBox> Holder = SNew(SBox);
	App().SetRootContent(Holder);
	LetTimePass(2.0);
	Agent->FireMessage(TEXT("while hidden"));
	Agent->FireState(EState::Thinking);
	LetTimePass(4.0);
	EXPECT_EQ(CountFrames(10.0), 0) << "a timer that nobody can call was left behind";
	EXPECT_EQ(FHostSleep::GetActiveTimerCount(), 0);
	Holder->SetContent(Window.ToSharedRef());
	App().RequestFrame();
	EXPECT_LE(WaitFor([]() { return IsPainted("while hidden"); }, 5.0), SoonSeconds);
	Agent->FireState(EState::Ready);
	ExpectRestSoon();
}

TEST_F(FSleepingChat, AnOpenFileListIsWatchedUntilTheFilesAreListed)
{
	FHostPaths::SetProjectDir(EmptyStore.At());
	Velmora::SetProjectFolder(TEXT("/there/is/no/such/folder"));
	Prompt("@wolf");
	ASSERT_TRUE(App().AnyMenusVisible());
	LetTimePass(12.0);
	const bool bReady = Velmora::FProjectFileCache::Get().IsReady();
	EXPECT_EQ(CountFrames(5.0) > 20, !bReady);
	Velmora::SetProjectFolder(FString());
}

class FSleepingWidgets : public TSleepingTest<FVelmoraWidgetTest>
{
};

TEST_F(FSleepingWidgets, FadesComeToTheirEnd)
{
	Show(SNew(SBox)[SNew(SErrorNotification).ErrorMessage(FText::FromString(TEXT("It failed.")))]);
	SleepStrictly();
	EXPECT_GE(CountFrames(0.3), 15);
	LetTimePass(0.5);
	ExpectRest();

	PumpFrame();
	const TSharedPtr<FChatMessage> Message = FChatMessage::CreateUserMessage(TEXT("a row by itself"));
	Show(SNew(SBox)[SNew(SMessageRow).Message(Message)]);
	EXPECT_GE(CountFrames(0.3), 15);
	LetTimePass(0.5);
	ExpectRest();
}

TEST_F(FSleepingWidgets, AListGoesToItsEndByItself)
{
	TArray<TSharedPtr<FChatMessage>> Messages;
	for (int32 Index = 0; Index < 100; ++Index)
	{
		Messages.Add(FChatMessage::CreateUserMessage(FString::Printf(TEXT("message %d"), Index)));
	}
	const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
	Show(List);
	PumpSeconds(1.0);
	List->ScrollToTop();
	FallAsleep();
	const SScrollBox& Box = static_cast<SScrollBox&>(*FindInside(*List, "SScrollBox"));
	ASSERT_EQ(Box.GetScrollOffset(), 0.0f);
	// No row is new, so that nothing fades: only the way to the end wants frames.
	List->ScrollToBottom();
	EXPECT_LE(WaitFor([&Box]() { return Box.GetScrollOffset() > 0.0f && Box.GetScrollOffset() == Box.GetScrollOffsetOfEnd(); }, 5.0),
		SoonSeconds);
	ExpectRestSoon();
}

TEST_F(FSleepingWidgets, DotsThrobWhileTheyAreInView)
{
	TSharedPtr<SWidget> Dots;
	Show(SNew(SBox)[SAssignNew(Dots, SLoadingIndicator).ShowThrobber(false)]);
	SleepStrictly();
	EXPECT_LE(WaitForChange(5.0), 0.5);
	EXPECT_NEAR(CountFrames(10.0), 92, 15);
	Dots->SetVisibility(EVisibility::Collapsed);
	PumpFrame();
	LetTimePass(3.0);
	ExpectRest();
}

TEST_F(FSleepingWidgets, TheProgressOfABuildMovesAndGoes)
{
	TSharedPtr<SIndexProgressWidget> Progress;
	Show(SNew(SBox)[SAssignNew(Progress, SIndexProgressWidget)]);
	FallAsleep();
	Progress->UpdateProgress(3, 10, TEXT("Source/A.cpp"), 0.0);
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	LetTimePass(1.0);
	EXPECT_GT(CountFrames(2.0), 0) << "the estimate goes down by itself";
	Progress->SetComplete(true, FText::FromString(TEXT("All done.")));
	EXPECT_LE(WaitForChange(5.0), SoonSeconds);
	LetTimePass(5.0);
	ExpectRest();
}

/** The module's poll, under a ticker whose deltas are those of the loop's turns. */
using FModulePoll = FCodeIntelModuleTest;

TEST_F(FModulePoll, HalfAMinuteIsThatOfTheClock)
{
	const Velmora::FProjectFileCache& Cache = Velmora::FProjectFileCache::Get();
	const auto IsListed = [&Cache]() { return Cache.IsReady() && !Cache.IsIndexing(); };
	ASSERT_TRUE(WaitUntil(IsListed));
	const int32 Before = Cache.GetFileCount();
	FTemporaryProject Other;
	for (const char* Name : { "1.txt", "2.txt", "3.txt", "4.txt", "5.txt" })
	{
		Other.Write(Name, "");
	}
	LetTimePass(25.0);
	ASSERT_TRUE(WaitUntil(IsListed));
	EXPECT_EQ(Cache.GetFileCount(), Before);
	LetTimePass(7.0);
	EXPECT_TRUE(WaitUntil([&Cache]() { return Cache.GetFileCount() == 5; }));
}
