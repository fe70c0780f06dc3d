#include "Support/UiDriver.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/Layout/SWidgetSwitcher.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SOverlay.h"

#include <cstdio>

namespace
{
	TSharedRef<SWidget> Block(double Width, double Height, EVisibility Visibility = EVisibility::Visible)
	{
		return SNew(SSpacer).Size(FVector2D(Width, Height)).Visibility(Visibility);
	}

	std::string Number(double Value)
	{
		char Text[32];
		std::snprintf(Text, sizeof(Text), "%g", Value);
		return Text;
	}

	/** "x,y WxH" of each arranged child. */
	std::string ArrangeIn(const TSharedRef<SWidget>& Panel, double Width, double Height)
	{
		Panel->SlatePrepass(1.0f);
		FArrangedChildren Arranged(EVisibility::Visible);
		Panel->ArrangeChildren(FGeometry::MakeRoot(FVector2D(Width, Height), FVector2D(0, 0), 1.0f), Arranged);
		std::string Text;
		for (int32 Index = 0; Index < Arranged.Num(); ++Index)
		{
			const FGeometry& Geometry = Arranged[Index].Geometry;
			Text += (Index > 0 ? " | " : "") + Number(Geometry.GetAbsolutePosition().X) + "," + Number(Geometry.GetAbsolutePosition().Y) +
				" " + Number(Geometry.GetLocalSize().X) + "x" + Number(Geometry.GetLocalSize().Y);
		}
		return Text;
	}

	std::string DesiredOf(const TSharedRef<SWidget>& Panel)
	{
		Panel->SlatePrepass(1.0f);
		return Number(Panel->GetDesiredSize().X) + "x" + Number(Panel->GetDesiredSize().Y);
	}

	/** Measured, arranged and measured again as a frame does, until nothing asks for more. */
	std::string SettleIn(const TSharedRef<SWidget>& Panel, double Width, double Height)
	{
		std::string Text;
		for (int32 Pass = 0; Pass < 4; ++Pass)
		{
			Text = ArrangeIn(Panel, Width, Height);
			if (!Panel->NeedsPrepass())
			{
				return Text;
			}
		}
		return "does not settle: " + Text;
	}

	struct FPanelCase
	{
		const char* Why;
		TSharedRef<SWidget> Panel;
		double Width;
		double Height;
		const char* Desired;
		const char* Rectangles;
	};

	void CheckPanels(const std::vector<FPanelCase>& Cases)
	{
		for (const FPanelCase& Case : Cases)
		{
			SCOPED_TRACE(Case.Why);
			EXPECT_EQ(DesiredOf(Case.Panel), Case.Desired);
			EXPECT_EQ(ArrangeIn(Case.Panel, Case.Width, Case.Height), Case.Rectangles);
		}
	}
}

using FPanelLayout = FWidgetTest;

TEST_F(FPanelLayout, ColumnsAndRows)
{
	using V = SVerticalBox;
	using H = SHorizontalBox;
	CheckPanels({
		{ "auto slots take what they want, the fill slot takes the rest",
			SNew(V) + V::Slot().AutoHeight()[Block(10, 20)] + V::Slot().FillHeight(1.0f)[Block(10, 5)] +
				V::Slot().AutoHeight()[Block(10, 30)],
			100, 200, "10x55", "0,0 100x20 | 0,20 100x150 | 0,170 100x30" },
		{ "weights share by ratio", SNew(H) + H::Slot().FillWidth(1.0f)[Block(0, 10)] + H::Slot().FillWidth(3.0f)[Block(0, 10)], 200, 40,
			"0x10", "0,0 50x40 | 50,0 150x40" },
		{ "a slot without a rule fills", SNew(H) + H::Slot()[Block(5, 5)] + H::Slot().AutoWidth()[Block(5, 5)], 100, 10, "10x5",
			"0,0 95x10 | 95,0 5x10" },
		{ "a maximum gives its rest to the others",
			SNew(H) + H::Slot().FillWidth(1.0f).MaxWidth(30.0f)[Block(0, 10)] + H::Slot().FillWidth(1.0f)[Block(0, 10)], 200, 10, "0x10",
			"0,0 30x10 | 30,0 170x10" },
		{ "a minimum takes from the others",
			SNew(H) + H::Slot().FillWidth(1.0f).MinWidth(150.0f)[Block(0, 10)] + H::Slot().FillWidth(1.0f)[Block(0, 10)], 200, 10, "150x10",
			"0,0 150x10 | 150,0 50x10" },
		{ "padding belongs to the slot, alignment to the child",
			SNew(V) + V::Slot().AutoHeight().Padding(4.0f, 8.0f).HAlign(HAlign_Center)[Block(20, 10)] +
				V::Slot().FillHeight(1.0f).VAlign(VAlign_Bottom).HAlign(HAlign_Right).Padding(1.0f, 2.0f, 3.0f, 4.0f)[Block(10, 10)],
			100, 100, "28x42", "40,8 20x10 | 87,86 10x10" },
		{ "a collapsed child takes no room, its padding neither",
			SNew(V) + V::Slot().AutoHeight().Padding(10.0f)[Block(10, 10, EVisibility::Collapsed)] + V::Slot().AutoHeight()[Block(10, 10)],
			50, 50, "10x10", "0,0 50x10" },
		{ "a hidden child keeps its room and is not shown",
			SNew(V) + V::Slot().AutoHeight()[Block(10, 10, EVisibility::Hidden)] + V::Slot().AutoHeight()[Block(10, 10)], 50, 50, "10x20",
			"0,10 50x10" },
		{ "too little room: auto slots stay whole, fill slots get nothing",
			SNew(V) + V::Slot().AutoHeight()[Block(10, 30)] + V::Slot().FillHeight(1.0f)[Block(10, 10)] +
				V::Slot().AutoHeight()[Block(10, 30)],
			20, 40, "10x70", "0,0 20x30 | 0,30 20x0 | 0,30 20x30" },
		{ "across, an aligned child is no larger than its slot", SNew(V) + V::Slot().AutoHeight().HAlign(HAlign_Left)[Block(80, 10)], 50,
			50, "80x10", "0,0 50x10" },
	});
}

TEST_F(FPanelLayout, OverlaysBoxesAndBorders)
{
	CheckPanels({
		{ "layers share the room, the largest decides",
			SNew(SOverlay) + SOverlay::Slot()[Block(10, 50)] +
				SOverlay::Slot().HAlign(HAlign_Right).VAlign(VAlign_Center).Padding(2.0f)[Block(30, 10)],
			100, 60, "34x50", "0,0 100x60 | 68,25 30x10" },
		{ "overrides win over content", SNew(SBox).WidthOverride(40).HeightOverride(20.5f)[Block(100, 100)], 60, 60, "40x20.5",
			"0,0 60x60" },
		{ "limits, minimum over maximum", SNew(SBox).MaxDesiredWidth(40).MinDesiredHeight(70).MaxDesiredHeight(30)[Block(100, 50)], 40, 70,
			"40x70", "0,0 40x70" },
		{ "padding in one, two and four numbers counts into limits", SNew(SBox).Padding(3, 5).MinDesiredWidth(10)[Block(10, 10)], 30, 30,
			"16x20", "3,5 24x20" },
		{ "alignment inside a box", SNew(SBox).HAlign(HAlign_Center).VAlign(VAlign_Bottom).Padding(0.0f, 0.0f, 0.0f, 6.0f)[Block(10, 10)],
			50, 50, "10x16", "20,34 10x10" },
		{ "a box around nothing visible wants its override alone", SNew(SBox).WidthOverride(12)[Block(30, 30, EVisibility::Collapsed)], 12,
			12, "12x0", "" },
		{ "negative padding lets content reach outside", SNew(SBox).Padding(1.0f, -3.0f, 1.0f, 0.0f)[Block(10, 10)], 12, 7, "12x7",
			"1,-3 10x10" },
		{ "a border has padding 2 unless told otherwise", SNew(SBorder)[Block(10, 10)], 30, 20, "14x14", "2,2 26x16" },
		{ "a switcher has the size of what it shows",
			SNew(SWidgetSwitcher).WidgetIndex(1) + SWidgetSwitcher::Slot()[Block(90, 90)] +
				SWidgetSwitcher::Slot().Padding(1.0f)[Block(10, 20)],
			50, 50, "12x22", "1,1 48x48" },
		{ "a switcher sent to no child shows nothing", SNew(SWidgetSwitcher).WidgetIndex(7) + SWidgetSwitcher::Slot()[Block(90, 90)], 50,
			50, "0x0", "" },
	});
}

TEST_F(FPanelLayout, WrapBoxBreaksLines)
{
	using W = SWrapBox;
	const FVector2D Gap(5, 3);
	struct FCase
	{
		const char* Why;
		TSharedRef<SWidget> Panel;
		double Width;
		const char* Rectangles;
		const char* Desired; // Once settled: the width of one line, the height of all.
	};
	const FCase Cases[] = {
		{ "all in one line", SNew(W).UseAllottedSize(true).InnerSlotPadding(Gap) + W::Slot()[Block(30, 10)] + W::Slot()[Block(40, 20)], 75,
			"0,0 30x20 | 35,0 40x20", "75x20" },
		{ "one unit less and the second moves down",
			SNew(W).UseAllottedSize(true).InnerSlotPadding(Gap) + W::Slot()[Block(30, 10)] + W::Slot()[Block(40, 20)], 74,
			"0,0 30x10 | 0,13 40x20", "75x33" },
		{ "lines are as high as their highest, children aligned in them",
			SNew(W).UseAllottedSize(true).InnerSlotPadding(Gap) + W::Slot().VAlign(VAlign_Center)[Block(30, 10)] +
				W::Slot()[Block(30, 20)] + W::Slot().Padding(2.0f)[Block(40, 10)],
			70, "0,5 30x10 | 35,0 30x20 | 2,25 40x10", "114x37" },
		{ "a child wider than the line gets the line", SNew(W).UseAllottedSize(true).InnerSlotPadding(Gap) + W::Slot()[Block(300, 10)], 100,
			"0,0 100x10", "300x10" },
		{ "collapsed children leave no gap",
			SNew(W).UseAllottedSize(true).InnerSlotPadding(Gap) + W::Slot()[Block(10, 10)] +
				W::Slot()[Block(10, 10, EVisibility::Collapsed)] + W::Slot()[Block(10, 10)],
			100, "0,0 10x10 | 15,0 10x10", "25x10" },
		{ "nothing at all", SNew(W).UseAllottedSize(true).InnerSlotPadding(Gap), 100, "", "0x0" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		EXPECT_EQ(SettleIn(Case.Panel, Case.Width, 100), Case.Rectangles);
		EXPECT_EQ(DesiredOf(Case.Panel), Case.Desired);
	}
	const TSharedRef<SWidget> Fixed = SNew(W).PreferredSize(50.0f) + W::Slot()[Block(30, 10)] + W::Slot()[Block(30, 10)];
	EXPECT_EQ(DesiredOf(Fixed), "30x20") << "without UseAllottedSize the preferred size breaks lines";
	const TSharedRef<SWidget> Right = SNew(W).UseAllottedSize(true).HAlign(HAlign_Right) + W::Slot()[Block(30, 10)];
	EXPECT_EQ(SettleIn(Right, 50, 10), "20,0 30x10");
	const TSharedRef<SWidget> Column =
		SNew(W).UseAllottedSize(true).Orientation(Orient_Vertical) + W::Slot()[Block(10, 30)] + W::Slot()[Block(20, 30)];
	EXPECT_EQ(SettleIn(Column, 100, 50), "0,0 10x30 | 10,0 20x30");
}

TEST_F(FPanelLayout, WrapBoxSettlesWithinItsParentsFrame)
{
	TSharedPtr<SWrapBox> Wrap;
	TSharedPtr<SWidget> Below;
	Show(SNew(SVerticalBox) +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Wrap, SWrapBox).UseAllottedSize(true) + SWrapBox::Slot()[Block(500, 20)] +
			SWrapBox::Slot()[Block(500, 20)] + SWrapBox::Slot()[Block(500, 20)]] +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Below, SBox).HeightOverride(10)]);
	EXPECT_EQ(GetRect(*Below).Top, 40.0f) << "two lines at 1280";
	Resize(800, 600);
	EXPECT_EQ(GetRect(*Below).Top, 60.0f) << "three lines at 800, in the same frame";
	Resize(1600, 600);
	EXPECT_EQ(GetRect(*Below).Top, 20.0f);
}

TEST_F(FPanelLayout, ScrollBoxPlacesWhatIsInView)
{
	using S = SScrollBox;
	const auto Make = [](double ThirdHeight)
	{
		return SNew(S) + S::Slot()[Block(10, 40)] + S::Slot().Padding(4.0f, 2.0f)[Block(20, 40)] +
			S::Slot().HAlign(HAlign_Center)[Block(30, ThirdHeight)];
	};
	EXPECT_EQ(SettleIn(Make(16), 100, 100), "0,0 100x40 | 4,42 92x40 | 35,84 30x16") << "what just fits has no bar";
	EXPECT_EQ(SettleIn(Make(17), 100, 100), "0,0 88x40 | 4,42 80x40 | 29,84 30x17 | 88,0 12x100") << "the bar takes its room";
	EXPECT_EQ(SettleIn(Make(500), 100, 50), "0,0 88x40 | 4,42 80x40 | 88,0 12x50") << "the third is out of view";
	const TSharedRef<SScrollBox> Scrolled = Make(500);
	Scrolled->SetScrollOffset(50.0f);
	EXPECT_EQ(SettleIn(Scrolled, 100, 50), "4,-8 80x40 | 29,34 30x500 | 88,0 12x50");
	Scrolled->SetScrollOffset(5000.0f);
	EXPECT_EQ(SettleIn(Scrolled, 100, 50), "29,-450 30x500 | 88,0 12x50") << "limited to the end";
	EXPECT_EQ(Scrolled->GetScrollOffset(), 534.0f);
	EXPECT_EQ(DesiredOf(Scrolled), "42x584");

	const TSharedRef<SWidget> Row = SNew(S).Orientation(Orient_Horizontal).ScrollBarThickness(FVector2D(4, 4)) + S::Slot()[Block(150, 30)];
	EXPECT_EQ(DesiredOf(Row), "150x30");
	EXPECT_EQ(SettleIn(Row, 100, 34), "0,0 150x30 | 0,30 100x4");
	EXPECT_EQ(DesiredOf(Row), "150x34") << "the bar's room is wanted once it shows";
	EXPECT_EQ(SettleIn(Row, 160, 34), "0,0 150x34");
}
