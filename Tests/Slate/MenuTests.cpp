#include "Support/UiDriver.h"

#include "Framework/Commands/Commands.h"
#include "Framework/Commands/UICommandList.h"
#include "Framework/MultiBox/MultiBoxBuilder.h"
#include "Host/SMenuBar.h"
#include "Styling/AppStyle.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/SBoxPanel.h"

#include "Slate/Private/Framework/MultiBox/SMenu.h"
#include "Slate/Private/Framework/MultiBox/SMenuRow.h"

#define LOCTEXT_NAMESPACE "MenuTests"

namespace
{
	class FTestCommands : public TCommands<FTestCommands>
	{
	public:
		FTestCommands()
			: TCommands<FTestCommands>(TEXT("MenuTests"), INVTEXT("Menu Tests"), NAME_None, FAppStyle::GetAppStyleSetName())
		{
		}
		virtual void RegisterCommands() override
		{
			UI_COMMAND(Build, "Build", "Builds it", EUserInterfaceActionType::Button, FInputChord(EKeys::B, true, true));
			UI_COMMAND(Loud, "Loud", "Makes noise", EUserInterfaceActionType::ToggleButton, FInputChord());
			UI_COMMAND(Lost, "Lost", "Nobody maps it", EUserInterfaceActionType::Button, FInputChord());
		}
		TSharedPtr<FUICommandInfo> Build;
		TSharedPtr<FUICommandInfo> Loud;
		TSharedPtr<FUICommandInfo> Lost;
	};
}

/** A bar with two menus above a text box. */
class FMenuTest : public FWidgetTest
{
protected:
	FTextList Done;
	bool bMayBuild = true;
	bool bLoud = false;
	TSharedRef<FUICommandList> Commands = MakeShared<FUICommandList>();
	TSharedRef<FExtender> Extender = MakeShared<FExtender>();
	TSharedPtr<SMenuBar> Bar;
	TSharedPtr<SEditableTextBox> Box;

	void SetUp() override
	{
		FWidgetTest::SetUp();
		FTestCommands::Register();
		Commands->MapAction(FTestCommands::Get().Build, FExecuteAction::CreateLambda([this] { Note("build"); }),
			FCanExecuteAction::CreateLambda([this] { return bMayBuild; }));
		Commands->MapAction(FTestCommands::Get().Loud, FExecuteAction::CreateLambda([this] { bLoud = !bLoud; }), FCanExecuteAction(),
			FIsActionChecked::CreateLambda([this] { return bLoud; }));
		FMenuBarBuilder Builder(Commands, Extender);
		Builder.AddPullDownMenu(
			INVTEXT("First"), INVTEXT("The first menu"), FNewMenuDelegate::CreateLambda([this](FMenuBuilder& Menu) { BuildFirst(Menu); }));
		Builder.AddPullDownMenu(
			INVTEXT("Second"), FText::GetEmpty(), FNewMenuDelegate::CreateLambda([this](FMenuBuilder& Menu) { AddEntry(Menu, "Other"); }));
		Bar = StaticCastSharedRef<SMenuBar>(Builder.MakeWidget());
		// clang-format off
		Show(
			SNew(SVerticalBox)
			+ SVerticalBox::Slot().AutoHeight()[Bar.ToSharedRef()]
			+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Box, SEditableTextBox)]);
		// clang-format on
		App().SetKeyboardFocus(Box);
	}

	void TearDown() override
	{
		FTestCommands::Unregister();
		FWidgetTest::TearDown();
	}

	void Note(const char* Name) { Done.push_back(std::string(Name) + (Box->HasKeyboardFocus() ? " in the box" : "")); }

	void AddEntry(FMenuBuilder& Menu, const char* Name, FName Hook = NAME_None)
	{
		Menu.AddMenuEntry(FText::FromString(FString(Name)), FText::GetEmpty(), FSlateIcon(),
			FUIAction(FExecuteAction::CreateLambda([this, Name] { Note(Name); })), Hook);
	}

	void BuildFirst(FMenuBuilder& Menu)
	{
		Menu.BeginSection("Work", INVTEXT("Work"));
		Menu.AddMenuEntry(FTestCommands::Get().Build);
		Menu.AddMenuEntry(FTestCommands::Get().Lost, NAME_None, INVTEXT("Lost and gone"), INVTEXT("Never"));
		Menu.EndSection();
		Menu.BeginSection("Empty", INVTEXT("Empty"));
		Menu.EndSection();
		Menu.AddMenuSeparator();
		Menu.AddSubMenu(INVTEXT("More"), INVTEXT("More of it"),
			FNewMenuDelegate::CreateLambda(
				[this](FMenuBuilder& Sub)
				{
					Sub.BeginSection("Deep", INVTEXT("Deep"));
					AddEntry(Sub, "Deep one");
					Sub.AddMenuEntry(FTestCommands::Get().Loud);
					Sub.EndSection();
				}));
		AddEntry(Menu, "Last", "LastHook");
		Menu.AddMenuSeparator();
	}

	/** Something is painted behind the whole row. */
	static bool IsLit(const SWidget& Row)
	{
		return App().GetLastElements().GetElements().ContainsByPredicate(
			[Rect = GetRect(Row)](const FSlateDrawElement& Element)
			{
				return (Element.Type == ESlateDrawType::Box || Element.Type == ESlateDrawType::RoundedBox) &&
					FMath::Abs(Element.Rect.Top - Rect.Top) < 1.0f && FMath::Abs(Element.Rect.Bottom - Rect.Bottom) < 1.0f &&
					FMath::Abs(Element.Rect.Left - Rect.Left) < 1.0f;
			});
	}

	/** The rows, headings and lines of the open menus as they stand, greyed and highlighted ones marked. */
	FTextList Lines()
	{
		FTextList List;
		for (const TSharedRef<SWidget>& Menu : FindByType("SMenu"))
		{
			FChildren* Items = FWidgetFinder::FindAll([&Menu](SWidget& Widget)
				{ return Widget.GetType() == FName("SScrollBox") && Widget.GetParentWidget()->GetParentWidget() == Menu; })[0]
								   ->GetChildren();
			for (int32 Index = 0; Index < Items->Num(); ++Index)
			{
				const TSharedRef<SWidget> Item = Items->GetChildAt(Index);
				std::string Line;
				ForEachText(*Item, Line);
				if (Item->GetType() == FName("SMenuRow"))
				{
					const SMenuRow& Row = static_cast<SMenuRow&>(*Item);
					Line += std::string(Row.IsEnabled() ? "" : " (grey)") + (IsLit(Row) ? " *" : "") +
						(Row.GetItem().IsChecked() ? " checked" : "");
				}
				else if (Item->GetType() == FName("SScrollBar"))
				{
					continue;
				}
				List.push_back(Line.empty() ? "---" : Line);
			}
		}
		return List;
	}

	static void ForEachText(SWidget& Widget, std::string& Line)
	{
		const std::string Text = Utf8(Widget.GetDisplayedText().ToString());
		Line += (Line.empty() || Text.empty() ? "" : " | ") + Text;
		FChildren* Children = Widget.GetChildren();
		for (int32 Index = 0; Index < Children->Num(); ++Index)
		{
			ForEachText(*Children->GetChildAt(Index), Line);
		}
	}

	std::string Highlighted()
	{
		for (const std::string& Line : Lines())
		{
			if (Line.ends_with(" *"))
			{
				return Line.substr(0, Line.size() - 2);
			}
		}
		return "";
	}
};

TEST_F(FMenuTest, AMenuHasItsSectionsEntriesKeysAndStates)
{
	Click(FindByText("First"));
	EXPECT_EQ(Lines(), (FTextList{ "WORK", "Build | Ctrl+Shift+B", "Lost and gone (grey)", "---", "More", "Last" }));
	bMayBuild = false;
	PumpFrame();
	EXPECT_EQ(Lines()[1], "Build | Ctrl+Shift+B (grey)") << "while the menu stands open";
	Click(FindByText("Build"));
	EXPECT_TRUE(App().AnyMenusVisible()) << "a greyed entry is dead";
	bMayBuild = true;
	Click(FindByText("Build"));
	EXPECT_FALSE(App().AnyMenusVisible());
	EXPECT_EQ(Done, (FTextList{ "build in the box" })) << "once, with the keyboard where it was";
}

TEST_F(FMenuTest, SubMenusOpenUnderThePointerAndStayInTheWindow)
{
	Click(FindByText("First"));
	Hover(FindByText("More"));
	PumpSeconds(0.1);
	EXPECT_EQ(CountByType("SMenu"), 1);
	PumpSeconds(0.1);
	ASSERT_EQ(CountByType("SMenu"), 2);
	const FSlateRect Row = GetRect(*FindByText("More")->GetParentWidget()->GetParentWidget()->GetParentWidget());
	const FSlateRect Deep = GetRect(*FindByText("Deep one")->GetParentWidget()->GetParentWidget()->GetParentWidget());
	EXPECT_EQ(Deep.Top, Row.Top) << "the first entry is level with what opened it";
	EXPECT_GT(Deep.Left, Row.Right);
	Hover(FindByText("Loud"));
	PumpSeconds(0.3);
	EXPECT_EQ(CountByType("SMenu"), 2) << "on the way into it nothing closes";
	Click(FindByText("Loud"));
	EXPECT_TRUE(bLoud);
	EXPECT_FALSE(App().AnyMenusVisible());

	Resize(250, 300);
	Click(FindByText("First"));
	Click(FindByText("More"));
	PumpFrame();
	EXPECT_EQ(Lines()[2], "Loud checked") << "at once by a press";
	for (const TSharedRef<SWidget>& Menu : FindByType("SMenu"))
	{
		EXPECT_LE(GetRect(*Menu).Right, 250.0f);
		EXPECT_GE(GetRect(*Menu).Left, 0.0f);
	}
	ClickAt(FVector2D(5, 295));
	EXPECT_FALSE(App().AnyMenusVisible());

	Resize(1280, 800);
	Click(FindByText("First"));
	Hover(FindByText("More"));
	PumpSeconds(0.3);
	Hover(FindByText("Last"));
	PumpSeconds(0.3);
	EXPECT_EQ(CountByType("SMenu"), 1) << "another entry closes it";
}

TEST_F(FMenuTest, AMenuTallerThanTheWindowScrolls)
{
	FMenuBuilder Builder(true, nullptr);
	for (int32 Index = 0; Index < 60; ++Index)
	{
		AddEntry(Builder, Index == 59 ? "The end" : "Entry");
	}
	App().PushMenu(Box.ToSharedRef(), Builder.MakeWidget(), GetRect(*Box), MenuPlacement_BelowAnchor, true);
	PumpFrame();
	PressKey("End");
	PumpFrame();
	Click(FindByText("The end"));
	EXPECT_EQ(Done, (FTextList{ "The end in the box" }));
}

TEST_F(FMenuTest, KeysDoEverything)
{
	const std::pair<const char*, const char*> Steps[] = {
		{ "Down", "Build | Ctrl+Shift+B" },
		{ "Down", "More" }, // What is greyed is passed over.
		{ "Down", "Last" },
		{ "Down", "Build | Ctrl+Shift+B" },
		{ "Up", "Last" },
		{ "Home", "Build | Ctrl+Shift+B" },
		{ "M", "More" },
		{ "Right", "Deep one" },
		{ "Down", "Loud" },
		{ "Left", "More" },
		{ "Enter", "Deep one" },
		{ "Escape", "More" },
		{ "Right", "Deep one" },
		{ "Right", "Other" }, // From a sub-menu on to the next menu.
		{ "Right", "Build | Ctrl+Shift+B" },
		{ "Left", "Other" },
	};
	Click(FindByText("First"));
	for (const auto& [Key, On] : Steps)
	{
		PressKey(Key);
		EXPECT_EQ(Highlighted(), On) << Key;
	}
	TypeText("x");
	EXPECT_EQ(Utf8(Box->GetText()), "") << "no key reaches what lies below";
	PressKey("Enter");
	EXPECT_EQ(Done, (FTextList{ "Other in the box" }));
	EXPECT_FALSE(App().AnyMenusVisible());
	Click(FindByText("First"));
	PressKey("Escape");
	EXPECT_FALSE(App().AnyMenusVisible());
	EXPECT_TRUE(Box->HasKeyboardFocus());
}

TEST_F(FMenuTest, TheBarChangesMenusAndClosesThem)
{
	Hover(FindByText("Second"));
	PumpFrame();
	EXPECT_FALSE(App().AnyMenusVisible()) << "only once one is open";
	Click(FindByText("First"));
	Hover(FindByText("Second"));
	PumpFrame();
	EXPECT_EQ(Lines(), (FTextList{ "Other" }));
	Click(FindByText("Second"));
	EXPECT_FALSE(App().AnyMenusVisible()) << "a press on the open one closes it";
	EXPECT_TRUE(Box->HasKeyboardFocus());

	EXPECT_FALSE(Bar->HandleKey(FKeyEvent(EKeys::S, FModifierKeysState(false, false, false, false, false, true), false)))
		<< "the right Alt key types";
	EXPECT_TRUE(Bar->HandleKey(FKeyEvent(EKeys::S, FModifierKeysState(false, false, false, false, true, false), false)));
	PumpFrame();
	EXPECT_EQ(Lines(), (FTextList{ "Other *" }));
	PressKey("F10");
	EXPECT_FALSE(App().AnyMenusVisible());
	EXPECT_TRUE(Bar->HandleKey(FKeyEvent(EKeys::F10, FModifierKeysState(), false)));
	PumpFrame();
	EXPECT_EQ(Highlighted(), "Build | Ctrl+Shift+B");
	EXPECT_FALSE(Bar->HandleKey(FKeyEvent(EKeys::Q, FModifierKeysState(false, false, false, false, true, false), false)));
}

TEST_F(FMenuTest, ExtensionsStandAtTheirHooks)
{
	const auto Extend = [this](const char* Hook, EExtensionHook::Position Position, const char* Name)
	{
		return Extender->AddMenuExtension(FName(Hook), Position, nullptr,
			FMenuExtensionDelegate::CreateLambda([this, Name](FMenuBuilder& Menu) { AddEntry(Menu, Name); }));
	};
	Extend("Work", EExtensionHook::Before, "before");
	Extend("Work", EExtensionHook::First, "first");
	Extend("Work", EExtensionHook::After, "after");
	Extend("LastHook", EExtensionHook::Before, "before last");
	Extend("Deep", EExtensionHook::After, "deeper");
	Extend("Nowhere", EExtensionHook::After, "nowhere");
	// A section of its own, with the hook's own name, and commands of its own list.
	const TSharedRef<FUICommandList> Own = MakeShared<FUICommandList>();
	Own->MapAction(FTestCommands::Get().Lost, FExecuteAction::CreateLambda([this] { Note("found"); }));
	Extender->AddMenuExtension("Empty", EExtensionHook::After, Own,
		FMenuExtensionDelegate::CreateLambda(
			[](FMenuBuilder& Menu)
			{
				Menu.BeginSection("Empty", INVTEXT("Own"));
				Menu.AddMenuEntry(FTestCommands::Get().Lost);
				Menu.EndSection();
			}));
	Click(FindByText("First"));
	EXPECT_EQ(Lines(),
		(FTextList{ "before", "---", "WORK", "first", "Build | Ctrl+Shift+B", "Lost and gone (grey)", "after", "---", "OWN", "Lost", "---",
			"More", "before last", "Last" }));
	Click(FindByText("More"));
	PumpFrame();
	EXPECT_EQ(Lines()[3], "deeper") << "sub-menus can be extended, too";
	Click(FindByText("Lost"));
	EXPECT_EQ(Done, (FTextList{ "found in the box" }));

	FExtensibilityManager Manager;
	Manager.AddExtender(Extender);
	Manager.AddExtender(nullptr);
	const auto CountTexts = [&Manager]() -> size_t
	{
		FMenuBuilder Menu(true, nullptr, Manager.GetAllExtenders());
		Menu.BeginSection("Work", INVTEXT("Work"));
		Menu.EndSection();
		App().PushMenu(FindByText("First"), Menu.MakeWidget(), FSlateRect(10, 10, 20, 20), MenuPlacement_BelowAnchor, true);
		App().Tick();
		const size_t Count = VisibleTexts().size();
		App().DismissAllMenus();
		return Count;
	};
	const size_t Extended = CountTexts();
	Manager.RemoveExtender(Extender);
	EXPECT_EQ(CountTexts() + 4, Extended) << "before, the heading, first and after";
}

TEST_F(FMenuTest, TooltipsStandBesideTheMenu)
{
	Click(FindByText("First"));
	Hover(FindByText("Build"));
	PumpSeconds(0.7);
	const FSlateRect Tip = GetRect(*FindByText("Builds it"));
	EXPECT_GT(Tip.Left, GetRect(*FindByType("SMenu")[0]).Right);
}

TEST_F(FMenuTest, AnEntryMayOpenAnotherMenuOrTakeTheBarAway)
{
	Extender->AddMenuExtension("Work", EExtensionHook::Before, nullptr,
		FMenuExtensionDelegate::CreateLambda(
			[this](FMenuBuilder& Menu)
			{
				Menu.AddMenuEntry(INVTEXT("Again"), FText::GetEmpty(), FSlateIcon(),
					FUIAction(FExecuteAction::CreateLambda([this] { Bar->Open(1, false); })));
				Menu.AddMenuEntry(INVTEXT("Away"), FText::GetEmpty(), FSlateIcon(),
					FUIAction(FExecuteAction::CreateLambda(
						[this]
						{
							Bar.Reset();
							App().SetRootContent(SNullWidget::NullWidget);
						})));
			}));
	Click(FindByText("First"));
	Click(FindByText("Again"));
	MoveMouse(FVector2D(600, 500));
	EXPECT_EQ(Lines(), (FTextList{ "Other" }));
	PressKey("Escape");
	Click(FindByText("First"));
	Click(FindByText("Away"));
	PumpFrame();
	EXPECT_FALSE(App().AnyMenusVisible());
}

#undef LOCTEXT_NAMESPACE
