#include "Host/HostServices.h"
#include "ViewModels/ChatViewModelTest.h"

#include <algorithm>

using Velmora::EConversationRole;
using Velmora::EConversationState;

/** What a command or a report leaves as it is, what it ends, and what comes first. */
class FChatStateRules : public FChatViewModelTest
{
protected:
	void SetUp() override
	{
		FChatViewModelTest::SetUp();
		Connect();
	}

	void TearDown() override
	{
		FHostServices::SetMessageDialogHook(nullptr);
		FChatViewModelTest::TearDown();
	}

	/** A tool run with the same header each time: it gets a row only if a step has begun since the last one. */
	void RunTool(const TCHAR* Id = TEXT("1")) { Agent->FireToolStarted(Id, TEXT("read_file"), TEXT("{\"path\":\"a.cpp\"}")); }

	int32 CountGroups() const
	{
		int32 Count = 0;
		for (const TSharedPtr<FChatMessage>& Message : ViewModel->GetMessages())
		{
			Count += Message->Type == EChatMessageType::ToolSummary;
		}
		return Count;
	}

	bool IsCalled(const char* Call) const { return std::find(Agent->Calls.begin(), Agent->Calls.end(), Call) != Agent->Calls.end(); }

	static constexpr const char* Running = "  Analyzing a [running] Executing read_file...\n";
	static constexpr const char* Done = "  Analyzing a [success] read_file completed successfully\n";
};

TEST_F(FChatStateRules, OnlyAMessageEndsTheStepOfACancelledOrFailedTurn)
{
	RunTool();
	Agent->FireState(EConversationState::Cancelled);
	Agent->FireState(EConversationState::Error);
	RunTool();
	EXPECT_EQ(CountGroups(), 1);
	ViewModel->ResumeConversation(FString());
	ViewModel->ResumeConversation(TEXT("Other way"));
	RunTool();
	EXPECT_EQ(CountGroups(), 1) << "a resumed turn goes on with its step";
	Agent->State = EConversationState::Ready;
	EXPECT_TRUE(ViewModel->SendMessage(TEXT("Again")));
	RunTool();
	EXPECT_EQ(CountGroups(), 2);
}

TEST_F(FChatStateRules, ClearingTheListClearsNothingElse)
{
	RunTool();
	ViewModel->AddContextFile(TEXT("a.cpp"));
	ViewModel->PauseConversation();
	ViewModel->ClearHistory();
	MessagesChangedCount = 0;
	RunTool();
	EXPECT_EQ(MessagesChangedCount, 0) << "the step goes on";
	Agent->FireToolStarted(TEXT("2"), TEXT("list_files"));
	Agent->FireToolCompleted(TEXT("1"), TEXT("read_file"));
	EXPECT_EQ(MessagesChangedCount, 2) << "the group that is not listed any more takes the row and is found";
	EXPECT_EQ(Shown(), "");
	EXPECT_EQ(ViewModel->GetContextFiles().Num(), 1);
	MessagesChangedCount = 0;
	ViewModel->CancelConversation();
	EXPECT_EQ(MessagesChangedCount, 2) << "the notice is taken away, listed or not; then the row of the cancel";
}

TEST_F(FChatStateRules, ReloadAndUndoLeaveTheStepAndWaitingMessages)
{
	RunTool();
	ViewModel->PauseConversation();
	ViewModel->AddContextFile(TEXT("a.cpp"));
	Agent->FireMessage(TEXT("late"));
	Agent->FireConversationLoaded(TEXT("c1"));
	MessagesChangedCount = 0;
	RunTool();
	EXPECT_EQ(MessagesChangedCount, 0);
	ViewModel->ResumeConversation(FString());
	EXPECT_EQ(MessagesChangedCount, 1) << "the notice was kept";
	ViewModel->Tick(0.2f);
	EXPECT_EQ(Shown(), "Velmora AI: late\n");

	Agent->TransactionId = TEXT("t1");
	Agent->State = EConversationState::Ready;
	ASSERT_TRUE(ViewModel->SendMessage(TEXT("Do it")));
	RunTool();
	FHostServices::SetMessageDialogHook([](const FHostMessageDialog&) { return EAppReturnType::Yes; });
	EXPECT_TRUE(ViewModel->UndoToMessage(ViewModel->GetMessages()[1]));
	RunTool();
	EXPECT_EQ(Shown(), "Velmora AI: late\n") << "the step goes on in a group that is gone";
}

TEST_F(FChatStateRules, ALoadIsAwaitedUntilItHasComeOrANewConversationBegins)
{
	Velmora::FConversationMetadata Stored;
	Stored.Id = TEXT("s1");
	Stored.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, TEXT("from s1")));
	Agent->Histories.Add(Stored);
	Agent->FireMessage(TEXT("late"));
	EXPECT_TRUE(ViewModel->LoadConversation(TEXT("s1")));
	ViewModel->Tick(0.2f);
	EXPECT_EQ(Shown(), "You: from s1\nVelmora AI: late\n");
	const auto ShowOther = [this](const TCHAR* Id)
	{
		Agent->HoldConversation(Id)->Messages.Add(FTestAgent::MakeStored(EConversationRole::User, Id));
		Agent->FireConversationLoaded(Id);
	};
	ShowOther(TEXT("c2"));
	EXPECT_EQ(Shown(), "You: c2\n") << "s1 is not awaited any more";

	Agent->bReportsLoadsAtOnce = false;
	EXPECT_TRUE(ViewModel->LoadConversation(TEXT("s1")));
	EXPECT_TRUE(ViewModel->StartNewConversation(Velmora::EConversationMode::Code));
	ShowOther(TEXT("c3"));
	EXPECT_EQ(Shown(), "You: c3\n");
}

TEST_F(FChatStateRules, AnEndFindsTheNewestGroupAndInItTheOldestRow)
{
	const auto StartTwo = [this]
	{
		Agent->FireProcessMessage(TEXT("Executing step"));
		Agent->FireToolStarted(TEXT("same"), TEXT("read_file"), TEXT("{\"path\":\"a\"}"));
		Agent->FireToolStarted(TEXT("same"), TEXT("read_file"), TEXT("{\"path\":\"b\"}"));
	};
	StartTwo();
	StartTwo();
	Agent->FireState(EConversationState::AwaitingInput);
	const std::string Step = "System: Executing step\nTools\n";
	const std::string Other = "  Analyzing b [running] Executing read_file...\n";
	Agent->FireToolCompleted(TEXT("unknown"), TEXT("read_file"));
	EXPECT_EQ(Shown(), Step + Running + Other + Step + Done + Other) << "by name";
	Agent->FireToolCompleted(TEXT("same"), TEXT("other"));
	EXPECT_EQ(Shown(), Step + Running + Other + Step + Done + "  Analyzing b [success] read_file completed successfully\n") << "by id";
	Agent->FireToolCompleted(TEXT("same"), TEXT("other"));
	EXPECT_EQ(Shown(), Step + Done + Other + Step + Done + "  Analyzing b [success] read_file completed successfully\n");
}

TEST_F(FChatStateRules, WhoIsAskedFirst)
{
	// What had been called, and what was listed, when the list changed.
	std::vector<std::string> Seen;
	ViewModel->OnMessagesChanged().AddLambda(
		[this, &Seen]
		{
			const TArray<TSharedPtr<FChatMessage>>& Messages = ViewModel->GetMessages();
			Seen.push_back((Agent->Calls.empty() ? std::string("nothing") : Agent->Calls.back()) + " > " +
				(Messages.Num() == 0 ? std::string("empty") : Utf8(Messages.Last()->Content).substr(0, 19)));
		});
	ViewModel->PauseConversation();
	ViewModel->ResumeConversation(TEXT("Other way"));
	EXPECT_TRUE(IsCalled("ResumeConversation 'Other way'"));
	ViewModel->CancelConversation();
	EXPECT_EQ(Seen,
		(std::vector<std::string>{ "PauseConversation > Conversation Paused", "PauseConversation > empty", "PauseConversation > Other way",
			"CancelConversation > Conversation cancel" }));

	ViewModel->OnError().AddLambda([this](const FString&) { Errors += Utf8(ViewModel->GetMessages().Last()->Content); });
	Agent->FireError(TEXT("No network"));
	EXPECT_EQ(Errors, "Error: No networkNo network\n") << "the row is there when the error is passed on";

	RunTool();
	ViewModel->OnStateChanged().AddLambda([this](EConversationState) { RunTool(); });
	Agent->FireState(EConversationState::AwaitingInput);
	EXPECT_EQ(CountGroups(), 2) << "the step has ended when the state is passed on";
}

TEST_F(FChatStateRules, TheClockOfBatchesIsOneAndStartsAnewAfterEach)
{
	Agent->FireMessage(TEXT("a"));
	ViewModel->Tick(0.1f);
	EXPECT_EQ(Shown(), "Velmora AI: a\n") << "exactly the time of a batch";
	Agent->FireMessage(TEXT("b"));
	ViewModel->Tick(0.06f);
	EXPECT_EQ(Shown(), "Velmora AI: a\n");

	const TSharedPtr<FTestAgent> OtherAgent = MakeShared<FTestAgent>();
	FChatViewModel Other;
	ASSERT_TRUE(Other.Initialize(OtherAgent));
	OtherAgent->FireMessage(TEXT("c"));
	Other.Tick(0.06f);
	EXPECT_EQ(Other.GetMessageCount(), 1);
}
