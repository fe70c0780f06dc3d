#include "ViewModels/ChatViewModelTest.h"

using Velmora::EConversationMode;
using Velmora::EConversationRole;
using Velmora::EConversationState;
using Velmora::EUpdateGateState;

using FChatCommands = FChatViewModelTest;
using FChatBatching = FChatViewModelTest;
using FChatReload = FChatViewModelTest;

TEST_F(FChatCommands, WithoutAnAgentNothingWorksAndNothingBreaks)
{
	EXPECT_FALSE(ViewModel->Initialize(nullptr));
	EXPECT_FALSE(ViewModel->IsInitialized());
	EXPECT_FALSE(ViewModel->StartNewConversation(EConversationMode::Code));
	EXPECT_FALSE(ViewModel->SetModeForEmptyConversation(EConversationMode::Code));
	EXPECT_FALSE(ViewModel->SendMessage(TEXT("a")));
	EXPECT_FALSE(ViewModel->LoadConversation(TEXT("a")));
	EXPECT_FALSE(ViewModel->DeleteConversationHistory(TEXT("a")));
	ViewModel->PauseConversation();
	ViewModel->ResumeConversation(TEXT("a"));
	ViewModel->CancelConversation();
	ViewModel->EndConversation();
	ViewModel->ClearAllHistories();
	ViewModel->Tick(1.0f);
	EXPECT_EQ(Shown(), "");
	EXPECT_EQ(MessagesChangedCount, 0);
	EXPECT_EQ(ViewModel->GetState(), EConversationState::NotStarted);
	EXPECT_EQ(ViewModel->GetMode(), EConversationMode::General);
	EXPECT_FALSE(ViewModel->HasActiveConversation());
	EXPECT_FALSE(ViewModel->GetCurrentConversationMetadata().IsValid());
	EXPECT_EQ(Utf8(ViewModel->GetCurrentConversationTitle()), "New Conversation");
	EXPECT_EQ(ViewModel->GetConversationHistories().Num(), 0);
	EXPECT_FALSE(ViewModel->IsBusy());
	EXPECT_FALSE(ViewModel->CanUndo());
	EXPECT_FALSE(ViewModel->CanSendMessage());
	EXPECT_EQ(Utf8(ViewModel->GetStatusText()), "Not initialized");
}

TEST_F(FChatCommands, NewConversationEndsTheOldOneAndSaysItsMode)
{
	const std::pair<EConversationMode, const char*> Cases[] = {
		{ EConversationMode::Advisor, "System: Started new Advisor conversation\n" },
		{ EConversationMode::Code, "System: Started new Code conversation\n" },
		{ EConversationMode::Assets, "System: Started new Assets conversation\n" },
		{ EConversationMode::General, "System: Started new  conversation\n" },
		{ static_cast<EConversationMode>(9), "System: Started new  conversation\n" },
	};
	Connect();
	for (const auto& [Mode, Expected] : Cases)
	{
		Agent->Calls.clear();
		EXPECT_TRUE(ViewModel->StartNewConversation(Mode));
		EXPECT_EQ(Shown(), Expected);
		ASSERT_EQ(Agent->Calls.size(), 2u);
		EXPECT_EQ(Agent->Calls[0], "EndConversation");
	}
}

TEST_F(FChatCommands, NewConversationThatFailsSaysSo)
{
	Connect();
	Agent->NextConversationId.Empty();
	EXPECT_FALSE(ViewModel->StartNewConversation(EConversationMode::Code));
	EXPECT_EQ(Shown(), "System: Failed to start conversation. Please check your API key and connection.\n");
}

TEST_F(FChatCommands, ModeChangesOnlyBeforeTheFirstMessage)
{
	Connect();
	EXPECT_TRUE(ViewModel->SetModeForEmptyConversation(EConversationMode::General));
	EXPECT_EQ(States.size(), 0u) << "nothing has changed";
	EXPECT_TRUE(ViewModel->SetModeForEmptyConversation(EConversationMode::Code));
	EXPECT_EQ(Agent->Metadata->Mode, EConversationMode::Code);
	EXPECT_EQ(ViewModel->GetMode(), EConversationMode::Code);
	EXPECT_EQ(States, std::vector<EConversationState>{ EConversationState::Ready });
	ViewModel->SendMessage(TEXT("a"));
	EXPECT_FALSE(ViewModel->SetModeForEmptyConversation(EConversationMode::Assets));
	EXPECT_EQ(ViewModel->GetMode(), EConversationMode::Code);
	Agent->Metadata.Reset();
	EXPECT_FALSE(ViewModel->SetModeForEmptyConversation(EConversationMode::Assets));
}

TEST_F(FChatCommands, SentMessageIsShownBeforeTheAgentIsAsked)
{
	Connect();
	std::string ShownDuringSend;
	Agent->DuringSend = [this, &ShownDuringSend] { ShownDuringSend = Shown(); };
	Agent->TransactionId = TEXT("t1");
	ViewModel->AddContextFile(TEXT("a.cpp"));
	ViewModel->AddContextFile(TEXT("b.cpp"));
	EXPECT_TRUE(ViewModel->SendMessage(TEXT("Do it")));
	EXPECT_EQ(ShownDuringSend, "You: Do it\n");
	EXPECT_EQ(LastCall(), "SendMessage 'Do it' [a.cpp, b.cpp]");
	EXPECT_EQ(Utf8(ViewModel->GetMessages()[0]->TransactionId), "t1");
	EXPECT_FALSE(ViewModel->HasContextFiles());
	EXPECT_EQ(MessagesChangedCount, 1);
	EXPECT_EQ(ContextFilesChangedCount, 3);
}

TEST_F(FChatCommands, RefusedMessageStaysWithItsFiles)
{
	Connect();
	Agent->bAcceptsMessages = false;
	Agent->TransactionId = TEXT("t1");
	ViewModel->AddContextFile(TEXT("a.cpp"));
	EXPECT_FALSE(ViewModel->SendMessage(TEXT("Do it")));
	EXPECT_EQ(Shown(), "You: Do it\nSystem: Failed to send message. Please try again.\n");
	EXPECT_EQ(ViewModel->GetContextFiles().Num(), 1);
	EXPECT_TRUE(ViewModel->GetMessages()[0]->TransactionId.IsEmpty());
}

TEST_F(FChatCommands, NothingIsSentWhenItCannotBe)
{
	Connect();
	EXPECT_FALSE(ViewModel->SendMessage(FString()));
	Velmora::FUpdateGateControl::SetState(EUpdateGateState::UpdateAvailable, FString(), FString());
	EXPECT_FALSE(ViewModel->CanSendMessage());
	EXPECT_FALSE(ViewModel->SendMessage(TEXT("a")));
	Velmora::FUpdateGateControl::SetState(EUpdateGateState::Ready, FString(), FString());
	Agent->State = EConversationState::Thinking;
	EXPECT_TRUE(ViewModel->IsBusy());
	EXPECT_FALSE(ViewModel->SendMessage(TEXT("a")));
	EXPECT_TRUE(Agent->Calls.empty());
	EXPECT_EQ(MessagesChangedCount, 0);
}

TEST_F(FChatCommands, PauseNoticeGoesWithTheResume)
{
	Connect();
	ViewModel->PauseConversation();
	EXPECT_EQ(Shown(),
		"System: Conversation Paused\n\nYou have 3 options:\n1. Press Continue to resume as if nothing happened\n"
		"2. Add a prompt in the input box and press Continue to modify the request\n"
		"3. Press Cancel to cancel the entire conversation\n");
	ViewModel->ResumeConversation(FString());
	EXPECT_EQ(Shown(), "");
	EXPECT_EQ(LastCall(), "ResumeConversation ''");

	Agent->TransactionId = TEXT("t1");
	ViewModel->PauseConversation();
	ViewModel->ResumeConversation(TEXT("Other way"));
	EXPECT_EQ(Shown(), "You: Other way\n");
	EXPECT_EQ(LastCall(), "ResumeConversation 'Other way'");
	EXPECT_TRUE(ViewModel->GetMessages()[0]->TransactionId.IsEmpty());
}

TEST_F(FChatCommands, SecondPauseLeavesTheFirstNotice)
{
	Connect();
	ViewModel->PauseConversation();
	ViewModel->PauseConversation();
	const TSharedPtr<FChatMessage> FirstNotice = ViewModel->GetMessages()[0];
	ViewModel->ResumeConversation(FString());
	ASSERT_EQ(ViewModel->GetMessageCount(), 1);
	EXPECT_EQ(ViewModel->GetMessages()[0], FirstNotice);
}

TEST_F(FChatCommands, CancelTakesThePauseNoticeAway)
{
	Connect();
	ViewModel->PauseConversation();
	ViewModel->CancelConversation();
	EXPECT_EQ(Shown(), "System: Conversation cancelled\n");
	EXPECT_EQ(LastCall(), "CancelConversation");
}

TEST_F(FChatCommands, EndKeepsThePauseNotice)
{
	Connect();
	ViewModel->PauseConversation();
	ViewModel->EndConversation();
	ASSERT_EQ(ViewModel->GetMessageCount(), 2);
	EXPECT_EQ(Utf8(ViewModel->GetMessages()[1]->Content), "Conversation ended");
}

TEST_F(FChatCommands, HistoriesAreTheAgents)
{
	Connect();
	Velmora::FConversationMetadata Stored;
	Stored.Id = TEXT("s1");
	Agent->Histories.Add(Stored);
	EXPECT_EQ(ViewModel->GetConversationHistories().Num(), 1);
	EXPECT_FALSE(ViewModel->DeleteConversationHistory(TEXT("s2")));
	EXPECT_TRUE(ViewModel->DeleteConversationHistory(TEXT("s1")));
	ViewModel->SendMessage(TEXT("a"));
	ViewModel->ClearAllHistories();
	EXPECT_EQ(LastCall(), "ClearAllHistories");
	EXPECT_EQ(ViewModel->GetMessageCount(), 1);
	ViewModel->ClearHistory();
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
}

TEST_F(FChatCommands, ContextFilesSpeakOnlyWhenTheyChange)
{
	ViewModel->AddContextFile(TEXT("Source/A.cpp"));
	ViewModel->AddContextFile(TEXT("source/a.CPP"));
	EXPECT_EQ(ContextFilesChangedCount, 1);
	ViewModel->RemoveContextFile(TEXT("Source/B.cpp"));
	EXPECT_EQ(ContextFilesChangedCount, 1);
	ViewModel->RemoveContextFile(TEXT("SOURCE/A.cpp"));
	EXPECT_EQ(ContextFilesChangedCount, 2);
	ViewModel->ClearContextFiles();
	EXPECT_EQ(ContextFilesChangedCount, 2);
	ViewModel->AddContextFile(TEXT("x"));
	ViewModel->ClearContextFiles();
	EXPECT_EQ(ContextFilesChangedCount, 4);
	EXPECT_FALSE(ViewModel->HasContextFiles());
}

TEST_F(FChatCommands, StatusText)
{
	Connect();
	const char* Texts[] = { "Ready to start", "Initializing", "Ready", "Thinking", "Executing tools", "Ready", "Paused", "Completed",
		"Cancelled", "Error", "Unknown" };
	for (int32 Value = 0; Value <= 10; ++Value)
	{
		Agent->State = static_cast<EConversationState>(Value);
		EXPECT_EQ(Utf8(ViewModel->GetStatusText()), Texts[Value]);
	}
	Agent->State = EConversationState::Ready;
	const std::tuple<EUpdateGateState, const TCHAR*, const char*> Cases[] = {
		{ EUpdateGateState::Checking, TEXT("m"), "Initializing" },
		{ EUpdateGateState::UpdateAvailable, TEXT("m"), "Ready" },
		{ EUpdateGateState::Downloading, TEXT("50%"), "Ready" },
		{ EUpdateGateState::RestartRequired, TEXT("Restart for 2.0"), "Restart for 2.0" },
		{ EUpdateGateState::RestartRequired, TEXT(""), "Restart required" },
	};
	for (const auto& [Gate, Message, Text] : Cases)
	{
		Velmora::FUpdateGateControl::SetState(Gate, Message, FString());
		EXPECT_EQ(Utf8(ViewModel->GetStatusText()), Text);
	}
}

TEST_F(FChatCommands, ViewModelEndsTheConversationWhenItGoes)
{
	Connect();
	ViewModel.Reset();
	EXPECT_EQ(LastCall(), "EndConversation");
}

TEST_F(FChatBatching, OneMessageWaitsATenthOfASecond)
{
	Connect();
	Agent->FireMessage(TEXT("Hello"), true);
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
	ViewModel->Tick(0.06f);
	EXPECT_EQ(MessagesChangedCount, 0);
	ViewModel->Tick(0.06f);
	EXPECT_EQ(Shown(), "Velmora AI: Hello\n");
	EXPECT_TRUE(ViewModel->GetMessages()[0]->bHasToolCalls);
	EXPECT_EQ(MessagesChangedCount, 1);
	ViewModel->Tick(0.2f);
	EXPECT_EQ(MessagesChangedCount, 1) << "nothing waits any more";
}

TEST_F(FChatBatching, EmptyMessageIsDropped)
{
	Connect();
	Agent->FireMessage(FString());
	ViewModel->Tick(0.2f);
	EXPECT_EQ(MessagesChangedCount, 0);
}

TEST_F(FChatBatching, MoreThanTenMessagesComeAtOnce)
{
	Connect();
	for (int32 Index = 0; Index < 10; ++Index)
	{
		Agent->FireMessage(TEXT("m"));
	}
	ViewModel->Tick(0.01f);
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
	Agent->FireMessage(TEXT("last"));
	ViewModel->Tick(0.01f);
	EXPECT_EQ(ViewModel->GetMessageCount(), 11);
	EXPECT_EQ(Utf8(ViewModel->GetMessages().Last()->Content), "last");
	EXPECT_EQ(MessagesChangedCount, 1);
}

TEST_F(FChatBatching, IdleFrameSetsTheClockBack)
{
	Connect();
	Agent->FireMessage(TEXT("a"));
	ViewModel->Tick(0.09f);
	ViewModel->ClearHistory();
	ViewModel->Tick(0.09f);
	Agent->FireMessage(TEXT("b"));
	ViewModel->Tick(0.05f);
	EXPECT_EQ(ViewModel->GetMessageCount(), 0);
	ViewModel->Tick(0.06f);
	EXPECT_EQ(Shown(), "Velmora AI: b\n");
}

TEST_F(FChatBatching, OtherRowsOvertakeAWaitingMessage)
{
	Connect();
	Agent->FireMessage(TEXT("answer"));
	Agent->FireConversationCompleted(true);
	ViewModel->Tick(0.2f);
	EXPECT_EQ(Shown(), "System: Conversation completed successfully\nVelmora AI: answer\n");
}

TEST_F(FChatReload, LoadedConversationShowsWhatWasSaid)
{
	Velmora::FConversationMetadata Stored;
	Stored.Id = TEXT("S1");
	Stored.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, TEXT("question")));
	Stored.Messages.Add(FTestAgent::MakeStored(EConversationRole::Tool, TEXT("traffic")));
	Stored.Messages.Add(FTestAgent::MakeStored(EConversationRole::Assistant, FString(), true));
	Stored.Messages.Add(FTestAgent::MakeStored(EConversationRole::Assistant, TEXT("answer"), true));
	Agent->Histories.Add(Stored);
	Connect();
	ViewModel->SendMessage(TEXT("old"));
	MessagesChangedCount = 0;
	EXPECT_TRUE(ViewModel->LoadConversation(TEXT("s1")));
	EXPECT_EQ(Shown(), "You: question\nVelmora AI: answer\n");
	EXPECT_TRUE(ViewModel->GetMessages()[1]->bHasToolCalls);
	EXPECT_EQ(MessagesChangedCount, 2) << "once emptied, once filled";
}

TEST_F(FChatReload, RefusedLoadLeavesAnEmptyList)
{
	Connect();
	ViewModel->SendMessage(TEXT("old"));
	EXPECT_FALSE(ViewModel->LoadConversation(TEXT("unknown")));
	EXPECT_EQ(Shown(), "");
	// Nothing is awaited any more: any conversation that becomes current is shown.
	Agent->FireConversationLoaded(TEXT("C1"));
	EXPECT_EQ(Shown(), "You: old\n");
}

TEST_F(FChatReload, AnswerToAnOlderRequestIsDropped)
{
	Velmora::FConversationMetadata Stored;
	Stored.Id = TEXT("A");
	Stored.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, TEXT("from A")));
	Agent->Histories.Add(Stored);
	Stored.Id = TEXT("B");
	Stored.Messages[0].Content = TEXT("from B");
	Agent->Histories.Add(Stored);
	Agent->bReportsLoadsAtOnce = false;
	Connect();
	ViewModel->LoadConversation(TEXT("A"));
	const TSharedPtr<Velmora::FConversationMetadata> A = Agent->Metadata;
	ViewModel->LoadConversation(TEXT("B"));
	const TSharedPtr<Velmora::FConversationMetadata> B = Agent->Metadata;
	MessagesChangedCount = 0;
	Agent->Metadata = A;
	Agent->FireConversationLoaded(TEXT("A"));
	EXPECT_EQ(MessagesChangedCount, 0);
	Agent->Metadata = B;
	Agent->FireConversationLoaded(TEXT("B"));
	EXPECT_EQ(Shown(), "You: from B\n");
}

TEST_F(FChatReload, EventForAnotherConversationChangesNothing)
{
	Connect();
	ViewModel->SendMessage(TEXT("a"));
	MessagesChangedCount = 0;
	Agent->FireConversationLoaded(TEXT("other"));
	EXPECT_EQ(MessagesChangedCount, 0);
	Agent->Metadata.Reset();
	Agent->FireConversationLoaded(TEXT("c1"));
	EXPECT_EQ(MessagesChangedCount, 0);
	EXPECT_EQ(Shown(), "You: a\n");
}

TEST_F(FChatReload, ConversationOfToolTrafficIsEmpty)
{
	Agent->Metadata->Messages.Add(FTestAgent::MakeStored(EConversationRole::Tool, TEXT("traffic")));
	Connect();
	Agent->FireConversationLoaded(TEXT("C1"));
	EXPECT_EQ(Shown(), "");
	EXPECT_EQ(MessagesChangedCount, 1);
}

TEST_F(FChatReload, AgentThatHoldsAConversationIsShownAtOnce)
{
	Agent->Metadata->Messages.Add(FTestAgent::MakeStored(EConversationRole::User, TEXT("earlier")));
	ASSERT_TRUE(ViewModel->Initialize(Agent));
	EXPECT_EQ(Shown(), "You: earlier\n");
	EXPECT_EQ(MessagesChangedCount, 1);
}
