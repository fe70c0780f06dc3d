#include "Agent/AgentStateObserver.h"
#include "Misc/ConfigCacheIni.h"
#include "Settings/VelmoraSettings.h"
#include "Support/Base/Printers.h"
#include "Support/TestAgent.h"
#include "UObject/UObjectGlobals.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using Velmora::EConversationState;

TEST(SettingsTests, ValuesSurviveSavingAndLoading)
{
	UVelmoraSettings* Settings = GetMutableDefault<UVelmoraSettings>();
	ASSERT_NE(Settings, nullptr);
	EXPECT_EQ(Settings->DefaultConversationMode, 3);
	EXPECT_FALSE(Settings->bIncludeEngineSource);
	Settings->DefaultConversationMode = 1;
	Settings->bIncludeEngineSource = true;
	Settings->ProjectDescription = TEXT("one \"quoted\"\nline; and = more");
	Settings->CurrentAreaOfFocus = TEXT("two");
	Settings->GuidelinesAndTips = TEXT("three");
	Settings->Constraints = TEXT("four");
	Settings->EngineSourceFolder = TEXT("/opt/engine source");
	Settings->SaveConfig();
	Settings->Constraints = TEXT(""); // Emptied on purpose: that is a value too.
	Settings->SaveConfig();
	Settings->DefaultConversationMode = 2;
	Settings->bIncludeEngineSource = false;
	for (FString* Field : { &Settings->ProjectDescription, &Settings->CurrentAreaOfFocus, &Settings->GuidelinesAndTips,
			 &Settings->Constraints, &Settings->EngineSourceFolder })
	{
		*Field = TEXT("changed");
	}
	Settings->LoadConfig();
	EXPECT_EQ(Settings->DefaultConversationMode, 1);
	EXPECT_TRUE(Settings->bIncludeEngineSource);
	EXPECT_EQ(Utf8(Settings->ProjectDescription), "one \"quoted\"\nline; and = more");
	EXPECT_EQ(Utf8(Settings->CurrentAreaOfFocus), "two");
	EXPECT_EQ(Utf8(Settings->GuidelinesAndTips), "three");
	EXPECT_EQ(Utf8(Settings->Constraints), "");
	EXPECT_EQ(Utf8(Settings->EngineSourceFolder), "/opt/engine source");
}

TEST(SettingsTests, AnUnknownModeMeansGeneral)
{
	UVelmoraSettings* Settings = GetMutableDefault<UVelmoraSettings>();
	const FString Section = Settings->GetClass()->GetPathName();
	for (const TCHAR* Stored : { TEXT("-1"), TEXT("4"), TEXT("256") })
	{
		SCOPED_TRACE(Utf8(Stored));
		Settings->DefaultConversationMode = 1;
		GConfig->SetString(*Section, TEXT("DefaultConversationMode"), Stored, Settings->GetDefaultConfigFilename());
		Settings->LoadConfig();
		EXPECT_EQ(Settings->DefaultConversationMode, 3);
	}
}

TEST(AgentStateObserverTests, AnswersFollowTheState)
{
	struct FCase
	{
		EConversationState State;
		bool bAccepts;
		bool bBusy;
	};
	const FCase Cases[] = {
		{ EConversationState::NotStarted, true, false },
		{ EConversationState::Initializing, false, true },
		{ EConversationState::Ready, true, false },
		{ EConversationState::Thinking, false, true },
		{ EConversationState::ExecutingTools, false, true },
		{ EConversationState::AwaitingInput, true, false },
		{ EConversationState::Paused, false, false },
		{ EConversationState::Completed, true, false },
		{ EConversationState::Cancelled, true, false },
		{ EConversationState::Error, true, false },
	};
	const TSharedRef<FTestAgent> Agent = MakeShared<FTestAgent>();
	const Velmora::FAgentStateObserver Observer(Agent);
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(static_cast<int>(Case.State));
		Agent->State = Case.State;
		Agent->Metadata.Reset();
		EXPECT_FALSE(Observer.CanAcceptMessage());
		Agent->HoldConversation(TEXT("c"));
		EXPECT_EQ(Observer.CanAcceptMessage(), Case.bAccepts);
		EXPECT_EQ(Observer.IsBusy(), Case.bBusy);
	}
	const Velmora::FAgentStateObserver Nobody(nullptr);
	EXPECT_FALSE(Nobody.CanAcceptMessage());
	EXPECT_FALSE(Nobody.IsBusy());
}
