// Operations of widgets that no widget binds, and the order in which a tab lets its parts go. They are private, so this
// file reaches past access control: an editor's own layout may bind them, and nothing on screen shows them today.

#include "Companions/TemporaryProject.h"
#include "FileSearch/FileIndexEntry.h"
#include "FileSearch/FileSearchResult.h"
#include "Framework/Docking/TabManager.h"
#include "Host/HostSleep.h"
#include "Velmora.h"
#include "Widgets/ChatWindowTest.h"
#include "Widgets/CodeIntelModuleTest.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/FileSearchProject.h"
#include "Widgets/SFileSearchDropdown.h"
#include "Widgets/SIndexProgressWidget.h"
#include "Widgets/SMessageRow.h"
#include "Widgets/SVelmoraTab.h"

class FUnwiredChatWindowTest : public FChatWindowTest
{
protected:
	FTextList GetAttached() const
	{
		FTextList Names;
		for (const FString& File : ViewModel->GetContextFiles())
		{
			Names.push_back(Utf8(File));
		}
		return Names;
	}
};

TEST_F(FUnwiredChatWindowTest, AnUpdateIsToldInASentence)
{
	struct FCase
	{
		EGate Gate;
		const TCHAR* Message;
		const TCHAR* Version;
		const char* Notice;
		bool bShown;
	};
	const FCase Cases[] = {
		{ EGate::Checking, TEXT("m"), TEXT("1"), "Initializing (checking for updates…)", true },
		{ EGate::Ready, TEXT("m"), TEXT("1"), "", false },
		{ EGate::UpdateAvailable, TEXT(""), TEXT("2.4.0"),
			"Update available: 2.4.0. Click the 'Update Available' button in the top bar to download.", false },
		{ EGate::UpdateAvailable, TEXT("50%"), TEXT(""),
			"Update available. Click the 'Update Available' button in the top bar to download.", false },
		{ EGate::Downloading, TEXT(""), TEXT("2.4.0"), "Downloading update...", true },
		{ EGate::Downloading, TEXT("Fetching"), TEXT("2.4.0"), "Fetching", true },
		{ EGate::RestartRequired, TEXT(""), TEXT(""), "A Velmora update has been downloaded. Restart the editor to install.", true },
		{ EGate::RestartRequired, TEXT("Please restart"), TEXT("2.4.0"), "Please restart (Version: 2.4.0)", true },
	};
	Connect();
	for (const FCase& Case : Cases)
	{
		SetGate(Case.Gate, Case.Message, Case.Version);
		EXPECT_EQ(Utf8(Window->GetUpdateNoticeText().ToString()), Case.Notice);
		EXPECT_EQ(Window->GetUpdateNoticeVisibility() == EVisibility::Visible, Case.bShown) << Case.Notice;
	}
}

TEST_F(FUnwiredChatWindowTest, TheConversationIsToldInASentence)
{
	EXPECT_EQ(Utf8(Window->GetConversationDropdownText().ToString()), "No chats yet");
	Connect();
	EXPECT_EQ(Utf8(Window->GetConversationDropdownText().ToString()), "Current: Test conversation");
	Agent->Metadata.Reset();
	Agent->Title.Empty();
	EXPECT_EQ(DumpKey(Window->GetConversationDropdownText()), "VelmoraUI,NewConversationHeader: Current: New chat");
	EXPECT_EQ(DumpWidgets(*Window->OnGenerateConversationWidget(nullptr)), "STextBlock 'Invalid'");
	EXPECT_EQ(Utf8(Window->OnGenerateConversationTitle(nullptr)), "");
	const TSharedRef<SWidget> Mode = Window->GenerateModeWidget(MakeShared<EMode>(static_cast<EMode>(9)));
	EXPECT_EQ(DumpWidgets(*Mode), "STextBlock 'Unknown'");
	EXPECT_EQ(DumpKey(Mode->GetToolTipText()), "VelmoraUI,UnknownMode_Tooltip: Unknown conversation mode.");
	EXPECT_TRUE(Window->OnSidepanelButtonClicked().IsEventHandled());
}

TEST_F(FUnwiredChatWindowTest, ACommitByEnterSendsWithControlAlone)
{
	Connect();
	Prompt("x");
	const FText Text = Window->CurrentInputText;
	Window->OnInputTextCommitted(Text, ETextCommit::OnEnter);
	EXPECT_TRUE(Agent->Calls.empty()) << "not without Ctrl";

	const FModifierKeysState RightControl(false, false, false, true, false, false);
	App().GetMessageHandler().OnKeyDown(EKeys::RightControl, RightControl, false);
	Window->OnInputTextCommitted(Text, ETextCommit::OnUserMovedFocus);
	EXPECT_TRUE(Agent->Calls.empty()) << "not on a loss of focus";
	Window->OnInputTextCommitted(Text, ETextCommit::OnEnter);
	EXPECT_EQ(Agent->Calls, (std::vector<std::string>{ "SendMessage 'x' []" }));
	App().GetMessageHandler().OnKeyUp(EKeys::RightControl, FModifierKeysState());
}

// The search offers files alone and only for a token; the window takes folders and picks without a token, too.
TEST_F(FUnwiredChatWindowTest, AFolderIsInsertedWithItsPathAndAPickWithoutATokenOnlyAttaches)
{
	Connect();
	Prompt("see @so");
	Velmora::UI::FFileIndexEntry Entry;
	Entry.FilePath = TEXT("Source/Game");
	Entry.bIsDirectory = true;
	Window->OnFileSelected(Entry);
	EXPECT_EQ(GetPrompt(), "see Source/Game ");
	PressKey("CTRL+A");
	TypeText("plain");
	Entry.FilePath = TEXT("Source/Other.h");
	Entry.bIsDirectory = false;
	Window->OnFileSelected(Entry);
	Window->OnFileSelected(Entry);
	EXPECT_EQ(GetPrompt(), "plain");
	EXPECT_EQ(GetAttached(), (FTextList{ "Source/Game", "Source/Other.h" })) << "twice the same is one";
	Window->SetViewModel(nullptr);
	Window->OnFileSelected(Entry);
	Window->OnRemoveContextFile(Entry.FilePath);
	EXPECT_EQ(GetPrompt(), "plain");
}

using FUnwiredWidgetTest = FVelmoraWidgetTest;

TEST_F(FUnwiredWidgetTest, AToolRowTellsItsStatusInAWord)
{
	const TSharedPtr<FChatMessage> Tool = FChatMessage::CreateToolMessage(TEXT("t"), TEXT("{}"), EToolStatus::Running);
	const TSharedRef<SMessageRow> Row = SNew(SMessageRow).Message(Tool);
	EXPECT_EQ(DumpKey(Row->GetToolStatusText()), "VelmoraUI,ToolRunning: Running...");
	Tool->ToolStatus = EToolStatus::Success;
	EXPECT_EQ(DumpKey(Row->GetToolStatusText()), "VelmoraUI,ToolSuccess: Completed");
	Tool->ToolStatus = EToolStatus::Failed;
	EXPECT_EQ(DumpKey(Row->GetToolStatusText()), "VelmoraUI,ToolFailed: Failed");
	const TSharedRef<SMessageRow> Other = SNew(SMessageRow).Message(FChatMessage::CreateSystemMessage(TEXT("s")));
	EXPECT_TRUE(Other->GetToolStatusText().IsEmpty());
	EXPECT_EQ(Other->GetToolStatusIcon(), nullptr);
}

TEST_F(FUnwiredWidgetTest, TheDropdownServesAHostWithASearchBox)
{
	const FFileSearchProject Project({ "wolf.h", "wolf2.h" });
	FTextList Picked;
	const TSharedRef<SFileSearchDropdown> Dropdown = SNew(SFileSearchDropdown)
														 .OnFileSelected_Lambda([&Picked](const Velmora::UI::FFileIndexEntry& Entry)
															 { Picked.push_back(Utf8(FPaths::GetCleanFilename(Entry.FilePath))); });
	Show(Dropdown);
	Dropdown->OnSearchTextChanged(FText::FromString(TEXT("wolf")));
	Dropdown->OnSearchTextCommitted(FText(), ETextCommit::OnUserMovedFocus);
	EXPECT_EQ(Picked, FTextList());
	Dropdown->OnSearchTextCommitted(FText(), ETextCommit::OnEnter);
	ASSERT_EQ(Dropdown->ListItems.Num(), 2);
	Dropdown->OnListItemDoubleClicked(Dropdown->ListItems[1]);
	Dropdown->OnListItemDoubleClicked(nullptr);
	EXPECT_EQ(Picked, (FTextList{ "wolf.h", "wolf2.h" }));
	Dropdown->ViewModel.Reset();
	Dropdown->SetSearchQuery(TEXT("x"));
	EXPECT_EQ(Utf8(Dropdown->GetSearchQuery()), "");
}

TEST_F(FUnwiredWidgetTest, ATabEndsTheConversationWhileItsAgentLives)
{
	class FMortalAgent : public FTestAgent
	{
	public:
		explicit FMortalAgent(FTextList& InLog)
			: Log(InLog)
		{
		}
		~FMortalAgent() override { Log.push_back("destroyed"); }
		void EndConversation() override
		{
			FTestAgent::EndConversation();
			Log.push_back("EndConversation");
		}

	private:
		FTextList& Log;
	};
	const FTemporaryProject Project;
	FTextList Log;
	TSharedPtr<SDockTab> DockTab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
	TSharedPtr<SVelmoraTab> Tab = SNew(SVelmoraTab, DockTab.ToSharedRef());
	Show(Tab.ToSharedRef());
	const auto IsOnScreen = [](const char* Text) { return !FWidgetFinder::FindByText(FString(Text)).IsEmpty(); };

	// Plans reach the panel whether it is shown or not.
	const TSharedRef<FTestAgent> Planner = MakeShared<FTestAgent>();
	Planner->Plan = TEXT("held before");
	Tab->Agent = Planner;
	Tab->InitializeViewModel();
	PumpFrame();
	EXPECT_TRUE(IsOnScreen("held before"));
	Tab->TogglePlanVisibility();
	Planner->FirePlanUpdate(TEXT("while hidden"));
	PumpFrame();
	EXPECT_FALSE(IsOnScreen("while hidden"));
	Tab->TogglePlanVisibility();
	PumpFrame();
	EXPECT_TRUE(IsOnScreen("while hidden"));

	// The agent outlives the tab, and its plan must reach nothing that is gone.
	App().SetRootContent(SNullWidget::NullWidget);
	PumpFrame();
	Tab.Reset();
	Planner->FirePlanUpdate(TEXT("too late"));

	Tab = SNew(SVelmoraTab, DockTab.ToSharedRef());
	Show(Tab.ToSharedRef());
	Tab->Agent = MakeShared<FMortalAgent>(Log);
	Tab->InitializeViewModel();
	Log.clear();
	App().SetRootContent(SNullWidget::NullWidget);
	PumpFrame();
	Tab.Reset();
	EXPECT_TRUE(FHostTasks::WaitForBackground(20.0));
	FHostTasks::RunGameThreadTasks();
	EXPECT_EQ(Log, (FTextList{ "EndConversation", "destroyed" }));
}

// The agent reports a plan while nobody touches anything, and Slate sleeps.
TEST_F(FUnwiredWidgetTest, APlanIsOnScreenSoonAndThenNothingMoves)
{
	const FTemporaryProject Project;
	Velmora::FUpdateGateControl::SetState(Velmora::EUpdateGateState::Ready, FString(), FString());
	const TSharedRef<FTestAgent> Planner = MakeShared<FTestAgent>();
	Planner->HoldConversation(TEXT("c1"));
	const TSharedPtr<SDockTab> DockTab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
	TSharedPtr<SVelmoraTab> Tab = SNew(SVelmoraTab, DockTab.ToSharedRef());
	Tab->Agent = Planner;
	Tab->InitializeViewModel();
	Show(Tab.ToSharedRef());
	SleepStrictly();
	for (int32 Round = 0; Round < 3; ++Round)
	{
		FHostTasks::WaitForBackground(20.0);
		LetTimePass(3.0);
	}
	const auto ExpectRest = [this]
	{
		EXPECT_EQ(FHostSleep::GetActiveTimerCount(), 0);
		EXPECT_EQ(CountFrames(2.0), 0);
	};
	ExpectRest();
	for (const char* Step : { "look around", "change it" })
	{
		Planner->FirePlanUpdate(FString(Step));
		const auto IsPainted = [Step]
		{
			for (const TSharedRef<SWidget>& Text : FWidgetFinder::FindByText(FString(Step)))
			{
				if (Text->GetCachedGeometry().GetLocalSize().X > 0.0)
				{
					return true;
				}
			}
			return false;
		};
		EXPECT_LE(WaitFor(IsPainted, 5.0), 0.2) << Step;
		LetTimePass(1.0);
		ExpectRest();
	}
	App().SetRootContent(SNullWidget::NullWidget);
	PumpFrame();
	Tab.Reset();
	EXPECT_TRUE(FHostTasks::WaitForBackground(20.0));
	FHostTasks::RunGameThreadTasks();
}

using FUnwiredProgressTest = FCodeIntelModuleTest;

// The module reports builds to a progress widget that stands in no window.
TEST_F(FUnwiredProgressTest, FollowsABuildAndIsHiddenThreeSecondsAfterIt)
{
	FVelmoraModule& Watched = static_cast<FVelmoraModule&>(*FModuleManager::Get().GetModule("VelmoraUI"));
	PumpFrame(1.0);
	EXPECT_FALSE(Watched.ProgressWidget.IsValid()) << "made at the first build";
	HoldBuilds();
	Start();
	std::thread Builder([] { Manager().RebuildIndex(true); });
	EXPECT_TRUE(WaitUntil([] { return Manager().IsBuilding(); }));
	PumpFrame(1.0);
	Go();
	Builder.join();
	Settle();
	ASSERT_TRUE(Watched.ProgressWidget.IsValid());
	EXPECT_TRUE(Watched.bProgressVisible);
	Watched.Poll(1.0f);
	const std::string Told = DumpKey(Watched.ProgressWidget->GetCompletionMessage());
	EXPECT_NE(Told.find("Successfully indexed 0 symbols in "), std::string::npos) << Told;
	EXPECT_TRUE(Watched.bProgressVisible && Watched.bHidePending);
	Watched.Poll(1.5f);
	EXPECT_TRUE(Watched.bProgressVisible);
	Watched.Poll(0.5f);
	EXPECT_FALSE(Watched.bProgressVisible || Watched.bHidePending);
}
