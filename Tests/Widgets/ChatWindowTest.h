#pragma once

#include "Host/HostTasks.h"
#include "Host/UpdateGateControl.h"
#include "Settings/VelmoraSettings.h"
#include "Support/Base/TempFolder.h"
#include "Support/TestAgent.h"
#include "UObject/UObjectGlobals.h"
#include "UpdateGate.h"
#include "VelmoraWidgetTest.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/SChatWindow.h"
#include "Widgets/SMessageList.h"

#include <string>

/** A chat window in the application, with an agent that waits for the test. */
class FChatWindowTest : public FVelmoraWidgetTest
{
protected:
	using EState = Velmora::EConversationState;
	using EMode = Velmora::EConversationMode;
	using EGate = Velmora::EUpdateGateState;

	void SetUp() override
	{
		FVelmoraWidgetTest::SetUp();
		SetGate(EGate::Ready);
		GetMutableDefault<UVelmoraSettings>()->DefaultConversationMode = static_cast<uint8>(EMode::General);
		Agent = MakeShared<FTestAgent>();
		Agent->HoldConversation(TEXT("c1"));
		Window = SNew(SChatWindow);
		Window->SetConversationHistorySaveDirForTests(EmptyStore.At());
		Show(Window.ToSharedRef());
	}

	void TearDown() override
	{
		FHostTasks::WaitForBackground(20.0);
		FVelmoraWidgetTest::TearDown();
		// What workers hand over may hold the window.
		Window.Reset();
		FHostTasks::RunGameThreadTasks();
		SetGate(EGate::Ready);
		GetMutableDefault<UVelmoraSettings>()->DefaultConversationMode = static_cast<uint8>(EMode::General);
	}

	static void SetGate(EGate Gate, const TCHAR* Message = TEXT(""), const TCHAR* Version = TEXT(""))
	{
		Velmora::FUpdateGateControl::SetState(Gate, Message, Version);
	}

	/** Gives the window a view model on the agent. */
	void Connect()
	{
		ViewModel = MakeShared<FChatViewModel>();
		ASSERT_TRUE(ViewModel->Initialize(Agent));
		Window->SetViewModel(ViewModel);
		PumpFrame();
	}

	/** Clicks into the prompt and types. */
	void Prompt(const std::string& Text)
	{
		Click(InputBox());
		TypeText(Text);
	}

	static TSharedRef<SMultiLineEditableTextBox> InputBox()
	{
		return StaticCastSharedRef<SMultiLineEditableTextBox>(FindByTag("InputTextBox"));
	}
	static std::string GetPrompt() { return Utf8(InputBox()->GetText().ToString()); }
	static std::string TextOf(const char* Tag) { return Utf8(FindByTag(Tag)->GetDisplayedText().ToString()); }
	static bool IsEnabled(const char* Tag)
	{
		const TSharedPtr<SWidget> Widget = FWidgetFinder::FindByTag(FName(Tag));
		return Widget.IsValid() && FWidgetFinder::IsEnabledInTree(*Widget);
	}

	/** What is shown of the buttons, in brackets where it is disabled: "Ready: Send (Cancel) New". */
	std::string DumpControls()
	{
		PumpFrame();
		std::string Result = TextOf("StatusText") + ":";
		for (const char* Name : { "Send", "Pause", "Continue", "Cancel", "NewConversation", "Update" })
		{
			const TSharedPtr<SWidget> Button = FWidgetFinder::FindByTag(FName((std::string(Name) + "Button").c_str()));
			if (Button.IsValid())
			{
				const std::string Short = std::string(Name) == "NewConversation" ? "New" : Name;
				Result += FWidgetFinder::IsEnabledInTree(*Button) ? " " + Short : " (" + Short + ")";
			}
		}
		return Result;
	}

	/** What the window finds stored; the tests are not to see conversations of the user. */
	FTempFolder EmptyStore;
	TSharedPtr<FTestAgent> Agent;
	TSharedPtr<FChatViewModel> ViewModel;
	TSharedPtr<SChatWindow> Window;
};
