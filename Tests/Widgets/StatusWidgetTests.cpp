#include "VelmoraWidgetTest.h"
#include "Widgets/SErrorNotification.h"
#include "Widgets/SLoadingIndicator.h"

using FStatusWidgetTest = FVelmoraWidgetTest;

TEST_F(FStatusWidgetTest, TheErrorFadesInAndWaitsForItsHost)
{
	int32 Dismissed = 0;
	const TSharedRef<SErrorNotification> Error = SNew(SErrorNotification)
													 .ErrorMessage(INVTEXT("Failed to send message. Please try again."))
													 .OnDismissed_Lambda([&Dismissed] { ++Dismissed; });
	const auto GetAlpha = []
	{ return std::stoi(PaintedIn(*FindByType("STextBlock").at(0), ESlateDrawType::Glyphs).at(0).substr(6), nullptr, 16); };
	App().SetRootContent(Error);
	PumpFrame(0.15);
	EXPECT_NEAR(GetAlpha(), 128, 3);
	PumpFrame(0.16);
	EXPECT_EQ(GetAlpha(), 255);

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
	App().SetRootContent(SNew(SLoadingIndicator));
	PumpFrame();
	PumpFrame(0.02);
	// A frame counts for a quarter of a second at most.
	const auto After = [this](int32 Steps) -> std::string
	{
		for (int32 Step = 0; Step < Steps; ++Step)
		{
			PumpFrame(0.05);
		}
		return VisibleTexts().at(0);
	};
	EXPECT_EQ(After(5), "Loading");
	EXPECT_EQ(After(2), "Loading.");
	EXPECT_EQ(After(7), "Loading..");
	EXPECT_EQ(After(7), "Loading...");
	EXPECT_EQ(After(7), "Loading");
	EXPECT_EQ(After(2), "Loading") << "past one and a half seconds the time begins anew";
	EXPECT_EQ(After(5), "Loading");
	EXPECT_EQ(After(2), "Loading.");
}
