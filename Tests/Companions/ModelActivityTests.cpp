#include "Model/ActivityFeed.h"
#include "Host/AgentActivity.h"
#include "Host/AgentPermissions.h"
#include "ModelTurnFixture.h"

#include <future>
#include <sys/stat.h>

using namespace PeerText;
using Velmora::EAgentActivityKind;
using Velmora::FAgentActivity;
using Velmora::FAgentActivityEntry;
using Velmora::FAgentConnection;
using Velmora::FAgentConnections;
using Velmora::FAgentPermission;
using Velmora::FAgentPermissions;
using Velmora::FConnectionReport;

namespace
{
	class ModelActivity : public FModelTurnTest
	{
	protected:
		void SetUp() override
		{
			FModelTurnTest::SetUp();
			FAgentActivity::Clear();
		}
		void TearDown() override
		{
			FAgentActivity::SetListener(nullptr);
			FModelTurnTest::TearDown();
		}

		static std::vector<std::string> Titles()
		{
			std::vector<std::string> All;
			for (const TSharedRef<const FAgentActivityEntry>& Entry : FAgentActivity::GetEntries())
			{
				All.push_back(Utf8(Entry->Title));
			}
			return All;
		}
	};

	/** The user's configuration folder is one of the test's. */
	class ModelConnections : public FModelConfigTest
	{
	protected:
		static FAgentConnection Make(const TCHAR* Name, const FString& Url)
		{
			FAgentConnection Connection;
			Connection.Name = Name;
			Connection.Url = Url;
			return Connection;
		}

		FConnectionReport Test(const FAgentConnection& Connection)
		{
			TOptional<FConnectionReport> Report;
			FAgentConnections::Test(Connection, [&Report](const FConnectionReport& Found) { Report = Found; });
			EXPECT_TRUE(PumpUntil([&Report] { return Report.IsSet(); }));
			return Report.IsSet() ? Report.GetValue() : FConnectionReport();
		}
	};
}

TEST_F(ModelActivity, ShowsWhatWasSentAndWhatCame)
{
	Project.Write("a.md", "alpha\n");
	const std::string Usage =
		R"({"choices":[],"usage":{"prompt_tokens":900,"completion_tokens":40,"prompt_tokens_details":{"cached_tokens":800}}})";
	FScriptedPeer Peer(Give({ WithCalls("Let me look.", { Call(0, "call00001", "read_file", R"({"path":"a.md"})") }),
		Stream({ Chunk(R"({"reasoning_content":"Hm."})"), Say("It says "), Say("alpha."), Chunk("{}", "stop"), Usage, "[DONE]" }) }));
	FAgentConnection Connection;
	Connection.Name = TEXT("peer");
	Connection.Url = Text(Peer.GetUrl());
	Connection.Model = TEXT("m");
	Connection.ContextTokens = 1000;
	Connection.PromptPrice = 1000.0;
	Connection.CompletionPrice = 2000.0;
	Connection.KeyVariable = TEXT("VELMORA_TEST_KEY");
	setenv("VELMORA_TEST_KEY", "sesame-open-99", 1);
	FAgentConnections::Select(Connection);
	int Batches = 0;
	FAgentActivity::SetListener([&Batches] { ++Batches; });
	EXPECT_EQ(Ask("what is in a.md? my key is sesame-open-99"), "It says alpha.");
	PumpUntilQuiet();

	ASSERT_EQ(Titles(), (std::vector<std::string>{ "peer, m", "read_file", "peer, m" }));
	EXPECT_GT(Batches, 0);
	const FAgentActivityEntry& First = *FAgentActivity::GetEntries()[0];
	EXPECT_EQ(Utf8(First.Text), "Let me look.");
	EXPECT_EQ(Utf8(First.Outcome), "Ended with 1 call.");
	EXPECT_EQ(Utf8(First.Input).find("sesame"), std::string::npos) << "the key is nowhere";
	EXPECT_TRUE(Holds(Utf8(First.Input), "what is in a.md?"));
	const FAgentActivityEntry& Tool = *FAgentActivity::GetEntries()[1];
	EXPECT_EQ(Utf8(Tool.Input), R"({"path":"a.md"})");
	EXPECT_TRUE(Holds(Utf8(Tool.Text), "alpha"));
	EXPECT_TRUE(Tool.bIsDone && Tool.bSuccess);
	const FAgentActivityEntry& Last = *FAgentActivity::GetEntries()[2];
	EXPECT_EQ(Utf8(Last.Thinking), "Hm.");
	EXPECT_EQ(Last.PieceCount, 3);
	EXPECT_EQ(Last.CachedTokens, 800);
	int64 Used = 0;
	int64 Left = 0;
	EXPECT_TRUE(Last.GetContext(Used, Left));
	EXPECT_EQ(Used, 940);
	EXPECT_EQ(Left, 60);
	EXPECT_DOUBLE_EQ(Last.Cost, 0.98);
	EXPECT_GE(Last.FirstByteSeconds, 0.0);
	EXPECT_FALSE(FAgentActivity::GetTurnStatus().bIsRunning);
	EXPECT_TRUE(Holds(Utf8(Last.Text), "It says alpha."));
	FAgentActivity::Clear();
	EXPECT_TRUE(Titles().empty());
}

TEST_F(ModelActivity, LivePiecesComeBeforeTheEndAndCharactersStayWhole)
{
	std::promise<void> Goes;
	std::future<void> Go = Goes.get_future();
	FScriptedPeer Peer(
		[&Go](FPeerConnection& Connection)
		{
			FPeerConnection::FRequest Request;
			if (!Connection.ReadRequest(Request))
			{
				return;
			}
			Connection.Send(StreamHead() + PeerText::Events({ Chunk(R"({"reasoning_content":"Sn"})"), Say("Caf\xC3\xA9 ") }));
			Go.wait();
			Connection.Send(PeerText::Events({ Say("ok"), Chunk("{}", "stop"), "[DONE]" }));
		});
	FAgentConnection Connection;
	Connection.Name = TEXT("peer");
	Connection.Url = Text(Peer.GetUrl());
	Connection.Model = TEXT("m");
	Connection.ContextTokens = 4096;
	FAgentConnections::Select(Connection);
	ASSERT_TRUE(Agent->SendMessage(TEXT("go"), {}));
	const auto Live = [] { return FAgentActivity::GetEntries().Num() == 0 ? std::string() : Utf8(FAgentActivity::GetEntries()[0]->Text); };
	EXPECT_TRUE(PumpUntil([&] { return Live() == "Caf\xC3\xA9 "; }));
	EXPECT_FALSE(FAgentActivity::GetEntries()[0]->bIsDone);
	EXPECT_TRUE(FAgentActivity::GetTurnStatus().bIsRunning);
	EXPECT_EQ(FAgentActivity::GetTurnStatus().Tokens, 2);
	EXPECT_EQ(Utf8(FAgentActivity::GetTurnStatus().Agent), "peer, m");
	Goes.set_value();
	EXPECT_TRUE(PumpUntil([this] { return HasTurnEnded(); }));
	EXPECT_EQ(Live(), "Caf\xC3\xA9 ok");
}

TEST_F(ModelActivity, TheServerIsAskedOnceHowMuchItsModelTakes)
{
	struct FCase
	{
		const char* List;
		int64 Tokens;
	};
	for (const FCase& Case : { FCase{ R"({"data":[{"id":"x","meta":{"n_ctx":512}},{"id":"m","meta":{"n_ctx":8192}}]})", 8192 },
			 FCase{ R"({"data":[{"id":"file.gguf","meta":{"n_ctx":4096}}]})", 4096 },
			 FCase{ R"({"data":[{"id":"x","max_model_len":512},{"id":"y"}]})", 0 }, FCase{ "<html>", 0 } })
	{
		SCOPED_TRACE(Case.List);
		FAgentActivity::Clear();
		ListCount = 0;
		ModelList = Answer("200 OK", "application/json", Case.List);
		const std::string Usage = R"({"choices":[],"usage":{"prompt_tokens":900,"completion_tokens":40}})";
		FScriptedPeer Peer(Give({ Stream({ Say("ok"), Chunk("{}", "stop"), Usage, "[DONE]" }) }));
		Use(Peer);
		EXPECT_EQ(Ask("go"), "ok");
		EXPECT_EQ(Ask("again"), "ok");
		PumpUntilQuiet();
		ASSERT_EQ(FAgentActivity::GetEntries().Num(), 2);
		EXPECT_EQ(ListCount, 1);
		for (const TSharedRef<const FAgentActivityEntry>& Entry : FAgentActivity::GetEntries())
		{
			int64 Used = 0;
			int64 Left = 0;
			EXPECT_EQ(Entry->GetContext(Used, Left), Case.Tokens > 0);
			EXPECT_EQ(Entry->ContextTokens, Case.Tokens);
		}
	}
}

TEST_F(ModelActivity, IsBounded)
{
	Velmora::FActivityFeed& Feed = Velmora::FActivityFeed::Get();
	const uint32 Endless = Feed.Open({});
	for (int Piece = 0; Piece < 100; ++Piece)
	{
		Feed.AddPiece(Endless, false, std::string(32 * 1024, 'x'));
		if (Piece % 10 == 0)
		{
			PumpUntilQuiet();
		}
	}
	Feed.AddPiece(Endless, false, "the end");
	PumpUntilQuiet();
	EXPECT_LE(FAgentActivity::GetEntries()[0]->Text.Len(), 2 * FAgentActivity::MaxTextLength + 64);
	EXPECT_TRUE(FAgentActivity::GetEntries()[0]->Text.EndsWith(TEXT("the end")));

	// More than is kept between two frames: no more of it is taken over, and characters stay whole.
	const uint32 Fast = Feed.Open({});
	std::string Letters;
	while (Letters.size() < 64 * 1024)
	{
		Letters += "\u00e4";
	}
	for (int Piece = 0; Piece < 20; ++Piece)
	{
		Feed.AddPiece(Fast, false, Letters);
	}
	// The cut falls into the middle of one.
	Feed.AddPiece(Fast, false, "x");
	PumpUntilQuiet();
	const std::string Kept = Utf8(FAgentActivity::GetEntries().Last()->Text);
	EXPECT_LE(Kept.size(), static_cast<size_t>(FAgentActivity::MaxTextLength) + 64);
	EXPECT_EQ(Kept.substr(0, 10), "[\u2026] \u00e4\u00e4");
	EXPECT_EQ(Kept.find("\ufffd"), std::string::npos);

	for (int Round = 0; Round < FAgentActivity::MaxEntries + 10; ++Round)
	{
		FAgentActivityEntry Entry;
		Entry.Input = FString::ChrN(Round < 12 ? 3 * 1024 * 1024 : 10, TEXT('x'));
		Feed.Open(MoveTemp(Entry));
		if (Round % 8 == 0)
		{
			PumpUntilQuiet();
		}
	}
	int64 Total = 0;
	for (const TSharedRef<const FAgentActivityEntry>& Entry : FAgentActivity::GetEntries())
	{
		Total += Entry->Input.Len() + Entry->Text.Len();
	}
	EXPECT_LE(Total, FAgentActivity::MaxTotalLength);
	PumpUntilQuiet();
	EXPECT_EQ(FAgentActivity::GetEntries().Num(), FAgentActivity::MaxEntries);
}

TEST_F(ModelConnections, AreSavedForTheUserAlone)
{
	FAgentConnection Local = Make(TEXT("local"), TEXT("http://127.0.0.1:8080/v1"));
	Local.MaxRounds = 7;
	Local.MaxDayTokens = int64(5) << 32;
	Local.PromptPrice = 0.25;
	Local.Options = TEXT("{\"temperature\":0.5}");
	EXPECT_EQ(Utf8(FAgentConnections::Save({ Local, Make(TEXT("far"), TEXT("https://a.example/v1")) })), "");
	struct stat Info = {};
	ASSERT_EQ(stat(Project.PathOf("config/velmora-ui/connections.json").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0600u);
	EXPECT_EQ(Utf8(FAgentConnections::SetDefault(TEXT("far"))), "");
	EXPECT_EQ(Utf8(FAgentConnections::GetDefault()), "far");
	FString Problem;
	const TArray<FAgentConnection> Known = FAgentConnections::List(Problem);
	ASSERT_EQ(Known.Num(), 2);
	EXPECT_EQ(Known[0].MaxRounds, 7);
	EXPECT_EQ(Known[0].MaxDayTokens, int64(5) << 32);
	EXPECT_DOUBLE_EQ(Known[0].PromptPrice, 0.25);
	EXPECT_EQ(Utf8(Known[0].Options), "{\"temperature\":0.5}");
	EXPECT_EQ(Known[1].MaxRounds, 50);

	EXPECT_EQ(Utf8(FAgentConnections::Save({ Known[0] })), "");
	EXPECT_EQ(Utf8(FAgentConnections::GetDefault()), "") << "it is gone";
	EXPECT_TRUE(Holds(Utf8(FAgentConnections::SetDefault(TEXT("far"))), "There is no connection"));
	EXPECT_TRUE(Holds(Utf8(FAgentConnections::Save({ Known[0], Known[0] })), "Two connections"));
	EXPECT_TRUE(Holds(Utf8(FAgentConnections::Save({ Make(TEXT("x"), TEXT("ftp://a")) })), "http"));

	Project.Write("config/velmora-ui/connections.json", "{ my own work");
	EXPECT_TRUE(Holds(Utf8(FAgentConnections::Save({ Local })), "is no list")) << "what cannot be read is not overwritten";
}

TEST_F(ModelConnections, AKeyBelongsToItsAddress)
{
	const FAgentConnection Here = Make(TEXT("a"), TEXT("https://a.example/v1"));
	EXPECT_EQ(Utf8(FAgentConnections::DescribeKey(Here)), "");
	EXPECT_EQ(Utf8(FAgentConnections::StoreKey(Here, TEXT(" key-one-1 "))), "");
	EXPECT_NE(Utf8(FAgentConnections::DescribeKey(Make(TEXT("b"), TEXT("https://a.example/v2")))), "");
	for (const TCHAR* Other : { TEXT("http://a.example/v1"), TEXT("https://b.example/v1"), TEXT("https://a.example:444/v1") })
	{
		EXPECT_EQ(Utf8(FAgentConnections::DescribeKey(Make(TEXT("c"), Other))), "") << Utf8(Other);
	}
	EXPECT_EQ(Utf8(FAgentConnections::StoreKey(Here, FString())), "");
	EXPECT_EQ(Utf8(FAgentConnections::DescribeKey(Here)), "");
}

TEST_F(ModelConnections, ATestSaysWhatItFound)
{
	const std::string List = Answer("200 OK", "application/json", R"({"data":[{"id":"m","max_model_len":4096}]})");
	const std::string NoTools = Answer("400 No", "application/json", R"({"error":{"message":"m does not support tools"}})");
	const std::tuple<std::vector<std::string>, bool, FConnectionReport::ETools, const char*> Cases[] = {
		{ { List, WithCalls("", { Call(0, "c", "ping", "{}") }) }, true, FConnectionReport::ETools::Yes,
			"The server lists 1 model; m has room for 4,096 tokens, uses tools and began to answer after" },
		{ { List, NoTools, Final("ok") }, true, FConnectionReport::ETools::No, "cannot use tools" },
		{ { List, Final("ok") }, true, FConnectionReport::ETools::Unknown, "did not call the tool" },
		{ { Answer("401 No", "application/json", R"({"error":"bad key"})") }, false, FConnectionReport::ETools::Unknown,
			"refused the key" },
	};
	for (const auto& [Answers, bSuccess, Tools, Words] : Cases)
	{
		ModelList.clear();
		FScriptedPeer Peer(Give(Answers));
		const FConnectionReport Report = Test(Make(TEXT("peer"), Text(Peer.GetUrl())));
		EXPECT_EQ(Report.bSuccess, bSuccess) << Utf8(Report.Sentence);
		EXPECT_EQ(Report.Tools, Tools);
		EXPECT_TRUE(Holds(Utf8(Report.Sentence), Words)) << Utf8(Report.Sentence);
	}
	EXPECT_TRUE(Holds(Utf8(Test(Make(TEXT("far"), TEXT("http://192.0.2.1/v1"))).Sentence), "not encrypted"));
}

TEST_F(ModelConnections, RulesAreListedAndRemoved)
{
	const FAgentPermission Allow{ true, TEXT("run_command"), TEXT("make ") };
	const FAgentPermission Deny{ false, TEXT("edit_file"), TEXT("secret/") };
	EXPECT_EQ(Utf8(FAgentPermissions::Add(Allow)), "");
	EXPECT_EQ(Utf8(FAgentPermissions::Add(Deny)), "");
	TArray<FAgentPermission> Listed = FAgentPermissions::List();
	ASSERT_EQ(Listed.Num(), 2);
	EXPECT_TRUE(Listed[0] == Allow && Listed[1] == Deny);
	EXPECT_EQ(Utf8(FAgentPermissions::Remove(Allow)), "");
	Listed = FAgentPermissions::List();
	ASSERT_EQ(Listed.Num(), 1);
	EXPECT_TRUE(Listed[0] == Deny);
}
