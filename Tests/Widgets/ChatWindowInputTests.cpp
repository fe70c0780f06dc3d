#include "ChatWindowTest.h"

class FChatWindowInputTest : public FChatWindowTest
{
protected:
	/** The texts of the messages, in order. */
	FTextList GetMessageTexts() const
	{
		FTextList Texts;
		for (const TSharedPtr<FChatMessage>& Message : ViewModel->GetMessages())
		{
			Texts.push_back(Utf8(Message->Content));
		}
		return Texts;
	}

	static std::string GetCharacterCount() { return TextOf("CharacterCount"); }

	using FModeBox = SComboBox<TSharedPtr<EMode>>;
	static TSharedRef<FModeBox> ModeBox() { return StaticCastSharedRef<FModeBox>(FindByTag("ModeComboBox")); }
	static std::string GetModeLabel() { return TextsIn(*ModeBox()).at(0); }

	static std::string GetSelectedMode()
	{
		const TSharedPtr<EMode> Selected = ModeBox()->GetSelectedItem();
		return Selected ? std::to_string(static_cast<int>(*Selected)) : "none";
	}
};

TEST_F(FChatWindowInputTest, ControlEnterSends)
{
	Connect();
	Prompt("first line\nsecond");
	EXPECT_EQ(GetPrompt(), "first line\nsecond") << "Enter alone makes a line";
	EXPECT_EQ(GetCharacterCount(), "17 characters");
	PressKey("CTRL+Enter");
	EXPECT_EQ(Agent->Calls, (std::vector<std::string>{ "SendMessage 'first line\nsecond' []" }));
	EXPECT_EQ(GetPrompt(), "");
	EXPECT_EQ(GetCharacterCount(), "0 characters");
	EXPECT_EQ(GetMessageTexts(), (FTextList{ "first line\nsecond" }));
	PumpSeconds(0.2);
	EXPECT_EQ(CountByType("SMessageRow"), 1);
	PressKey("CTRL+Enter");
	EXPECT_EQ(Agent->Calls.size(), 1u) << "there is nothing more to send";
}

TEST_F(FChatWindowInputTest, TheSendButtonSends)
{
	Connect();
	EXPECT_EQ(DumpControls(), "Ready: (Send) (Cancel) New");
	Prompt("   ");
	EXPECT_EQ(DumpControls(), "Ready: Send (Cancel) New") << "blanks are a text";
	Click(FindByTag("SendButton"));
	EXPECT_EQ(Agent->Calls, (std::vector<std::string>{ "SendMessage '   ' []" }));
	EXPECT_EQ(GetPrompt(), "");
}

TEST_F(FChatWindowInputTest, ARefusedTextStays)
{
	Connect();
	Agent->bAcceptsMessages = false;
	Prompt("keep me");
	PressKey("CTRL+Enter");
	EXPECT_EQ(GetPrompt(), "keep me");
	EXPECT_EQ(GetMessageTexts(), (FTextList{ "keep me", "Failed to send message. Please try again." }));
}

TEST_F(FChatWindowInputTest, AClosedGateKeepsTheTextSilently)
{
	Connect();
	SetGate(EGate::UpdateAvailable);
	PumpFrame();
	Prompt("keep me");
	PressKey("CTRL+Enter");
	EXPECT_EQ(GetPrompt(), "keep me");
	EXPECT_TRUE(Agent->Calls.empty());
	SetGate(EGate::Ready);
	PressKey("CTRL+Enter");
	EXPECT_EQ(Agent->Calls.size(), 1u);
}

TEST_F(FChatWindowInputTest, PauseContinueAndCancel)
{
	Connect();
	Agent->FireState(EState::Thinking);
	PumpFrame();
	Click(FindByTag("PauseButton"));
	EXPECT_EQ(DumpControls(), "Paused: Continue Cancel New");
	EXPECT_EQ(ViewModel->GetMessageCount(), 1) << "the notice of the pause";

	Prompt("shorter, please");
	PressKey("CTRL+Enter");
	EXPECT_EQ(GetPrompt(), "shorter, please") << "a paused turn takes no message";
	Click(FindByTag("ContinueButton"));
	EXPECT_EQ(GetPrompt(), "");
	EXPECT_EQ(DumpControls(), "Thinking: Pause Cancel (New)");
	EXPECT_EQ(GetMessageTexts(), (FTextList{ "shorter, please" })) << "the notice is gone";

	Click(FindByTag("CancelButton"));
	EXPECT_EQ(
		Agent->Calls, (std::vector<std::string>{ "PauseConversation", "ResumeConversation 'shorter, please'", "CancelConversation" }));
	EXPECT_EQ(GetMessageTexts().back(), "Conversation cancelled");

	Agent->FireState(EState::Paused);
	PumpFrame();
	Click(FindByTag("ContinueButton"));
	EXPECT_EQ(Agent->Calls.back(), "ResumeConversation ''") << "without a text it goes on";
}

TEST_F(FChatWindowInputTest, TheCancelIconDimsAndBrightens)
{
	Connect();
	const auto GetIcon = []() -> std::string { return PaintedIn(*FindByTag("CancelButton"), ESlateDrawType::Image).at(0); };
	const std::string Dim = GetIcon();
	Hover(FindByTag("CancelButton"));
	EXPECT_EQ(GetIcon(), Dim) << "disabled, it does not answer";
	Agent->FireState(EState::Thinking);
	PumpFrame();
	Hover(FindByTag("CancelButton"));
	EXPECT_TRUE(GetIcon().ends_with(" " + Hex(FVelmoraUIStyles::GetSecondaryActionNeutralHoverColor(1.0f)))) << GetIcon();
	MoveMouse(GetCenter(Window.ToSharedRef()));
	EXPECT_TRUE(GetIcon().ends_with(" " + Hex(FVelmoraUIStyles::GetSecondaryActionNeutralColor(1.0f)))) << GetIcon();
	EXPECT_NE(GetIcon(), Dim);
}

TEST_F(FChatWindowInputTest, ANewChatTakesTheModeOfTheSettings)
{
	Connect();
	Agent->NextConversationId = TEXT("c2");
	const std::tuple<uint8, const char*, const char*> Cases[] = {
		{ 0, "StartConversation 0", "Advisor" },
		{ 1, "StartConversation 1", "Code" },
		{ 2, "StartConversation 2", "Assets" },
		{ 3, "StartConversation 3", "General" },
		{ 200, "StartConversation 3", "General" },
	};
	for (const auto& [Stored, Call, Label] : Cases)
	{
		GetMutableDefault<UVelmoraSettings>()->DefaultConversationMode = Stored;
		Click(FindByTag("NewConversationButton"));
		EXPECT_EQ(Agent->Calls.back(), Call);
		EXPECT_EQ(GetModeLabel(), Label);
		EXPECT_EQ(GetSelectedMode(), std::string(1, std::string(Call).back()));
	}
}

TEST_F(FChatWindowInputTest, AModeIsPickedFromTheList)
{
	Connect();
	EXPECT_EQ(GetSelectedMode(), "3");
	Click(FindByTag("ModeComboBox"));
	PumpFrame();
	for (const auto& [Label, ToolTip] : {
			 std::pair("Advisor", "VelmoraUI,ModeAdvisor_Tooltip: Project guidance and best practices (no code/asset changes). "),
			 std::pair("Code", "VelmoraUI,ModeCode_Tooltip: C++ code generation, refactoring, and implementation work."),
			 std::pair("Assets", "VelmoraUI,ModeAssets_Tooltip: Blueprints and asset-focused changes. "),
			 std::pair("General", "VelmoraUI,ModeGeneral_Tooltip: Multi-purpose assistance across code, assets, and guidance."),
		 })
	{
		const std::string Words = ToolTip;
		const TSharedRef<SWidget> Row = FindByToolTip(Words.substr(Words.find(' ') + 1));
		EXPECT_EQ(Utf8(Row->GetDisplayedText().ToString()), Label);
		EXPECT_EQ(DumpKey(Row->GetToolTipText()), ToolTip);
	}
	Click(FindByText("Code"));
	EXPECT_EQ(Agent->Metadata->Mode, EMode::Code);
	EXPECT_EQ(GetModeLabel(), "Code");
	EXPECT_EQ(GetSelectedMode(), "1");
}

TEST_F(FChatWindowInputTest, TheModeIsFixedByTheFirstMessage)
{
	EXPECT_FALSE(IsEnabled("ModeComboBox")) << "no view model";
	Connect();
	EXPECT_TRUE(IsEnabled("ModeComboBox"));
	Click(ModeBox());
	EXPECT_TRUE(ViewModel->SendMessage(TEXT("x"))) << "while the list is open";
	PumpFrame();
	EXPECT_FALSE(IsEnabled("ModeComboBox"));
	if (!FWidgetFinder::FindByText(TEXT("Code")).IsEmpty())
	{
		Click(FindByText("Code"));
	}
	EXPECT_EQ(Agent->Metadata->Mode, EMode::General);
	EXPECT_EQ(GetSelectedMode(), "3") << "a refused change snaps back";
}

TEST_F(FChatWindowInputTest, ASelectionFromCodeIsNoChoice)
{
	Connect();
	ModeBox()->SetSelectedItem(MakeShared<EMode>(EMode::Code));
	EXPECT_EQ(Agent->Metadata->Mode, EMode::General);
	ModeBox()->ClearSelection();
	EXPECT_EQ(Agent->Metadata->Mode, EMode::General);
}

TEST_F(FChatWindowInputTest, WithoutAConversationTheDefaultModeIsShown)
{
	GetMutableDefault<UVelmoraSettings>()->DefaultConversationMode = 2;
	Agent->Metadata.Reset();
	Connect();
	EXPECT_EQ(GetModeLabel(), "Assets");
	EXPECT_FALSE(IsEnabled("ModeComboBox"));
}

TEST_F(FChatWindowInputTest, LongPromptsAreCountedAndStayInTheirBox)
{
	Connect();
	std::string Text;
	for (int Line = 0; Line < 60; ++Line)
	{
		Text += "twenty characters..\n";
	}
	InputBox()->SetText(FText::FromString(FString(UTF8_TO_TCHAR(Text.c_str()))));
	PumpFrame();
	EXPECT_EQ(GetCharacterCount(), "1,200 characters");
	const FSlateRect Box = GetRect(*InputBox());
	EXPECT_LE(Box.Bottom - Box.Top, 200.0f);
}
