#include "AgentFixture.h"

#include "Containers/Ticker.h"
#include "Host/AgentMessages.h"
#include "Host/HostFileNames.h"
#include "Host/HostLog.h"
#include "Host/Sqlite.h"
#include "Host/StoreLocation.h"
#include "Store/ConversationStore.h"
#include "Store/StoreNotices.h"
#include "Support/Base/SmallDisk.h"

#include <fstream>
#include <optional>

using Velmora::EConversationMode;
using Velmora::EConversationState;

namespace
{
	/** The agent and what another program sees of it in the store. */
	class AgentStoring : public FAgentTest
	{
	protected:
		void SetUp() override
		{
			FAgentTest::SetUp();
			Project.Write("Source/A.cpp", "int Snail = 1;\n");
			Project.Write("Source/B.cpp", "int Hedgehog = 2;\n");
		}

		static FString StorePath() { return Velmora::GetStoreLocation().GetDatabasePath(); }

		/** Texts in the store, "(missing)" for no such conversation. */
		static std::vector<std::string> ReadStored(const FString& Id)
		{
			const TSharedRef<Velmora::FConversationStore> Other = MakeShared<Velmora::FConversationStore>(HostFileNameToBytes(StorePath()));
			const TOutcome<Velmora::FConversationMetadata> Loaded = Other->Load(Id);
			if (!Loaded)
			{
				return { Loaded.Is(EOutcome::Missing) ? "(missing)" : Loaded.GetWords() };
			}
			return TextsOf(*Loaded);
		}

		static std::vector<std::string> TextsOf(const Velmora::FConversationMetadata& Metadata)
		{
			std::vector<std::string> Texts;
			for (const Velmora::FConversationMessage& Message : Metadata.Messages)
			{
				Texts.push_back(Utf8(Message.Content));
			}
			return Texts;
		}

		FString CurrentId() const { return Agent->GetCurrentConversationMetadata()->Id; }
		std::vector<std::string> CurrentTexts() const { return TextsOf(*Agent->GetCurrentConversationMetadata()); }
	};
}

TEST_F(AgentStoring, WhatWasToldIsInTheStore)
{
	std::vector<std::string> AtAnswer;
	AfterEvent = [this, &AtAnswer]
	{
		if (Events.back() == "answer")
		{
			AtAnswer = ReadStored(CurrentId());
		}
	};
	EXPECT_EQ(ReadStored(CurrentId()), std::vector<std::string>({ "(missing)" })) << "Nothing was said yet.";
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
	EXPECT_EQ(ReadStored(CurrentId())[0], "find Snail");
	ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_EQ(AtAnswer, std::vector<std::string>({ "find Snail", LastAnswer }));

	// The mode is written in place by the front end.
	Agent->GetCurrentConversationMetadata()->Mode = EConversationMode::Advisor;
	AfterEvent = nullptr;
	Ask("find Hedgehog");
	const FString Id = CurrentId();
	const std::vector<std::string> Said = CurrentTexts();
	EXPECT_EQ(Said.size(), 4u);
	Agent.Reset();
	Agent = FAgentBuilder::CreateDefault();
	ASSERT_TRUE(Agent->LoadConversation(Id));
	EXPECT_EQ(CurrentTexts(), Said);
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->Mode, EConversationMode::Advisor);
	EXPECT_EQ(Utf8(Agent->GetCurrentConversationTitle()), "find Snail");
}

TEST_F(AgentStoring, AStoreThatCannotBeWrittenStopsNobody)
{
	for (const bool bIsDiskFull : { false, true })
	{
		SCOPED_TRACE(bIsDiskFull);
		Agent->StartConversation(EConversationMode::General);
		Ask("find Snail");
		PumpUntilQuiet();
		const FString Id = CurrentId();
		const std::vector<std::string> Before = CurrentTexts();
		Velmora::FSqliteConnection Other;
		std::optional<FSmallDisk> SmallDisk;
		if (bIsDiskFull)
		{
			SmallDisk.emplace(1);
		}
		else
		{
			ASSERT_TRUE(Other.Open(HostFileNameToBytes(StorePath()), Velmora::ESqliteAccess::Write));
			Other.SetTimeout(5000); // The check at the start may be writing.
			ASSERT_TRUE(Other.Execute("BEGIN IMMEDIATE"));
		}
		EXPECT_TRUE(Holds(Ask("find Hedgehog"), "Source/B.cpp"));
		PumpUntilQuiet();
		ASSERT_EQ(EventsOf("error").size(), 1u);
		EXPECT_TRUE(Holds(EventsOf("error")[0], "not stored for now")) << EventsOf("error")[0];
		EXPECT_TRUE(Holds(Ask("find Snail"), "Source/A.cpp"));
		FTSTicker::GetCoreTicker().Tick(1.1f);
		EXPECT_TRUE(EventsOf("error").empty()) << "It is told once.";
		const std::vector<std::string> Said = CurrentTexts();
		EXPECT_EQ(Said.size(), 6u);
		EXPECT_EQ(ReadStored(Id), Before);

		// Another conversation may begin, and the first is there still.
		Agent->StartConversation(EConversationMode::General);
		const FString SecondId = CurrentId();
		Ask("find Hedgehog");
		const std::vector<std::string> SaidSecond = CurrentTexts();
		EXPECT_TRUE(Agent->LoadConversation(Id));
		EXPECT_EQ(CurrentTexts(), Said);

		// Everything is stored as soon as that works, without another message.
		Events.clear();
		SmallDisk.reset();
		(void)Other.Execute("COMMIT");
		FTSTicker::GetCoreTicker().Tick(1.1f);
		EXPECT_EQ(ReadStored(Id), Said);
		EXPECT_EQ(ReadStored(SecondId), SaidSecond);
		PumpUntilQuiet();
		EXPECT_EQ(EventsOf("progress"), std::vector<std::string>({ "All that was said is stored now." }));
	}
}

TEST_F(AgentStoring, TheEndOfTheAgentTriesOnceMore)
{
	for (const bool bWorksAgain : { true, false })
	{
		SCOPED_TRACE(bWorksAgain);
		Ask("find Snail");
		PumpUntilQuiet();
		const FString Id = CurrentId();
		std::optional<FSmallDisk> SmallDisk(1);
		Ask("find Hedgehog");
		const std::vector<std::string> Said = CurrentTexts();
		if (bWorksAgain)
		{
			SmallDisk.reset();
		}
		FHostLog::ResetCounts();
		Agent.Reset();
		SmallDisk.reset();
		EXPECT_EQ(FHostLog::GetWarningCount(TEXT("LogConversationStore")), bWorksAgain ? 0 : 1);
		EXPECT_EQ(ReadStored(Id) == Said, bWorksAgain);
		CreateAgent();
		Agent->StartConversation(EConversationMode::General);
	}
}

TEST_F(AgentStoring, AnAnswerThatCannotBeStoredIsToldAndStoredLater)
{
	Velmora::FSqliteConnection Other;
	Velmora::FBuiltInAgentOptions Slow;
	Slow.MinimumToolSeconds = 0.05;
	Velmora::SetBuiltInAgentOptions(Slow);
	Events.clear();
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
	ASSERT_TRUE(Other.Open(HostFileNameToBytes(StorePath()), Velmora::ESqliteAccess::Write));
	Other.SetTimeout(5000); // The check at the start may be writing.
	ASSERT_TRUE(Other.Execute("BEGIN IMMEDIATE"));
	ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_FALSE(LastAnswer.empty());
	ASSERT_EQ(EventsOf("error").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("error")[0], "not stored for now")) << EventsOf("error")[0];
	EXPECT_EQ(ReadStored(CurrentId()), std::vector<std::string>({ "find Snail" }));
	ASSERT_TRUE(Other.Execute("COMMIT"));
	ASSERT_TRUE(Agent->SendMessage(TEXT("find Hedgehog"), {}));
	EXPECT_EQ(ReadStored(CurrentId()), CurrentTexts());
	ASSERT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_EQ(ReadStored(CurrentId()), CurrentTexts());
}

TEST_F(AgentStoring, ADroppedTurnLeavesNothingUntold)
{
	Ask("find Snail");
	const size_t Count = Events.size();
	for (size_t Index = 0; Index < Count; ++Index)
	{
		for (const bool bChangesCourse : { false, true })
		{
			SCOPED_TRACE(Index);
			bool bIsDone = false;
			AfterEvent = [this, Index, bChangesCourse, &bIsDone]
			{
				if (!bIsDone && Events.size() == Index + 1)
				{
					bIsDone = true;
					bChangesCourse ? Agent->PauseConversation() : Agent->CancelConversation();
				}
			};
			Events.clear();
			ASSERT_TRUE(Agent->SendMessage(TEXT("find Snail"), {}));
			EXPECT_TRUE(PumpUntil([&bIsDone] { return bIsDone; }));
			PumpForAWhile();
			AfterEvent = nullptr;
			if (bChangesCourse)
			{
				Agent->ResumeConversation(TEXT("find Hedgehog"));
			}
			PumpUntil([this] { return HasTurnEnded(); });
			PumpUntilQuiet();
			EXPECT_EQ(ReadStored(CurrentId()), CurrentTexts());
			EXPECT_TRUE(EventsOf("error").empty());
		}
	}
}

TEST_F(AgentStoring, WhatWasClearedMeanwhileIsStoredAgain)
{
	Ask("find Snail");
	AfterEvent = [this]
	{
		if (Events.back().rfind("start ", 0) == 0)
		{
			Agent->ClearAllHistories();
		}
	};
	Ask("find Hedgehog");
	AfterEvent = nullptr;
	EXPECT_EQ(CurrentTexts().size(), 4u);
	EXPECT_EQ(ReadStored(CurrentId()), CurrentTexts());
	EXPECT_EQ(Agent->GetConversationHistories().Num(), 1);

	// And what another program has said in it is there when it is opened again.
	{
		const TSharedRef<Velmora::FConversationStore> Other = MakeShared<Velmora::FConversationStore>(HostFileNameToBytes(StorePath()));
		Velmora::FConversationMessage Message;
		Message.Content = TEXT("from elsewhere");
		ASSERT_TRUE(Other->AppendMessage(CurrentId(), Message));
	}
	ASSERT_TRUE(Agent->LoadConversation(CurrentId()));
	EXPECT_EQ(CurrentTexts().back(), "from elsewhere");
}

TEST_F(AgentStoring, ADamagedStoreIsToldOnceByTheFirstAgentThatCan)
{
	Ask("find Snail");
	const FString Id = CurrentId();
	Agent.Reset();
	ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
	const std::string Path = HostFileNameToBytes(StorePath());
	{
		std::fstream Stream(Path, std::ios::in | std::ios::out | std::ios::binary);
		Stream << "no database any more";
	}
	// Found by an agent that nobody listens to yet.
	Agent = FAgentBuilder::CreateDefault();
	ASSERT_TRUE(FHostTasks::WaitForBackground(10.0));
	FHostTasks::RunGameThreadTasks();
	Events.clear();
	Listen();
	EXPECT_TRUE(Events.empty()) << "Callbacks may still be missing.";
	FHostTasks::RunGameThreadTasks();
	ASSERT_EQ(EventsOf("error").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("error")[0], "1 conversation was recovered")) << EventsOf("error")[0];
	EXPECT_TRUE(Agent->LoadConversation(Id));
	EXPECT_EQ(CurrentTexts()[0], "find Snail");
	PumpUntilQuiet();
	EXPECT_EQ(EventsOf("error").size(), 1u);
}

TEST_F(AgentStoring, WhatWasAttachedComesBackMessageByMessage)
{
	const auto GetLast = []() -> std::string
	{
		const TOptional<Velmora::FLastMessage> Last = Velmora::FAgentMessages::GetLast();
		std::string Line = Last.IsSet() ? Utf8(Last->Text) : "(none)";
		for (const FString& File : Last.IsSet() ? Last->Files : TArray<FString>())
		{
			Line += " @" + Utf8(File);
		}
		return Line;
	};
	Ask("find Snail", { "Source/A.cpp" });
	Ask("find Hedgehog", { "Source/B.cpp", "Source/A.cpp" });
	Ask("help");
	EXPECT_EQ(GetLast(), "help");
	EXPECT_EQ(Utf8(Velmora::FAgentMessages::TakeBackLast()), "");
	EXPECT_EQ(GetLast(), "find Hedgehog @Source/B.cpp @Source/A.cpp");

	// As after a restart: all that is known comes from the store.
	const FString Id = CurrentId();
	Agent->StartConversation(EConversationMode::General);
	EXPECT_EQ(GetLast(), "(none)");
	ASSERT_TRUE(Agent->LoadConversation(Id));
	EXPECT_EQ(GetLast(), "find Hedgehog @Source/B.cpp @Source/A.cpp");
	EXPECT_EQ(Utf8(Velmora::FAgentMessages::TakeBackLast()), "");
	EXPECT_EQ(GetLast(), "find Snail @Source/A.cpp");
	// What comes in the place of the one that was taken back has nothing of it.
	Ask("find Hedgehog");
	EXPECT_EQ(GetLast(), "find Hedgehog");
}

TEST_F(AgentStoring, TitlesAreOneShortLine)
{
	const FString Fifty = FString::ChrN(50, TEXT('x'));
	const std::pair<FString, FString> Cases[] = {
		{ Fifty, Fifty },
		{ Fifty + TEXT("y"), Fifty + TEXT("...") },
		{ Fifty + TEXT(" \r\n\t "), Fifty },
		{ Fifty + FString::ChrN(5000, TEXT(' ')) + TEXT("y"), Fifty + TEXT("...") },
		{ TEXT("\r\n  a\r\nb\nc\rd\n\re \n"), TEXT("a b c d  e") },
		{ TEXT("\t a\tb"), TEXT("a\tb") },
		{ FString(TEXT("a")) + FString::ChrN(60, TEXT(' ')) + TEXT("b"), FString(TEXT("a")) + FString::ChrN(49, TEXT(' ')) + TEXT("...") },
		{ TEXT(" \n "), TEXT("") },
	};
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = Agent->GetCurrentConversationMetadata();
	Metadata->Messages.Add({ TEXT("not the user"), Velmora::EConversationRole::Assistant });
	Metadata->Messages.Add({ FString() });
	Metadata->Messages.Add({ FString() });
	for (const auto& [Said, Expected] : Cases)
	{
		Metadata->Messages.Last().Content = Said;
		EXPECT_EQ(Utf8(Agent->GetCurrentConversationTitle()), Utf8(Expected)) << Utf8(Said);
	}
}
