#include "VelmoraWidgetTest.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/SEmptyState.h"
#include "Widgets/SErrorNotification.h"
#include "Widgets/SLoadingIndicator.h"

class FStatusWidgetTest : public FVelmoraWidgetTest
{
};

TEST_F(FStatusWidgetTest, TheEmptyStateShowsItsTextsAndAMarkOnRequest)
{
	Show(SNew(SEmptyState).Title(INVTEXT("Welcome")).Message(INVTEXT("Type below.")));
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Welcome", "Type below." }));
	EXPECT_EQ(CountByType("SImage"), 0);
	EXPECT_NEAR(GetCenter(FindByText("Welcome")).X, 640.0, 1.0);

	Show(SNew(SEmptyState).Title(INVTEXT("Welcome")).Message(INVTEXT("Type below.")).Icon(FVelmoraUIStyles::GetBrush("Logo_App_40")));
	EXPECT_EQ(CountByType("SImage"), 1);
}

TEST_F(FStatusWidgetTest, TheErrorFadesInAndWaitsForItsHost)
{
	int32 Dismissed = 0;
	const TSharedRef<SErrorNotification> Error = SNew(SErrorNotification)
													 .ErrorMessage(INVTEXT("Failed to send message. Please try again."))
													 .OnDismissed_Lambda([&Dismissed] { ++Dismissed; });
	EXPECT_TRUE(Error->Animator.IsAnimating());
	App().SetRootContent(Error);
	PumpFrame(0.15);
	EXPECT_NEAR(Error->GetAnimatedOpacity().A, 0.5f, 0.01f);
	PumpFrame(0.16);
	EXPECT_EQ(Error->GetAnimatedOpacity().A, 1.0f);

	EXPECT_EQ(VisibleTexts(), (FTextList{ "Failed to send message. Please try again." }));
	const TSharedRef<SWidget> Button = FindByToolTip("Dismiss this error");
	EXPECT_EQ(DumpKey(Button->GetToolTipText()), "VelmoraUI,DismissError: Dismiss this error");
	Click(Button);
	EXPECT_EQ(Dismissed, 1);
	PumpSeconds(20.0);
	EXPECT_EQ(VisibleTexts().size(), 1u) << "taking it away is the host's part";
}

TEST_F(FStatusWidgetTest, TheLoadingDotsCycle)
{
	const TSharedRef<SLoadingIndicator> Indicator = SNew(SLoadingIndicator);
	const auto TextAt = [&Indicator](float Seconds)
	{
		Indicator->AnimationTime = Seconds;
		return Utf8(Indicator->GetAnimatedMessage().ToString());
	};
	EXPECT_EQ(TextAt(0.0f), "Loading");
	EXPECT_EQ(TextAt(0.34f), "Loading.");
	EXPECT_EQ(TextAt(0.67f), "Loading..");
	EXPECT_EQ(TextAt(1.2f), "Loading...");
	EXPECT_EQ(TextAt(1.4f), "Loading");

	Indicator->AnimationTime = 1.45f;
	Indicator->Tick(FGeometry(), 0.0, 0.1f);
	EXPECT_EQ(Indicator->AnimationTime, 0.0f);
}

TEST_F(FStatusWidgetTest, TheThrobberIsAnOption)
{
	Show(SNew(SLoadingIndicator).Message(INVTEXT("Indexing")).ShowThrobber(false));
	EXPECT_EQ(CountByType("SThrobber"), 0);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Indexing" }));
	Show(SNew(SLoadingIndicator).Message(INVTEXT("Indexing")).ShowThrobber(true));
	EXPECT_EQ(CountByType("SThrobber"), 1);
}
