#include "Support/UiDriver.h"

#include "Host/AccessRules.h"
#include "Host/AccessTree.h"
#include "Host/HostKeyWatch.h"
#include "Host/HostMotion.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SExpandableArea.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/Notifications/SProgressBar.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SWindow.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SListView.h"

#include <algorithm>
#include <memory>

// The window as those find it who do not see it: roles, names, states, what changes, and what can be done without a pointer.

namespace
{
	class FAccessTest : public FWidgetTest
	{
	protected:
		void SetUp() override
		{
			FWidgetTest::SetUp();
			Tree = std::make_unique<FAccessTree>();
		}
		void TearDown() override
		{
			FAccessRules::Set(TArrayView<const FAccessRule>());
			FWidgetTest::TearDown();
		}

		/** The lines of the tree below the window, without the indentation that all of them have. */
		FTextList Look()
		{
			PumpFrame();
			return LookWithoutFrame();
		}
		FTextList LookWithoutFrame()
		{
			Changes = Tree->Update();
			TArray<FString> Lines;
			Tree->Describe().ParseIntoArray(Lines, TEXT("\n"), true);
			FTextList Result;
			for (int32 Index = 1; Index < Lines.Num(); ++Index)
			{
				Result.push_back(Utf8(FText::FromString(Lines[Index].RightChop(1))));
			}
			return Result;
		}
		FTextList LookAt(const TSharedRef<SWidget>& Widget)
		{
			Show(Widget);
			return Look();
		}
		uint32 IdOf(const TSharedPtr<SWidget>& Widget) const { return Tree->FindWidget(*Widget); }
		/** Changes of the last look, as "kind:name:text". */
		FTextList GetChanges() const
		{
			static const char* const Kinds[] = { "added", "removed", "name", "description", "states", "text removed", "text inserted",
				"caret", "selection", "value", "bounds", "focus" };
			FTextList Result;
			for (const FAccessChange& Change : Changes)
			{
				if (Change.Kind != FAccessChange::EKind::Bounds)
				{
					const FAccessNode* const Node = Tree->Find(Change.Id);
					Result.push_back(std::string(Kinds[static_cast<int32>(Change.Kind)]) + ":" +
						(Node ? Utf8(FText::FromString(Node->Name)) : "<gone>") + ":" + Utf8(FText::FromString(Change.Text)));
				}
			}
			return Result;
		}

		std::unique_ptr<FAccessTree> Tree;
		TArray<FAccessChange> Changes;
	};
}

TEST_F(FAccessTest, EachControlHasItsRoleNameAndState)
{
	const TArray<TSharedPtr<FString>> Options = { MakeShared<FString>(TEXT("One")), MakeShared<FString>(TEXT("Two")) };
	const std::tuple<const char*, TSharedRef<SWidget>, FTextList> Cases[] = {
		{ "a text", SNew(STextBlock).Text(INVTEXT("Hello")), { "label \"Hello\"" } },
		{ "an empty text is nothing", SNew(STextBlock), {} },
		{ "a button by its label", SNew(SButton).Text(INVTEXT("Send")), { "button \"Send\"" } },
		{ "a button without words by its tooltip",
			SNew(SButton).ToolTipText(INVTEXT("Copy\nthe whole block"))[SNew(SBox).WidthOverride(8.0f).HeightOverride(8.0f)],
			{ "button \"Copy\"" } },
		{ "disabled from outside", SNew(SBox).IsEnabled(false)[SNew(SButton).Text(INVTEXT("Send"))], { "button \"Send\" (disabled)" } },
		{ "hidden things are not there", SNew(SBox).Visibility(EVisibility::Hidden)[SNew(SButton).Text(INVTEXT("Send"))], {} },
		{ "a check that is on", SNew(SCheckBox).IsChecked(ECheckBoxState::Checked)[SNew(STextBlock).Text(INVTEXT("Match case"))],
			{ "check box \"Match case\" (checked)" } },
		{ "a check in between", SNew(SCheckBox).IsChecked(ECheckBoxState::Undetermined)[SNew(STextBlock).Text(INVTEXT("All"))],
			{ "check box \"All\" (mixed)" } },
		{ "a link", SNew(SHyperlink).Text(INVTEXT("file.cpp")), { "link \"file.cpp\"" } },
		{ "a box by its hint", SNew(SEditableTextBox).HintText(INVTEXT("Search")).Text(INVTEXT("abc")),
			{ "text box \"Search\" = \"abc\"" } },
		{ "a box that is only read", SNew(SMultiLineEditableTextBox).IsReadOnly(true).HintText(INVTEXT("Log")),
			{ "text box \"Log\" (read only, multi-line) = \"\"" } },
		{ "a choice by what is beside it",
			SNew(SHorizontalBox) + SHorizontalBox::Slot().AutoWidth().VAlign(VAlign_Center)[SNew(STextBlock).Text(INVTEXT("Model"))] +
				SHorizontalBox::Slot()
					.AutoWidth()[SNew(SComboBox<TSharedPtr<FString>>).OptionsSource(&Options)[SNew(STextBlock).Text(INVTEXT("Two"))]],
			{ "label \"Model\"", "combo box \"Model\" (has popup) = \"Two\"" } },
		{ "a check that says only how it stands",
			SNew(SHorizontalBox) + SHorizontalBox::Slot().AutoWidth().VAlign(VAlign_Center)[SNew(STextBlock).Text(INVTEXT("Keep layout"))] +
				SHorizontalBox::Slot().AutoWidth()[SNew(SCheckBox)[SNew(STextBlock).Text(INVTEXT("Off"))]],
			{ "label \"Keep layout\"", "check box \"Keep layout, Off\"" } },
		{ "a share of work", SNew(SProgressBar).Percent(TOptional<float>(0.5f)).ToolTipText(INVTEXT("Indexing")),
			{ "progress bar \"Indexing\"" } },
		{ "work without a measure", SNew(SThrobber), { "image \"Busy\" (busy)" } },
		{ "an open area", SNew(SExpandableArea).AreaTitle(INVTEXT("Details")).BodyContent()[SNew(STextBlock).Text(INVTEXT("Body"))],
			{ "group \"Details\" (expanded)", "\tbutton \"Details\"", "\tlabel \"Body\"" } },
	};
	for (const auto& [What, Widget, Lines] : Cases)
	{
		SCOPED_TRACE(What);
		EXPECT_EQ(LookAt(SNew(SBox).HAlign(HAlign_Left).VAlign(VAlign_Top)[Widget]), Lines);
	}
}

TEST_F(FAccessTest, ListsShowTheirRowsInViewAndWhatIsSelected)
{
	TArray<TSharedPtr<FString>> Items;
	for (int32 Index = 0; Index < 1000; ++Index)
	{
		Items.Add(MakeShared<FString>(FString::FromInt(Index)));
	}
	TSharedPtr<SListView<TSharedPtr<FString>>> List;
	// clang-format off
	Show(
		SNew(SBox).HeightOverride(200.0f)
		[
			SAssignNew(List, SListView<TSharedPtr<FString>>)
			.ListItemsSource(&Items)
			.OnGenerateRow_Lambda([](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner) -> TSharedRef<ITableRow>
			{
				return SNew(STableRow<TSharedPtr<FString>>, Owner)[SNew(STextBlock).Text(FText::FromString(*Item))];
			})
		]);
	// clang-format on
	List->SetSelection(Items[1]);
	const FTextList Lines = Look();
	ASSERT_GT(Lines.size(), 3u);
	EXPECT_LT(Lines.size(), 120u);
	EXPECT_EQ(Lines[0], "list \"List\"");
	EXPECT_EQ(Lines[1], "\tlist item \"0\"");
	EXPECT_EQ(Lines[2], "\tlist item \"1\" (selected)");
	// The list has the keyboard; the row is what it works on.
	App().SetKeyboardFocus(List);
	Look();
	EXPECT_EQ(Utf8(FText::FromString(Tree->Find(Tree->GetFocused())->Name)), "1");
}

TEST_F(FAccessTest, PiecesOfOneTextAreOneWhereTheProgramSaysSo)
{
	static constexpr FAccessRule Rules[] = {
		{ TEXT("Answer"), EHostRole::None, nullptr, false, true, TEXT("Code") },
		{ TEXT("Row"), EHostRole::ListItem, nullptr, true },
	};
	FAccessRules::Set(Rules);
	const TSharedRef<SWrapBox> Words = SNew(SWrapBox).PreferredSize(600.0f);
	Words->AddSlot()[SNew(STextBlock).Text(INVTEXT("See "))];
	Words->AddSlot()[SNew(SHyperlink).Text(INVTEXT("file.cpp"))];
	Words->AddSlot()[SNew(STextBlock).Text(INVTEXT(" for "))];
	Words->AddSlot()[SNew(SEditableText).Text(INVTEXT("int One;")).IsReadOnly(true)];
	// clang-format off
	EXPECT_EQ(LookAt(
		SNew(SVerticalBox).Tag("Row")
		+ SVerticalBox::Slot().AutoHeight()[SNew(STextBlock).Text(INVTEXT("You"))]
		+ SVerticalBox::Slot().AutoHeight()[SNew(SBox).Tag("Answer")[Words]]),
		(FTextList{ "list item \"You\"", "\tlabel \"You\"", "\tparagraph \"See file.cpp for int One;\"", "\t\tlink \"file.cpp\"",
			"\t\ttext box \"Code\" (read only) = \"int One;\"" }));
	// clang-format on
}

TEST_F(FAccessTest, ARowKeepsItsNameWhenItsHeadIsScrolledAway)
{
	static constexpr FAccessRule Rules[] = { { TEXT("Row"), EHostRole::ListItem, nullptr, true } };
	FAccessRules::Set(Rules);
	const TSharedRef<SScrollBox> Box = SNew(SScrollBox);
	const TSharedRef<SVerticalBox> Row = SNew(SVerticalBox).Tag("Row");
	Row->AddSlot().AutoHeight()[SNew(STextBlock).Text(INVTEXT("Hidden")).Visibility(EVisibility::Collapsed)];
	Row->AddSlot().AutoHeight()[SNew(STextBlock).Text(INVTEXT("You"))];
	for (int32 Index = 0; Index < 200; ++Index)
	{
		Row->AddSlot().AutoHeight()[SNew(STextBlock).Text(FText::AsNumber(Index))];
	}
	Box->AddSlot()[Row];
	LookAt(Box);
	Box->ScrollToEnd();
	PumpFrame();
	const FTextList Lines = Look();
	EXPECT_EQ(Lines.at(0), "list item \"You\"");
	EXPECT_EQ(std::count(Lines.begin(), Lines.end(), "\tlabel \"You\""), 0);
}

TEST_F(FAccessTest, ModalWindowsPutTheRestOutOfReach)
{
	int32 Pressed = 0;
	const TSharedRef<SButton> Below = SNew(SButton)
										  .Text(INVTEXT("Below"))
										  .OnClicked_Lambda(
											  [&Pressed]
											  {
												  ++Pressed;
												  return FReply::Handled();
											  });
	Show(Below);
	const TSharedRef<SWindow> Window = SNew(SWindow).Title(INVTEXT("Really?"))[SNew(SButton).Text(INVTEXT("Yes"))];
	int32 Turns = 0;
	FTextList Lines;
	App().SetFrameHook(
		[&]
		{
			// Within the dialog's own loop, once it has been laid out.
			if (++Turns != 3)
			{
				return;
			}
			Lines = LookWithoutFrame();
			EXPECT_EQ(Lines[0], "button \"Below\" (disabled)");
			EXPECT_NE(std::find(Lines.begin(), Lines.end(), "dialog \"Really?\" (modal)"), Lines.end());
			EXPECT_FALSE(Tree->DoAction(IdOf(Below)));
			Window->RequestDestroyWindow();
		});
	App().AddModalWindow(Window, nullptr);
	App().SetFrameHook(nullptr);
	ASSERT_FALSE(Lines.empty());
	EXPECT_EQ(Pressed, 0);
	Look();
	EXPECT_TRUE(Tree->DoAction(IdOf(Below)));
	EXPECT_EQ(Pressed, 1);
}

TEST_F(FAccessTest, TheActionOfAControlIsWhatAPressWouldDo)
{
	int32 Pressed = 0;
	TSharedPtr<SButton> Button;
	TSharedPtr<SCheckBox> Check;
	TSharedPtr<SExpandableArea> Area;
	// clang-format off
	LookAt(
		SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()
		[
			// It takes no keyboard, which those without a pointer do not need to know.
			SAssignNew(Button, SButton).IsFocusable(false).Text(INVTEXT("Send"))
			.OnClicked_Lambda([&Pressed] { ++Pressed; return FReply::Handled(); })
		]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Check, SCheckBox)[SNew(STextBlock).Text(INVTEXT("Case"))]]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Area, SExpandableArea).AreaTitle(INVTEXT("More"))]);
	// clang-format on
	EXPECT_TRUE(Tree->DoAction(IdOf(Button)));
	EXPECT_EQ(Pressed, 1);
	EXPECT_TRUE(Tree->DoAction(IdOf(Check)));
	EXPECT_TRUE(Check->IsChecked());
	EXPECT_TRUE(Tree->DoAction(IdOf(Area)));
	EXPECT_FALSE(Area->IsExpanded());
	EXPECT_FALSE(Tree->SetFocus(IdOf(Button)));
	EXPECT_TRUE(Tree->SetFocus(IdOf(Check)));
	EXPECT_TRUE(Check->HasKeyboardFocus());
	// Disabled since the last look.
	Button->SetEnabled(false);
	EXPECT_FALSE(Tree->HasAction(IdOf(Button)));
	EXPECT_FALSE(Tree->DoAction(IdOf(Button)));
	EXPECT_EQ(Pressed, 1);
}

TEST_F(FAccessTest, TextsAreReadSelectedAndChangedByPlaces)
{
	TSharedPtr<SMultiLineEditableTextBox> Box;
	int32 Changed = 0;
	LookAt(
		SAssignNew(Box, SMultiLineEditableTextBox).Text(INVTEXT("one\ntwo")).OnTextChanged_Lambda([&Changed](const FText&) { ++Changed; }));
	const uint32 Id = IdOf(Box);
	EXPECT_TRUE(Tree->Select(Id, 4, 7));
	EXPECT_EQ(Utf8(Box->GetSelectedText()), "two");
	Look();
	EXPECT_EQ(Tree->Find(Id)->Caret, 7);
	EXPECT_EQ(Tree->Find(Id)->SelectionBegin, 4);
	EXPECT_TRUE(Tree->ReplaceText(Id, 3, 4, TEXT(" and ")));
	EXPECT_EQ(Utf8(Box->GetText()), "one and two");
	EXPECT_EQ(Changed, 1);
	Look();
	EXPECT_EQ(GetChanges(), (FTextList{ "text removed::\n", "text inserted:: and ", "caret::", "selection::" }));
	// Beyond the end is the end.
	EXPECT_TRUE(Tree->ReplaceText(Id, 100, MAX_int32, TEXT("!")));
	EXPECT_EQ(Utf8(Box->GetText()), "one and two!");
	Box->Undo();
	EXPECT_EQ(Utf8(Box->GetText()), "one and two");

	// Nothing in place of something takes it away, and in place of nothing leaves all as it is.
	EXPECT_TRUE(Tree->ReplaceText(Id, 3, 7, FString()));
	EXPECT_EQ(Utf8(Box->GetText()), "one two");
	EXPECT_TRUE(Tree->ReplaceText(Id, 3, 3, FString()));
	EXPECT_EQ(Utf8(Box->GetText()), "one two");
	Box->Undo();
	EXPECT_EQ(Utf8(Box->GetText()), "one and two");

	EXPECT_TRUE(Tree->CopyText(Id, 3, 7, true));
	EXPECT_TRUE(Tree->PasteText(Id, 0));
	EXPECT_EQ(Utf8(Box->GetText()), " andone two");

	LookAt(SAssignNew(Box, SMultiLineEditableTextBox).Text(INVTEXT("fixed")).IsReadOnly(true));
	EXPECT_FALSE(Tree->ReplaceText(IdOf(Box), 0, 1, TEXT("x")));
	EXPECT_TRUE(Tree->Select(IdOf(Box), 0, 2));
	EXPECT_EQ(Utf8(Box->GetSelectedText()), "fi");
}

TEST_F(FAccessTest, WhatChangesIsToldOnceAndNothingElseIs)
{
	TSharedPtr<SVerticalBox> Column;
	TSharedPtr<STextBlock> Label;
	TSharedPtr<SCheckBox> Check;
	// clang-format off
	LookAt(
		SAssignNew(Column, SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Label, STextBlock).Text(INVTEXT("Ready"))]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Check, SCheckBox)[SNew(STextBlock).Text(INVTEXT("Case"))]]);
	// clang-format on
	Look();
	EXPECT_EQ(GetChanges(), FTextList());
	const uint32 LabelId = IdOf(Label);

	Label->SetText(INVTEXT("Ready now"));
	Check->ToggleCheckedState();
	Look();
	EXPECT_EQ(GetChanges(), (FTextList{ "name:Ready now:Ready now", "text inserted:Ready now: now", "states:Case:" }));
	EXPECT_EQ(IdOf(Label), LabelId);

	App().SetKeyboardFocus(Check, EFocusCause::Navigation);
	Look();
	EXPECT_EQ(GetChanges(), (FTextList{ "states:Case:", "focus:Case:" }));

	// What comes brings what is in it along.
	const TSharedRef<SWidget> Area = SNew(SExpandableArea).AreaTitle(INVTEXT("More"));
	Column->AddSlot().AutoHeight()[Area];
	Look();
	EXPECT_EQ(GetChanges(), (FTextList{ "added:More:" }));
	EXPECT_EQ(Changes[0].Index, 2);
	Column->RemoveSlot(Area);
	Column->RemoveSlot(Label.ToSharedRef());
	Look();
	EXPECT_EQ(GetChanges(), (FTextList{ "removed:<gone>:", "removed:<gone>:" }));
	EXPECT_EQ(Changes[0].Index, 2);
	EXPECT_EQ(Changes[1].Index, 0);
	EXPECT_EQ(Tree->Find(LabelId), nullptr);
	EXPECT_FALSE(Tree->SetFocus(LabelId));
}

TEST_F(FAccessTest, AThingIsFoundByItsPlace)
{
	TSharedPtr<SButton> Button;
	LookAt(SNew(SBox).HAlign(HAlign_Right).VAlign(VAlign_Bottom)[SAssignNew(Button, SButton).Text(INVTEXT("Send"))]);
	EXPECT_EQ(Tree->FindAt(GetCenter(Button.ToSharedRef())), IdOf(Button));
	EXPECT_EQ(Tree->FindAt(FVector2D(1.0, 1.0)), FAccessTree::RootId);
}

TEST_F(FAccessTest, ALongColumnCostsWhatIsInView)
{
	const TSharedRef<SScrollBox> Box = SNew(SScrollBox);
	for (int32 Index = 0; Index < 2000; ++Index)
	{
		Box->AddSlot()[SNew(STextBlock).Text(FText::AsNumber(Index))];
	}
	const FTextList AtStart = LookAt(Box);
	EXPECT_LT(AtStart.size(), 200u);
	Box->ScrollToEnd();
	PumpFrame();
	const FTextList AtEnd = Look();
	EXPECT_LT(AtEnd.size(), 200u);
	EXPECT_EQ(std::count(AtEnd.begin(), AtEnd.end(), AtStart.at(0)), 0);
	// By its bar, as it was.
	const uint32 Bar = IdOf(FindByType("SScrollBar").at(0));
	EXPECT_TRUE(Tree->SetValue(Bar, 0.0));
	PumpFrame();
	EXPECT_EQ(Look().at(0), AtStart.at(0));
}

TEST_F(FAccessTest, WhoHearsKeysFirstMayKeepThemAndWhatTheyType)
{
	TSharedPtr<SEditableTextBox> Box;
	Show(SAssignNew(Box, SEditableTextBox));
	App().SetKeyboardFocus(Box);
	FTextList Heard;
	FHostKeyWatch::SetListener(
		[&Heard](const FKey& Key, const FModifierKeysState& Modifiers, bool bDown)
		{
			Heard.push_back(Utf8(FText::FromString(Key.ToString())) + (bDown ? " down" : " up"));
			return Key == EKeys::H;
		});
	for (const char* Key : { "A", "H", "B" })
	{
		PressKey(Key);
	}
	FHostKeyWatch::SetListener(nullptr);
	PressKey("H");
	EXPECT_EQ(Utf8(Box->GetText()), "abh");
	EXPECT_EQ(Heard, (FTextList{ "A down", "A up", "H down", "H up", "B down", "B up" }));
}

TEST_F(FAccessTest, WithReducedMotionNothingAsksForFrames)
{
	Show(SNew(SThrobber));
	SleepStrictly();
	EXPECT_GT(CountFrames(2.0), 2);
	FHostMotion::SetReduced(true);
	PumpFrame();
	const int32 Still = CountFrames(2.0);
	FHostMotion::SetReduced(false);
	EXPECT_EQ(Still, 0);
}
