#include "ChatWindowTest.h"

#include "Agent/AgentBuilder.h"
#include "HAL/IConsoleManager.h"
#include "Host/HostClock.h"
#include "Host/HostPaths.h"
#include "Host/HostTasks.h"
#include "Misc/Paths.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Views/SListView.h"

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

	using FHistoryBox = SComboBox<TSharedPtr<FConversationMetadata>>;
	using FHistoryList = SListView<TSharedPtr<FConversationMetadata>>;
	static TSharedRef<FHistoryBox> HistoryBox() { return StaticCastSharedRef<FHistoryBox>(FindByTag("ConversationComboBox")); }
	static std::string Selected()
	{
		const TSharedPtr<FConversationMetadata> Item = HistoryBox()->GetSelectedItem();
		return Item ? Utf8(Item->Id) : "none";
	}

	/** Opens the box and gives its list; null when it stays closed. */
	TSharedPtr<FHistoryList> OpenList()
	{
		Click(HistoryBox());
		const TArray<TSharedRef<SWidget>> Lists =
			FWidgetFinder::FindAll([](SWidget& Widget) { return Utf8(Widget.GetType().ToString()).starts_with("SListView"); });
		return Lists.Num() == 1 ? StaticCastSharedRef<FHistoryList>(Lists[0]).ToSharedPtr() : nullptr;
	}

	/** "c1 s1 s2": the options by their ids. */
	std::string DumpOptions()
	{
		std::string Result;
		if (const TSharedPtr<FHistoryList> List = OpenList())
		{
			for (const TSharedPtr<FConversationMetadata>& Option : List->GetItems())
			{
				Result += (Result.empty() ? "" : " ") + Utf8(Option->Id);
			}
		}
		PressKey("Escape");
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
	Connect();
	FinishAll();
	const uint64 Before = Window->GetConversationHistoryRefreshRequestIdForTests();
	for (int32 Index = 0; Index < 4; ++Index)
	{
		Window->RequestConversationHistoryRefreshForTests();
	}
	EXPECT_EQ(DumpRefresh(), std::to_string(Before + 1) + " running, queued");
	FinishOne();
	EXPECT_EQ(DumpRefresh(), std::to_string(Before + 2) + " running");
	FinishOne();
	EXPECT_EQ(DumpRefresh(), std::to_string(Before + 2));
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

TEST_F(FChatWindowHistoryTest, TheWorkerReadsTheStoreOfTheSaveFolder)
{
	const FTempFolder Saved;
	const FString SavedBefore = FPaths::EngineSavedDir();
	FHostPaths::SetEngineSavedDir(Saved.At());
	const TSharedPtr<Velmora::FAgent> Writer = FAgentBuilder::CreateDefault();
	const FString Id = Writer->StartConversation(EMode::Advisor);
	EXPECT_TRUE(Writer->SendMessage(TEXT("help"), {}));
	FHostTasks::WaitForBackground(20.0);
	FHostTasks::RunGameThreadTasks();
	FHostPaths::SetEngineSavedDir(SavedBefore);
	Window->SetConversationHistorySaveDirForTests(Saved.At(TEXT("Velmora")));
	Connect();
	FinishAll();
	EXPECT_EQ(DumpOptions(), "c1 " + Utf8(Id));
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
	EXPECT_EQ(Selected(), "new");
}

TEST_F(FChatWindowHistoryTest, OptionsByTable)
{
	Connect();
	FinishAll();
	const std::string Before = DumpRefresh();
	SetForceSync(1);
	const std::tuple<const TCHAR*, std::vector<const TCHAR*>, const char*> Cases[] = {
		{ nullptr, {}, "" },
		{ nullptr, { TEXT("b"), TEXT("a") }, "b a" },
		{ TEXT("c"), {}, "c" },
		{ TEXT("c"), { TEXT("b"), TEXT("a") }, "c b a" },
		{ TEXT("A"), { TEXT("b"), TEXT("a") }, "b a" },
	};
	for (const auto& [Current, Stored, Options] : Cases)
	{
		Agent->Metadata.Reset();
		if (Current)
		{
			Agent->HoldConversation(Current);
		}
		Agent->Histories.Empty();
		for (const TCHAR* Id : Stored)
		{
			Agent->Histories.Add(MakeConversation(Id));
		}
		Window->RequestConversationHistoryRefreshForTests();
		EXPECT_EQ(DumpOptions(), Options);
	}
	Window->SetViewModel(nullptr);
	Agent->Histories.Empty();
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(Window->GetConversationDropdownOptionCountForTests(), 2) << "without a view model the list stays";
	EXPECT_EQ(DumpRefresh(), Before) << "no worker was asked";
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
	EXPECT_EQ(TextOf("ConversationTitle"), "Refactor the inventory");
	EXPECT_EQ(Selected(), "s2");
	EXPECT_EQ(DumpOptions(), "s1 s2") << "the empty conversation was never stored";
	EXPECT_EQ(CountByType("SMessageRow"), 1);

	Agent->Calls.clear();
	HistoryBox()->SetSelectedItem(MakeShared<FConversationMetadata>(MakeConversation(TEXT("S2"))));
	EXPECT_TRUE(Agent->Calls.empty()) << "it is there already";
	HistoryBox()->ClearSelection();
	EXPECT_TRUE(Agent->Calls.empty());
}

TEST_F(FChatWindowHistoryTest, ARefreshKeepsTheChoice)
{
	SetForceSync(1);
	Agent->Histories.Add(MakeConversation(TEXT("s1")));
	Connect();
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(Selected(), "c1");
	// Stored by now: it stands where the store has it.
	Agent->Histories.Add(MakeConversation(TEXT("C1")));
	Window->RequestConversationHistoryRefreshForTests();
	EXPECT_EQ(DumpOptions(), "s1 C1");
	EXPECT_EQ(Selected(), "C1") << "the option as the store has it";
	for (const std::string& Call : Agent->Calls)
	{
		EXPECT_FALSE(Call.starts_with("LoadConversation")) << Call;
	}
}

TEST_F(FChatWindowHistoryTest, ARefusedLoadIsTakenBackWithTheNextMessage)
{
	SetForceSync(1);
	Connect();
	HistoryBox()->SetSelectedItem(MakeShared<FConversationMetadata>(MakeConversation(TEXT("gone"))));
	EXPECT_EQ(CountCalls("LoadConversation 'gone'"), 1);
	ViewModel->OnMessagesChanged().Broadcast();
	EXPECT_EQ(Selected(), "c1");
	EXPECT_EQ(CountCalls("LoadConversation 'c1'"), 0);
}

TEST_F(FChatWindowHistoryTest, RowsShowTitleIdAgeAndTheCurrentOne)
{
	SetForceSync(1);
	Agent->Metadata->Id = TEXT("7f3a9cdd");
	Agent->Histories.Add(MakeConversation(TEXT("7F3A9CDD"), TEXT("Add a dash"), 130.0));
	Agent->Histories.Add(MakeConversation(TEXT("ab")));
	Connect();
	const TSharedPtr<FHistoryList> List = OpenList();
	ASSERT_TRUE(List.IsValid());
	EXPECT_EQ(TextsIn(*List), (FTextList{ "Add a dash", "Current", "[7F3A9C] · 2 mins ago", "New Conversation", "[ab] · just now" }));
}

TEST_F(FChatWindowHistoryTest, TheHeaderNamesTheCurrentConversation)
{
	const auto Dump = [this]
	{
		PumpFrame();
		std::string Result;
		for (const char* Tag : { "ConversationId", "ConversationTitle", "ConversationAge" })
		{
			const TSharedPtr<SWidget> Widget = FWidgetFinder::FindByTag(FName(Tag));
			Result += (Result.empty() ? "" : "|") + (Widget ? Utf8(Widget->GetDisplayedText().ToString()) : std::string()) + "|";
		}
		return Result;
	};
	EXPECT_EQ(Dump(), "||No chats yet|||");
	Connect();
	EXPECT_EQ(Dump(), "[c1]||New Conversation||just now|");
	*Agent->Metadata = MakeConversation(TEXT("7f3a9cdd"), TEXT("Add\na dash"), 7200.0);
	EXPECT_EQ(Dump(), "[7f3a9c]||Add a dash||2 hrs ago|");
	Agent->Metadata.Reset();
	EXPECT_EQ(Dump(), "||New conversation|||");
	EXPECT_EQ(DumpKey(FindByTag("ConversationTitle")->GetDisplayedText()), "VelmoraUI,NewConversationHeaderTitle: New conversation");
}
