#include "Support/UiDriver.h"

#include "Widgets/Input/SComboBox.h"
#include "Widgets/Layout/SBox.h"
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
