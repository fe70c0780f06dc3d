#include "Support/UiDriver.h"

#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"

/** A text box with a popup that helps while one types, and another box beside it. */
class FMenuAnchorTest : public FWidgetTest
{
protected:
	TSharedPtr<SMenuAnchor> Anchor;
	TSharedPtr<SMultiLineEditableTextBox> Box;
	TSharedPtr<SMultiLineEditableTextBox> Other;
	TSharedPtr<SBox> BoxHolder;
	TSharedPtr<SBox> Gap;
	std::vector<bool> Changes;
	TSharedRef<SBox> Content = SNew(SBox).WidthOverride(120.0f).HeightOverride(60.0f);

	void ShowAnchor(float Above, EMenuPlacement Placement = MenuPlacement_AboveAnchor)
	{
		// clang-format off
		Show(
			SNew(SVerticalBox)
			+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Gap, SBox).HeightOverride(Above)]
			+ SVerticalBox::Slot().AutoHeight()
			[
				SAssignNew(Anchor, SMenuAnchor)
				.Placement(Placement)
				.MenuContent(Content)
				.OnMenuOpenChanged_Lambda([this](bool bOpen) { Changes.push_back(bOpen); })
				[
					SAssignNew(BoxHolder, SBox).HeightOverride(80.0f)
					[
						SAssignNew(Box, SMultiLineEditableTextBox)
					]
				]
			]
			+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Other, SMultiLineEditableTextBox)]);
		// clang-format on
		App().SetKeyboardFocus(Box);
		TypeText("words");
	}

	void Open(bool bFocusMenu = false)
	{
		Anchor->SetIsOpen(true, bFocusMenu);
		PumpFrame();
		ASSERT_TRUE(Anchor->IsOpen());
	}
};

TEST_F(FMenuAnchorTest, TheUserGoesOnTypingBesideThePopup)
{
	ShowAnchor(200.0f);
	Open();
	EXPECT_TRUE(Box->HasKeyboardFocus());
	TypeText("!");
	EXPECT_EQ(Utf8(Box->GetText()), "words!");
	ClickAt(FVector2D(10, 210));
	EXPECT_EQ(Box->GetCursorLocation().GetOffset(), 0) << "a press reaches the box";
	EXPECT_TRUE(Anchor->IsOpen());
	ClickAt(GetCenter(Content));
	EXPECT_TRUE(Anchor->IsOpen());
	EXPECT_TRUE(Box->HasKeyboardFocus());
	PressKey("Escape");
	EXPECT_FALSE(Anchor->IsOpen());
}

TEST_F(FMenuAnchorTest, ItClosesWhenTheUserTurnsElsewhere)
{
	ShowAnchor(200.0f);
	Open();
	ClickAt(FVector2D(300, 50));
	EXPECT_FALSE(Anchor->IsOpen()) << "a press on nothing";
	App().SetKeyboardFocus(Box);
	Open();
	Click(Other.ToSharedRef());
	EXPECT_FALSE(Anchor->IsOpen()) << "a press elsewhere";
	EXPECT_TRUE(Other->HasKeyboardFocus()) << "which does its work, too";
	App().SetKeyboardFocus(Box);
	Open();
	App().SetKeyboardFocus(Other);
	PumpFrame();
	EXPECT_FALSE(Anchor->IsOpen()) << "the keyboard has gone";
	Open();
	PumpSeconds(0.1);
	EXPECT_TRUE(Anchor->IsOpen()) << "the keyboard was never here";
}

TEST_F(FMenuAnchorTest, WithTheKeyboardInThePopupAPressOnTheAnchorOnlyCloses)
{
	ShowAnchor(200.0f);
	Open(true);
	ClickAt(FVector2D(10, 210));
	EXPECT_FALSE(Anchor->IsOpen());
	EXPECT_EQ(Box->GetCursorLocation().GetOffset(), 5);
}

TEST_F(FMenuAnchorTest, ItFollowsPlaceAndSizeOfItsAnchor)
{
	for (const EMenuPlacement Placement : { MenuPlacement_AboveAnchor, MenuPlacement_BelowAnchor })
	{
		const bool bAbove = Placement == MenuPlacement_AboveAnchor;
		ShowAnchor(200.0f, Placement);
		Open();
		EXPECT_EQ(GetRect(*Content), bAbove ? FSlateRect(0.0f, 138.0f, 120.0f, 198.0f) : FSlateRect(0.0f, 282.0f, 120.0f, 342.0f));
		Gap->SetHeightOverride(250.0f);
		BoxHolder->SetHeightOverride(100.0f);
		PumpSeconds(0.1);
		EXPECT_EQ(GetRect(*Content), bAbove ? FSlateRect(0.0f, 188.0f, 120.0f, 248.0f) : FSlateRect(0.0f, 352.0f, 120.0f, 412.0f));
		Anchor->SetIsOpen(false);
	}
}

TEST_F(FMenuAnchorTest, ItStaysInTheWindow)
{
	ShowAnchor(30.0f);
	Open();
	EXPECT_EQ(GetRect(*Content).Top, 112.0f) << "below, where there is room";
	Resize(100, 60);
	PumpFrame();
	EXPECT_EQ(GetRect(*Content), FSlateRect(0.0f, 0.0f, 100.0f, 60.0f)) << "at any price";
}

TEST_F(FMenuAnchorTest, WhatIsTooTallForEitherSideLeavesItsAnchorInView)
{
	Content->SetHeightOverride(400.0f);
	ShowAnchor(100.0f);
	Open();
	EXPECT_EQ(GetRect(*Content), FSlateRect(0.0f, 182.0f, 120.0f, 582.0f)) << "below there is room for all of it";
	Resize(600, 300);
	PumpFrame();
	EXPECT_EQ(GetRect(*Content), FSlateRect(0.0f, 182.0f, 120.0f, 300.0f)) << "there is more room below";
	Gap->SetHeightOverride(210.0f);
	PumpSeconds(0.1);
	EXPECT_EQ(GetRect(*Content), FSlateRect(0.0f, 0.0f, 120.0f, 208.0f)) << "there is more room above";
}

TEST_F(FMenuAnchorTest, ItOpensAgainWithTheSameContentAtOnce)
{
	ShowAnchor(200.0f);
	Open();
	Anchor->SetIsOpen(false);
	Anchor->SetIsOpen(true, false);
	PumpFrame();
	PumpFrame();
	EXPECT_TRUE(Anchor->IsOpen());
	EXPECT_TRUE(IsShown(Content));
	Anchor->SetIsOpen(true);
	Anchor->SetIsOpen(false);
	Anchor->SetIsOpen(false);
	EXPECT_EQ(Changes, (std::vector<bool>{ true, false, true, false })) << "each change is told once";
}
