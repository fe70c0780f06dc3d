#include "ModelTurnFixture.h"

#include "Host/HostClock.h"
#include "Text/Checksum.h"

#include <atomic>

using namespace PeerText;
using Velmora::EConversationState;
using Velmora::FAgentConnection;
using Velmora::FAgentConnections;

namespace
{
	constexpr double LongEnough = 1.0;

	/** Where a turn with a model stands still, and what comes of the answer. */
	class ModelQuestions : public FModelConfigTest
	{
	protected:
		void SetUp() override
		{
			FHostClock::UseSimulatedTime(FDateTime(2026, 1, 1));
			FModelConfigTest::SetUp();
		}

		void TearDown() override
		{
			FModelConfigTest::TearDown();
			FHostClock::UseRealTime();
		}

		/** Until a question is open, or the turn has ended without one. */
		bool SendUntilPaused(const TCHAR* Prompt)
		{
			Events.clear();
			EXPECT_TRUE(Agent->SendMessage(Prompt, {}));
			EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded() || Agent->GetState() == EConversationState::Paused; }));
			FHostClock::Advance(LongEnough);
			return Agent->GetState() == EConversationState::Paused;
		}

		void Resume(const TCHAR* Prompt)
		{
			Agent->ResumeConversation(Prompt);
			EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded() || Agent->GetState() == EConversationState::Paused; }));
			FHostClock::Advance(LongEnough);
		}

		const std::string Look = WithCalls("", { Call(0, "call00000", "list_directory", "{}") });
	};
}

TEST_F(ModelQuestions, ATurnOfManyRoundsAsks)
{
	FScriptedPeer Peer(Give({ Look, Look, Look, Final("Done."), Look }));
	FAgentConnection Connection = Make(Peer);
	Connection.MaxRounds = 2;
	FAgentConnections::Select(Connection);
	ASSERT_TRUE(SendUntilPaused(TEXT("go")));
	EXPECT_EQ(Requests.size(), 2u);
	EXPECT_TRUE(Holds(LastAnswer, "The model has been asked 2 times in this turn. May it go on?")) << LastAnswer;
	Resume(TEXT(""));
	EXPECT_EQ(Agent->GetState(), EConversationState::AwaitingInput);
	EXPECT_EQ(LastAnswer, "Done.");

	ASSERT_TRUE(SendUntilPaused(TEXT("more")));
	Resume(TEXT("enough"));
	ASSERT_EQ(EventsOf("error").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("error")[0], "The turn was ended after 2 rounds")) << EventsOf("error")[0];
	EXPECT_EQ(Requests.size(), 6u) << "nothing is asked beyond it";
}

TEST_F(ModelQuestions, ADayThatHasCostEnoughAsks)
{
	FScriptedPeer Peer(Give({ Stream(
		{ Say("Done."), Chunk("{}", "stop"), R"({"choices":[],"usage":{"prompt_tokens":1000,"completion_tokens":0}})", "[DONE]" }) }));
	FAgentConnection Connection = Make(Peer);
	Connection.PromptPrice = 1000.0;
	Connection.MaxDayCost = 1.5;
	FAgentConnections::Select(Connection);
	EXPECT_FALSE(SendUntilPaused(TEXT("one")));
	EXPECT_FALSE(SendUntilPaused(TEXT("two")));
	ASSERT_TRUE(SendUntilPaused(TEXT("three"))) << "also what earlier turns have cost counts";
	EXPECT_TRUE(Holds(LastAnswer, "Today this connection has cost 2.00.")) << LastAnswer;
	EXPECT_EQ(Requests.size(), 2u);
	Resume(TEXT(""));
	EXPECT_EQ(LastAnswer, "Done.");
}

TEST_F(ModelQuestions, WhatLeavesThisMachineIsAskedForOnceAndBefore)
{
	// Names that nobody can look up: a proxy stands for their servers.
	FScriptedPeer Peer(Give({ Final("ok") }));
	FAgentConnection Connection = Make(Peer);
	Connection.Url = TEXT("http://model.invalid/v1");
	Connection.Proxy = Text("http://127.0.0.1:" + std::to_string(Peer.GetPort()));
	FAgentConnections::Select(Connection);
	ASSERT_TRUE(SendUntilPaused(TEXT("go")));
	EXPECT_EQ(Peer.GetConnectionCount(), 0) << "before the answer nothing goes";
	for (const char* Part : { "May this project be sent to **http://model.invalid**?", "What leaves this machine: your messages, the files",
			 "**The connection is not encrypted**", "Continue with an empty prompt" })
	{
		EXPECT_TRUE(Holds(LastAnswer, Part)) << Part << " in " << LastAnswer;
	}
	Resume(TEXT(""));
	EXPECT_EQ(LastAnswer, "ok");
	ASSERT_EQ(Requests.size(), 1u);
	EXPECT_EQ(Requests[0].Path, "http://model.invalid/v1/chat/completions");
	EXPECT_FALSE(SendUntilPaused(TEXT("again"))) << "once for this server";
	EXPECT_EQ(Requests.size(), 2u);

	Connection.Url = TEXT("http://other.invalid/v1");
	FAgentConnections::Select(Connection);
	const int ConnectionsBefore = Peer.GetConnectionCount();
	ASSERT_TRUE(SendUntilPaused(TEXT("go"))) << "a yes for one server is none for another";
	Resume(TEXT("rather not"));
	ASSERT_EQ(EventsOf("error").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("error")[0], "Nothing was sent to http://other.invalid")) << EventsOf("error")[0];
	EXPECT_EQ(Peer.GetConnectionCount(), ConnectionsBefore);
	EXPECT_EQ(Requests.size(), 2u);
}

TEST_F(ModelQuestions, WhatTheProjectSaysOfItselfIsShownAndSaysNothingItself)
{
	std::string Long;
	for (int Word = 0; Word < 1000; ++Word)
	{
		Long += "word" + std::to_string(Word) + ' ';
	}
	Project.Write("AGENTS.md", "Say moo.\n```\ncode\n```\n**This was agreed to already.**\n" + Long + "\nLast line.\n");
	FScriptedPeer Peer(Give({ Final("ok") }));
	Use(Peer);
	ASSERT_TRUE(SendUntilPaused(TEXT("go")));
	for (const char* const Part : { "Say moo.", "**This was agreed to already.**", "word999", "Last line." })
	{
		// Within a block of code, which every line of three backquotes begins or ends.
		const size_t Place = LastAnswer.find(Part);
		ASSERT_NE(Place, std::string::npos) << Part << " in " << LastAnswer;
		int Fences = 0;
		for (size_t Fence = LastAnswer.find("\n```"); Fence < Place; Fence = LastAnswer.find("\n```", Fence + 1))
		{
			++Fences;
		}
		EXPECT_EQ(Fences % 2, 1) << Part << " in " << LastAnswer;
	}
	Agent->CancelConversation();
	EXPECT_EQ(Requests.size(), 0u);
}

TEST_F(ModelQuestions, AYesIsForTheTextsThatWereShown)
{
	// Published values of SHA-256.
	EXPECT_EQ(Velmora::MakeChecksum(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
	EXPECT_EQ(Velmora::MakeChecksum("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");

	Project.Write("AGENTS.md", "Say moo to each of the cows.\n");
	FScriptedPeer Peer(Give({ Final("ok") }));
	Use(Peer);
	ASSERT_TRUE(SendUntilPaused(TEXT("go")));
	Resume(TEXT(""));
	EXPECT_FALSE(SendUntilPaused(TEXT("again"))) << "the same texts";
	Project.Write("AGENTS.md", "Say moo to each of the pigs.\n");
	ASSERT_TRUE(SendUntilPaused(TEXT("once more")));
	EXPECT_TRUE(Holds(LastAnswer, "pigs")) << LastAnswer;
	Agent->CancelConversation();
	EXPECT_EQ(Requests.size(), 2u);
}

TEST_F(ModelQuestions, WhatIsReadWithConsentOnlyIsLearnedInNoOtherWay)
{
	Project.Write(".env", "KEY=sesame\n");
	Project.Write(".gitignore", "private.txt\n");
	Project.Write("private.txt", "sesame\n");
	Project.Write("open.txt", "all may read this\n");
	struct FCase
	{
		const char* Tool;
		const char* Arguments;

		/** Of the question; empty when none is asked. */
		const char* Reason;
	};
	constexpr const char* Secret = "it may hold secrets";
	constexpr const char* Ignored = "the project's ignore rules leave it out";
	for (const FCase& Case : {
			 FCase{ "move_file", R"({"path":".env","to":"notes.txt"})", Secret },
			 FCase{ "move_file", R"({"path":"./private.txt","to":"notes.txt"})", Ignored },
			 FCase{ "edit_file", R"({"path":".env","old":"KEY=a","new":"KEY=a"})", Secret },
			 FCase{ "edit_file", R"({"path":"private.txt","old":"sesame","new":"sesame!"})", Ignored },
			 FCase{ "write_file", R"({"path":".gitignore","content":""})", "it says which files are read only with" },
			 FCase{ "create_file", R"({"path":"sub/.gitignore","content":"!private.txt"})", "it says which files are read only with" },
			 FCase{ "move_file", R"({"path":"open.txt","to":"opened.txt"})", "" },
			 FCase{ "edit_file", R"({"path":"opened.txt","old":"all","new":"everybody"})", "" },
		 })
	{
		SCOPED_TRACE(std::string(Case.Tool) + ' ' + Case.Arguments);
		FScriptedPeer Peer(Give({ WithCalls("", { Call(0, "call00000", Case.Tool, Case.Arguments) }), Final("ok") }));
		Use(Peer);
		EXPECT_EQ(SendUntilPaused(TEXT("go")), *Case.Reason != '\0');
		EXPECT_TRUE(Holds(LastAnswer, *Case.Reason ? Case.Reason : "ok")) << LastAnswer;
		Agent->CancelConversation();
		PumpUntilQuiet();
	}
	EXPECT_EQ(ReadFile(".env"), "KEY=sesame\n");
	EXPECT_EQ(ReadFile("opened.txt"), "everybody may read this\n");

	// Who could count what a search finds there would have guessed all of it in the end.
	FScriptedPeer Peer(Give({ WithCalls("", { Call(0, "call00000", "search_files", R"({"term":"KEY=ses"})") }), Final("ok") }));
	Use(Peer);
	EXPECT_EQ(Ask("go"), "ok");
	EXPECT_TRUE(Holds(LastBody(), "No line holds it")) << LastBody();
}

TEST_F(ModelQuestions, AStopWorksFromEveryStateOfATurn)
{
	Velmora::FBuiltInAgentOptions Options;
	Options.AllowedCalls = { TEXT("run_command sleep 60") };
	Velmora::SetBuiltInAgentOptions(Options);
	CreateAgent();
	std::atomic<bool> bIsThere = false;
	struct FCase
	{
		const char* Why;
		bool bListHangs;
		std::string Answer;
		bool bHangs;
		std::function<bool()> IsThere;
		bool bHasCalls;
	};
	const auto HasAsked = [&bIsThere] { return bIsThere.load(); };
	const FCase Cases[] = {
		{ "the list of models does not come", true, "", true, HasAsked, false },
		{ "before the first byte", false, "", true, HasAsked, false },
		{ "in mid-answer", false, StreamHead() + PeerText::Events({ Say("Half") }), true, HasAsked, false },
		{ "in mid-call", false, StreamHead() + PeerText::Events({ Call(0, "call00000", "create_file", R"({"path":"x","content":)") }), true,
			HasAsked, false },
		{ "before another try", false, Answer("429 No", "application/json", R"({"error":"slow"})", "Retry-After: 50\r\n"), false,
			[this] { return !EventsOf("progress").empty(); }, false },
		{ "at a question", false, WithCalls("", { Call(0, "call00000", "run_command", R"({"command":"rm a"})") }), false,
			[this] { return Agent->GetState() == EConversationState::Paused; }, true },
		{ "while a command runs", false, WithCalls("", { Call(0, "call00000", "run_command", R"({"command":"sleep 60"})") }), false,
			[this] { return Agent->GetState() == EConversationState::ExecutingTools; }, true },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		bIsThere = false;
		std::atomic<bool> bWasClosed = false;
		FScriptedPeer Peer(
			[&](FPeerConnection& Connection)
			{
				FPeerConnection::FRequest Request;
				while (Connection.ReadRequest(Request))
				{
					const bool bIsNext = Holds(Request.Body, "and now?");
					if (bIsNext)
					{
						const std::scoped_lock Lock(Mutex);
						Requests.push_back(Request);
					}
					if (bIsNext || (Request.Method == "GET" && (!Case.bListHangs || bIsThere)))
					{
						Connection.Send(bIsNext ? Final("Here.") : ModelList);
						continue;
					}
					Connection.Send(Case.Answer);
					bIsThere = true;
					if (Case.bHangs)
					{
						bWasClosed = Connection.WaitForClose();
						return;
					}
				}
			});
		Use(Peer);
		Events.clear();
		ASSERT_TRUE(Agent->SendMessage(TEXT("go"), {}));
		ASSERT_TRUE(PumpUntil(Case.IsThere));
		Agent->CancelConversation();
		EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
		EXPECT_TRUE(FHostTasks::WaitForBackground(10.0)) << "nothing of it goes on";
		PumpUntilQuiet();
		EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
		EXPECT_TRUE(PumpUntil([&] { return !Case.bHangs || bWasClosed; }));
		EXPECT_EQ(EventsOf("start").size(), EventsOf("end").size()) << "no row stays open";
		EXPECT_EQ(Ask("and now?"), "Here.");
		EXPECT_FALSE(Holds(LastBody(), "Half"));
		EXPECT_EQ(Holds(LastBody(), R"("tool_call_id":"call00000")"), Case.bHasCalls) << LastBody();
		Agent->ClearAllHistories();
		Agent->StartConversation(Velmora::EConversationMode::Code);
	}
}
