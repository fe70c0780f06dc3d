#include "Support/UiDriver.h"

#include "Async/Async.h"
#include "Async/TaskGraphInterfaces.h"
#include "Containers/Ticker.h"
#include "Framework/Notifications/NotificationManager.h"
#include "Host/HostClock.h"
#include "Host/HostNotifications.h"
#include "Host/HostSleep.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Notifications/SNotificationList.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

namespace
{
	/** Calls after which the timer stops by itself; it goes on for ever below zero. */
	FWidgetActiveTimerDelegate CountDown(int32& Calls, int32 Last = -1)
	{
		return FWidgetActiveTimerDelegate::CreateLambda(
			[&Calls, Last](double, float) { return ++Calls == Last ? EActiveTimerReturnType::Stop : EActiveTimerReturnType::Continue; });
	}

	void OnGameThread(TFunction<void()> Task)
	{
		AsyncTask(ENamedThreads::GameThread, MoveTemp(Task));
	}
}

class FSleep : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		Block = SNew(STextBlock).Text(FText::FromString(TEXT("before")));
		Show(SNew(SBox)[Block.ToSharedRef()]);
		LetTimePass(1.0);
	}

	TSharedPtr<STextBlock> Block;
};

TEST_F(FSleep, AtRestTheLoopTurnsWithoutAFrame)
{
	int32 Ticks = 0;
	float Seconds = 0.0f;
	const FTSTicker::FDelegateHandle Ticker = FTSTicker::GetCoreTicker().AddTicker(TEXT(""), 1.0f,
		[&](float Delta)
		{
			++Ticks;
			Seconds += Delta;
			return true;
		});
	bool bTaskRan = false;
	std::string Polled = "old";
	Block->SetText(TAttribute<FText>::CreateLambda([&Polled]() { return FText::FromString(FString(Polled.c_str())); }));
	PumpFrame();
	OnGameThread([&bTaskRan]() { bTaskRan = true; });
	Polled = "new";
	EXPECT_EQ(CountFrames(60.0), 0);
	EXPECT_TRUE(bTaskRan);
	EXPECT_NEAR(Ticks, 60, 1);
	EXPECT_NEAR(Seconds, 1.0f, 0.1f) << "each call was told of its turn and not of the second before";
	EXPECT_EQ(VisibleTexts(), FTextList{ "new" }) << "asked now, but nobody did before";
	FTSTicker::GetCoreTicker().RemoveTicker(Ticker);
}

TEST_F(FSleep, AnActiveTimerBringsFramesUntilItStops)
{
	int32 Calls = 0;
	Block->RegisterActiveTimer(0.0f, CountDown(Calls, 30));
	EXPECT_EQ(CountFrames(2.0), 30);
	EXPECT_EQ(Calls, 30);
	EXPECT_EQ(FHostSleep::GetActiveTimerCount(), 0);

	Calls = 0;
	const TSharedRef<FActiveTimerHandle> Slow = Block->RegisterActiveTimer(0.5f, CountDown(Calls));
	EXPECT_EQ(CountFrames(0.4), 0);
	EXPECT_NEAR(CountFrames(3.0), 6, 1);
	Block->UnRegisterActiveTimer(Slow);
	EXPECT_EQ(CountFrames(3.0), 0);
}

TEST_F(FSleep, ATimerThatCannotBeCalledKeepsSlateAwakeUntilItsWidgetDies)
{
	int32 Calls = 0;
	TSharedPtr<SWidget> Hidden = SNew(STextBlock).Visibility(EVisibility::Collapsed);
	TSharedPtr<SVerticalBox> Box;
	// clang-format off
	Show(SAssignNew(Box, SVerticalBox)
		+ SVerticalBox::Slot()[Hidden.ToSharedRef()]);
	// clang-format on
	LetTimePass(1.0);
	const TSharedRef<FActiveTimerHandle> Held = Hidden->RegisterActiveTimer(0.0f, CountDown(Calls));
	EXPECT_NEAR(CountFrames(1.0), 60, 1);
	EXPECT_EQ(Calls, 0);
	Box->ClearChildren();
	Hidden.Reset();
	LetTimePass(1.0);
	EXPECT_EQ(CountFrames(1.0), 0);
}

TEST_F(FSleep, ATaskThatChangesAWidgetIsShown)
{
	OnGameThread([this]() { Block->SetText(FText::FromString(TEXT("after"))); });
	const TArray<FSlateDrawElement> Before = App().GetLastElements().GetElements();
	EXPECT_LE(WaitFor([&Before]() { return !(Before == App().GetLastElements().GetElements()); }, 1.0), 0.02);
	EXPECT_NEAR(CountFrames(2.0), 30, 1) << "half a second at full rate";

	SleepStrictly();
	OnGameThread([this]() { Block->SetText(FText::FromString(TEXT("later"))); });
	EXPECT_EQ(CountFrames(2.0), 0);
}

TEST_F(FSleep, InputBringsFramesForHalfASecond)
{
	const auto Move = [](double X) { App().GetMessageHandler().OnMouseMove(FVector2D(X, 5.0), FModifierKeysState()); };
	Move(600.0);
	EXPECT_NEAR(CountFrames(2.0), 31, 1);
	SleepStrictly();
	Move(601.0);
	EXPECT_EQ(CountFrames(2.0), 1);
}

TEST_F(FSleep, AnOpenPopupBringsFrames)
{
	const TSharedRef<IMenu> Menu =
		App().PushMenu(Block.ToSharedRef(), SNew(SBox).WidthOverride(20.0f), GetRect(*Block), MenuPlacement_BelowAnchor, false);
	LetTimePass(1.0);
	EXPECT_NEAR(CountFrames(1.0), 60, 1);
	Menu->Dismiss();
	EXPECT_NEAR(CountFrames(2.0), 31, 2);
	EXPECT_EQ(CountFrames(2.0), 0);
}

TEST_F(FSleep, ATooltipComesToARestingPointer)
{
	Block->SetToolTipText(FText::FromString(TEXT("what it is")));
	SleepStrictly();
	App().GetMessageHandler().OnMouseMove(FVector2D(20.0, 10.0), FModifierKeysState());
	const auto IsOpen = []()
	{
		const FTextList Texts = VisibleTexts();
		return std::find(Texts.begin(), Texts.end(), "what it is") != Texts.end();
	};
	EXPECT_NEAR(WaitFor(IsOpen, 2.0), 0.5, 0.05);
	EXPECT_LE(CountFrames(5.0), 3);
}

TEST_F(FSleep, TheCaretBlinksForTenSecondsAndThrobbersGoOn)
{
	const TSharedRef<SMultiLineEditableTextBox> Text = SNew(SMultiLineEditableTextBox);
	Show(Text);
	App().SetKeyboardFocus(Text);
	LetTimePass(1.0);
	EXPECT_NEAR(CountFrames(12.0), 18, 2);
	EXPECT_EQ(CountFrames(10.0), 0);

	Show(SNew(SThrobber));
	LetTimePass(1.0);
	EXPECT_NEAR(CountFrames(4.0), 10, 1);
	Show(SNew(SThrobber).Visibility(EVisibility::Collapsed));
	LetTimePass(1.0);
	EXPECT_EQ(CountFrames(4.0), 0);
}

TEST_F(FSleep, AToastComesAndGoesByItself)
{
	SleepStrictly();
	FNotificationInfo Info(FText::FromString(TEXT("done")));
	Info.ExpireDuration = 2.0f;
	const TSharedPtr<SNotificationItem> Toast = FSlateNotificationManager::Get().AddNotification(Info);
	Toast->ExpireAndFadeout();
	EXPECT_LE(WaitFor([&Toast]() { return Toast->GetRenderOpacity() == 1.0f; }, 2.0), Info.FadeInDuration + 0.1);
	EXPECT_NEAR(WaitFor([]() { return FHostNotifications::GetVisible().Num() == 0; }, 10.0), 2.0 + Info.FadeOutDuration, 0.6);
	LetTimePass(1.0);
	EXPECT_EQ(CountFrames(5.0), 0);
}
