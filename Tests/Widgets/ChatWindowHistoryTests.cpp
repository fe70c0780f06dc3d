#include "ChatWindowTest.h"

#include "HAL/IConsoleManager.h"
#include "Host/HostClock.h"
#include "Host/HostTasks.h"

#include <algorithm>

using Velmora::EConversationRole;
using Velmora::FConversationMetadata;

/** The box of stored conversations. */
class FChatWindowHistoryTest : public FChatWindowTest
{
protected:
	void TearDown() override
	{
		SetForceSync(0);
		FChatWindowTest::TearDown();
	}

	/** Lists what the agent holds at once, in place of what a worker finds. */
	static void SetForceSync(int32 Value)
	{
		IConsoleManager::Get().FindConsoleVariable(TEXT("velmora.ConversationHistoryRefresh.ForceSync"))->Set(Value);
	}

	static FConversationMetadata MakeConversation(const TCHAR* Id, const TCHAR* FirstMessage = TEXT(""), double AgeInSeconds = 0.0)
	{
		FConversationMetadata Result;
		Result.Id = Id;
		Result.LastUpdated = FDateTime::Now() - FTimespan::FromSeconds(AgeInSeconds);
		if (*FirstMessage)
		{
			Result.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, FirstMessage));
		}
		return Result;
	}

	/** "c1 s1 s2": the options by their ids. */
	std::string DumpOptions() const
	{
		std::string Result;
		for (const TSharedPtr<FConversationMetadata>& Option : Window->ConversationHistories)
		{
			Result += (Result.empty() ? "" : " ") + Utf8(Option->Id);
		}
		return Result;
	}

	/** "2 running, queued": how many refreshes have begun, and the flags. */
	std::string DumpRefresh() const
	{
		return std::to_string(Window->GetConversationHistoryRefreshRequestIdForTests()) +
			(Window->IsConversationHistoryRefreshInFlightForTests() ? " running" : "") +
			(Window->IsConversationHistoryRefreshQueuedForTests() ? ", queued" : "");
	}

	/** Lets the worker under way end and takes in what it found, no more. */
	static void FinishOne()
	{
		ASSERT_TRUE(FHostTasks::WaitForBackground(20.0));
		FHostTasks::RunGameThreadTasks();
	}

	void FinishAll() const
	{
		while (Window->IsConversationHistoryRefreshInFlightForTests())
		{
			FinishOne();
		}
	}

	int32 CountCalls(const std::string& Call) const
	{
		return static_cast<int32>(std::count(Agent->Calls.begin(), Agent->Calls.end(), Call));
	}
};

TEST_F(FChatWindowHistoryTest, RequestsDuringARefreshBecomeOne)
{
	EXPECT_EQ(DumpRefresh(), "0");
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(DumpRefresh(), "0") << "there is no view model";
	ViewModel = MakeShared<FChatViewModel>();
	ASSERT_TRUE(ViewModel->Initialize(Agent));
	Window->ViewModel = ViewModel;
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(DumpRefresh(), "1 running");
	for (int32 Index = 0; Index < 3; ++Index)
	{
		Window->RequestConversationHistoryRefreshForTests();
	}
	EXPECT_EQ(DumpRefresh(), "1 running, queued");
	FinishOne();
	EXPECT_EQ(DumpRefresh(), "2 running");
	FinishOne();
	EXPECT_EQ(DumpRefresh(), "2");
}

TEST_F(FChatWindowHistoryTest, AViewModelAsksForTheFirstRefresh)
{
	Agent->Histories.Add(MakeConversation(TEXT("of the agent")));
	ViewModel = MakeShared<FChatViewModel>();
	ASSERT_TRUE(ViewModel->Initialize(Agent));
	Window->SetViewModel(ViewModel);
	// The current conversation is not listed, and nobody has told the window of it: that asks once more.
	EXPECT_EQ(DumpRefresh(), "1 running, queued");
	FinishOne();
	FinishOne();
	EXPECT_EQ(DumpRefresh(), "2");
	EXPECT_EQ(DumpOptions(), "c1") << "what the store holds, and the current one before it";
	ViewModel->OnMessagesChanged().Broadcast();
	EXPECT_EQ(DumpRefresh(), "2") << "the current conversation is listed";
}

TEST_F(FChatWindowHistoryTest, AConversationThatNoListHoldsAsksOnce)
{
	Connect();
	FinishAll();
	const uint64 Before = Window->GetConversationHistoryRefreshRequestIdForTests();
	Agent->HoldConversation(TEXT("new"));
	ViewModel->OnMessagesChanged().Broadcast();
	EXPECT_EQ(Window->GetConversationHistoryRefreshRequestIdForTests(), Before + 1);
	FinishOne();
	EXPECT_EQ(DumpRefresh(), std::to_string(Before + 1)) << "the rebuild asks for nothing";
	EXPECT_EQ(DumpOptions(), "new");
	EXPECT_EQ(Utf8(Window->SelectedConversation->Id), "new");
}

TEST_F(FChatWindowHistoryTest, AForcedRefreshIsDoneAtOnce)
{
	Connect();
	FinishAll();
	const std::string Before = DumpRefresh();
	Agent->Histories.Add(MakeConversation(TEXT("s1")));
	SetForceSync(1);
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(Window->GetConversationDropdownOptionCountForTests(), 2);
	EXPECT_EQ(DumpRefresh(), Before);
	Window->SetViewModel(nullptr);
	Agent->Histories.Empty();
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(Window->GetConversationDropdownOptionCountForTests(), 2);
}

TEST_F(FChatWindowHistoryTest, OptionsByTable)
{
	Connect();
	struct FCase
	{
		const TCHAR* Current;
		std::vector<const TCHAR*> Stored;
		const char* Options;
	};
	const FCase Cases[] = {
		{ nullptr, {}, "" },
		{ nullptr, { TEXT("b"), TEXT("a") }, "b a" },
		{ TEXT("c"), {}, "c" },
		{ TEXT("c"), { TEXT("b"), TEXT("a") }, "c b a" },
		{ TEXT("A"), { TEXT("b"), TEXT("a") }, "b a" },
	};
	for (const FCase& Case : Cases)
	{
		Agent->Metadata.Reset();
		if (Case.Current)
		{
			Agent->HoldConversation(Case.Current);
		}
		TArray<FConversationMetadata> Stored;
		for (const TCHAR* Id : Case.Stored)
		{
			Stored.Add(MakeConversation(Id));
		}
		Window->RebuildConversationHistoriesFrom(Stored);
		EXPECT_EQ(DumpOptions(), Case.Options);
	}
	Window->SetViewModel(nullptr);
	Window->RebuildConversationHistoriesFrom({});
	EXPECT_EQ(DumpOptions(), "b a") << "without a view model the list stays";
}

TEST_F(FChatWindowHistoryTest, OneRefreshAMinuteForAllWindows)
{
	Connect();
	const TSharedRef<SChatWindow> Other = SNew(SChatWindow);
	const auto Tick = [](SChatWindow& Ticked, float Seconds) { Ticked.Tick(FGeometry(), 0.0, Seconds); };
	Tick(*Other, 60.0f); // From wherever the clock of all windows stood.
	FinishAll();
	const uint64 Before = Window->GetConversationHistoryRefreshRequestIdForTests();
	Tick(*Window, 30.0f);
	Tick(*Other, 20.0f);
	Tick(*Window, 9.0f);
	EXPECT_EQ(DumpRefresh(), std::to_string(Before));
	Tick(*Window, 1.0f);
	EXPECT_EQ(DumpRefresh(), std::to_string(Before + 1) + " running");
}

TEST_F(FChatWindowHistoryTest, APickLoadsAConversation)
{
	SetForceSync(1);
	Agent->Histories.Add(MakeConversation(TEXT("s1"), TEXT("Add a dash"), 180.0));
	Agent->Histories.Add(MakeConversation(TEXT("s2"), TEXT("Refactor the inventory"), 86400.0));
	Connect();
	EXPECT_EQ(DumpOptions(), "c1 s1 s2");
	EXPECT_EQ(CountCalls("LoadConversation 'c1'"), 0) << "a selection from code loads nothing";

	Click(FindByTag("ConversationComboBox"));
	Click(FindByText("Refactor the inventory"));
	PumpSeconds(0.5);
	EXPECT_EQ(CountCalls("LoadConversation 's2'"), 1);
	EXPECT_EQ(Utf8(Window->GetConversationHeaderTitleText().ToString()), "Refactor the inventory");
	EXPECT_EQ(Utf8(Window->SelectedConversation->Id), "s2");
	EXPECT_EQ(DumpOptions(), "s1 s2") << "the empty conversation was never stored";
	EXPECT_EQ(Utf8(FindByTag("ConversationTitle")->GetDisplayedText().ToString()), "Refactor the inventory");
	EXPECT_EQ(CountByType("SMessageRow"), 1);

	Agent->Calls.clear();
	Window->OnConversationSelected(MakeShared<FConversationMetadata>(MakeConversation(TEXT("S2"))), ESelectInfo::OnMouseClick);
	EXPECT_TRUE(Agent->Calls.empty()) << "it is there already";
	Window->OnConversationSelected(nullptr, ESelectInfo::OnMouseClick);
	EXPECT_TRUE(Agent->Calls.empty());
}

TEST_F(FChatWindowHistoryTest, ARefreshKeepsTheChoice)
{
	SetForceSync(1);
	Agent->Histories.Add(MakeConversation(TEXT("s1")));
	Connect();
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(Window->ConversationComboBox->GetSelectedItem(), Window->ConversationHistories[0]);
	// Stored by now: it stands where the store has it.
	Agent->Histories.Add(MakeConversation(TEXT("C1")));
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(DumpOptions(), "s1 C1");
	EXPECT_EQ(Window->ConversationComboBox->GetSelectedItem(), Window->ConversationHistories[1]);
	EXPECT_EQ(Window->SelectedConversation, Window->ConversationHistories[1]);
	for (const std::string& Call : Agent->Calls)
	{
		EXPECT_FALSE(Call.starts_with("LoadConversation")) << Call;
	}
}

TEST_F(FChatWindowHistoryTest, ARefusedLoadIsTakenBackWithTheNextMessage)
{
	SetForceSync(1);
	Connect();
	Window->OnConversationSelected(MakeShared<FConversationMetadata>(MakeConversation(TEXT("gone"))), ESelectInfo::OnMouseClick);
	EXPECT_EQ(CountCalls("LoadConversation 'gone'"), 1);
	ViewModel->OnMessagesChanged().Broadcast();
	EXPECT_EQ(Utf8(Window->SelectedConversation->Id), "c1");
	EXPECT_EQ(CountCalls("LoadConversation 'c1'"), 0);
}

TEST_F(FChatWindowHistoryTest, RowsShowTitleIdAgeAndTheCurrentOne)
{
	Connect();
	Agent->Metadata->Id = TEXT("7f3a9cdd");
	const auto Dump = [this](const FConversationMetadata& Conversation)
	{ return DumpWidgets(*Window->OnGenerateConversationWidget(MakeShared<FConversationMetadata>(Conversation))); };
	EXPECT_EQ(Dump(MakeConversation(TEXT("7F3A9CDD"), TEXT("Add a dash"), 130.0)),
		"SBorder[SVerticalBox[SHorizontalBox[STextBlock 'Add a dash', SBorder[STextBlock 'Current']], STextBlock '[7F3A9C] · 2 mins "
		"ago']]");
	EXPECT_EQ(Dump(MakeConversation(TEXT("ab"))),
		"SBorder[SVerticalBox[SHorizontalBox[STextBlock 'New Conversation'], STextBlock '[ab] · just now']]");
	EXPECT_EQ(DumpWidgets(*Window->OnGenerateConversationWidget(nullptr)), "STextBlock 'Invalid'");
	EXPECT_EQ(Utf8(Window->OnGenerateConversationTitle(nullptr)), "");
}

TEST_F(FChatWindowHistoryTest, TheHeaderNamesTheCurrentConversation)
{
	const auto Dump = [this]
	{
		return Utf8(Window->GetConversationHeaderIdText().ToString()) + "|" + Utf8(Window->GetConversationHeaderTitleText().ToString()) +
			"|" + Utf8(Window->GetConversationHeaderTimeText().ToString()) + "|" + Utf8(Window->GetConversationDropdownText().ToString());
	};
	EXPECT_EQ(Dump(), "|No chats yet||No chats yet");
	Connect();
	EXPECT_EQ(Dump(), "[c1]|New Conversation|just now|Current: Test conversation");
	*Agent->Metadata = MakeConversation(TEXT("7f3a9cdd"), TEXT("Add\na dash"), 7200.0);
	EXPECT_EQ(Dump(), "[7f3a9c]|Add a dash|2 hrs ago|Current: Test conversation");
	Agent->Metadata.Reset();
	Agent->Title.Empty();
	EXPECT_EQ(Dump(), "|New conversation||Current: New chat");
	EXPECT_EQ(DumpKey(Window->GetConversationHeaderTitleText()), "VelmoraUI,NewConversationHeaderTitle: New conversation");
	EXPECT_EQ(DumpKey(Window->GetConversationDropdownText()), "VelmoraUI,NewConversationHeader: Current: New chat");
}

TEST_F(FChatWindowHistoryTest, AWindowThatIsGoneDropsWhatItsWorkerFinds)
{
	Connect();
	Window->RequestConversationHistoryRefreshForTests();
	const TWeakPtr<SChatWindow> WeakWindow = Window;
	Window.Reset();
	App().SetRootContent(SNullWidget::NullWidget);
	// A repeat that was asked for may still begin, and its worker may hold the window for a moment.
	for (int32 Index = 0; Index < 3; ++Index)
	{
		PumpFrame();
		FinishOne();
	}
	EXPECT_FALSE(WeakWindow.IsValid());
}
