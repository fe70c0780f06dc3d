#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Support/Peer/ScriptedPeer.h"
#include "Wire/ReplyDump.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

using namespace Velmora;
using namespace PeerText;
using WireTests::Dump;

// What servers and what stands before them do beyond what any text about the protocol has.

namespace
{
	const FChatCompletions Dialect;

	FModelReply AskAt(FModelClient& Client)
	{
		FModelRequest Request;
		Request.Model = "m";
		Request.Messages = { { EModelRole::User, "hello", {}, "" } };
		return Client.Ask(Request);
	}

	FModelServer At(const FScriptedPeer& Peer)
	{
		FModelServer Server;
		Server.BaseUrl = Peer.GetUrl();
		Server.Key = "key-0123456789";
		return Server;
	}

	std::string Ask(const std::string& Bytes)
	{
		FScriptedPeer Peer(FScriptedPeer::SendOnce(Bytes));
		FModelClient Client(Dialect, At(Peer));
		return Dump(AskAt(Client));
	}

	/** In chunks of the transfer. */
	std::string Chunked(std::string_view Body, std::string_view Trailer = "", std::string_view MoreHead = "")
	{
		char Length[32];
		std::snprintf(Length, sizeof(Length), "%zx", Body.size());
		return "HTTP/1.1 200 OK\r\n" + std::string(MoreHead) + "Transfer-Encoding: chunked\r\n\r\n" + Length + ";ext=\"a;b\"\r\n" +
			std::string(Body) + "\r\n0\r\n" + std::string(Trailer) + "\r\n";
	}
}

TEST(OddServers, AreUnderstoodOrNamed)
{
	const std::string Mark = "\xEF\xBB\xBF";
	const std::string Good = Events({ Say("Hello"), Chunk("{}", "stop"), "[DONE]" });
	const std::string Body = R"({"choices":[{"index":0,"message":{"content":"Hello"},"finish_reason":"stop"}]})";
	std::string Returns = Good;
	for (char& Byte : Returns)
	{
		Byte = Byte == '\n' ? '\r' : Byte;
	}
	const std::string Early =
		"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLocation: http://x/\r\nContent-Encoding: gzip\r\n\r\n";
	const std::string Call0 = R"({"tool_calls":[{"index":0,"id":"c0","function":{"name":"a","arguments":"{}"}}]})";
	const std::string Call1 = R"({"tool_calls":[{"index":1,"id":"c1","function":{"name":"b","arguments":"{}"}}]})";
	const std::string One = R"({"message":{"content":"one"},"finish_reason":"stop"})";
	const std::string Two = R"({"message":{"content":"two"},"finish_reason":"stop"})";
	const std::tuple<const char*, std::string, const char*> Cases[] = {
		{ "heads that announce the real one", Early + Chunked(Good), "Stop 'Hello'" },
		{ "trailers with headers of their own",
			Chunked(Good, "Content-Encoding: gzip\r\nLocation: http://x/\r\nX-Error: " + std::string(1000, 'x') + "\r\n"), "Stop 'Hello'" },
		{ "line ends of an old system", StreamHead() + Returns, "Stop 'Hello'" },
		{ "a mark of the encoding before a stream", StreamHead() + Mark + Good, "Stop 'Hello'" },
		{ "a mark of the encoding before a body", Answer("200 OK", "application/json", Mark + "\r\n" + Body), "Stop 'Hello'" },
		{ "a mark of the encoding before a refusal", Answer("429 No", "application/json", Mark + R"({"error":{"message":"slow"}})"),
			"Missing '' !RateLimited 'slow'" },
		{ "ids, times to wait, types and comments",
			StreamHead() + "retry: 1\nid: 7\n\n: x\n\n" + "event: completion\nid: 8\nretry: 99999999999999999999\ndata: " + Say("Hello") +
				"\n\nevent: done\ndata: " + Chunk("{}", "stop") + "\n\n",
			"Stop 'Hello'" },
		{ "nothing but comments", StreamHead() + ": working\n\n: working\n\n", "Missing '' !CutShort" },
		{ "an error in a field of its own",
			StreamHead() + Events({ Say("Half") }) + "error: {\"code\":500,\"message\":\"out of memory\"}\n\n",
			"Missing 'Half' !Overloaded 'out of memory'" },
		{ "the second call before the first", StreamHead() + Events({ Chunk(Call1), Chunk(Call0), Chunk("{}", "tool_calls"), "[DONE]" }),
			"Calls '' a#c0{} b#c1{}" },
		{ "arguments before the name",
			StreamHead() +
				Events({ Chunk(R"({"tool_calls":[{"index":0,"function":{"arguments":"{\"x\""}}]})"),
					Chunk(R"({"tool_calls":[{"index":0,"function":{"arguments":":1}","name":"a"},"id":"c9"}]})"), Chunk("{}", "tool_calls"),
					"[DONE]" }),
			R"(Calls '' a#c9{"x":1})" },
		{ "another choice whose number comes last",
			StreamHead() +
				Events({ R"({"choices":[{"delta":)" + Call1 + R"(,"index":1},{"delta":)" + Call0 + R"(,"index":0}]})",
					Chunk("{}", "tool_calls"), "[DONE]" }),
			"Calls '' a#c0{}" },
		{ "two choices without numbers", Answer("200 OK", "application/json", "{\"choices\":[" + One + "," + Two + "]}"), "Stop 'one'" },
		{ "a reason nobody knows", StreamHead() + Events({ Say("Hello"), Chunk("{}", "because"), "[DONE]" }), "Stop 'Hello'" },
		{ "words after the reason", StreamHead() + Events({ Say("Hel"), Chunk("{}", "stop"), Say("lo"), "[DONE]" }), "Stop 'Hello'" },
		{ "figures that are none",
			StreamHead() +
				Events({ Say("Hello"), Chunk("{}", "stop"),
					R"({"choices":[],"usage":{"prompt_tokens":9223372036854775807,"completion_tokens":18446744073709551615}})", "[DONE]" }),
			"Stop 'Hello'" },
		{ "figures with a point, as a text, below zero",
			StreamHead() +
				Events({ Say("Hello"), Chunk("{}", "stop"),
					R"({"usage":{"prompt_tokens":1.5e300,"completion_tokens":"7","prompt_tokens_details":{"cached_tokens":-9}}})",
					"[DONE]" }),
			"Stop 'Hello'" },
		{ "compressed on its way", "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\n\r\n2\r\n\x1f\x8b\r\n0\r\n\r\n",
			"Missing '' !NoModelServer 'it sent compressed data unasked'" },
		{ "compressed twice",
			"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Encoding: identity\r\nContent-Length: 2\r\n\r\n\x1f\x8b",
			"Missing '' !NoModelServer 'it sent compressed data unasked'" },
		{ "compressed, and not called so", StreamHead() + "\x1f\x8b\x08 and more",
			"Missing '' !NoModelServer 'it sent compressed data unasked'" },
		{ "two lengths", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length: 99999\r\n\r\n" + Good, "Stop 'Hello'" },
		{ "a length and chunks", Chunked(Good, "", "Content-Length: 3\r\n"), "Stop 'Hello'" },
		{ "a length that is too small", "HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\n" + Good, "Missing '' !CutShort" },
		{ "a length below zero", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n" + Good, nullptr },
		{ "no head at all", Good, nullptr },
		{ "too large a request, as a page", Answer("413 Too Large", "text/html", "<html><h1>413</h1></html>"), "Missing '' !ContextFull" },
		{ "a parameter it does not know",
			Answer("400 Bad", "application/json", R"({"error":{"message":"Unrecognized request argument supplied: top_k"}})"),
			"Missing '' !BadRequest 'Unrecognized request argument supplied: top_k'" },
		{ "a name and a password wanted", Answer("401 No", "text/plain", "", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
			"Missing '' !Refused" },
		{ "another protocol wanted", "HTTP/1.1 426 Upgrade Required\r\nUpgrade: h2c\r\nConnection: Upgrade\r\nContent-Length: 0\r\n\r\n",
			"Missing '' !BadRequest" },
		{ "a status that is none", "HTTP/1.1 999 Hm\r\nContent-Length: 0\r\n\r\n", nullptr },
		{ "nothing where the choices are",
			StreamHead() + Events({ R"({"choices":{"delta":{"content":"x"}}})", R"({"choices":[null,7,[]]})" }), "Missing '' !CutShort" },
	};
	for (const auto& [Why, Bytes, Expected] : Cases)
	{
		const std::string Reply = Ask(Bytes);
		if (Expected)
		{
			EXPECT_EQ(Reply, Expected) << Why;
			continue;
		}
		EXPECT_NE(Reply.find(" !"), std::string::npos) << Why << ": " << Reply;
		EXPECT_EQ(Reply.find("Hello"), std::string::npos) << Why << ": " << Reply;
	}
}

TEST(OddServers, NothingOfOneAnswerGetsIntoTheNext)
{
	// Two answers to one question, a cookie, and a promise to be elsewhere from now on.
	std::mutex Mutex;
	std::string Heads;
	const std::string First = Answer("200 OK", "application/json", R"({"choices":[{"message":{"content":"one"},"finish_reason":"stop"}]})",
		"Set-Cookie: a=b\r\nAlt-Svc: h2=\"127.0.0.1:1\"\r\nStrict-Transport-Security: max-age=99999\r\n");
	const std::string Extra =
		Answer("200 OK", "application/json", R"({"choices":[{"message":{"content":"evil"},"finish_reason":"stop"}]})");
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[&](const FPeerConnection::FRequest& Request, int)
		{
			const std::scoped_lock Lock(Mutex);
			Heads += Request.Head;
			return First + Extra;
		}));
	FModelClient Client(Dialect, At(Peer));
	for (int Number = 0; Number < 3; ++Number)
	{
		EXPECT_EQ(Dump(AskAt(Client)), "Stop 'one'") << Number;
	}
	EXPECT_EQ(Heads.find("Cookie"), std::string::npos);
}

TEST(OddServers, ARedirectTakesTheKeyNowhere)
{
	FScriptedPeer Other(FScriptedPeer::AnswerEach([](const FPeerConnection::FRequest&, int) { return std::string(); }));
	for (const char* Status : { "301 Moved", "302 Found", "303 See Other", "307 Temporary", "308 Permanent" })
	{
		FScriptedPeer Peer(FScriptedPeer::SendOnce("HTTP/1.1 " + std::string(Status) + "\r\nLocation: " + Other.GetUrl() +
			"\r\nRefresh: 0; url=" + Other.GetUrl() + "\r\nContent-Length: 0\r\n\r\n"));
		FModelClient Client(Dialect, At(Peer));
		EXPECT_EQ(AskAt(Client).Problem.Fault, EModelFault::Redirected) << Status;
	}
	EXPECT_EQ(Other.GetConnectionCount(), 0);
}

TEST(OddServers, AStreamOfTinyPiecesComesTogether)
{
	// One byte a packet, and a chunk of the transfer for each.
	const std::string Good = Events({ Say("H\xC3\xA4llo"), Call(0, "c1", "a", "{\"x\":1}"), Chunk("{}", "tool_calls"), "[DONE]" });
	FScriptedPeer Peer(
		[&Good](FPeerConnection& Connection)
		{
			FPeerConnection::FRequest Request;
			Connection.ReadRequest(Request);
			Connection.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
			for (const char Byte : Good)
			{
				Connection.Send("1\r\n" + std::string(1, Byte) + "\r\n");
			}
			Connection.Send("0\r\n\r\n");
		});
	FModelClient Client(Dialect, At(Peer));
	EXPECT_EQ(Dump(AskAt(Client)), "Calls 'H\xC3\xA4llo' a#c1{\"x\":1}");
}
