#include "Host/AgentActivity.h"
#include "ModelTurnFixture.h"

using namespace PeerText;
using Velmora::EConversationMode;
using Velmora::EConversationState;
using Velmora::FAgentActivity;
using Velmora::FAgentConnection;
using Velmora::FAgentConnections;
using Velmora::FConnectionReport;

namespace
{
	/** A server whose list tells no size. */
	class ModelSizes : public FModelTurnTest
	{
	protected:
		void SetUp() override
		{
			FModelTurnTest::SetUp();
			FAgentActivity::Clear();
		}

		FScriptedPeer::FScript Serve(std::string InProps)
		{
			Props = std::move(InProps);
			return [this](FPeerConnection& Connection)
			{
				FPeerConnection::FRequest Request;
				while (Connection.ReadRequest(Request))
				{
					std::string Text;
					{
						const std::scoped_lock Lock(Mutex);
						Asked += Request.Path + ' ';
						Text = Request.Path == "/v1/models"			 ? Answer("200 OK", "application/json", R"({"data":[{"id":"m"}]})")
							: Request.Path == "/v1/chat/completions" ? Final("ok")
							: Request.Path == "/props"				 ? Props
																	 : Answer("404 No", "text/plain", "");
					}
					Connection.Send(Text);
					if (Text.empty())
					{
						bWasClosed = Connection.WaitForClose();
						return;
					}
				}
			};
		}

		/** Since the last time. */
		std::string TakeAsked()
		{
			const std::scoped_lock Lock(Mutex);
			return std::exchange(Asked, std::string());
		}

		int64 LastSize()
		{
			PumpUntilQuiet();
			return FAgentActivity::GetEntries().Num() > 0 ? FAgentActivity::GetEntries().Last()->ContextTokens : -1;
		}

		static FAgentConnection Connect(const FScriptedPeer& Peer, const TCHAR* Model = TEXT("m"))
		{
			FAgentConnection Connection;
			Connection.Name = TEXT("peer");
			Connection.Url = Text(Peer.GetUrl());
			Connection.Model = Model;
			FAgentConnections::Select(Connection);
			return Connection;
		}

		std::string Props;
		std::string Asked;
		std::atomic<bool> bWasClosed = false;
	};

	const std::string Told = Answer("200 OK", "application/json", R"({"default_generation_settings":{"n_ctx":32768}})");
}

TEST_F(ModelSizes, AreAskedForWithTheFirstMessageAndOnce)
{
	for (const TCHAR* Model : { TEXT("m"), TEXT("") })
	{
		FScriptedPeer Peer(Serve(Told), true);
		Connect(Peer, Model);
		CreateAgent();
		PumpUntilQuiet();
		EXPECT_EQ(Peer.GetConnectionCount(), 0) << "nobody is asked before there is something to send";
		EXPECT_EQ(Ask("go"), "ok");
		EXPECT_EQ(TakeAsked(), "/v1/models /props /v1/chat/completions ");
		EXPECT_EQ(LastSize(), 32768);
		EXPECT_EQ(Ask("again"), "ok");
		Agent->StartConversation(EConversationMode::Code);
		EXPECT_EQ(Ask("and anew"), "ok");
		EXPECT_EQ(TakeAsked().find("/props"), std::string::npos);
		EXPECT_EQ(LastSize(), 32768);
	}
}

TEST_F(ModelSizes, AreNotAskedForWhereTheConnectionHasThem)
{
	FScriptedPeer Peer(Serve(Told), true);
	FAgentConnection Connection = Connect(Peer);
	struct FCase
	{
		int32 Tokens;
		const TCHAR* Options;
		int64 Size;
	};
	for (const FCase& Case : { FCase{ 30000, TEXT("{\"num_ctx\":20480}"), 30000 }, FCase{ 0, TEXT("{\"num_ctx\":20480}"), 20480 },
			 FCase{ 0, TEXT("{\"options\":{\"num_ctx\":10240}}"), 10240 } })
	{
		Connection.ContextTokens = Case.Tokens;
		Connection.Options = Case.Options;
		FAgentConnections::Select(Connection);
		EXPECT_EQ(Ask("go"), "ok");
		EXPECT_EQ(TakeAsked(), "/v1/chat/completions ");
		EXPECT_EQ(LastSize(), Case.Size);
	}
}

TEST_F(ModelSizes, AreNoReasonToFail)
{
	for (const std::string& Bad : { Answer("500 No", "text/html", "<html>"), Answer("200 OK", "application/json", "{\"default_"),
			 std::string("HTTP/1.1 200 OK\r\nContent-Length: 9\r\nConnection: close\r\n\r\n{") })
	{
		SCOPED_TRACE(Bad);
		FScriptedPeer Peer(Serve(Bad), true);
		Connect(Peer);
		Events.clear();
		EXPECT_EQ(Ask("go"), "ok");
		EXPECT_EQ(LastSize(), 0);
		TakeAsked();
		EXPECT_EQ(Ask("again"), "ok");
		EXPECT_EQ(TakeAsked(), "/v1/chat/completions ") << "it was asked once";
		EXPECT_TRUE(EventsOf("error").empty() && EventsOf("progress").empty()) << "nobody is told";
	}
}

TEST_F(ModelSizes, AStopEndsTheQuestionAndLeavesItOpen)
{
	FScriptedPeer Peer(Serve(""), true);
	Connect(Peer);
	ASSERT_TRUE(Agent->SendMessage(TEXT("go"), {}));
	ASSERT_TRUE(PumpUntil(
		[this]
		{
			const std::scoped_lock Lock(Mutex);
			return Holds(Asked, "/props");
		}));
	Agent->CancelConversation();
	EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
	EXPECT_TRUE(PumpUntil([this] { return bWasClosed.load(); }));
	PumpUntilQuiet();
	{
		const std::scoped_lock Lock(Mutex);
		Props = Told;
	}
	EXPECT_EQ(Ask("and now?"), "ok");
	EXPECT_EQ(LastSize(), 32768);
}

TEST_F(ModelSizes, ATestTellsWhatItFoundAndTheNextMessageKnowsIt)
{
	FScriptedPeer Peer(Serve(Told), true);
	const FAgentConnection Connection = Connect(Peer);
	TOptional<FConnectionReport> Report;
	FAgentConnections::Test(Connection, [&Report](const FConnectionReport& Found) { Report = Found; });
	ASSERT_TRUE(PumpUntil([&Report] { return Report.IsSet(); }));
	EXPECT_TRUE(Holds(Utf8(Report->Sentence), "m has room for 32,768 tokens")) << Utf8(Report->Sentence);
	EXPECT_EQ(TakeAsked(), "/v1/models /v1/chat/completions /props ");
	EXPECT_EQ(Ask("go"), "ok");
	EXPECT_EQ(TakeAsked(), "/v1/chat/completions ");
	EXPECT_EQ(LastSize(), 32768);
}
