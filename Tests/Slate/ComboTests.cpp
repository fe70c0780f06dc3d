#include "Support/UiDriver.h"

#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SMenuAnchor.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SListView.h"

using FComboItem = TSharedPtr<FString>;

class FComboTest : public FWidgetTest
{
protected:
	TArray<FComboItem> Items;
	TSharedPtr<SComboBox<FComboItem>> Combo;
	FTextList Events;
	int32 Generated = 0;

	void ShowCombo(int32 Count, bool bEnabled = true)
	{
		Items.Reset();
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Items.Add(MakeShared<FString>(FString::Printf(TEXT("Item %d"), Index)));
		}
		// clang-format off
		Show(
			SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)
			[
				SNew(SBox).WidthOverride(150.0f)
				[
					SAssignNew(Combo, SComboBox<FComboItem>)
					.OptionsSource(&Items)
					.IsEnabled(bEnabled)
					.InitiallySelectedItem(Items.Num() > 0 ? Items[0] : nullptr)
					.OnGenerateWidget_Lambda([this](FComboItem Item) -> TSharedRef<SWidget>
					{
						++Generated;
						return SNew(STextBlock).Text(FText::FromString(*Item));
					})
					.OnSelectionChanged_Lambda([this](FComboItem Item, ESelectInfo::Type Info)
					{
						static const char* const Names[] = { "key", "navigation", "mouse", "direct" };
						Events.push_back((Item ? Utf8(*Item) : std::string("none")) + " " + Names[Info]);
					})
					[
						SNew(STextBlock).Text_Lambda([this]()
						{
							return Combo && Combo->GetSelectedItem()
								? FText::FromString(*Combo->GetSelectedItem() + TEXT(" chosen, and a long way to say so"))
								: FText();
						})
					]
				]
			]);
		// clang-format on
		App().SetKeyboardFocus(Combo);
		PumpFrame();
	}
	FTextList TakeEvents()
	{
		FTextList Taken;
		Taken.swap(Events);
		return Taken;
	}
};

TEST_F(FComboTest, ClickOpensAndPicks)
{
	ShowCombo(3);
	Click(Combo.ToSharedRef());
	ASSERT_TRUE(Combo->IsOpen());
	EXPECT_TRUE(Combo->HasKeyboardFocus());
	const FSlateRect Row = GetRect(*FindByText("Item 0"));
	const FSlateRect Box = GetRect(*Combo);
	const TSharedRef<SWidget> List = FindByType("SListView<OptionType>").at(0);
	EXPECT_GT(Row.Top, Box.Bottom + 2.0f);
	EXPECT_EQ(GetRect(*List).Width(), Box.Width() - 8.0f);
	Click(FindByText("Item 2"));
	EXPECT_FALSE(Combo->IsOpen());
	EXPECT_EQ(TakeEvents(), (FTextList{ "Item 2 mouse" }));
	// The press that closes does not open again.
	Click(Combo.ToSharedRef());
	ASSERT_TRUE(Combo->IsOpen());
	Click(Combo.ToSharedRef());
	EXPECT_FALSE(Combo->IsOpen());
	Click(Combo.ToSharedRef());
	Click(FindByText("Item 2"));
	EXPECT_EQ(TakeEvents(), FTextList()) << "the same choice is no change";
}

TEST_F(FComboTest, Keyboard)
{
	ShowCombo(5);
	PressKey("Down");
	EXPECT_EQ(TakeEvents(), (FTextList{ "Item 1 key" }));
	PressKey("End");
	PressKey("Down");
	EXPECT_EQ(TakeEvents(), (FTextList{ "Item 4 key" }));
	PressKey("Enter");
	ASSERT_TRUE(Combo->IsOpen());
	PressKey("Home");
	PressKey("Down");
	EXPECT_EQ(TakeEvents(), FTextList()) << "walking through the list chooses nothing";
	PressKey("Escape");
	EXPECT_FALSE(Combo->IsOpen());
	EXPECT_EQ(TakeEvents(), FTextList());
	PressKey("SpaceBar");
	PressKey("Up");
	PressKey("Enter");
	EXPECT_FALSE(Combo->IsOpen());
	EXPECT_EQ(TakeEvents(), (FTextList{ "Item 3 key" }));
}

TEST_F(FComboTest, SelectionFromCodeSaysSo)
{
	ShowCombo(3);
	Combo->SetSelectedItem(Items[1]);
	Combo->SetSelectedItem(Items[1]);
	Combo->ClearSelection();
	EXPECT_EQ(TakeEvents(), (FTextList{ "Item 1 navigation", "none direct" }));
	EXPECT_FALSE(Combo->GetSelectedItem().IsValid());
}

TEST_F(FComboTest, LongListsShowTenRowsAndMakeNoMore)
{
	ShowCombo(1000);
	Combo->SetSelectedItem(Items[500]);
	Generated = 0;
	Click(Combo.ToSharedRef());
	PumpFrame();
	EXPECT_LE(Generated, 24);
	EXPECT_TRUE(IsShown(FindByText("Item 500"))) << "the chosen row is in view";
	const TSharedRef<SWidget> List = FindByType("SListView<OptionType>").at(0);
	const float RowHeight = GetRect(*FindByText("Item 500")).Height() + 8.0f;
	EXPECT_NEAR(GetRect(*List).Height(), 10.0f * RowHeight, 0.5f);
	Scroll(List, -1000.0f);
	EXPECT_TRUE(IsShown(FindByText("Item 999")));
	PressKey("Home");
	EXPECT_TRUE(IsShown(FindByText("Item 0")));
	EXPECT_LE(static_cast<STableViewBase&>(*List).GetNumGeneratedChildren(), 12);
}

TEST_F(FComboTest, NothingToChooseOpensNothing)
{
	ShowCombo(0);
	Click(Combo.ToSharedRef());
	EXPECT_FALSE(Combo->IsOpen());
	ShowCombo(2, false);
	Click(Combo.ToSharedRef());
	EXPECT_FALSE(Combo->IsOpen());
}

TEST_F(FComboTest, AnOpenListFollowsItsOptions)
{
	ShowCombo(2);
	Click(Combo.ToSharedRef());
	Items.Add(MakeShared<FString>(TEXT("Late")));
	Items.RemoveAt(0);
	Combo->RefreshOptions();
	PumpFrame();
	Click(FindByText("Late"));
	EXPECT_EQ(TakeEvents(), (FTextList{ "Late mouse" }));
}

class FComboAnchorTest : public FWidgetTest
{
protected:
	TSharedPtr<SMenuAnchor> Anchor;
	std::vector<bool> Changes;
	int32 Asked = 0;

	void ShowAnchor(EMenuPlacement Placement, EHorizontalAlignment HAlign, EVerticalAlignment VAlign)
	{
		// clang-format off
		Show(
			SNew(SBox).HAlign(HAlign).VAlign(VAlign)
			[
				SAssignNew(Anchor, SMenuAnchor)
				.Placement(Placement)
				.OnMenuOpenChanged_Lambda([this](bool bOpen) { Changes.push_back(bOpen); })
				.OnGetMenuContent_Lambda([this]() -> TSharedRef<SWidget>
				{
					++Asked;
					return SNew(SBox).WidthOverride(200.0f).HeightOverride(100.0f)
						[ SNew(STextBlock).Text(FText::FromString(TEXT("Menu"))) ];
				})
				[
					SNew(SBox).WidthOverride(50.0f).HeightOverride(20.0f)
				]
			]);
		// clang-format on
	}
	FSlateRect OpenAndGetRect()
	{
		Anchor->SetIsOpen(true, false, 0);
		PumpFrame();
		return GetRect(*FindByText("Menu")->GetParentWidget());
	}
};

TEST_F(FComboAnchorTest, StaysInsideTheWindow)
{
	struct FCase
	{
		EMenuPlacement Placement;
		EHorizontalAlignment HAlign;
		EVerticalAlignment VAlign;
		float Left;
		float Top;
	};
	const FCase Cases[] = {
		{ MenuPlacement_BelowAnchor, HAlign_Left, VAlign_Top, 0.0f, 22.0f },
		{ MenuPlacement_BelowAnchor, HAlign_Right, VAlign_Top, 1080.0f, 22.0f },
		{ MenuPlacement_BelowAnchor, HAlign_Left, VAlign_Bottom, 0.0f, 678.0f },
		{ MenuPlacement_AboveAnchor, HAlign_Left, VAlign_Bottom, 0.0f, 678.0f },
		{ MenuPlacement_AboveAnchor, HAlign_Left, VAlign_Top, 0.0f, 22.0f },
		{ MenuPlacement_MenuRight, HAlign_Left, VAlign_Top, 52.0f, 0.0f },
		{ MenuPlacement_MenuRight, HAlign_Right, VAlign_Top, 1028.0f, 0.0f },
	};
	for (const FCase& Case : Cases)
	{
		ShowAnchor(Case.Placement, Case.HAlign, Case.VAlign);
		const FSlateRect Rect = OpenAndGetRect();
		EXPECT_EQ(Rect.Left, Case.Left) << Case.Placement << " " << Case.HAlign << " " << Case.VAlign;
		EXPECT_EQ(Rect.Top, Case.Top) << Case.Placement << " " << Case.HAlign << " " << Case.VAlign;
		Anchor->SetIsOpen(false);
		PumpFrame();
	}
}

TEST_F(FComboAnchorTest, AsksForContentAtEachOpeningAndTellsOnce)
{
	ShowAnchor(MenuPlacement_BelowAnchor, HAlign_Left, VAlign_Top);
	OpenAndGetRect();
	Anchor->SetIsOpen(true);
	EXPECT_TRUE(Anchor->IsOpen());
	Anchor->SetIsOpen(false, true, 0);
	Anchor->SetIsOpen(false);
	EXPECT_EQ(Changes, (std::vector<bool>{ true, false }));
	OpenAndGetRect();
	ClickAt(FVector2D(900.0, 600.0));
	EXPECT_FALSE(Anchor->IsOpen());
	EXPECT_EQ(Changes, (std::vector<bool>{ true, false, true, false }));
	EXPECT_EQ(Asked, 2);
}
