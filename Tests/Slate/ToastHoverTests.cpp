#include "Support/UiDriver.h"

#include "Framework/Notifications/NotificationManager.h"
#include "Host/HostNotifications.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SNullWidget.h"

/** Toasts under the pointer. */
class FToastHoverTest : public FWidgetTest
{
protected:
	void TearDown() override
	{
		FHostNotifications::Clear();
		FWidgetTest::TearDown();
	}

	static int32 Count() { return FHostNotifications::GetVisible().Num(); }
};

TEST_F(FToastHoverTest, ToastsStayUnderThePointer)
{
	FNotificationInfo Info(INVTEXT("Read me"));
	Info.ExpireDuration = 1.0f;
	const TSharedPtr<SNotificationItem> Item = FSlateNotificationManager::Get().AddNotification(Info);
	PumpFrame();
	Hover(FindByText("Read me"));
	PumpSeconds(3.0);
	EXPECT_EQ(Count(), 1);
	EXPECT_EQ(Item->GetRenderOpacity(), 1.0f);
	MoveMouse(FVector2D(5, 5));
	PumpSeconds(0.25);
	EXPECT_LT(Item->GetRenderOpacity(), 0.8f) << "it fades once the pointer has gone";
	Hover(Item.ToSharedRef());
	PumpSeconds(1.0);
	EXPECT_EQ(Item->GetRenderOpacity(), 1.0f) << "and comes back with it";
	MoveMouse(FVector2D(5, 5));
	PumpSeconds(0.7);
	EXPECT_EQ(Count(), 0);
}

TEST_F(FToastHoverTest, OneThatStaysCanBeSentAway)
{
	FNotificationInfo Info(INVTEXT("It failed"));
	Info.bFireAndForget = false;
	Info.ExpireDuration = 0.0f;
	FSlateNotificationManager::Get().AddNotification(Info)->SetCompletionState(SNotificationItem::CS_Fail);
	PumpFrame();
	EXPECT_TRUE(FWidgetFinder::FindByToolTip(TEXT("Dismiss")).IsEmpty()) << "no mark until the pointer is there";
	Hover(FindByText("It failed"));
	PumpFrame();
	Click(FindByToolTip("Dismiss"));
	PumpSeconds(0.6);
	EXPECT_EQ(Count(), 0);
	Info.bFireAndForget = false;
	FSlateNotificationManager::Get().AddNotification(Info)->SetCompletionState(SNotificationItem::CS_Pending);
	PumpFrame();
	Hover(FindByText("It failed"));
	PumpFrame();
	EXPECT_TRUE(FWidgetFinder::FindByToolTip(TEXT("Dismiss")).IsEmpty()) << "what still goes on is ended by its own end";
}

TEST_F(FToastHoverTest, ButtonsStandBelowEachOtherInANarrowWindow)
{
	Resize(360, 400);
	FNotificationInfo Info(INVTEXT("May I?"));
	Info.ExpireDuration = 60.0f;
	const TArray<const char*> Labels = { "Allow once", "Always in this project", "Refuse" };
	for (const char* const Label : Labels)
	{
		Info.ButtonDetails.Add(
			FNotificationButtonInfo(FText::FromString(UTF8_TO_TCHAR(Label)), FText(), FSimpleDelegate(), SNotificationItem::CS_None));
	}
	const TSharedPtr<SNotificationItem> Item = FSlateNotificationManager::Get().AddNotification(Info);
	PumpSeconds(0.2);
	const FSlateRect Toast = GetRect(*Item);
	for (const char* const Label : Labels)
	{
		const FSlateRect Text = GetRect(*FindByText(Label));
		EXPECT_LT(Text.Right + 8.0f, Toast.Right) << Label;
		EXPECT_GT(Text.Left, Toast.Left) << Label;
		EXPECT_LT(Text.Bottom, Toast.Bottom) << Label;
	}
}

TEST(ToastPlace, NothingThatIsKeptClearIsCoveredByTheLowestToast)
{
	const FVector2D Stack(376.0, 150.0);
	const FSlateRect Buttons(1100.0f, 730.0f, 1260.0f, 780.0f);
	const FSlateRect Box(10.0f, 640.0f, 1260.0f, 720.0f);
	const FSlateRect None;
	const std::tuple<const char*, FVector2D, TArray<FSlateRect>, float> Cases[] = {
		{ "nothing to keep clear", FVector2D(1280, 800), {}, 800.0f },
		{ "what is not to be seen", FVector2D(1280, 800), { None, None }, 800.0f },
		{ "beside a panel", FVector2D(1700, 800), { Buttons, Box }, 800.0f },
		{ "buttons alone", FVector2D(1280, 800), { Buttons }, 730.0f },
		{ "above the buttons is the box", FVector2D(1280, 800), { Buttons, Box }, 640.0f },
		{ "the box alone is in view", FVector2D(1280, 800), { None, Box }, 640.0f },
		{ "as much room as it takes", FVector2D(1280, 800), { Buttons, FSlateRect(10.0f, 150.0f, 1260.0f, 720.0f) }, 150.0f },
		{ "too low for both", FVector2D(1280, 800), { Buttons, FSlateRect(10.0f, 149.0f, 1260.0f, 720.0f) }, 730.0f },
		{ "too low even for the buttons", FVector2D(1280, 800), { FSlateRect(1100.0f, 100.0f, 1260.0f, 780.0f), Box }, 100.0f },
	};
	for (const auto& [What, Window, KeepClear, Bottom] : Cases)
	{
		const FSlateRect Place = FHostNotifications::FindPlace(Stack, Window, KeepClear);
		const float Right = static_cast<float>(Window.X);
		EXPECT_EQ(Place, FSlateRect(Right - 376.0f, Bottom - 150.0f, Right, Bottom)) << What;
	}
	EXPECT_EQ(FHostNotifications::FindPlace(Stack, FVector2D(300, 100), {}), FSlateRect(0.0f, -50.0f, 300.0f, 100.0f))
		<< "the newest is seen whole";
}

TEST_F(FToastHoverTest, OneThatAsksStaysLowestAndClearOfWhatItAsksAbout)
{
	Resize(360, 400);
	float Height = 60.0f;
	TSharedPtr<SWidget> Foot;
	// clang-format off
	Show(SNew(SBox)
		.VAlign(VAlign_Bottom)
		[
			SAssignNew(Foot, SBox)
			.HeightOverride_Lambda([&Height] { return FOptionalSize(Height); })
		]);
	// clang-format on
	FHostNotifications::SetKeepClear([&Foot]() -> TArray<FSlateRect> { return { GetRect(*Foot) }; });
	const auto Add = [](const char* Text, bool bAsks)
	{
		FNotificationInfo Info(FText::FromString(UTF8_TO_TCHAR(Text)));
		Info.bFireAndForget = false;
		if (bAsks)
		{
			Info.ButtonDetails.Add(FNotificationButtonInfo(INVTEXT("Yes"), FText(), FSimpleDelegate()));
		}
		const TSharedPtr<SNotificationItem> Item = FSlateNotificationManager::Get().AddNotification(Info);
		Item->SetCompletionState(bAsks ? SNotificationItem::CS_Pending : SNotificationItem::CS_Fail);
		return Item.ToSharedRef();
	};
	const TSharedRef<SNotificationItem> First = Add("It failed", false);
	const TSharedRef<SNotificationItem> Question = Add("May I?", true);
	TArray<TSharedRef<SNotificationItem>> Later;
	for (int32 Index = 0; Index < 8; ++Index)
	{
		Later.Add(Add("It failed again", false));
	}
	PumpFrame();
	EXPECT_LE(GetRect(*Question).Bottom, 340.0f);
	EXPECT_GT(GetRect(*Question).Bottom, 320.0f);
	EXPECT_LE(GetRect(*Later.Last()).Bottom, GetRect(*Question).Top);
	EXPECT_LE(GetRect(*Later[0]).Bottom, GetRect(*Later[1]).Top);
	EXPECT_LE(GetRect(*First).Bottom, 0.0f) << "there is no room for all";
	// What it stands clear of grows in the very frame that is shown.
	Height = 200.0f;
	PumpFrame();
	EXPECT_EQ(GetRect(*Foot).Top, 200.0f);
	EXPECT_LE(GetRect(*Question).Bottom, 200.0f);
	FHostNotifications::SetKeepClear(nullptr);
}
