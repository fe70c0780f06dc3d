#include "Support/UiDriver.h"

#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#include <random>

namespace
{
	/** Text that wraps to many lines at any width of these tests. */
	FText LongText(int32 Number)
	{
		FString Text = FString::FromInt(Number);
		for (int32 Word = 0; Word < 120; ++Word)
		{
			Text += TEXT(" wandering words");
		}
		return FText::FromString(Text);
	}
}

class FScrollBox : public FWidgetTest
{
protected:
	/** A box of 400 by 200 at the window's corner. */
	void ShowBox(const TSharedRef<SScrollBox>& InBox)
	{
		Box = InBox;
		Show(SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)[SNew(SBox).WidthOverride(400).HeightOverride(200)[InBox]]);
	}
	TSharedRef<SBox> AddRow(double Height)
	{
		TSharedPtr<SBox> Row;
		Box->AddSlot()[SAssignNew(Row, SBox).HeightOverride(static_cast<float>(Height))];
		Rows.Add(Row.ToSharedRef());
		return Row.ToSharedRef();
	}
	void ShowRows(int32 Count, double Height)
	{
		ShowBox(SNew(SScrollBox));
		for (int32 Index = 0; Index < Count; ++Index)
		{
			AddRow(Height);
		}
		PumpFrame();
	}
	void SetHeight(int32 Row, double Height)
	{
		Rows[Row]->SetHeightOverride(static_cast<float>(Height));
		PumpFrame();
	}
	float TopOf(int32 Row) const { return GetRect(*Rows[Row]).Top; }

	TSharedPtr<SScrollBox> Box;
	TArray<TSharedRef<SBox>> Rows;
};

TEST_F(FScrollBox, WheelMovesAndStopsAtTheEnds)
{
	ShowRows(10, 50);
	Scroll(Box.ToSharedRef(), 1.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f);
	Scroll(Box.ToSharedRef(), -1.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 48.0f);
	EXPECT_EQ(TopOf(1), 2.0f);
	Scroll(Box.ToSharedRef(), -100.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 300.0f);
	EXPECT_EQ(Box->GetScrollOffsetOfEnd(), 300.0f);
	EXPECT_EQ(TopOf(9), 150.0f);
}

TEST_F(FScrollBox, EndIsHeldUntilTheUserScrolls)
{
	ShowRows(2, 50);
	Box->ScrollToEnd();
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f) << "short content starts at the top";
	for (int32 Index = 0; Index < 5; ++Index)
	{
		AddRow(50);
		PumpFrame();
	}
	EXPECT_EQ(TopOf(6), 150.0f) << "the newest row is whole in view in the frame in which it appears";
	SetHeight(6, 90);
	EXPECT_EQ(Box->GetScrollOffset(), 190.0f);
	SetHeight(0, 10);
	EXPECT_EQ(Box->GetScrollOffset(), 150.0f);
	EXPECT_EQ(TopOf(6), 110.0f);

	Scroll(Box.ToSharedRef(), -1.0f);
	AddRow(50);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 200.0f) << "a wheel that cannot move does not let go";
	Scroll(Box.ToSharedRef(), 1.0f);
	AddRow(50);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 152.0f) << "the user looks at something else";
	Box->ScrollToEnd();
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 250.0f);
	Box->ScrollToStart();
	AddRow(50);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f);
}

TEST_F(FScrollBox, WhatIsInViewStaysWhenThingsAboveChange)
{
	ShowRows(20, 50);
	Box->SetScrollOffset(520.0f);
	PumpFrame();
	PumpFrame();
	EXPECT_EQ(TopOf(11), 30.0f);
	SetHeight(3, 250);
	EXPECT_EQ(TopOf(11), 30.0f) << "a row above has grown";
	EXPECT_EQ(Box->GetScrollOffset(), 720.0f);
	Box->RemoveSlot(Rows[0]);
	PumpFrame();
	EXPECT_EQ(TopOf(11), 30.0f) << "a row above is gone";
	TSharedPtr<SWidget> New;
	Box->InsertSlot(2)[SAssignNew(New, SBox).HeightOverride(70)];
	PumpFrame();
	EXPECT_EQ(TopOf(11), 30.0f) << "a row above is new";
	SetHeight(10, 100);
	EXPECT_EQ(TopOf(10), -20.0f) << "the first row in view keeps its top";
	EXPECT_EQ(TopOf(11), 80.0f);
	Box->ClearChildren();
	Rows.Empty();
	AddRow(30);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f);
	EXPECT_EQ(TopOf(0), 0.0f);
}

TEST_F(FScrollBox, ARowOpenedByAClickGrowsDownwards)
{
	ShowRows(20, 50);
	Scroll(Box.ToSharedRef(), -10.0f);
	Scroll(Box.ToSharedRef(), 1.0f);
	PumpFrame();
	const float Header = TopOf(10);
	EXPECT_GT(Header, 0.0f);
	SetHeight(10, 300);
	EXPECT_EQ(TopOf(10), Header) << "scrolling up before must not make the rows above give way";
}

TEST_F(FScrollBox, TextThatWrapsLateDoesNotMoveWhatIsInView)
{
	ShowBox(SNew(SScrollBox));
	TArray<TSharedPtr<STextBlock>> Texts;
	for (int32 Index = 0; Index < 40; ++Index)
	{
		TSharedPtr<STextBlock>& Text = Texts.AddDefaulted_GetRef();
		Box->AddSlot()[SAssignNew(Text, STextBlock).AutoWrapText(true).Text(LongText(Index))];
	}
	Box->ScrollToEnd();
	PumpFrame();
	EXPECT_EQ(GetRect(*Texts[39]).Bottom, 200.0f) << "wrapped and at the end in one frame";
	EXPECT_LT(Texts[0]->GetDesiredSize().Y, Texts[39]->GetDesiredSize().Y / 2) << "what was never in view was never wrapped";
	for (int32 Notch = 0; Notch < 30; ++Notch)
	{
		// The first row in view moves by exactly the notch, whatever comes in above it.
		int32 First = 0;
		while (First < 39 && GetRect(*Texts[First]).Bottom <= 0.0f)
		{
			++First;
		}
		TSharedPtr<STextBlock> Watched;
		for (const TSharedPtr<STextBlock>& Text : Texts)
		{
			if (IsShown(Text.ToSharedRef()) && GetRect(*Text).Bottom > 0.0f && GetRect(*Text).Top < 150.0f)
			{
				Watched = Text;
			}
		}
		ASSERT_TRUE(Watched.IsValid());
		const float Before = GetRect(*Watched).Bottom;
		Scroll(Box.ToSharedRef(), 1.0f);
		EXPECT_EQ(GetRect(*Watched).Bottom, Before + 48.0f) << "notch " << Notch;
		PumpFrame();
		EXPECT_EQ(GetRect(*Watched).Bottom, Before + 48.0f) << "and stays there, notch " << Notch;
	}
}

TEST_F(FScrollBox, OnlyRowsInViewArePaintedAndMeasured)
{
	ShowRows(10000, 50);
	Box->SetScrollOffset(250000.0f);
	PumpFrame();
	const FWidgetCounters Before = SWidget::GetCounters();
	PumpFrame();
	const FWidgetCounters After = SWidget::GetCounters();
	EXPECT_LE(After.Painted - Before.Painted, 12u);
	EXPECT_LE(After.Measured - Before.Measured, 5u);
	EXPECT_EQ(TopOf(5000), 0.0f);
}

TEST_F(FScrollBox, RowsThatCanChangeAreMeasuredInTurn)
{
	std::vector<float> Lengths[2];
	std::vector<float> TopsInView[2];
	for (const bool bEverything : { false, true })
	{
		SCOPED_TRACE(bEverything ? "all of them" : "in turn");
		SScrollBox::SetMeasureEverything(bEverything);
		TArray<float> Heights;
		Heights.Init(50.0f, 5000);
		Rows.Empty();
		ShowBox(SNew(SScrollBox));
		for (int32 Index = 0; Index < 5000; ++Index)
		{
			TSharedPtr<SBox> Row;
			Box->AddSlot()[SAssignNew(Row, SBox).HeightOverride_Lambda([&Heights, Index] { return FOptionalSize(Heights[Index]); })];
			Rows.Add(Row.ToSharedRef());
		}
		PumpFrame();
		Box->SetScrollOffset(100000.0f);
		PumpFrame();
		PumpFrame();
		Heights[10] = 80.0f; // Above the view,
		Heights[2001] = 90.0f; // in it,
		Heights[4999] = 10.0f; // and below.
		const uint64 Before = SWidget::GetCounters().Measured;
		PumpFrame();
		const uint64 InOneFrame = SWidget::GetCounters().Measured - Before;
		EXPECT_EQ(InOneFrame >= 5000u, bEverything);
		EXPECT_LE(InOneFrame, bEverything ? 11000u : 100u);
		EXPECT_EQ(TopOf(2002) - TopOf(2001), 90.0f) << "what is in view is always true";
		for (int32 Frame = 0; Frame < 180; ++Frame)
		{
			PumpFrame();
		}
		Lengths[bEverything].push_back(Box->GetScrollOffsetOfEnd());
		Lengths[bEverything].push_back(Box->GetScrollOffset());
		TopsInView[bEverything] = { TopOf(2000), TopOf(2001), TopOf(2002) };
		Show(SNew(SSpacer));
	}
	SScrollBox::SetMeasureEverything(false);
	EXPECT_EQ(Lengths[0], std::vector<float>({ 250000.0f + 30.0f + 40.0f - 40.0f - 200.0f, 100030.0f }));
	EXPECT_EQ(Lengths[0], Lengths[1]);
	EXPECT_EQ(TopsInView[0], TopsInView[1]);
}

TEST_F(FScrollBox, RowsKeepTheirPlacesWhateverHappensToSlots)
{
	ShowRows(40, 10);
	std::vector<TSharedRef<SBox>> Shown(Rows.begin(), Rows.end());
	std::mt19937 Random(11);
	const auto Make = [&Random] { return SNew(SBox).HeightOverride(static_cast<float>(10 + Random() % 40)); };
	for (int32 Step = 0; Step < 600; ++Step)
	{
		const int32 Where = static_cast<int32>(Random() % Shown.size());
		const TSharedRef<SBox> New = Make();
		switch (Random() % 7)
		{
		case 0:
		case 1:
			Box->AddSlot()[New];
			Shown.push_back(New);
			break;
		case 2:
			Box->InsertSlot(Where)[New];
			Shown.insert(Shown.begin() + Where, New);
			break;
		case 3:
			Box->RemoveSlot(Shown[Where]);
			Shown.erase(Shown.begin() + Where);
			break;
		case 4:
			Box->GetSlot(Where).AttachWidget(New);
			Shown[Where] = New;
			break;
		case 5:
			Shown[Where]->SetHeightOverride(static_cast<float>(10 + Random() % 40));
			break;
		case 6:
			Shown[Where]->SetVisibility(Random() % 2 ? EVisibility::Collapsed : EVisibility::Visible);
			break;
		}
		if (Random() % 3 == 0)
		{
			continue; // Several changes between two frames.
		}
		PumpFrame();
		double Length = 0.0;
		for (const TSharedRef<SBox>& Row : Shown)
		{
			Length += Row->GetVisibility().IsCollapsed() ? 0.0 : Row->GetDesiredSize().Y;
		}
		ASSERT_EQ(Box->GetScrollOffsetOfEnd(), static_cast<float>(Length) - 200.0f) << "step " << Step;
	}
}

TEST_F(FScrollBox, ARowAtTheEndCostsNoneOfTheOthers)
{
	ShowRows(100, 10);
	int32 Looks = 0;
	const TAttribute<FMargin> Padding = TAttribute<FMargin>::CreateLambda(
		[&Looks]
		{
			++Looks;
			return FMargin(0.0f);
		});
	Box->InsertSlot(5).Padding(Padding)[SNew(SBox).HeightOverride(10)];
	Box->ScrollToEnd();
	PumpFrame();
	PumpFrame();
	Looks = 0;
	AddRow(10);
	PumpFrame();
	EXPECT_EQ(Looks, 0) << "far from the new row";
	EXPECT_EQ(Box->GetScrollOffsetOfEnd(), 102 * 10.0f - 200.0f);
	Box->InsertSlot(3)[SNew(SBox).HeightOverride(10)];
	PumpFrame();
	EXPECT_GT(Looks, 0) << "moved";
}

TEST_F(FScrollBox, RowsMayComeAndGoWhileTheyAreMeasured)
{
	ShowRows(3, 50);
	bool bRemove = false;
	Box->AddSlot()[SNew(SBox).HeightOverride_Lambda(
		[this, &bRemove]
		{
			if (bRemove)
			{
				bRemove = false;
				Box->RemoveSlot(Rows[1]);
			}
			return FOptionalSize(20.0f);
		})];
	PumpFrame();
	bRemove = true;
	PumpFrame();
	PumpFrame();
	EXPECT_EQ(TopOf(2), 50.0f);
	EXPECT_EQ(Box->NumSlots(), 3);
}

TEST_F(FScrollBox, WheelBelongsToTheDirectionThatScrolls)
{
	TSharedPtr<SScrollBox> Code;
	ShowBox(SNew(SScrollBox) +
		SScrollBox::Slot()[SAssignNew(Code, SScrollBox).Orientation(Orient_Horizontal).ScrollBarThickness(FVector2D(4, 4)) +
			SScrollBox::Slot()[SNew(SSpacer).Size(FVector2D(900, 100))]] +
		SScrollBox::Slot()[SNew(SSpacer).Size(FVector2D(10, 500))]);
	Scroll(Code.ToSharedRef(), -1.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 48.0f) << "a plain wheel over code scrolls the conversation";
	EXPECT_EQ(Code->GetScrollOffset(), 0.0f);
	const FModifierKeysState Shift(true, false, false, false, false, false);
	App().GetMessageHandler().OnMouseWheel(FVector2D(0, -1), FVector2D(100, 20), Shift);
	PumpFrame();
	EXPECT_EQ(Code->GetScrollOffset(), 48.0f);
	App().GetMessageHandler().OnMouseWheel(FVector2D(-1, 0), FVector2D(100, 20), FModifierKeysState());
	PumpFrame();
	EXPECT_EQ(Code->GetScrollOffset(), 0.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 48.0f);
}

TEST_F(FScrollBox, InnerBoxAtItsEndHandsTheWheelOn)
{
	TSharedPtr<SScrollBox> Inner;
	ShowBox(SNew(SScrollBox) +
		SScrollBox::Slot()[SNew(SBox).HeightOverride(
			100)[SAssignNew(Inner, SScrollBox) + SScrollBox::Slot()[SNew(SSpacer).Size(FVector2D(10, 140))]]] +
		SScrollBox::Slot()[SNew(SSpacer).Size(FVector2D(10, 500))]);
	Scroll(Inner.ToSharedRef(), -1.0f);
	EXPECT_EQ(Inner->GetScrollOffset(), 40.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f);
	Scroll(Inner.ToSharedRef(), -1.0f);
	EXPECT_EQ(Box->GetScrollOffset(), 48.0f);
}

TEST_F(FScrollBox, ThumbShowsAndDragsTheView)
{
	ShowRows(16, 50);
	const TSharedRef<SWidget> Bar = FindByType("SScrollBar").at(0);
	EXPECT_EQ(GetRect(*Bar).Left, 388.0f);
	EXPECT_EQ(GetRect(*Rows[0]).Right, 388.0f);
	const auto Thumb = [this]
	{
		return App().GetLastElements().GetElements().FilterByPredicate(
			[](const FSlateDrawElement& Element) { return Element.Type == ESlateDrawType::RoundedBox; });
	};
	ASSERT_EQ(Thumb().Num(), 1);
	EXPECT_EQ(Thumb()[0].Rect, FSlateRect(392.0f, 0.0f, 396.0f, 50.0f));
	EXPECT_EQ(Thumb()[0].Color, FColor(0x43, 0x49, 0x59, 0xFF));
	MoveMouse(FVector2D(394, 10));
	EXPECT_EQ(Thumb()[0].Rect, FSlateRect(390.0f, 0.0f, 398.0f, 50.0f));
	EXPECT_EQ(Thumb()[0].Color, FColor(0x5B, 0x63, 0x73, 0xFF));
	PressMouse(FVector2D(394, 10));
	EXPECT_EQ(Thumb()[0].Color, FColor(0x80, 0x88, 0x96, 0xFF));
	MoveMouse(FVector2D(500, 85));
	EXPECT_EQ(Box->GetScrollOffset(), 300.0f) << "half of the way";
	EXPECT_EQ(Thumb()[0].Rect, FSlateRect(390.0f, 75.0f, 398.0f, 125.0f));
	MoveMouse(FVector2D(500, 900));
	EXPECT_EQ(Box->GetScrollOffset(), 600.0f);
	ReleaseMouse(FVector2D(500, 900));
	MoveMouse(FVector2D(394, 20));
	EXPECT_EQ(Box->GetScrollOffset(), 600.0f) << "let go";
	ClickAt(FVector2D(394, 100));
	EXPECT_EQ(Box->GetScrollOffset(), 300.0f) << "beside the thumb: it jumps under the pointer";

	for (int32 Row = 0; Row < 16; ++Row)
	{
		Rows[Row]->SetHeightOverride(5000.0f);
	}
	Box->ScrollToStart();
	MoveMouse(FVector2D(100, 100));
	EXPECT_EQ(Thumb()[0].Rect.Height(), 24.0f) << "never too small to be caught";
	for (int32 Row = 0; Row < 16; ++Row)
	{
		Rows[Row]->SetHeightOverride(5.0f);
	}
	PumpFrame();
	EXPECT_EQ(Thumb().Num(), 0);
	EXPECT_EQ(GetRect(*Rows[0]).Right, 400.0f) << "without overflow the bar gives its room back";
}

TEST_F(FScrollBox, UserScrollsAreTold)
{
	std::vector<float> Told;
	ShowBox(SNew(SScrollBox).OnUserScrolled_Lambda([&Told](float Offset) { Told.push_back(Offset); }));
	for (int32 Index = 0; Index < 16; ++Index)
	{
		AddRow(50);
	}
	PumpFrame();
	Box->ScrollToEnd();
	PumpFrame();
	Box->SetScrollOffset(100.0f);
	PumpFrame();
	EXPECT_EQ(Told, std::vector<float>());
	Scroll(Box.ToSharedRef(), -1.0f);
	ClickAt(FVector2D(394, 199));
	EXPECT_EQ(Told, std::vector<float>({ 148.0f, 600.0f }));
}

TEST_F(FScrollBox, DescendantsComeIntoView)
{
	ShowRows(10, 50);
	TSharedPtr<SWidget> Deep;
	Box->AddSlot()[SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[SNew(SBox).HeightOverride(400)] +
		SVerticalBox::Slot().AutoHeight()[SAssignNew(Deep, SBox).HeightOverride(20)]];
	PumpFrame();
	Box->ScrollDescendantIntoView(Rows[2]);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f) << "in view already";
	Box->ScrollDescendantIntoView(Rows[5]);
	PumpFrame();
	EXPECT_EQ(TopOf(5), 150.0f) << "no further than needed";
	Box->ScrollDescendantIntoView(Rows[1], false, EDescendantScrollDestination::Center);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f);
	Box->ScrollDescendantIntoView(Deep);
	PumpFrame();
	EXPECT_EQ(GetRect(*Deep).Bottom, 200.0f) << "found inside a row that had never been painted";
	Box->ScrollDescendantIntoView(SNew(SSpacer));
	PumpFrame();
	EXPECT_EQ(GetRect(*Deep).Bottom, 200.0f) << "a stranger moves nothing";
}

TEST_F(FScrollBox, KeysScrollWhenNobodyInsideWantsThem)
{
	ShowRows(16, 50);
	const FGeometry Geometry = Box->GetCachedGeometry();
	const auto Press = [this, &Geometry](const FKey& Key)
	{
		const bool bHandled = Box->OnKeyDown(Geometry, FKeyEvent(Key, FModifierKeysState())).IsEventHandled();
		PumpFrame();
		return bHandled;
	};
	EXPECT_FALSE(Press(EKeys::PageUp)) << "nowhere to go: for somebody else";
	EXPECT_TRUE(Press(EKeys::PageDown));
	EXPECT_EQ(Box->GetScrollOffset(), 168.0f);
	EXPECT_TRUE(Press(EKeys::Down));
	EXPECT_EQ(Box->GetScrollOffset(), 192.0f);
	EXPECT_FALSE(Press(EKeys::Right));
	EXPECT_TRUE(Press(EKeys::End));
	EXPECT_EQ(Box->GetScrollOffset(), 600.0f);
	AddRow(50);
	PumpFrame();
	EXPECT_EQ(Box->GetScrollOffset(), 650.0f) << "gone to the end, one stays there";
	EXPECT_TRUE(Press(EKeys::Home));
	EXPECT_EQ(Box->GetScrollOffset(), 0.0f);
}
