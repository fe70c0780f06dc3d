#include "ChatWindowTest.h"

#include "Style/AnimationHelper.h"

#include <algorithm>

namespace
{
	std::string GetStatusColor()
	{
		const TSharedPtr<SWidget> Status = FWidgetFinder::FindByTag(FName("StatusText"));
		return Status.IsValid() ? PaintedIn(*Status, ESlateDrawType::Glyphs).at(0) : std::string();
	}
}

TEST_F(FChatWindowTest, WithoutAViewModelItSaysSo)
{
	EXPECT_EQ(DumpControls(), "Not initialized: (Send) (Cancel) (New)");
	EXPECT_EQ(DumpKey(FindByTag("StatusText")->GetDisplayedText()), "VelmoraUI,NotInitialized: Not initialized");
	EXPECT_EQ(GetStatusColor(), Hex(FVelmoraUIStyles::GetStatusIdleColor()));
	EXPECT_EQ(VisibleTexts(),
		(FTextList{ "No chats yet", "New", "Export", "Clear", "Changed Files", "General", "0 characters", "Not initialized" }))
		<< "neither messages nor welcome";
	Click(FindByTag("ExportButton"));
	Click(FindByTag("ClearButton"));
	EXPECT_EQ(TextOf("StatusText"), "Not initialized") << "nothing to export or to clear, and nobody is asked";
}

TEST_F(FChatWindowTest, ControlsFollowTheStateOfTheConversation)
{
	Connect();
	Prompt("x");
	const std::pair<EState, const char*> Cases[] = {
		{ EState::NotStarted, "Ready to start: Send (Cancel) New" },
		{ EState::Initializing, "Initializing: (Send) Pause Cancel (New)" },
		{ EState::Ready, "Ready: Send (Cancel) New" },
		{ EState::Thinking, "Thinking: Pause Cancel (New)" },
		{ EState::ExecutingTools, "Executing tools: Pause Cancel (New)" },
		{ EState::AwaitingInput, "Ready: Send (Cancel) New" },
		{ EState::Paused, "Paused: Continue Cancel New" },
		{ EState::Completed, "Completed: Send (Cancel) New" },
		{ EState::Cancelled, "Cancelled: Send (Cancel) New" },
		{ EState::Error, "Error: Send (Cancel) New" },
	};
	for (const auto& [State, Controls] : Cases)
	{
		Agent->FireState(State);
		EXPECT_EQ(DumpControls(), Controls);
		const bool bBusy = State == EState::Initializing || State == EState::Thinking || State == EState::ExecutingTools;
		EXPECT_EQ(CountByType("SThrobber"), bBusy ? 1 : 0) << Controls;
		EXPECT_EQ(FWidgetFinder::IsEnabledInTree(*FindByTag("ConversationComboBox")), !bBusy) << Controls;
		for (const char* Button : { "ExportButton", "ClearButton" })
		{
			EXPECT_TRUE(FWidgetFinder::IsEnabledInTree(*FindByTag(Button))) << Controls;
		}
	}
}

TEST_F(FChatWindowTest, ControlsFollowTheUpdateGate)
{
	Connect();
	Prompt("x");
	const std::tuple<EGate, const char*, bool> Cases[] = {
		{ EGate::Checking, "Initializing: New", false },
		{ EGate::Ready, "Ready: Send (Cancel) New", false },
		{ EGate::UpdateAvailable, "Ready: (Send) (Cancel) New Update", true },
		{ EGate::Downloading, "Ready: New (Update)", true },
		{ EGate::RestartRequired, "Restart required: New (Update)", true },
		{ static_cast<EGate>(9), "Ready: New", false },
	};
	for (const auto& [Gate, Controls, bOrange] : Cases)
	{
		SetGate(Gate);
		EXPECT_EQ(DumpControls(), Controls);
		EXPECT_EQ(GetStatusColor() == Hex(FLinearColor(0.9f, 0.6f, 0.2f, 0.8f)), bOrange) << Controls;
		EXPECT_EQ(IsEnabled("InputTextBox"), Gate == EGate::Ready || Gate == EGate::UpdateAvailable) << Controls;
	}
}

TEST_F(FChatWindowTest, AnUpdateOutshinesAnError)
{
	Connect();
	Agent->FireState(EState::Error);
	PumpSeconds(0.5);
	EXPECT_EQ(GetStatusColor(), Hex(FVelmoraUIStyles::GetStatusErrorColor()));
	SetGate(EGate::UpdateAvailable);
	PumpFrame();
	EXPECT_EQ(GetStatusColor(), Hex(FVelmoraUIStyles::GetUpdateAvailableColor()));
}

TEST_F(FChatWindowTest, AViewModelShowsItsColourAtOnce)
{
	Agent->State = EState::Error;
	Connect();
	EXPECT_EQ(GetStatusColor(), Hex(FVelmoraUIStyles::GetStatusErrorColor()));
}

TEST_F(FChatWindowTest, TheStatusColourBlendsOnFromFrameToFrame)
{
	Connect();
	const FLinearColor Idle = FVelmoraUIStyles::GetStatusIdleColor();
	const FLinearColor Busy = FVelmoraUIStyles::GetStatusBusyColor();
	Agent->FireState(EState::Thinking);
	PumpFrame(0.15);
	const FLinearColor Half = FAnimationHelper::LerpColor(Idle, Busy, 0.5f);
	EXPECT_EQ(GetStatusColor(), Hex(Half));

	Agent->FireState(EState::ExecutingTools);
	PumpFrame(0.075);
	EXPECT_EQ(GetStatusColor(), Hex(FAnimationHelper::LerpColor(Half, Busy, 0.75f)));
	PumpFrame(0.1);
	EXPECT_EQ(GetStatusColor(), Hex(Busy));

	Agent->FireState(EState::AwaitingInput);
	PumpSeconds(0.4);
	EXPECT_EQ(GetStatusColor(), Hex(FVelmoraUIStyles::GetStatusReadyColor()));
}

TEST_F(FChatWindowTest, TheWelcomeOfALowWindowStaysInItsPlace)
{
	Connect();
	Resize(640, 360);
	PumpFrame();
	const FSlateRect Place = GetRect(*FindByType("SEmptyState")[0]);
	const float Prompt = GetRect(*FindByTag("InputTextBox")).Top;
	int32 Lines = 0;
	for (const FSlateDrawElement& Element : App().GetLastElements().GetElements())
	{
		if (Element.Type == ESlateDrawType::Glyphs && Utf8(Element.Color.ToHex()) == Hex(FVelmoraUIStyles::GetTextColorTertiary()) &&
			Element.Clip.Top < Prompt)
		{
			++Lines;
			EXPECT_GE(Element.Clip.Top, Place.Top - 1.0f);
			EXPECT_LE(Element.Clip.Bottom, Place.Bottom + 1.0f);
		}
	}
	EXPECT_GT(Lines, 0);
}

TEST_F(FChatWindowTest, TheWelcomeStandsUntilTheFirstMessage)
{
	Connect();
	const FTextList Texts = VisibleTexts();
	const auto Welcome = std::find(Texts.begin(), Texts.end(), "Welcome to Velmora");
	ASSERT_GE(Texts.end() - Welcome, 2);
	EXPECT_TRUE(Welcome[1].starts_with(
		"Start a conversation by typing a message below.\n\nVelmora AI Co-Developer can help you with:\n\n  • Ideation"));
	EXPECT_EQ(CountByType("SEmptyState"), 1);
	Agent->FireMessage(TEXT("hello"));
	PumpSeconds(0.3);
	EXPECT_EQ(CountByType("SEmptyState"), 0);
	EXPECT_EQ(CountByType("SMessageRow"), 1);
}

TEST_F(FChatWindowTest, AnotherViewModelTakesOver)
{
	Connect();
	const TSharedPtr<FChatViewModel> Old = ViewModel;
	EXPECT_TRUE(Old->OnMessagesChanged().IsBound());
	Agent = MakeShared<FTestAgent>();
	Agent->HoldConversation(TEXT("c2"));
	Agent->State = EState::Thinking;
	Connect();
	EXPECT_FALSE(Old->OnMessagesChanged().IsBound());
	EXPECT_FALSE(Old->OnStateChanged().IsBound());
	EXPECT_TRUE(Velmora::FUpdateGate::Get().OnStateChanged().IsBound());
	EXPECT_EQ(DumpControls(), "Thinking: Pause Cancel (New)");

	Window->SetViewModel(nullptr);
	EXPECT_EQ(DumpControls(), "Not initialized: (Send) (Cancel) (New)");
	EXPECT_FALSE(ViewModel->OnMessagesChanged().IsBound());
	EXPECT_FALSE(Velmora::FUpdateGate::Get().OnStateChanged().IsBound());
}
