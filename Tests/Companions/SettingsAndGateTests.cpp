#include "Agent/AgentStateObserver.h"
#include "Host/UpdateGateControl.h"
#include "Settings/VelmoraSettings.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"
#include "Support/TestAgent.h"
#include "UObject/UObjectGlobals.h"
#include "UpdateGate.h"
#include "VelmoraAutoDownloadFrameworkModule.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using Velmora::EConversationState;
using Velmora::EUpdateGateState;
using Velmora::FUpdateGate;
using Velmora::FUpdateGateControl;

TEST(UpdateGateTests, TellsChangesAndNothingElse)
{
	FUpdateGate& Gate = FUpdateGate::Get();
	EXPECT_EQ(Gate.GetState(), EUpdateGateState::Ready);
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	EXPECT_EQ(Gate.GetState(), EUpdateGateState::Ready);

	std::vector<int> Told;
	const FDelegateHandle Handle = Gate.OnStateChanged().AddLambda([&Told](EUpdateGateState State) { Told.push_back(static_cast<int>(State)); });
	FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, TEXT(""), TEXT("1.2"));
	FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, TEXT(""), TEXT("1.2"));
	EXPECT_EQ(Utf8(Gate.GetVersion()), "1.2");
	FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload();
	EXPECT_EQ(Gate.GetState(), EUpdateGateState::UpdateAvailable);
	EXPECT_NE(Utf8(Gate.GetMessage()).find("cannot be downloaded"), std::string::npos);
	FUpdateGateControl::SetState(EUpdateGateState::Downloading, TEXT("40%"), TEXT("1.2"));
	Gate.OnStateChanged().Remove(Handle);
	FUpdateGateControl::SetState(EUpdateGateState::Ready, TEXT(""), TEXT(""));
	EXPECT_EQ(Told, std::vector<int>({ 2, 2, 3 }));
}

TEST(UpdateGateTests, AReleaseFileDecides)
{
	const FTempFolder Folder;
	const FString Path = Folder.At(TEXT("Release.json"));
	struct FCase
	{
		const char* Why;
		const TCHAR* Text; // Null for no file.
		bool bTaken;
		EUpdateGateState State;
		const char* Version;
	};
	const FCase Cases[] = {
		{ "no file", nullptr, true, EUpdateGateState::Ready, "" },
		{ "an offer", TEXT("{ \"state\": \"UpdateAvailable\", \"version\": \"2.1\" }"), true, EUpdateGateState::UpdateAvailable, "2.1" },
		{ "an unknown word changes nothing", TEXT("{ \"state\": \"Broken\" }"), false, EUpdateGateState::UpdateAvailable, "2.1" },
		{ "no object changes nothing", TEXT("[1"), false, EUpdateGateState::UpdateAvailable, "2.1" },
		{ "back to normal", TEXT("{ \"state\": \"Ready\" }"), true, EUpdateGateState::Ready, "" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		if (Case.Text)
		{
			ASSERT_TRUE(FFileHelper::SaveStringToFile(Case.Text, *Path));
		}
		FString Complaint;
		EXPECT_EQ(FUpdateGateControl::ReadReleaseFile(Path, Complaint), Case.bTaken);
		EXPECT_EQ(Complaint.IsEmpty(), Case.bTaken);
		EXPECT_EQ(FUpdateGate::Get().GetState(), Case.State);
		EXPECT_EQ(Utf8(FUpdateGate::Get().GetVersion()), Case.Version);
	}
}

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
	Settings->Constraints = TEXT("");
	Settings->SaveConfig();
	Settings->DefaultConversationMode = 2;
	Settings->bIncludeEngineSource = false;
	for (FString* Field : { &Settings->ProjectDescription, &Settings->CurrentAreaOfFocus, &Settings->GuidelinesAndTips, &Settings->Constraints })
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
