#include "ModelTurnFixture.h"

#include "Host/AgentQuestions.h"
#include "Model/ModelUsage.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace PeerText;
using Velmora::EAgentAnswer;
using Velmora::EConversationState;
using Velmora::FAgentConnection;
using Velmora::FAgentConnections;
using Velmora::FAgentQuestions;

namespace
{
	/** What was used today is kept in the user's configuration folder, so that is one of the test's. */
	class ModelLimits : public FModelConfigTest
	{
	protected:
		void SetUp() override
		{
			FModelConfigTest::SetUp();
			FAgentQuestions::SetListener([this](const Velmora::FAgentQuestion* Question) { OpenId = Question ? Question->Id : 0; });
		}

		void TearDown() override
		{
			FModelConfigTest::TearDown();
			FAgentQuestions::SetListener(nullptr);
		}

		/** An answer that looks at the project once more, and says what it cost. */
		static std::string Look(int Tokens)
		{
			return Stream({ Call(0, "c", "list_directory", "{}"), Chunk("{}", "tool_calls"), Usage(Tokens), "[DONE]" });
		}

		static std::string Done(int Tokens) { return Stream({ Say("Done."), Chunk("{}", "stop"), Usage(Tokens), "[DONE]" }); }

		static std::string Usage(int Tokens)
		{
			return R"({"choices":[],"usage":{"prompt_tokens":)" + std::to_string(Tokens - 10) + R"(,"completion_tokens":10}})";
		}

		bool WaitForQuestion()
		{
			return PumpUntil([this] { return Agent->GetState() == EConversationState::Paused || HasTurnEnded(); }) &&
				Agent->GetState() == EConversationState::Paused;
		}

		/** A new agent with a model that takes so many tokens. */
		void BeginWithContext(const FScriptedPeer& Peer, int64 Tokens)
		{
			FAgentConnection Connection = Make(Peer);
			Connection.ContextTokens = Tokens;
			FAgentConnections::Select(Connection);
			CreateAgent();
		}

		uint32 OpenId = 0;
	};
}

TEST_F(ModelLimits, ATurnThatHasUsedItsTokensAsks)
{
	FScriptedPeer Peer(Give({ Look(600), Look(600), Look(600), Done(600) }));
	FAgentConnection Connection = Make(Peer);
	Connection.MaxTurnTokens = 1000;
	FAgentConnections::Select(Connection);
	ASSERT_TRUE(Agent->SendMessage(TEXT("go"), {}));
	ASSERT_TRUE(WaitForQuestion());
	EXPECT_EQ(Requests.size(), 2u);
	EXPECT_TRUE(Holds(LastAnswer, "This turn has used 1,200 tokens. That is the limit")) << LastAnswer;
	EXPECT_FALSE(FAgentQuestions::Answer(OpenId, EAgentAnswer::AllowAlways)) << "a limit is no tool: no rule may lift it";
	EXPECT_EQ(Agent->GetState(), EConversationState::Paused);
	Agent->ResumeConversation(TEXT("enough"));
	EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_EQ(Agent->GetState(), EConversationState::Error);
	EXPECT_EQ(Requests.size(), 2u) << "nothing is asked beyond it";
	EXPECT_TRUE(Holds(EventsOf("error")[0], "was ended at this limit")) << EventsOf("error")[0];
}

TEST_F(ModelLimits, AnotherTryIsAQuestionWhenTheLimitIsReached)
{
	FScriptedPeer Peer(
		Give({ Done(600), Stream({ Say("Half"), Chunk("{}", "length"), Usage(10000), "[DONE]" }), Final("In short: xxx."), Done(600) }));
	FAgentConnection Connection = Make(Peer);
	Connection.ContextTokens = 10000;
	Connection.MaxTurnTokens = 5000;
	FAgentConnections::Select(Connection);
	CreateAgent();
	EXPECT_EQ(Ask(std::string(2000, 'x')), "Done.");
	ASSERT_TRUE(Agent->SendMessage(TEXT("and now?"), {}));
	ASSERT_TRUE(WaitForQuestion());
	EXPECT_EQ(Requests.size(), 3u) << "the last one sums up";
	EXPECT_TRUE(FAgentQuestions::Answer(OpenId, EAgentAnswer::AllowOnce));
	EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_EQ(LastAnswer, "Done.");
	EXPECT_EQ(Requests.size(), 4u);

	// Who says no keeps what there is.
	AnswerCount = 0;
	CreateAgent();
	EXPECT_EQ(Ask(std::string(2000, 'y')), "Done.");
	ASSERT_TRUE(Agent->SendMessage(TEXT("and now?"), {}));
	ASSERT_TRUE(WaitForQuestion());
	Agent->ResumeConversation(TEXT("enough"));
	EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_EQ(LastAnswer, "Half");
	EXPECT_EQ(Requests.size(), 7u);
}

TEST_F(ModelLimits, MoneyCountsByThePricesAndAYesLastsForAsMuchAgain)
{
	FScriptedPeer Peer(Give({ Look(1010), Look(1010), Done(1010) }));
	FAgentConnection Connection = Make(Peer);
	Connection.PromptPrice = 1000.0;
	Connection.MaxTurnCost = 0.9;
	FAgentConnections::Select(Connection);
	Velmora::FBuiltInAgentOptions Options;
	Options.bCanAsk = false;
	Velmora::SetBuiltInAgentOptions(Options);
	Ask("go");
	ASSERT_EQ(EventsOf("error").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("error")[0], "This turn has cost 1.00. The turn was ended")) << EventsOf("error")[0];
	Options.AllowedCalls = { TEXT("tokens") };
	Velmora::SetBuiltInAgentOptions(Options);
	CreateAgent();
	EXPECT_EQ(Ask("go"), "Done.") << "asked for twice and allowed";
}

TEST_F(ModelLimits, WhatAServerSaysOfItsFiguresIsNotAllBelieved)
{
	const auto Looks = [](const char* Figures)
	{
		return Stream({ Call(0, "c", "list_directory", "{}"), Chunk("{}", "tool_calls"),
			std::string(R"({"choices":[],"usage":)") + Figures + "}", "[DONE]" });
	};
	struct FCase
	{
		const char* Why;
		std::string Answer;
		bool bAsks;
	};
	const std::string Refused = Answer("400 No", "application/json", R"({"error":{"message":"bad schema"}})");
	for (const FCase& Case : { FCase{ "zero", Looks(R"({"prompt_tokens":0,"completion_tokens":0})"), true },
			 FCase{ "below zero", Looks(R"({"prompt_tokens":-9000000000,"completion_tokens":5})"), true },
			 FCase{ "more than there is", Looks(R"({"prompt_tokens":9223372036854775807,"completion_tokens":9223372036854775807})"), true },
			 FCase{ "as much as is believed", Looks(R"({"prompt_tokens":1000000000000,"completion_tokens":1000000000000})"), true },
			 FCase{ "a refusal, which costs nothing", Refused, false } })
	{
		SCOPED_TRACE(Case.Why);
		Events.clear();
		FScriptedPeer Peer(Give({ Case.Answer, Done(20) }));
		FAgentConnection Connection = Make(Peer);
		Connection.MaxTurnTokens = 100;
		Connection.MaxDayTokens = 100;
		Connection.MaxDayCost = 0.000001;
		Connection.PromptPrice = 1.0;
		FAgentConnections::Select(Connection);
		ASSERT_TRUE(Agent->SendMessage(TEXT("go"), {}));
		EXPECT_EQ(WaitForQuestion(), Case.bAsks);
		if (Case.bAsks)
		{
			EXPECT_TRUE(FAgentQuestions::Answer(OpenId, EAgentAnswer::AllowOnce));
			EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
			EXPECT_EQ(LastAnswer, "Done.") << "a yes is for all of it";
			continue;
		}
		EXPECT_EQ(Agent->GetState(), EConversationState::Error);
		EXPECT_EQ(Ask("again"), "Done.") << "nothing was used";
	}
}

TEST_F(ModelLimits, ADayCountsOverSeveralRuns)
{
	FScriptedPeer Peer(Give({ Done(700) }));
	FAgentConnection Connection = Make(Peer);
	Connection.MaxDayTokens = 1000;
	FAgentConnections::Select(Connection);
	EXPECT_EQ(Ask("one"), "Done.");
	EXPECT_EQ(Ask("two"), "Done.");
	struct stat Info = {};
	ASSERT_EQ(stat(Project.PathOf("config/velmora-ui/usage").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0600u);
	EXPECT_TRUE(Holds(ReadFile("config/velmora-ui/usage"), "\t1400\t0\t" + Utf8(Connection.Name)));
	ASSERT_TRUE(Agent->SendMessage(TEXT("three"), {}));
	ASSERT_TRUE(WaitForQuestion());
	EXPECT_TRUE(Holds(LastAnswer, "Today this connection has used 1,400 tokens.")) << LastAnswer;
	EXPECT_EQ(Requests.size(), 2u);

	// What another run has used counts as well, and yesterday does not.
	Agent->CancelConversation();
	std::string Line = ReadFile("config/velmora-ui/usage");
	FAgentConnection Other = Make(Peer);
	Other.MaxDayTokens = 1000;
	Project.Write("config/velmora-ui/usage", Line.substr(0, 10) + "\t5000\t0\t" + Utf8(Other.Name) + "\n");
	chmod(Project.PathOf("config/velmora-ui/usage").c_str(), 0600);
	FAgentConnections::Select(Other);
	ASSERT_TRUE(Agent->SendMessage(TEXT("four"), {}));
	ASSERT_TRUE(WaitForQuestion());
	Agent->CancelConversation();
	FAgentConnection Yesterday = Make(Peer);
	Yesterday.MaxDayTokens = 1000;
	Project.Write("config/velmora-ui/usage", "2001-01-01\t5000\t0\t" + Utf8(Yesterday.Name) + "\n");
	FAgentConnections::Select(Yesterday);
	EXPECT_EQ(Ask("five"), "Done.");
}

TEST_F(ModelLimits, ADayCountsOverProgramsAtOnce)
{
	constexpr int ProgramCount = 3;
	constexpr int64_t TurnCount = 10;
	std::vector<pid_t> Programs;
	for (int Index = 0; Index < ProgramCount; ++Index)
	{
		Programs.push_back(fork());
		if (Programs.back() == 0)
		{
			for (int64_t Turn = 0; Turn < TurnCount; ++Turn)
			{
				Velmora::ModelUsage::Add("shared", { 1, 0.5 });
			}
			_exit(0);
		}
	}
	for (const pid_t Program : Programs)
	{
		int Status = 0;
		ASSERT_EQ(waitpid(Program, &Status, 0), Program);
	}
	const Velmora::ModelUsage::FSpent Spent = Velmora::ModelUsage::GetToday("shared");
	EXPECT_EQ(Spent.Tokens, ProgramCount * TurnCount);
	EXPECT_NEAR(Spent.Cost, ProgramCount * TurnCount * 0.5, 0.001);
}

TEST_F(ModelLimits, OldTurnsAreSummedUpByTheModel)
{
	Project.Write("AGENTS.md", "Always say moo.\n");
	const std::string Long(3000, 'x');
	FScriptedPeer Peer(Give({ Final("First."), Final("In short: you said xxx."), Final("Second.") }));
	Velmora::FBuiltInAgentOptions Options;
	Options.bCanAsk = false;
	Options.AllowedCalls = { TEXT("background") };
	Velmora::SetBuiltInAgentOptions(Options);
	BeginWithContext(Peer, 2000);
	EXPECT_EQ(Ask(Long), "First.");
	EXPECT_EQ(Ask(Long + " and now?"), "Second.");
	ASSERT_EQ(Requests.size(), 3u);
	EXPECT_TRUE(Holds(Requests[1].Body, "Sum up this beginning")) << Requests[1].Body;
	EXPECT_TRUE(Holds(Requests[1].Body, "Assistant: First."));
	EXPECT_FALSE(Holds(Requests[1].Body, "\"tools\""));
	EXPECT_TRUE(Holds(Requests[2].Body, "A summary of it:]\\nIn short: you said xxx.")) << Requests[2].Body;
	EXPECT_TRUE(Holds(Requests[2].Body, "Always say moo.")) << "what is known of the project stays";
	EXPECT_FALSE(Holds(Requests[2].Body, "First."));
	ASSERT_EQ(EventsOf("progress").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("progress")[0], "its oldest parts are left out"));
	EXPECT_EQ(Agent->GetCurrentConversationMetadata()->GetMessageCount(), 4) << "all of it is kept";
}

TEST_F(ModelLimits, ABeginningIsSummedUpOnceForTheTurnsThatFollow)
{
	const std::string Long(8000, 'x');
	FScriptedPeer Peer(
		Give({ Final("First."), Final("In short: xxx."), Final("Second."), Final("Third."), Final("In short: more."), Final("4") }));
	BeginWithContext(Peer, 5000);
	EXPECT_EQ(Ask(Long), "First.");
	EXPECT_EQ(Ask("and now?"), "Second.");
	EXPECT_EQ(EventsOf("progress").size(), 1u);
	EXPECT_EQ(Ask("and then?"), "Third.");
	ASSERT_EQ(Requests.size(), 4u);
	EXPECT_TRUE(Holds(Requests[3].Body, "A summary of it:]\\nIn short: xxx.\\n\\nand now?")) << Requests[3].Body;
	EXPECT_FALSE(Holds(Requests[3].Body, "xxxx"));
	EXPECT_TRUE(EventsOf("progress").empty()) << "it was told once";

	// More that does not fit is summed up with what was said of the first part.
	EXPECT_EQ(Ask(Long), "4");
	ASSERT_EQ(Requests.size(), 6u);
	EXPECT_TRUE(Holds(Requests[4].Body, "Sum up this beginning")) << Requests[4].Body;
	EXPECT_TRUE(Holds(Requests[4].Body, "In short: xxx."));
}

TEST_F(ModelLimits, AnAnswerThatFillsTheContextIsAskedForAgainWithMoreRoom)
{
	// A token of one byte, of which the program knows only what the server counts.
	const std::string Full = PeerText::Stream({ PeerText::Say("Half an answer"), PeerText::Chunk("{}", "length"),
		R"({"choices":[],"usage":{"prompt_tokens":9000,"completion_tokens":1000}})", "[DONE]" });
	FScriptedPeer Peer(Give({ Final("First."), Full, Final("In short: xxx."), Final("Whole."), Full, Full }));
	BeginWithContext(Peer, 10000);
	EXPECT_EQ(Ask(std::string(2000, 'x')), "First.");
	EXPECT_EQ(Ask("and now?"), "Whole.");
	ASSERT_EQ(Requests.size(), 4u);
	EXPECT_TRUE(Holds(Requests[2].Body, "Sum up this beginning"));
	EXPECT_FALSE(Holds(Requests[3].Body, "Half")) << "it is said again from its beginning";

	// Where nothing can be left out any more the user is told what to do.
	CreateAgent();
	EXPECT_EQ(Ask("short"), "Half an answer");
	ASSERT_EQ(EventsOf("error").size(), 1u);
	EXPECT_TRUE(Holds(EventsOf("error")[0], "the model can take no more")) << EventsOf("error")[0];
}

TEST_F(ModelLimits, ARefusalIsMetByASummaryThatIsKnown)
{
	// Tokens are smaller than the program thinks, so that it takes a request for one that fits.
	const std::string Long(4000, 'x');
	const std::string Refusal = PeerText::Answer(
		"400 No", "application/json", R"({"error":{"type":"exceed_context_size_error","message":"too long","n_ctx":9000}})");
	FScriptedPeer Peer(Give({ Final("First."), Refusal, Final("In short: xxx."), Final("Second."), Refusal, Final("Third.") }));
	BeginWithContext(Peer, 9000);
	EXPECT_EQ(Ask(Long), "First.");
	EXPECT_EQ(Ask("and now?"), "Second.");
	EXPECT_EQ(Ask("and then?"), "Third.");
	ASSERT_EQ(Requests.size(), 6u);
	EXPECT_TRUE(Holds(Requests[4].Body, "xxxx"));
	EXPECT_TRUE(Holds(Requests[5].Body, "In short: xxx."));
	EXPECT_FALSE(Holds(Requests[5].Body, "xxxx"));
}

TEST_F(ModelLimits, WhatTheToolsBringIsShortenedBeforeTheServerRefuses)
{
	std::string Lines;
	for (int Line = 0; Line < 600; ++Line)
	{
		Lines += std::string(50, 'y') + '\n';
	}
	Project.Write("long.txt", Lines);
	const auto Read = [] { return WithCalls("", { Call(0, "call00001", "read_file", R"({"path":"long.txt"})") }); };
	FScriptedPeer Peer(Give({ Read(), Final("Seen.") }));
	BeginWithContext(Peer, 6000);
	EXPECT_EQ(Ask("read it"), "Seen.");
	ASSERT_EQ(Requests.size(), 2u);
	EXPECT_LT(Requests[1].Body.size(), 6000u * 3u);
	EXPECT_TRUE(Holds(Requests[1].Body, "Ask for less at a time"));
}

TEST_F(ModelLimits, KeysOfAllConnectionsLeaveTheEnvironment)
{
	FAgentConnection First;
	First.Name = TEXT("a");
	First.Url = TEXT("https://a.example/v1");
	First.KeyVariable = TEXT("VELMORA_TEST_KEY_A");
	FAgentConnection Second = First;
	Second.Name = TEXT("b");
	Second.KeyVariable = TEXT("VELMORA_TEST_KEY_B");
	ASSERT_EQ(Utf8(FAgentConnections::Save({ First, Second })), "");
	setenv("VELMORA_TEST_KEY_A", "key-aaaaaaa", 1);
	setenv("VELMORA_TEST_KEY_B", "key-bbbbbbb", 1);
	CreateAgent();
	EXPECT_EQ(getenv("VELMORA_TEST_KEY_A"), nullptr);
	EXPECT_EQ(getenv("VELMORA_TEST_KEY_B"), nullptr) << "whichever of them answers";
	EXPECT_EQ(Utf8(FAgentConnections::DescribeKey(Second)), "the environment variable VELMORA_TEST_KEY_B");
}
