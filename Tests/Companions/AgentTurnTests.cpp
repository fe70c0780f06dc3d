#include "AgentFixture.h"

#include "Agent/ConversationHistoryManager.h"
#include "Async/Async.h"

#include <algorithm>
#include <set>

using Velmora::EConversationMode;
using Velmora::EConversationState;

namespace
{
	class AgentTurns : public FAgentTest
	{
	protected:
		void SetUp() override
		{
			FAgentTest::SetUp();
			Project.Write("Source/A.cpp", "int Snail = 1;\n");
			Project.Write("Source/B.cpp", "int Hedgehog = 2;\n");
		}

		/** Starts a turn with at least two tools, and does something right after one of its events (from 0). */
		void DisturbAfter(size_t EventIndex, const std::function<void()>& Disturb)
		{
			bool bHasDisturbed = false;
			AfterEvent = [this, EventIndex, Disturb, &bHasDisturbed]
			{
				if (!bHasDisturbed && Events.size() == EventIndex + 1)
				{
					bHasDisturbed = true;
					Disturb();
				}
			};
			Events.clear();
			Agent->SendMessage(TEXT("find Snail"), {});
			EXPECT_TRUE(PumpUntil([&bHasDisturbed] { return bHasDisturbed; }));
			if (Agent.IsValid() && Agent->GetState() == EConversationState::Paused)
			{
				PumpForAWhile();
			}
			else
			{
				PumpUntilQuiet();
			}
			AfterEvent = nullptr;
		}

		size_t CountUndisturbedEvents()
		{
			Ask("find Snail");
			return Events.size();
		}

		/** A tool that was started has ended once, and no other. */
		void ExpectToolsPaired() const
		{
			std::vector<std::string> Ended = EndedToolIds;
			std::vector<std::string> Started = ToolIds;
			std::sort(Ended.begin(), Ended.end());
			std::sort(Started.begin(), Started.end());
			EXPECT_EQ(Started, Ended);
			EXPECT_EQ(std::set<std::string>(Started.begin(), Started.end()).size(), Started.size());
		}
	};
}

TEST_F(AgentTurns, BeginsWithAnEmptyConversation)
{
	EXPECT_TRUE(Agent->HasActiveConversation());
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = Agent->GetCurrentConversationMetadata();
	ASSERT_TRUE(Metadata.IsValid());
	EXPECT_EQ(Metadata->Id.Len(), 32);
	EXPECT_EQ(Utf8(Metadata->Id).find_first_not_of("0123456789ABCDEF"), std::string::npos);
	EXPECT_EQ(Metadata->GetMessageCount(), 0);
	EXPECT_EQ(Metadata->Mode, EConversationMode::General);
	EXPECT_EQ(Agent->GetState(), EConversationState::Ready);
	EXPECT_EQ(Utf8(Agent->GetCurrentConversationTitle()), "");
	EXPECT_EQ(Utf8(Agent->GetCurrentTransactionId()), "");
	EXPECT_EQ(Agent->GetConversationHistories().Num(), 0);
	EXPECT_TRUE(Events.empty());

	Metadata->Mode = EConversationMode::Advisor;
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->Mode, EConversationMode::Advisor);
}

TEST_F(AgentTurns, TellsAWholeTurnInOrder)
{
	Ask("find Snail");
	const std::vector<std::string> Expected = {
		"state Ready to Thinking",
		"state Thinking to ExecutingTools",
		"start search_files {\"term\":\"Snail\"} {\"operation_type\":\"search\",\"data_type\":\"File\"}",
		"end search_files ok: 1 match in 1 file",
		"start read_file {\"path\":\"Source/A.cpp\",\"lines\":\"1-3\"} {\"operation_type\":\"read\",\"data_type\":\"File\"}",
		"end read_file ok: Read 1 line",
		"state ExecutingTools to Thinking",
		"answer",
		"state Thinking to AwaitingInput",
	};
	EXPECT_EQ(Events, Expected);
	ExpectToolsPaired();

	const TArray<Velmora::FConversationMessage>& Messages = Agent->GetCurrentConversationMetadata()->GetMessages();
	ASSERT_EQ(Messages.Num(), 2);
	EXPECT_TRUE(Messages[0].IsUserMessage());
	EXPECT_TRUE(Messages[1].IsAssistantMessage());
	EXPECT_EQ(Utf8(Messages[1].Content), LastAnswer);
	EXPECT_EQ(Utf8(Agent->GetCurrentConversationTitle()), "find Snail");
}

TEST_F(AgentTurns, TakesOneMessageAtATime)
{
	Velmora::FAgentStateObserver Observer(Agent);
	EXPECT_TRUE(Observer.CanAcceptMessage());
	EXPECT_FALSE(Agent->SendMessage(FString(), {}));
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 1);
	EXPECT_TRUE(Observer.IsBusy());
	EXPECT_FALSE(Observer.CanAcceptMessage());
	EXPECT_FALSE(Agent->CanUndo());
	EXPECT_FALSE(Agent->SendMessage(TEXT("find Hedgehog"), {}));
	EXPECT_FALSE(Agent->LoadConversation(Agent->GetCurrentConversationMetadata()->Id));
	Agent->PauseConversation();
	EXPECT_FALSE(Observer.IsBusy());
	EXPECT_FALSE(Observer.CanAcceptMessage());
	EXPECT_FALSE(Agent->SendMessage(TEXT("find Hedgehog"), {}));
	Agent->ResumeConversation(FString());
	ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_TRUE(Observer.CanAcceptMessage());
	EXPECT_TRUE(Agent->CanUndo());
	EXPECT_FALSE(Agent->UndoToTransaction(TEXT("x")));
}

TEST_F(AgentTurns, PausedAnywhereTheTurnGoesOnAsIfNothingHadHappened)
{
	const size_t Count = CountUndisturbedEvents();
	const std::string Whole = LastAnswer;
	for (size_t Index = 0; Index + 1 < Count; ++Index)
	{
		SCOPED_TRACE(Index);
		LastAnswer.clear();
		DisturbAfter(Index, [this] { Agent->PauseConversation(); });
		EXPECT_EQ(Agent->GetState(), EConversationState::Paused);
		// The pause is told at once; after it only the tool that was running ends.
		const auto Pause = std::find_if(Events.begin(), Events.end(), [](const std::string& Event) { return Holds(Event, "to Paused"); });
		ASSERT_NE(Pause, Events.end());
		EXPECT_LE(Events.end() - Pause, 2) << Events.back();
		if (Events.end() - Pause == 2)
		{
			EXPECT_EQ(Events.back().rfind("end ", 0), 0u) << Events.back();
		}
		Agent->ResumeConversation(FString());
		EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
		EXPECT_EQ(LastAnswer, Whole);
		ExpectToolsPaired();
	}
}

TEST_F(AgentTurns, AnotherPromptChangesTheCourse)
{
	const size_t Count = CountUndisturbedEvents();
	for (size_t Index = 0; Index + 1 < Count; ++Index)
	{
		SCOPED_TRACE(Index);
		const int32 MessagesBefore = Agent->GetCurrentConversationMetadata()->GetMessageCount();
		DisturbAfter(Index, [this] { Agent->PauseConversation(); });
		const bool bWasAnswered = std::find(Events.begin(), Events.end(), "answer") != Events.end();
		Agent->ResumeConversation(TEXT("find Hedgehog"));
		EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
		EXPECT_TRUE(Holds(LastAnswer, "Source/B.cpp")) << LastAnswer;
		EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), MessagesBefore + (bWasAnswered ? 4 : 3));
		ExpectToolsPaired();
	}
}

TEST_F(AgentTurns, CancelledAnywhereItStopsAndTakesTheNextMessage)
{
	const size_t Count = CountUndisturbedEvents();
	for (size_t Index = 0; Index + 1 < Count; ++Index)
	{
		SCOPED_TRACE(Index);
		DisturbAfter(Index, [this] { Agent->CancelConversation(); });
		EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
		EXPECT_TRUE(Holds(Events.back(), "to Cancelled")) << Events.back();
		EXPECT_LE(Events.size(), Index + 3);
		ExpectToolsPaired();
		EXPECT_TRUE(Velmora::FAgentStateObserver(Agent).CanAcceptMessage());
		EXPECT_TRUE(Holds(Ask("find Hedgehog"), "Source/B.cpp"));
	}
	// Nothing runs: nothing to pause, resume or cancel.
	Events.clear();
	Agent->PauseConversation();
	Agent->ResumeConversation(TEXT("x"));
	Agent->CancelConversation();
	EXPECT_TRUE(Events.empty());
	EXPECT_EQ(Agent->GetState(), EConversationState::AwaitingInput);
}

TEST_F(AgentTurns, EndedAnywhereItIsSilent)
{
	const size_t Count = CountUndisturbedEvents();
	for (size_t Index = 0; Index < Count; ++Index)
	{
		SCOPED_TRACE(Index);
		DisturbAfter(Index, [this] { Agent->EndConversation(); });
		EXPECT_EQ(Events.size(), Index + 1);
		EXPECT_EQ(Agent->GetState(), EConversationState::NotStarted);
		EXPECT_FALSE(Agent->HasActiveConversation());
		EXPECT_FALSE(Agent->GetCurrentConversationMetadata().IsValid());
		EXPECT_FALSE(Velmora::FAgentStateObserver(Agent).CanAcceptMessage());
		EXPECT_FALSE(Agent->SendMessage(TEXT("find Snail"), {}));
		EXPECT_FALSE(Agent->StartConversation(EConversationMode::Code).IsEmpty());
		EXPECT_EQ(Agent->GetCurrentConversationMetadata()->Mode, EConversationMode::Code);
	}
}

TEST_F(AgentTurns, LetGoOfAnywhereItIsSilent)
{
	const size_t Count = CountUndisturbedEvents();
	for (size_t Index = 0; Index < Count; ++Index)
	{
		SCOPED_TRACE(Index);
		DisturbAfter(Index, [this] { Agent.Reset(); });
		EXPECT_EQ(Events.size(), Index + 1);
		CreateAgent();
	}
	Events.clear();
	Velmora::FBuiltInAgentOptions Slow;
	Slow.MinimumToolSeconds = 30.0;
	Velmora::SetBuiltInAgentOptions(Slow);
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
	ASSERT_TRUE(PumpUntil([this] { return !EventsOf("start").empty(); }));
	const size_t Told = Events.size();
	const auto Before = std::chrono::steady_clock::now();
	Agent.Reset();
	PumpUntilQuiet();
	EXPECT_LT(std::chrono::steady_clock::now() - Before, std::chrono::seconds(5)) << "A slow tool must not hold up the end.";
	EXPECT_EQ(Events.size(), Told);
	CreateAgent();
}

TEST_F(AgentTurns, AnotherConversationReplacesARunningOne)
{
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
	const FString FirstId = Agent->GetCurrentConversationMetadata()->Id;
	Events.clear();
	const FString SecondId = Agent->StartConversation(EConversationMode::Assets);
	PumpUntilQuiet();
	EXPECT_NE(Utf8(FirstId), Utf8(SecondId));
	EXPECT_EQ(Events, std::vector<std::string>({ "state NotStarted to Ready" }));
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 0);
}

TEST_F(AgentTurns, WhatADroppedTurnHasOnItsWayIsNotToldByTheNext)
{
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
	// Its reports wait for the game thread.
	ASSERT_TRUE(FHostTasks::WaitForBackground(30.0));
	Agent->StartConversation(EConversationMode::General);
	Ask("help");
	EXPECT_TRUE(EventsOf("start").empty());
	EXPECT_TRUE(ToolIds.empty());
}

TEST_F(AgentTurns, AVanishedProjectIsAnErrorInWords)
{
	std::filesystem::remove_all(Project.Root);
	Ask("find Snail");
	EXPECT_EQ(Agent->GetState(), EConversationState::Error);
	const std::vector<std::string> Errors = EventsOf("error");
	ASSERT_EQ(Errors.size(), 1u);
	EXPECT_TRUE(Holds(Errors[0], "The project folder " + Project.Root.native() + " cannot be opened.")) << Errors[0];
	EXPECT_TRUE(Velmora::FAgentStateObserver(Agent).CanAcceptMessage());
	EXPECT_FALSE(FAgentBuilder::CreateDefault().IsValid());
	EXPECT_TRUE(Agent->StartConversation(EConversationMode::Code).IsEmpty());
}

TEST_F(AgentTurns, ConversationsAreStoredLoadedAndDeleted)
{
	Agent->ClearAllHistories();
	Ask("find Snail");
	const FString FirstId = Agent->GetCurrentConversationMetadata()->Id;
	Agent->StartConversation(EConversationMode::Code);
	EXPECT_EQ(Agent->GetConversationHistories().Num(), 1) << "An empty conversation is not stored.";
	Ask("first line\nof two");
	const FString SecondId = Agent->GetCurrentConversationMetadata()->Id;
	EXPECT_EQ(Utf8(Agent->GetCurrentConversationTitle()), "first line of two");

	TArray<Velmora::FConversationMetadata> Stored = Async(EAsyncExecution::Thread,
		[]
		{
			Velmora::FConversationHistoryManager Manager;
			Manager.Initialize(FString());
			return Manager.GetConversationSummaries();
		}).Consume();
	ASSERT_EQ(Stored.Num(), 2);
	EXPECT_EQ(Utf8(Stored[0].Id), Utf8(SecondId));
	EXPECT_EQ(Stored[0].Mode, EConversationMode::Code);
	EXPECT_EQ(Utf8(Stored[1].Id), Utf8(FirstId));
	EXPECT_EQ(Stored[1].GetMessageCount(), 1) << "A summary ends with the first message of the user.";

	Events.clear();
	EXPECT_FALSE(Agent->LoadConversation(TEXT("unknown")));
	EXPECT_EQ(Events, std::vector<std::string>({ "error The conversation is no longer in the store; it cannot be opened." }));
	ASSERT_TRUE(Agent->LoadConversation(FirstId));
	EXPECT_EQ(EventsOf("loaded"), std::vector<std::string>({ Utf8(FirstId) }));
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 2);

	Agent->GetCurrentConversationMetadata()->Mode = EConversationMode::Advisor;
	EXPECT_TRUE(Agent->DeleteConversationHistory(FirstId));
	EXPECT_NE(Utf8(Agent->GetCurrentConversationMetadata()->Id), Utf8(FirstId));
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->Mode, EConversationMode::Advisor);
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 0);
	EXPECT_FALSE(Agent->DeleteConversationHistory(FirstId));
	EXPECT_EQ(Agent->GetConversationHistories().Num(), 1);
	Agent->ClearAllHistories();
	EXPECT_EQ(Agent->GetConversationHistories().Num(), 0);
}

TEST_F(AgentTurns, AFolderThatVanishesIsNotCalledEmpty)
{
	Velmora::FBuiltInAgentOptions Slow;
	Slow.MinimumToolSeconds = 0.3;
	Velmora::SetBuiltInAgentOptions(Slow);
	// Gone when its name was found and it is not opened yet.
	AfterEvent = [this]
	{
		if (Events.back().rfind("start find_file", 0) == 0)
		{
			Agent->PauseConversation();
		}
	};
	Events.clear();
	ASSERT_TRUE(Agent->SendMessage(TEXT("list Source"), {}));
	ASSERT_TRUE(PumpUntil([this] { return !EventsOf("end").empty(); }));
	std::filesystem::remove_all(Project.Root / "Source");
	AfterEvent = nullptr;
	Agent->ResumeConversation(FString());
	ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_TRUE(Holds(LastAnswer, "cannot be read")) << LastAnswer;
	EXPECT_EQ(EventsOf("end").back(), "list_directory failed: Not read");
}
