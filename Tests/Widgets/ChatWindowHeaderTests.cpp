#include "ChatWindowTest.h"

#include "Host/HostClock.h"
#include "Host/HostDialogs.h"
#include "Host/HostFileDialogs.h"
#include "Host/HostServices.h"

#include <algorithm>
#include <vector>

/** The buttons of the header, with somebody who answers the dialogs. */
class FChatWindowHeaderTest : public FChatWindowTest
{
protected:
	void SetUp() override
	{
		FChatWindowTest::SetUp();
		FHostServices::SetMessageDialogHook(
			[this](const FHostMessageDialog& Dialog)
			{
				Dialogs.push_back(Dialog);
				return Answer;
			});
	}

	void TearDown() override
	{
		FHostServices::SetMessageDialogHook(nullptr);
		FChatWindowTest::TearDown();
	}

	void ConnectWithMessage()
	{
		Connect();
		EXPECT_TRUE(ViewModel->SendMessage(TEXT("hello")));
		PumpFrame();
	}

	EAppReturnType::Type Answer = EAppReturnType::No;
	std::vector<FHostMessageDialog> Dialogs;
};

TEST_F(FChatWindowHeaderTest, ANarrowHeaderDropsItsLabels)
{
	Connect();
	SetGate(EGate::UpdateAvailable);
	for (const auto& [Width, bLabels] : { std::pair(720, true), std::pair(719, false) })
	{
		Resize(Width, 600);
		PumpFrame();
		const FTextList Texts = VisibleTexts();
		for (const char* Label : { "New", "Export", "Clear", "Update Available" })
		{
			EXPECT_EQ(std::find(Texts.begin(), Texts.end(), Label) != Texts.end(), bLabels) << Label;
		}
		for (const char* Button : { "NewConversationButton", "ExportButton", "ClearButton", "UpdateButton" })
		{
			EXPECT_TRUE(IsShown(FindByTag(Button))) << Button;
		}
	}
}

TEST_F(FChatWindowHeaderTest, UndoOfARowReachesTheAgent)
{
	Agent->TransactionId = TEXT("transaction-1");
	Connect();
	Prompt("hello");
	Click(FindByTag("SendButton"));
	Agent->FireState(EState::AwaitingInput);
	PumpSeconds(0.5);
	Answer = EAppReturnType::Yes;
	Agent->bCanUndo = false;
	PumpFrame();
	EXPECT_FALSE(IsEnabled("UndoButton"));
	Agent->bCanUndo = true;
	PumpFrame();
	Click(FindByTag("UndoButton"));
	ASSERT_EQ(Dialogs.size(), 1u);
	EXPECT_EQ(Agent->Calls.back(), "UndoToTransaction 'transaction-1'");
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
	EXPECT_EQ(CountByType("SMessageRow"), 0);
}

TEST_F(FChatWindowHeaderTest, ClearAsksAndDeletes)
{
	ConnectWithMessage();
	Click(FindByTag("ClearButton"));
	ASSERT_EQ(Dialogs.size(), 1u);
	EXPECT_EQ(DumpKey(Dialogs[0].Title), "VelmoraUI,ClearConversationConfirmTitle: Delete this chat?");
	EXPECT_EQ(DumpKey(Dialogs[0].Message),
		"VelmoraUI,ClearConversationConfirmMessage: This will permanently delete this conversation from your history.\n"
		"All messages in this chat will be removed.\n\nYou can’t undo this action.");
	EXPECT_EQ(ViewModel->GetMessageCount(), 1) << "No keeps everything";

	const uint64 Before = Window->GetConversationHistoryRefreshRequestIdForTests();
	Answer = EAppReturnType::Yes;
	PumpSeconds(0.5); // No refresh is under way any more.
	Click(FindByTag("ClearButton"));
	EXPECT_EQ(Agent->Calls.back(), "DeleteConversationHistory 'c1'");
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
	EXPECT_GT(Window->GetConversationHistoryRefreshRequestIdForTests(), Before);

	Agent->Metadata.Reset();
	Agent->FireProcessMessage(TEXT("of no conversation"));
	Agent->Calls.clear();
	Click(FindByTag("ClearButton"));
	EXPECT_TRUE(Agent->Calls.empty());
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
}

TEST_F(FChatWindowHeaderTest, ExportAsksForAFile)
{
	ConnectWithMessage();
	FHostDialogs::SetAnswering(true);
	TOptional<FHostOpenSaveDialog> Asked;
	App().SetFrameHook(
		[&Asked]
		{
			FHostClock::Advance(1.0 / 60.0);
			if (!Asked.IsSet())
			{
				Asked = FHostFileDialogs::GetOpen();
				FHostFileDialogs::PressOpen(TEXT("Cancel"));
			}
		});
	Click(FindByTag("ExportButton"));
	App().SetFrameHook(nullptr);
	FHostDialogs::SetAnswering(false);
	ASSERT_TRUE(Asked.IsSet());
	EXPECT_EQ(Utf8(Asked->Title), "Export Conversation");
	EXPECT_TRUE(Utf8(Asked->Folder).ends_with("/Saved/Velmora")) << Utf8(Asked->Folder);
	EXPECT_TRUE(Utf8(Asked->Name).starts_with("conversation_20260131_1200")) << Utf8(Asked->Name);
	EXPECT_EQ(Asked->Name.Len(), FString(TEXT("conversation_20260131_120000")).Len());

	const FTempFolder Folder;
	for (const auto& [Name, Start] :
		{ std::pair("a.HTM", "<!DOCTYPE html>"), std::pair("b", "# Conversation Export"), std::pair("c.log", "# Conversation Export"),
			std::pair("d.txt", "CONVERSATION EXPORT"), std::pair("e.json", "{\r\n\t\"messages\"") })
	{
		FHostFileDialogs::QueueAnswer(Folder.At(*FString(Name)));
		Click(FindByTag("ExportButton"));
		// The page in HTML names its speakers by pictographs and is no ASCII any more.
		const std::string Bytes = Folder.Read(Name);
		const std::string Plain = Bytes.starts_with("\xff\xfe") ? Bytes.substr(2) : Bytes;
		std::string Letters;
		std::copy_if(Plain.begin(), Plain.end(), std::back_inserter(Letters), [](char Byte) { return Byte != 0; });
		EXPECT_TRUE(Letters.starts_with(Start)) << Name << ": " << Letters.substr(0, 40);
	}
	EXPECT_EQ(Folder.CountEntries(), 5) << "names are taken as they are typed";
}

TEST_F(FChatWindowHeaderTest, TheUpdateButtonByTable)
{
	struct FCase
	{
		EGate Gate;
		const TCHAR* Message;
		const TCHAR* Version;
		bool bShown;
		bool bEnabled;
		const char* Button;
	};
	const FCase Cases[] = { { EGate::Checking, TEXT("m"), TEXT("1"), false, false, "" },
		{ EGate::Ready, TEXT("m"), TEXT("1"), false, false, "" },
		{ EGate::UpdateAvailable, TEXT(""), TEXT("2.4.0"), true, true, "Update Available (2.4.0)" },
		{ EGate::UpdateAvailable, TEXT("50%"), TEXT(""), true, true, "Update Available" },
		{ EGate::Downloading, TEXT(""), TEXT("2.4.0"), true, false, "Downloading..." },
		{ EGate::Downloading, TEXT("Fetching"), TEXT("2.4.0"), true, false, "Downloading..." },
		{ EGate::Downloading, TEXT("Fetching 41%, wait"), TEXT("2.4.0"), true, false, "Fetching 41%, wait" },
		{ EGate::RestartRequired, TEXT(""), TEXT(""), true, false, "Restart Required" },
		{ EGate::RestartRequired, TEXT("Please restart"), TEXT("2.4.0"), true, false, "Restart Required" },
		{ static_cast<EGate>(9), TEXT("m"), TEXT(""), false, false, "" } };
	Connect();
	for (const FCase& Case : Cases)
	{
		SetGate(Case.Gate, Case.Message, Case.Version);
		PumpFrame();
		const std::string Name = std::to_string(static_cast<int>(Case.Gate)) + " " + Utf8(Case.Message) + " " + Utf8(Case.Version);
		const TSharedPtr<SWidget> Button = FWidgetFinder::FindByTag(FName("UpdateButton"));
		EXPECT_EQ(Button.IsValid(), Case.bShown) << Name;
		EXPECT_EQ(Button.IsValid() && FWidgetFinder::IsEnabledInTree(*Button), Case.bEnabled) << Name;
		if (Case.bShown)
		{
			FindByText(Case.Button);
		}
	}
}

TEST_F(FChatWindowHeaderTest, AnUpdateIsDownloadedOnYesAlone)
{
	Connect();
	SetGate(EGate::UpdateAvailable, TEXT(""), TEXT("2.4.0"));
	PumpFrame();
	EXPECT_EQ(DumpKey(FindByTag("UpdateButton")->GetToolTipText()),
		"VelmoraUI,UpdateAvailableTooltip: A new version of Velmora is available. Click to download and install on next restart.");
	Click(FindByTag("UpdateButton"));
	ASSERT_EQ(Dialogs.size(), 1u);
	EXPECT_EQ(DumpKey(Dialogs[0].Title), "VelmoraUI,ConfirmUpdateTitle: Download Update");
	EXPECT_EQ(DumpKey(Dialogs[0].Message),
		"VelmoraUI,ConfirmUpdateMessage: This will download and apply the update on next editor startup.\n\nDo you want to proceed?");
	const FString Untouched = Velmora::FUpdateGate::Get().GetMessage();
	EXPECT_EQ(Utf8(Untouched), "");

	Answer = EAppReturnType::Yes;
	Click(FindByTag("UpdateButton"));
	EXPECT_EQ(Dialogs.size(), 2u);
	const Velmora::FUpdateGate& Gate = Velmora::FUpdateGate::Get();
	EXPECT_TRUE(Gate.GetState() != EGate::UpdateAvailable || !Gate.GetMessage().IsEmpty()) << "the download was asked for";
}
