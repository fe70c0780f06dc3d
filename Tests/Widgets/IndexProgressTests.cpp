#include "Containers/Ticker.h"
#include "Host/HostEditor.h"
#include "VelmoraWidgetTest.h"
#include "Widgets/SIndexProgressWidget.h"

#include <algorithm>

class FIndexProgressTest : public FVelmoraWidgetTest
{
protected:
	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		FHostEditor::StartUp();
		Widget = SNew(SIndexProgressWidget);
		Show(Widget.ToSharedRef());
	}

	void TearDown() override
	{
		Widget.Reset();
		FHostEditor::ShutDown();
		FVelmoraWidgetTest::TearDown();
	}

	std::string TextFrom(const std::string& Word)
	{
		for (const std::string& Text : TextsIn(*Widget))
		{
			if (Text.starts_with(Word))
			{
				return Text;
			}
		}
		return std::string();
	}

	std::string TimeLeft(int32 Processed, int32 Total, double Elapsed)
	{
		Widget->UpdateProgress(Processed, Total, FString(), Elapsed);
		return TextFrom("Calculating") + TextFrom("Estimated");
	}

	std::string FileText(const std::string& Path)
	{
		Widget->UpdateProgress(1, 2, FString(Path.c_str()), 1.0);
		return TextFrom("Current");
	}

	static std::string ColorOf(const std::string& Text)
	{
		const FTextList Painted = PaintedIn(*FindByText(Text), ESlateDrawType::Glyphs);
		return Painted.empty() ? "00000000" : Painted[0];
	}

	/** Of the title, which has no transparency of its own. */
	static float Opacity() { return std::stoi(ColorOf("Code Intelligence Index").substr(6), nullptr, 16) / 255.0f; }

	TSharedPtr<SIndexProgressWidget> Widget;
};

TEST_F(FIndexProgressTest, FollowsABuildFromStartToFadeOut)
{
	EXPECT_EQ(Opacity(), 0.0f);
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Code Intelligence Index" }));

	Widget->UpdateProgress(0, 0, FString(), 0.0);
	EXPECT_TRUE(Widget->IsBuilding());
	PumpFrame(0.1);
	EXPECT_EQ(
		VisibleTexts(), (FTextList{ "Code Intelligence Index", "Starting index build...", "Calculating time remaining...", "Cancel" }));
	EXPECT_GT(Opacity(), 0.0f);
	EXPECT_LT(Opacity(), 1.0f);
	PumpSeconds(0.3);
	EXPECT_EQ(Opacity(), 1.0f);

	Widget->UpdateProgress(1234, 10000, TEXT("Source/A.cpp"), 0.5);
	PumpSeconds(2.0);
	EXPECT_EQ(VisibleTexts(),
		(FTextList{ "Code Intelligence Index", "Building index: 1,234/10,000 files (12%)", "Current: Source/A.cpp",
			"Estimated: 17 seconds remaining", "Cancel" }));
	const FTextList Bar = PaintedIn(*FindByType("SProgressBar").at(0), ESlateDrawType::RoundedBox);
	EXPECT_NE(std::find(Bar.begin(), Bar.end(), "95E7FFFF"), Bar.end());

	Widget->SetComplete(true, FText::GetEmpty());
	PumpFrame();
	EXPECT_EQ(VisibleTexts(), (FTextList{ "Code Intelligence Index", "Index build completed successfully!" }));
	EXPECT_EQ(DumpKey(FindByText("Index build completed successfully!")->GetDisplayedText()),
		"CodeIntel,BuildSuccess: Index build completed successfully!");
	// The fade-out shows one minus its opacity, so it begins at nothing and comes back.
	FHostEditor::ShutDown();
	PumpSeconds(1.0);
	EXPECT_EQ(Opacity(), 1.0f);
	EXPECT_EQ(ColorOf("Index build completed successfully!"), "95E795FF");
	Widget->Reset();
	PumpFrame();
	EXPECT_EQ(Opacity(), 0.0f);
	EXPECT_FALSE(Widget->IsBuilding());
}

TEST_F(FIndexProgressTest, TheCompletionFadesOutAfterThreeSeconds)
{
	Widget->UpdateProgress(1, 2, FString(), 1.0);
	Widget->SetComplete(false, INVTEXT("No."));
	PumpSeconds(0.5);
	EXPECT_EQ(VisibleTexts().back(), "No.");
	EXPECT_EQ(ColorOf("No."), "E79595FF");
	EXPECT_EQ(Opacity(), 1.0f);
	FTSTicker::GetCoreTicker().Tick(3.1f);
	PumpFrame(0.25);
	EXPECT_NEAR(Opacity(), 0.5f, 0.02f);
	PumpFrame(0.3);
	EXPECT_EQ(Opacity(), 1.0f);
}

TEST_F(FIndexProgressTest, AResetEndsWhateverFades)
{
	Widget->UpdateProgress(1, 2, FString(), 1.0);
	PumpFrame(0.1);
	Widget->Reset();
	PumpFrame(0.1);
	EXPECT_EQ(Opacity(), 0.0f) << "while it came";
	Widget->UpdateProgress(1, 2, FString(), 1.0);
	Widget->SetComplete(true, FText::GetEmpty());
	FTSTicker::GetCoreTicker().Tick(3.1f);
	PumpFrame(0.25);
	Widget->Reset();
	PumpFrame(0.1);
	EXPECT_EQ(Opacity(), 0.0f) << "while it went";
}

TEST_F(FIndexProgressTest, EstimatesTheTimeLeft)
{
	const std::tuple<int32, int32, double, const char*> Cases[] = {
		{ 0, 10, 5.0, "Calculating time remaining..." },
		{ 5, 0, 5.0, "Calculating time remaining..." },
		{ 5, 10, 0.99, "Calculating time remaining..." },
		{ 5, 10, 1.0, "Estimated: 1 seconds remaining" },
		{ 10, 20, 24.9, "Estimated: 25 seconds remaining" },
		{ 10, 20, 59.6, "Estimated: 60 seconds remaining" },
		{ 10, 20, 60.0, "Estimated: 1m 0s remaining" },
		{ 1, 10, 10.0, "Estimated: 1m 30s remaining" },
		{ 10, 20, 150.5, "Estimated: 2m 31s remaining" },
		{ 10, 20, 119.7, "Estimated: 1m 60s remaining" },
	};
	for (const auto& [Processed, Total, Elapsed, Text] : Cases)
	{
		EXPECT_EQ(TimeLeft(Processed, Total, Elapsed), Text) << Processed << '/' << Total << ' ' << Elapsed;
	}
}

TEST_F(FIndexProgressTest, ShortensLongPaths)
{
	EXPECT_EQ(FileText(""), "");
	EXPECT_EQ(FileText("A.cpp"), "Current: A.cpp");
	const std::string Eighty = std::string(73, 'f') + "/N.cpp1";
	ASSERT_EQ(Eighty.size(), 80u);
	EXPECT_EQ(FileText(Eighty), "Current: " + Eighty);
	// One more: three dots and the last 76 characters.
	EXPECT_EQ(FileText("x" + Eighty), "Current: ..." + ("x" + Eighty).substr(5));
	const std::string LongName(80, 'n');
	EXPECT_EQ(FileText("folder/" + LongName), "Current: ..." + LongName);
	const std::string Name74(74, 'n');
	EXPECT_EQ(FileText("folder/" + Name74), "Current: ...r/" + Name74);
	EXPECT_EQ(FileText("folder/" + Name74 + "n"), "Current: ..." + Name74 + "n");
}

TEST_F(FIndexProgressTest, CancelHidesAndDoesNotStop)
{
	Widget->UpdateProgress(1, 2, FString(), 1.0);
	PumpSeconds(0.5);
	Click(FindByText("Cancel"));
	EXPECT_TRUE(Widget->IsBuilding());
	// Over 0.3 seconds; the press and its release took a frame each.
	PumpFrame(0.15 - 1.0 / 60.0);
	EXPECT_NEAR(Opacity(), 0.5f, 0.1f);
	PumpFrame(0.2);
	EXPECT_EQ(Opacity(), 1.0f);
}
