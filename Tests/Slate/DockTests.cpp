#include "Support/UiDriver.h"

#include "Framework/Docking/TabManager.h"
#include "Host/HostDialogs.h"
#include "Host/SDockArea.h"
#include "Misc/MessageDialog.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

class FDockTest : public FWidgetTest
{
protected:
	TSharedPtr<SDockArea> Area;

	void SetUp() override
	{
		FWidgetTest::SetUp();
		Area = SNew(SDockArea);
		FGlobalTabmanager::Get()->SetDockArea(Area);
		Show(Area.ToSharedRef());
	}
	void TearDown() override
	{
		FGlobalTabmanager::Get()->CloseAllTabs();
		FGlobalTabmanager::Get()->SetDockArea(nullptr);
		for (const char* Name : { "One", "Two", "Three" })
		{
			FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(FName(Name));
		}
		Area.Reset();
		FWidgetTest::TearDown();
	}
	static FTabSpawnerEntry& Register(const char* Name)
	{
		const FString Text(Name);
		const auto Spawn = [Text](const FSpawnTabArgs&) -> TSharedRef<SDockTab>
		{ return SNew(SDockTab).TabRole(ETabRole::NomadTab)[SNew(STextBlock).Text(FText::FromString(TEXT("Content ") + Text))]; };
		return FGlobalTabmanager::Get()
			->RegisterNomadTabSpawner(FName(Name), FOnSpawnTab::CreateLambda(Spawn))
			.SetDisplayName(FText::FromString(Text))
			.SetTooltipText(FText::FromString(TEXT("About ") + Text));
	}
	TSharedPtr<SDockTab> Invoke(const char* Name)
	{
		const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->TryInvokeTab(FTabId(FName(Name)));
		PumpFrame();
		return Tab;
	}
	static bool Sees(const std::string& Text)
	{
		const FTextList Texts = VisibleTexts();
		return std::find(Texts.begin(), Texts.end(), Text) != Texts.end();
	}
};

TEST_F(FDockTest, InvokingMakesATabOnceAndThenBringsItToTheFront)
{
	Register("One");
	Register("Two");
	const TSharedPtr<SDockTab> One = Invoke("One");
	ASSERT_TRUE(One.IsValid());
	EXPECT_EQ(Utf8(One->GetTabLabel()), "One");
	EXPECT_EQ(Utf8(One->GetToolTipText()), "About One");
	EXPECT_TRUE(Sees("Content One"));
	const TSharedPtr<SDockTab> Two = Invoke("Two");
	EXPECT_TRUE(Two->IsForeground());
	EXPECT_FALSE(Sees("Content One"));
	EXPECT_EQ(Invoke("One"), One);
	EXPECT_TRUE(Sees("Content One"));
	EXPECT_FALSE(Invoke("Three").IsValid());
}

TEST_F(FDockTest, MouseAndKeysGoThroughTheTabs)
{
	Register("One");
	Register("Two");
	Register("Three");
	const TSharedPtr<SDockTab> One = Invoke("One");
	const TSharedPtr<SDockTab> Two = Invoke("Two");
	const TSharedPtr<SDockTab> Three = Invoke("Three");
	EXPECT_EQ(GetRect(*One).Height(), 29.0f);
	EXPECT_EQ(GetRect(*One).Bottom, 32.0f);
	Click(FindByText("One"));
	EXPECT_TRUE(One->IsForeground());
	PressKey("CTRL+Tab");
	EXPECT_TRUE(Two->IsForeground());
	PressKey("CTRL+SHIFT+Tab");
	PressKey("CTRL+SHIFT+Tab");
	EXPECT_TRUE(Three->IsForeground());
	// The tab in front closes: its neighbour comes to the front.
	PressMouse(GetCenter(Three.ToSharedRef()), EKeys::MiddleMouseButton);
	ReleaseMouse(GetCenter(Three.ToSharedRef()), EKeys::MiddleMouseButton);
	EXPECT_TRUE(Two->IsForeground());
	EXPECT_FALSE(FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId("Three")).IsValid());
	EXPECT_NE(Invoke("Three"), Three);
}

TEST_F(FDockTest, ClosingFromInsideTheContentDestroysIt)
{
	TWeakPtr<SWidget> Content;
	int32 Closed = 0;
	Register("One");
	const TSharedPtr<SDockTab> Tab = Invoke("One");
	{
		const TWeakPtr<SDockTab> Weak = Tab;
		const TSharedRef<SButton> Button = SNew(SButton)
											   .Tag(TEXT("Leave"))
											   .Text(FText::FromString(TEXT("Leave")))
											   .OnClicked_Lambda(
												   [Weak]()
												   {
													   Weak.Pin()->RequestCloseTab();
													   return FReply::Handled();
												   });
		Content = Button;
		Tab->SetContent(Button);
	}
	Tab->SetOnTabClosed(FOnTabClosedCallback::CreateLambda([&Closed](TSharedRef<SDockTab>) { ++Closed; }));
	PumpFrame();
	Click(FindByTag("Leave"));
	EXPECT_FALSE(Content.IsValid());
	EXPECT_EQ(Closed, 1);
	EXPECT_EQ(Area->GetTabs().Num(), 0);
	EXPECT_TRUE(Tab->RequestCloseTab());
	EXPECT_EQ(Closed, 1);
}

TEST_F(FDockTest, ATabMayRefuseToClose)
{
	Register("One");
	const TSharedPtr<SDockTab> Tab = Invoke("One");
	Tab->SetCanCloseTab(FCanCloseTab::CreateLambda([]() { return false; }));
	Click(FindByTag("CloseTab"));
	EXPECT_TRUE(Tab->IsForeground());
	Tab->SetCanCloseTab(FCanCloseTab());
	Click(FindByTag("CloseTab"));
	EXPECT_EQ(Area->GetTabs().Num(), 0);
}

TEST_F(FDockTest, TheKeyboardComesBackWithItsTab)
{
	Register("One");
	Register("Two");
	const TSharedPtr<SDockTab> One = Invoke("One");
	TSharedPtr<SEditableTextBox> Box;
	One->SetContent(SAssignNew(Box, SEditableTextBox));
	PumpFrame();
	App().SetKeyboardFocus(Box);
	Invoke("Two");
	EXPECT_FALSE(Box->HasKeyboardFocus());
	Invoke("One");
	EXPECT_TRUE(Box->HasKeyboardFocus());
}

TEST_F(FDockTest, ANewSpawnerOfTheSameNameReplacesTheOld)
{
	const TSharedRef<FWorkspaceItem> Group = FWorkspaceItem::NewGroup(FText::FromString(TEXT("Tools")));
	Register("One").SetGroup(Group);
	FTabSpawnerEntry& Second = Register("One").SetGroup(Group);
	ASSERT_EQ(Group->GetChildItems().Num(), 1);
	EXPECT_EQ(Group->GetChildItems()[0]->AsSpawnerEntry().Get(), &Second);
	EXPECT_TRUE(FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(FName("One")));
	EXPECT_FALSE(FGlobalTabmanager::Get()->UnregisterNomadTabSpawner(FName("One")));
	EXPECT_EQ(Group->GetChildItems().Num(), 0);
}

class FDockDialogTest : public FWidgetTest
{
protected:
	void SetUp() override
	{
		FWidgetTest::SetUp();
		FHostDialogs::Install();
		FHostDialogs::SetAnswering(true);
	}
	void TearDown() override
	{
		FHostDialogs::Uninstall();
		FWidgetTest::TearDown();
	}
	/** Opens a question and does the step once it is on screen. */
	EAppReturnType::Type Ask(EAppMsgType::Type Type, TFunction<void()> Step)
	{
		int32 Frame = 0;
		App().SetFrameHook(
			[&Frame, Step]()
			{
				if (++Frame == 3)
				{
					Step();
				}
				ASSERT_LT(Frame, 100) << "the dialog was never answered";
			});
		const EAppReturnType::Type Answer = FMessageDialog::Open(
			Type, FText::FromString(TEXT("All messages will be removed.")), FText::FromString(TEXT("Delete this chat?")));
		App().SetFrameHook(nullptr);
		return Answer;
	}
};

TEST_F(FDockDialogTest, CanBeSeenAndAnsweredByName)
{
	const EAppReturnType::Type Answer = Ask(EAppMsgType::YesNo,
		[]()
		{
			const TArray<FHostOpenDialog> Open = FHostDialogs::GetOpenDialogs();
			ASSERT_EQ(Open.Num(), 1);
			EXPECT_EQ(Utf8(Open[0].Title), "Delete this chat?");
			EXPECT_EQ(Utf8(Open[0].Message), "All messages will be removed.");
			EXPECT_EQ(Utf8(Open[0].Buttons), "\"Yes\", \"No\"");
			EXPECT_FALSE(FHostDialogs::AnswerOpenDialog(TEXT("Maybe")));
			EXPECT_TRUE(FHostDialogs::AnswerOpenDialog(TEXT("yes")));
		});
	EXPECT_EQ(Answer, EAppReturnType::Yes);
	EXPECT_EQ(FHostDialogs::GetOpenDialogs().Num(), 0);
	EXPECT_FALSE(FHostDialogs::AnswerOpenDialog(TEXT("Yes")));
}

TEST_F(FDockDialogTest, KeysAndMouse)
{
	EXPECT_EQ(Ask(EAppMsgType::YesNo, [this]() { PressKey("Escape"); }), EAppReturnType::No);
	EXPECT_EQ(Ask(EAppMsgType::YesNo, [this]() { PressKey("Enter"); }), EAppReturnType::No) << "the harmless button has the keyboard";
	EXPECT_EQ(Ask(EAppMsgType::YesNo,
				  [this]()
				  {
					  PressKey("Left");
					  PressKey("Enter");
				  }),
		EAppReturnType::Yes);
	EXPECT_EQ(Ask(EAppMsgType::YesNo, [this]() { Click(FindByText("Yes")); }), EAppReturnType::Yes);
	EXPECT_EQ(Ask(EAppMsgType::OkCancel, [this]() { Click(FindByTag("CloseWindow")); }), EAppReturnType::Cancel);
	EXPECT_EQ(Ask(EAppMsgType::Ok, [this]() { PressKey("Enter"); }), EAppReturnType::Ok);
}

TEST_F(FDockDialogTest, WithoutAnybodyTheDefaultIsTakenAndSaid)
{
	FHostDialogs::SetAnswering(false);
	testing::internal::CaptureStderr();
	EXPECT_EQ(FMessageDialog::Open(EAppMsgType::YesNo, FText::FromString(TEXT("Sure?"))), EAppReturnType::No);
	EXPECT_EQ(testing::internal::GetCapturedStderr(), "Nobody to ask, taking \"No\": Sure?\n");
	FHostDialogs::QueueAnswer(TEXT("Yes"));
	EXPECT_EQ(FMessageDialog::Open(EAppMsgType::Ok, FText::FromString(TEXT("Note"))), EAppReturnType::Ok)
		<< "the answer waits for a dialog that has it";
	EXPECT_EQ(FMessageDialog::Open(EAppMsgType::YesNo, FText::FromString(TEXT("Sure?"))), EAppReturnType::Yes);
}

TEST_F(FDockTest, ANarrowAreaScrollsSidewaysWhatWouldBeCut)
{
	Register("One");
	const auto MakeContent = [](float Width)
	{
		const TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox);
		for (const char* const Name : { "A", "B", "C" })
		{
			Row->AddSlot().AutoWidth()[SNew(SBox).WidthOverride(Width)[SNew(SButton).Tag(FName(Name))]];
		}
		// Within a part of the width, so that more is needed than what the row misses.
		return SNew(SBox).Padding(20.0f, 0.0f)[Row];
	};
	const TSharedPtr<SDockTab> Tab = Invoke("One");
	const struct
	{
		float Button;
		int32 Window;
		/** Of the content; zero for one that does not scroll. */
		float Content;
	} Rows[] = { { 160.0f, 1000, 0.0f }, { 160.0f, 540, 0.0f }, { 160.0f, 400, 520.0f }, { 160.0f, 600, 0.0f }, { 400.0f, 400, 720.0f },
		{ 400.0f, 800, 0.0f } };
	float Shown = 0.0f;
	for (const auto& Row : Rows)
	{
		if (Row.Button != Shown)
		{
			Shown = Row.Button;
			Tab->SetContent(MakeContent(Shown));
		}
		Resize(Row.Window, 300);
		PumpSeconds(1.0);
		EXPECT_EQ(CountByType("SScrollBox"), Row.Content > 0.0f ? 1 : 0) << Row.Button << " in " << Row.Window;
		const float Width = GetRect(Tab->GetContent().Get()).Width();
		EXPECT_NEAR(Width, Row.Content > 0.0f ? Row.Content : static_cast<float>(Row.Window), 1.0f) << Row.Button << " in " << Row.Window;
	}
	// The keyboard reaches what is out of view, and stays where it is when the window grows.
	Tab->SetContent(MakeContent(160.0f));
	Resize(400, 300);
	PumpSeconds(1.0);
	App().SetKeyboardFocus(FindByTag("A"));
	PressKey("Tab");
	PressKey("Tab");
	PumpSeconds(0.5);
	const TSharedRef<SWidget> Last = FindByTag("C");
	EXPECT_TRUE(Last->HasKeyboardFocus());
	EXPECT_LE(GetRect(*Last).Right, 401.0f);
	Resize(900, 300);
	PumpSeconds(0.5);
	EXPECT_EQ(CountByType("SScrollBox"), 0);
	EXPECT_TRUE(Last->HasKeyboardFocus());
}

TEST_F(FDockTest, AreasThatScrollBothWaysHaveBothBarsInView)
{
	Register("One");
	const TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox);
	Row->AddSlot().AutoWidth()[SNew(SBox).WidthOverride(600.0f)[SNew(SButton).Tag("Wide")]];
	const TSharedRef<SVerticalBox> Column = SNew(SVerticalBox);
	Column->AddSlot().AutoHeight()[SNew(SBox).HeightOverride(60.0f)[Row]];
	Column->AddSlot().FillHeight(1.0f)[SNew(SBox).HeightOverride(500.0f)];
	Column->AddSlot().AutoHeight()[SNew(SBox).HeightOverride(80.0f)];
	Invoke("One")->SetContent(Column);
	Resize(400, 220);
	PumpSeconds(1.0);
	EXPECT_EQ(CountByType("SScrollBox"), 2);
	ASSERT_EQ(CountByType("SBesideBar"), 1);
	// What is above is out of view, until the upright bar is dragged: it is at the edge of the window.
	const auto GetTop = [this] { return GetRect(*FindByTag("Wide")).Top; };
	EXPECT_LT(GetTop(), 32.0f);
	const FVector2D Thumb(394.0, 190.0);
	MoveMouse(Thumb);
	PressMouse(Thumb);
	MoveMouse(FVector2D(394.0, 40.0));
	ReleaseMouse(FVector2D(394.0, 40.0));
	PumpSeconds(0.2);
	EXPECT_NEAR(GetTop(), 32.0f, 1.0f);
}

TEST_F(FDockTest, ARowThatIsClippedOnPurposeWidensNothing)
{
	Register("One");
	const TSharedPtr<SDockTab> Tab = Invoke("One");
	for (const EWidgetClipping Clipping : { EWidgetClipping::ClipToBounds, EWidgetClipping::Inherit })
	{
		const TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox);
		Row->AddSlot().AutoWidth()[SNew(SBox).WidthOverride(600.0f)[SNew(SButton)]];
		Tab->SetContent(SNew(SBorder).Clipping(Clipping)[Row]);
		Resize(400, 300);
		PumpSeconds(1.0);
		EXPECT_EQ(CountByType("SScrollBox"), Clipping == EWidgetClipping::Inherit ? 1 : 0);
	}
}

TEST_F(FDockTest, ALowAreaScrollsUprightSoThatWhatFillsItKeepsARoom)
{
	Register("One");
	const TSharedPtr<SDockTab> Tab = Invoke("One");
	float Foot = 80.0f;
	const auto GetFoot = [&Foot] { return FOptionalSize(Foot); };
	const TSharedRef<SVerticalBox> Column = SNew(SVerticalBox);
	Column->AddSlot().AutoHeight()[SNew(SBox).HeightOverride(60.0f)[SNew(SButton).Tag("Head")]];
	Column->AddSlot().FillHeight(1.0f)[SNew(SBox).Tag("Middle").HeightOverride(500.0f)];
	Column->AddSlot().AutoHeight()[SNew(SBox).HeightOverride_Lambda(GetFoot)[SNew(SEditableTextBox).Tag("Foot")]];
	Tab->SetContent(SNew(SBox).Padding(0.0f, 10.0f)[Column]);
	const TSharedRef<SWidget> Box = FindByTag("Foot");
	const auto GetHeight = [this](const char* Tag) { return GetRect(*FindByTag(Tag)).Height(); };
	// 1. Room for all of it, and too little. The lower end is in view.
	Resize(600, 300);
	PumpSeconds(0.5);
	EXPECT_EQ(CountByType("SScrollBox"), 0);
	Resize(600, 220);
	PumpSeconds(0.5);
	EXPECT_EQ(CountByType("SScrollBox"), 1);
	EXPECT_NEAR(GetHeight("Middle"), 96.0f, 1.0f);
	EXPECT_LE(GetRect(*Box).Bottom, 221.0f);
	EXPECT_GE(GetRect(*FindByTag("Middle")).Top, 32.0f);
	// 2. Tab brings the other end in.
	App().SetKeyboardFocus(Box);
	PressKey("SHIFT+TAB");
	PumpSeconds(0.5);
	EXPECT_TRUE(FindByTag("Head")->HasKeyboardFocus());
	EXPECT_GE(GetRect(*FindByTag("Head")).Top, 32.0f);
	// 3. So it is when the area becomes low only then.
	Resize(600, 400);
	PumpSeconds(0.5);
	Resize(600, 220);
	PumpSeconds(0.5);
	EXPECT_TRUE(FindByTag("Head")->HasKeyboardFocus());
	EXPECT_GE(GetRect(*FindByTag("Head")).Top, 32.0f);
	// 4. Keys bring back what they are for. What grows does so in view, and keeps the keyboard.
	App().SetKeyboardFocus(Box);
	PumpSeconds(0.5);
	EXPECT_GT(GetRect(*Box).Bottom, 221.0f);
	PressKey("Left");
	PumpSeconds(0.5);
	EXPECT_LE(GetRect(*Box).Bottom, 221.0f);
	Foot = 120.0f;
	PumpSeconds(0.5);
	EXPECT_NEAR(GetHeight("Middle"), 96.0f, 1.0f);
	EXPECT_LE(GetRect(*Box).Bottom, 221.0f);
	EXPECT_TRUE(Box->HasKeyboardFocus() || Box->HasFocusedDescendants());
	Resize(600, 400);
	PumpSeconds(0.5);
	EXPECT_EQ(CountByType("SScrollBox"), 0);
	EXPECT_TRUE(Box->HasKeyboardFocus() || Box->HasFocusedDescendants());
}
