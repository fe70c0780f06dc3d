#include "Support/UiDriver.h"

#include "Framework/Notifications/NotificationManager.h"
#include "Host/HostNotifications.h"
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
