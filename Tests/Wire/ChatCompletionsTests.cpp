#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Support/Peer/ScriptedPeer.h"
#include "Wire/ReplyDump.h"

#include <gtest/gtest.h>

#include <rapidjson/document.h>

#include <ctime>
#include <string>
#include <vector>

using namespace Velmora;
using namespace PeerText;
using WireTests::Dump;

namespace
{
	const FChatCompletions Dialect;
	constexpr const char* Key = "key-0123456789";

	/** Reads a body of events cut at one place, without any server. */
	std::string ReadStream(std::string_view Bytes, size_t Split)
	{
		FReplyBuilder Builder;
		const std::unique_ptr<IReplyReader> Reader = Dialect.MakeReader(Builder);
		FEventStreamReader Events([&Reader](const FServerEvent& Event) { return Reader->OnEvent(Event); });
		Events.Push(Bytes.substr(0, Split));
		Events.Push(Bytes.substr(Split));
		Events.End();
		return Dump(Builder.Take(Key));
	}

	std::string ReadStream(const std::vector<std::string>& Datas)
	{
		const std::string Bytes = Events(Datas);
		return ReadStream(Bytes, Bytes.size());
	}

	/** What comes of a server that does this with each request. */
	std::string Ask(FScriptedPeer::FScript Script, const FHttpLimits& Limits = FHttpLimits(), FModelReply* OutReply = nullptr)
	{
		FScriptedPeer Peer(std::move(Script));
		FModelServer Server;
		Server.BaseUrl = Peer.GetUrl();
		Server.Key = Key;
		Server.Limits = Limits;
		FModelClient Client(Dialect, Server);
		FModelRequest Request;
		Request.Model = "m";
		Request.Messages = { { EModelRole::User, "hello", {}, "" } };
		FModelReply Reply = Client.Ask(Request);
		const std::string Text = Dump(Reply);
		if (OutReply)
		{
			*OutReply = std::move(Reply);
		}
		return Text;
	}

	std::string Json(std::string_view Status, std::string_view Body, std::string_view MoreHead = "")
	{
		return Answer(Status, "application/json", Body, MoreHead);
	}
}

TEST(ChatStream, WhatServersSendComesTogetherWhereverItIsCut)
{
	const std::string Done = "[DONE]";
	const std::tuple<const char*, std::vector<std::string>, const char*> Cases[] = {
		{ "text in pieces, the first of them null",
			{ Chunk(R"({"role":"assistant","content":null})"), Say("Hel"), Say("lo"), Chunk("{}", "stop"), Done }, "Stop 'Hello'" },
		{ "figures in a chunk without choices",
			{ Say("a"), Chunk("{}", "stop"),

				R"({"choices":[],"usage":{"prompt_tokens":47,"completion_tokens":12,"total_tokens":59,)"
				R"("prompt_tokens_details":{"cached_tokens":3}}})",
				Done },
			"Stop 'a' 47+12 tokens" },
		{ "null where an object is expected",
			{ R"({"choices":null,"usage":null,"error":null})", R"({"choices":[{"index":0,"delta":null,"finish_reason":null}]})",
				R"({"choices":[{"index":0,"delta":{"tool_calls":null,"content":"a"},"logprobs":{"content":[{"token":"x"}]}}]})",
				Chunk("{}", "stop"), Done },
			"Stop 'a'" },
		{ "a call in pieces",
			{ Chunk(R"({"tool_calls":[{"index":0,"id":"c1","type":"function","function":{"name":"read_file","arguments":"{"}}]})"),
				Chunk(R"({"tool_calls":[{"index":0,"function":{"arguments":"\"path\":"}}]})"),
				Chunk(R"({"tool_calls":[{"index":0,"function":{"arguments":"\"a.md\"}"}}]})"), Chunk("{}", "tool_calls"), Done },
			R"(Calls '' read_file#c1{"path":"a.md"})" },
		{ "parallel calls, interleaved",
			{ Call(0, "c1", "a", "{\"x\":"), Call(1, "c2", "b", "{\"y\":"),
				Chunk(R"({"tool_calls":[{"index":0,"function":{"arguments":"1}"}},{"index":1,"function":{"arguments":"2}"}}]})"),
				Chunk("{}", "tool_calls"), Done },
			R"(Calls '' a#c1{"x":1} b#c2{"y":2})" },
		{ "every call has the number 0", { Call(0, "c1", "a", "{}"), Call(0, "c2", "b", "{}"), Chunk("{}", "tool_calls"), Done },
			"Calls '' a#c1{} b#c2{}" },
		{ "no call has a number",
			{ Chunk(R"({"tool_calls":[{"id":"c1","function":{"name":"a","arguments":"{\"x\""}}]})"),
				Chunk(R"({"tool_calls":[{"function":{"arguments":":1}"}}]})"),
				Chunk(R"({"tool_calls":[{"id":"c2","function":{"name":"b","arguments":"{}"}}]})"), Chunk("{}", "stop"), Done },
			R"(Stop '' a#c1{"x":1} b#c2{})" },
		{ "neither number nor id",
			{ Chunk(R"({"tool_calls":[{"function":{"name":"a","arguments":"{}"}},{"function":{"name":"a","arguments":"{}"}}]})"),
				Chunk("{}", "stop"), Done },
			"Stop '' a#call_1{} a#call_2{}" },
		{ "the same id twice", { Call(0, "c", "a", "{}"), Call(1, "c", "b", "{}"), Chunk("{}", "tool_calls"), Done },
			"Calls '' a#c{} b#call_1{}" },
		{ "name and id again with each piece", { Call(0, "c1", "a", "{\"x\""), Call(0, "c1", "a", ":1}"), Chunk("{}", "tool_calls"), Done },
			R"(Calls '' a#c1{"x":1})" },
		{ "arguments as an object",
			{ Chunk(

				  R"({"tool_calls":[{"index":0,"id":"c1","function":{"name":"a","arguments":{"x":[1,2.5,true,null],)"
				  R"("y":{"z":"q\"q"}}}}]})"),
				Chunk("{}", "tool_calls"), Done },
			R"(Calls '' a#c1{"x":[1,2.5,true,null],"y":{"z":"q\"q"}})" },
		{ "a large number in them",
			{ Chunk(R"({"tool_calls":[{"index":0,"id":"c1","function":{"name":"a","arguments":{"x":18446744073709551615}}}]})"), Done },
			R"(Missing '' a#c1{"x":18446744073709551615})" },
		{ "no arguments",
			{ Chunk(R"({"tool_calls":[{"index":0,"id":"c1","function":{"name":"a","arguments":null}}]})"), Chunk("{}", "tool_calls"),
				Done },
			"Calls '' a#c1{}" },
		{ "the old form of a call",
			{ Chunk(R"({"function_call":{"name":"a","arguments":"{\"x\""}})"), Chunk(R"({"function_call":{"arguments":":1}"}})"),
				Chunk("{}", "function_call"), Done },
			R"(Calls '' a#call_1{"x":1})" },
		{ "a call cut by length", { Call(0, "c1", "a", "{\"x\":"), Chunk("{}", "length"), Done }, R"(Length '' a#c1{"x":)" },
		{ "calls that vanish: the reason says stop", { Say("Let me look."), Chunk("{}", "stop"), Done }, "Stop 'Let me look.'" },
		{ "thinking beside the answer",
			{ Chunk(R"({"reasoning_content":"hm","content":null})"), Chunk(R"({"reasoning":"!"})"), Say("Yes"), Chunk("{}", "stop"), Done },
			"Stop 'Yes' think 'hm!'" },
		{ "thinking between marks that are cut",
			{ Say("\n<th"), Say("ink>so"), Say(" so</thi"), Say("nk>\n\nYes"), Chunk("{}", "stop"), Done }, "Stop 'Yes' think 'so so'" },
		{ "what only looks like a mark", { Say("<thi"), Say("s> is no thought <think>x</think>"), Chunk("{}", "stop"), Done },
			"Stop '<this> is no thought <think>x</think>'" },
		{ "thinking that does not end", { Say("<think>so </th"), Chunk("{}", "length"), Done }, "Length '' think 'so </th'" },
		{ "content in parts",
			{ Chunk(R"({"content":[{"type":"text","text":"a"},"b",{"type":"text","text":"c"}]})"), Chunk("{}", "stop"), Done },
			"Stop 'abc'" },
		{ "only the first choice counts",
			{ R"({"choices":[{"index":1,"delta":{"content":"no"}},{"index":0,"delta":{"content":"yes"},)"
			  R"("finish_reason":"stop"}]})",
				Done },
			"Stop 'yes'" },
		{ "an error in the middle",
			{ Say("Half"), R"({"error":{"message":"Rate limit","type":"rate_limit_error","code":"rate_limit_exceeded"}})" },
			"Missing 'Half' !RateLimited 'Rate limit'" },
		{ "an error as a text", { R"({"error":"out of memory","choices":[]})" }, "Missing '' !BadAnswer 'out of memory'" },
		{ "an error with a status as its code", { R"({"error":{"message":"busy","code":503}})" }, "Missing '' !Overloaded 'busy'" },
		{ "a chunk that is no JSON", { Say("Half"), "{\"choices\":[{", Say("more") },
			"Missing 'Half' !BadAnswer 'a part of the stream is no JSON object'" },
		{ "a chunk that is another thing", { "[1,2]" }, "Missing '' !BadAnswer 'a part of the stream is no JSON object'" },
		{ "numbers of other languages",
			{ R"({"choices":[{"index":0,"delta":{"content":"a"},"logprobs":NaN}]})", Chunk("{}", "stop"), Done }, "Stop 'a'" },
		{ "bytes that are no text, and a character cut between two chunks",
			{ Chunk("{\"content\":\"a\xFF"
					"b\xC3\"}"),
				Chunk("{\"content\":\"\xA4\"}"), Chunk("{}", "stop"), Done },
			"Stop 'a\xEF\xBF\xBD"
			"b\xC3\xA4'" },
		{ "the key in the answer", { Say("It is key-01234"), Say("56789."), Chunk("{}", "stop"), Done }, "Stop 'It is [key].'" },
		{ "the key as the name and the id of a call", { Call(0, Key, Key, "{}"), Chunk("{}", "tool_calls"), Done },
			"Calls '' [key]#[key]{}" },
		{ "nothing behind the end", { Say("a"), Chunk("{}", "stop"), Done, Say("b") }, "Stop 'a'" },
		{ "a reason of another maker", { Say("a"), Chunk("{}", "max_tokens"), Done }, "Length 'a'" },
		{ "a reason in capitals", { Say("a"), Chunk("{}", "MAX_TOKENS"), Done }, "Length 'a'" },
		{ "a reason that is none", { Say("Half"), Chunk("{}", "insufficient_system_resource"), Done },
			"Missing 'Half' !CutShort 'the server gave as its reason: insufficient_system_resource'" },
		{ "a reason with its error",
			{ Say("Half"), R"({"choices":[{"index":0,"delta":{},"finish_reason":"error"}],"error":{"message":"gone","code":502}})" },
			"Missing 'Half' !Overloaded 'gone'" },
		{ "every call has the number 0, and no id",
			{ Call(0, "", "a", "{\"x\":1}"), Call(0, "", "a", "{\"x\":2}"), Chunk("{}", "tool_calls"), Done },
			R"(Calls '' a#call_1{"x":1} a#call_2{"x":2})" },
		{ "the name again with each piece, and no id", { Call(0, "", "a", "{\"x\""), Call(0, "", "a", ":{}}"), Chunk("{}", "stop"), Done },
			R"(Stop '' a#call_1{"x":{}})" },
		{ "thinking under two names, one of them empty",
			{ Chunk(R"({"reasoning":"hm","reasoning_content":""})"), Say("Yes"), Chunk("{}", "stop"), Done }, "Stop 'Yes' think 'hm'" },
		{ "thinking in parts",
			{ Chunk(R"({"content":[{"type":"thinking","thinking":[{"type":"text","text":"h"},{"type":"text","text":"m"}]}]})"), Say("Yes"),
				Chunk("{}", "stop"), Done },
			"Stop 'Yes' think 'hm'" },
		{ "thinking whose first mark the server keeps", { Say("so so\n</thi"), Say("nk>\n\nYes"), Chunk("{}", "stop"), Done },
			"Stop 'Yes' think 'so so\n'" },
		{ "an answer about such marks", { Say("End it with </think>.\n```\n</think>\n```\n"), Chunk("{}", "stop"), Done },
			"Stop 'End it with </think>.\n```\n</think>\n```\n'" },
		{ "half characters",
			{ Chunk(R"({"content":"a\ud83d"})"), Chunk(R"({"content":"\uDE00 \\ud83d \uD83D\uDE00"})"), Chunk("{}", "stop"), Done },
			"Stop 'a\xEF\xBF\xBD\xEF\xBF\xBD \\ud83d \xF0\x9F\x98\x80'" },
		{ "a character that ends texts", { Chunk(R"({"content":"a\u0000b"})"), Chunk("{}", "stop"), Done }, "Stop 'ab'" },
		{ "the mark with a blank behind it", { Say("a"), Chunk("{}", "stop"), "[DONE] " }, "Stop 'a'" },
		{ "an error without its own name", { R"({"object":"error","message":"engine is dead","code":500})" },
			"Missing '' !Overloaded 'engine is dead'" },
	};
	for (const auto& [Why, Datas, Reply] : Cases)
	{
		const std::string Bytes = Events(Datas);
		for (size_t Split = 0; Split <= Bytes.size(); ++Split)
		{
			ASSERT_EQ(ReadStream(Bytes, Split), Reply) << Why << ", cut at " << Split;
		}
	}
}

TEST(ChatStream, WhatIsTooMuchIsLeftOut)
{
	std::vector<std::string> Calls;
	for (int Index = 0; Index < 1000; ++Index)
	{
		Calls.push_back(Call(Index, "c" + std::to_string(Index), "a", "{}"));
	}
	Calls.push_back(Chunk("{}", "tool_calls"));
	std::string Text = ReadStream(Calls);
	EXPECT_NE(Text.find(" a#c63{} dropped 936"), std::string::npos) << Text.substr(Text.size() - 60);

	const std::string Large = Call(0, "c0", "a", "{\"x\":\"" + std::string(5 << 20, 'x') + "\"}");
	EXPECT_EQ(ReadStream({ Large, Call(1, "c1", "b", "{}"), Chunk("{}", "tool_calls") }), "Calls '' a#c0(too large) b#c1{}");

	std::vector<std::string> Texts(18, Say(std::string(1 << 20, 'x')));
	Text = ReadStream(Texts);
	EXPECT_EQ(Text.substr(Text.size() - 11), "' !TooLarge");
	EXPECT_EQ(Text.size(), std::string("Missing '' !TooLarge").size() + (16 << 20));

	EXPECT_EQ(
		ReadStream({ "{\"choices\":" + std::string(1 << 20, '[') }), "Missing '' !BadAnswer 'a part of the stream is no JSON object'");
}

TEST(ModelClient, AServerMayDoAnything)
{
	const std::string Good = Stream({ Chunk(R"({"role":"assistant","content":""})"), Say("Hello"), Chunk("{}", "stop"), "[DONE]" });
	const std::string Body =

		R"({"object":"chat.completion","model":"tiny","choices":[{"index":0,"message":{"role":"assistant",)"
		R"("content":"Hello"},"finish_reason":"stop"}],"usage":{"prompt_tokens":10,"completion_tokens":5}})";
	const std::string BodyCalls =

		R"({"choices":[{"index":0,"message":{"role":"assistant","content":null,"tool_calls":[{"id":"c1",)"
		R"("type":"function","function":{"name":"a","arguments":"{}"}},{"id":"c2","type":"function",)"
		R"("function":{"name":"b","arguments":"{}"}}]},"finish_reason":"tool_calls"}]})";
	const std::string Events1 = Events({ Say("Half") });
	const std::string Filler(992, 'x'); // Eight bytes of a key would be left.
	const std::string LongReply = "Missing '' !Refused '" + Filler + "[key]'";
	const std::tuple<const char*, std::string, const char*> Cases[] = {
		{ "in order", Good, "Stop 'Hello'" },
		{ "the end of the connection is the end", StreamHead() + Events({ Say("Hello"), Chunk("{}", "stop") }), "Stop 'Hello'" },
		{ "the mark without a reason", StreamHead() + Events({ Say("Hello"), "[DONE]" }), "Stop 'Hello'" },
		{ "the mark without its line end", StreamHead() + Events({ Say("Hello") }) + "data: [DONE]", "Stop 'Hello'" },
		{ "the end of the answer without its mark, then gone",
			"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfff\r\n" + Events({ Say("Hello"), Chunk("{}", "stop") }),
			"Stop 'Hello'" },
		{ "no blank behind the colon, lines that end with CR LF",
			StreamHead() + "data:" + Say("Hello") + "\r\n\r\ndata:" + Chunk("{}", "stop") + "\r\n\r\ndata:[DONE]\r\n\r\n", "Stop 'Hello'" },
		{ "pings in between",
			StreamHead() + ": ping\n\n:\n\n" + Events({ Say("Hello") }) + "event: ping\ndata:\n\n" +
				Events({ Chunk("{}", "stop"), "[DONE]" }),
			"Stop 'Hello'" },
		{ "a stream that is called JSON",
			"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n" + Events({ Say("Hello"), Chunk("{}", "stop"), "[DONE]" }),
			"Stop 'Hello'" },
		{ "not streaming", Json("200 OK", Body), "Stop 'Hello' 10+5 tokens" },
		{ "not streaming, and called a stream", Answer("200 OK", "text/event-stream", "\n" + Body), "Stop 'Hello' 10+5 tokens" },
		{ "not streaming, with calls", Json("200 OK", BodyCalls), "Calls '' a#c1{} b#c2{}" },
		{ "not streaming, and broken", Json("200 OK", Body.substr(0, 80)), "Missing '' !BadAnswer 'the answer is no JSON object'" },
		{ "not streaming, and cut off", "HTTP/1.1 200 OK\r\nContent-Length: 900\r\n\r\n" + Body,
			"Missing '' !CutShort 'transfer closed with 710 bytes remaining to read'" },
		{ "not streaming, an error", Json("200 OK", R"({"error":{"message":"no","code":429}})"), "Missing '' !RateLimited 'no'" },
		{ "cut in the middle of the answer", StreamHead() + Events1, "Missing 'Half' !CutShort" },
		{ "cut in the middle of a chunk", StreamHead() + Events1 + "data: {\"choices\":[{\"del", "Missing 'Half' !CutShort" },
		{ "cut in the middle of a call", StreamHead() + Events({ Call(0, "c", "a", "{\"x\"") }), "Missing '' a#c{\"x\" !CutShort" },
		{ "killed: a chunk without its end", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nff\r\n" + Events1,
			"Missing 'Half' !CutShort 'transfer closed with outstanding read data remaining'" },
		{ "an empty stream", StreamHead(), "Missing '' !CutShort" },
		{ "an empty answer", Stream({ Chunk("{}", "stop"), "[DONE]" }), "Stop ''" },
		{ "an empty body", Json("200 OK", ""), "Missing '' !CutShort" },
		{ "no content", "HTTP/1.1 204 No Content\r\n\r\n", "Missing '' !NoModelServer 'status 204'" },
		{ "a web page", Answer("200 OK", "text/html", "<!DOCTYPE html><html>hello</html>"),
			"Missing '' !NoModelServer 'it answered with a web page'" },
		{ "plain words", Answer("200 OK", "text/plain", "It works!"), "Missing '' !CutShort" },
		{ "an error in the stream, and nothing more",
			StreamHead() + Events({ R"({"error":{"message":"Rate limit","type":"rate_limit_error"}})" }),
			"Missing '' !RateLimited 'Rate limit'" },
		{ "an error by the type of its event", StreamHead() + "event: error\ndata: {\"message\":\"broken\"}\n\n",
			"Missing '' !BadAnswer 'broken'" },
		{ "an error by the type of its event, in plain words", StreamHead() + "event: error\ndata: out of memory\n\n",
			"Missing '' !BadAnswer 'out of memory'" },
		{ "another thing than an answer", Json("200 OK", R"({"code":1001,"msg":"no such service"})"),
			"Missing '' !BadAnswer 'no such service'" },
		{ "compressed", "HTTP/1.1 200 OK\r\nContent-Encoding: br\r\n\r\nxxxx",
			"Missing '' !NoModelServer 'it sent compressed data unasked'" },
		{ "redirected", "HTTP/1.1 307 Go\r\nLocation: https://other.example/v1\r\nContent-Length: 0\r\n\r\n",
			"Missing '' !Redirected 'https://other.example/v1'" },
		{ "no key",
			Json("401 Unauthorized",

				R"({"error":{"message":"Incorrect API key provided: key-0123456789.",)"
				R"("type":"invalid_request_error","code":"invalid_api_key"}})"),
			"Missing '' !Refused 'Incorrect API key provided: [key].'" },
		{ "the key where a long sentence is cut", Json("401 No", R"({"error":{"message":")" + Filler + R"(key-0123456789"}})"),
			LongReply.c_str() },
		{ "forbidden, as a page", Answer("403 Forbidden", "text/html", "<html>no</html>"), "Missing '' !Refused" },
		{ "no such model", Json("404 Not Found", R"({"error":{"message":"model 'm' not found"}})"),
			"Missing '' !NotFound 'model 'm' not found'" },
		{ "no such address", Answer("404 Not Found", "text/plain", "404 page\r\nnot found\n"),
			"Missing '' !NotFound '404 page not found'" },
		{ "the conversation is too long",
			Json("400 Bad Request",

				R"j({"error":{"code":400,)j"
				R"j("message":"request (30027 tokens) exceeds the available context size (8192 tokens)",)j"
				R"j("type":"exceed_context_size_error","n_ctx":8192}})j"),
			"Missing '' !ContextFull 'request (30027 tokens) exceeds the available context size (8192 tokens)'" },
		{ "the same, of another server",
			Json("400 Bad Request", R"({"object":"error","message":"This model's maximum context length is 4096 tokens.","code":40303})"),
			"Missing '' !ContextFull 'This model's maximum context length is 4096 tokens.'" },
		{ "broken request",
			Json("500 Internal Server Error", R"({"error":{"code":500,"message":"parse error at line 1","type":"server_error"}})"),
			"Missing '' !BadRequest 'parse error at line 1'" },
		{ "no tools", Json("400 Bad Request", R"({"error":{"message":"registry/m does not support tools"}})"),
			"Missing '' !NoTools 'registry/m does not support tools'" },
		{ "no figures", Json("422 Unprocessable", R"({"detail":"stream_options: extra fields not permitted"})"),
			"Missing '' !NoUsage 'stream_options: extra fields not permitted'" },
		{ "no figures, of a server that lists what it does not take",
			Json("422 Unprocessable", R"({"detail":[{"type":"extra_forbidden","loc":["body","stream_options"],"msg":"Extra inputs"}]})"),
			R"(Missing '' !NoUsage '{"detail":[{"type":"extra_forbidden","loc":["body","stream_options"],"msg":"Extra inputs"}]}')" },
		{ "an error in a list", Json("400 Bad Request", R"([{"error":{"code":400,"message":"bad schema","status":"INVALID_ARGUMENT"}}])"),
			"Missing '' !BadRequest 'bad schema'" },
		{ "an error of the server behind the server",
			Json("400 Bad Request",
				R"({"error":{"message":"Provider returned error","code":400,)"
				R"("metadata":{"raw":"prompt is too long: 9 tokens > 8 maximum"}}})"),
			"Missing '' !ContextFull 'Provider returned error: prompt is too long: 9 tokens > 8 maximum'" },
		{ "no tools, of a server that looks for another one",
			Json("404 Not Found", R"({"error":{"message":"No endpoints found that support tool use."}})"),
			"Missing '' !NoTools 'No endpoints found that support tool use.'" },
		{ "too many requests", Json("429 Too Many Requests", R"({"error":"slow down"})", "Retry-After: 7\r\n"),
			"Missing '' !RateLimited 'slow down'" },
		{ "larger than what a minute may have",
			Json("413 Too Large", R"({"error":{"message":"Request too large: Limit 6000, Requested 8000","code":"rate_limit_exceeded"}})"),
			"Missing '' !ContextFull 'Request too large: Limit 6000, Requested 8000'" },
		{ "no money", Json("429 Too Many Requests", R"({"error":{"message":"You exceeded your quota","code":"insufficient_quota"}})"),
			"Missing '' !BadRequest 'You exceeded your quota'" },
		{ "failed", Answer("500 Internal Server Error", "text/plain", ""), "Missing '' !Overloaded" },
		{ "gateway", Answer("502 Bad Gateway", "text/html", "<html><h1>502</h1></html>"), "Missing '' !Overloaded" },
		{ "overloaded", Json("529 Overloaded", R"({"type":"error","error":{"type":"overloaded_error","message":"Overloaded"}})"),
			"Missing '' !Overloaded 'Overloaded'" },
		{ "a refusal without an end", "HTTP/1.1 400 Bad\r\n\r\n" + std::string(200000, 'x'), nullptr },
	};
	for (const auto& [Why, Text, Expected] : Cases)
	{
		const std::string Reply = Ask(FScriptedPeer::SendOnce(Text));
		if (Expected)
		{
			EXPECT_EQ(Reply, Expected) << Why;
			continue;
		}
		EXPECT_EQ(Reply.substr(0, 28), "Missing '' !BadRequest 'xxxx") << Why;
		EXPECT_LT(Reply.size(), 1100u) << Why;
	}
	FModelReply Reply;
	Ask(FScriptedPeer::SendOnce(Json("429 Too Many Requests", R"({"error":"slow down"})", "Retry-After: 7\r\n")), FHttpLimits(), &Reply);
	EXPECT_EQ(Reply.Problem.RetryAfterSeconds, 7.0);
	Ask(FScriptedPeer::SendOnce(Json("400 Bad Request", R"({"message":"maximum context length is 4096 tokens"})")), FHttpLimits(), &Reply);
	EXPECT_EQ(Reply.Problem.ContextTokens, 4096);
	const std::time_t Soon = std::time(nullptr) + 30;
	char Date[64];
	std::strftime(Date, sizeof(Date), "%a, %d %b %Y %H:%M:%S GMT", std::gmtime(&Soon));
	Ask(FScriptedPeer::SendOnce(Json("429 Slow", "{}", "Retry-After: " + std::string(Date) + "\r\n")), FHttpLimits(), &Reply);
	EXPECT_GT(Reply.Problem.RetryAfterSeconds, 20.0) << Date;
	EXPECT_LE(Reply.Problem.RetryAfterSeconds, 31.0) << Date;
}

TEST(ModelClient, ServersThatDoNotEnd)
{
	FHttpLimits Limits;
	Limits.SilenceSeconds = 0.05;
	const std::string Begin = StreamHead() + Events({ Say("Half") });
	const auto Hold = [](std::string Text) { return FScriptedPeer::SendOnce(std::move(Text), true); };
	EXPECT_EQ(Ask(Hold(Begin), Limits), "Missing 'Half' !Silent");
	EXPECT_EQ(Ask(Hold(Begin + Events({ Chunk("{}", "stop"), "[DONE]" })), Limits), "Stop 'Half'") << "what is whole is not waited for";
	EXPECT_EQ(Ask(Hold(Begin + Events({ Chunk("{}", "stop") })), Limits), "Stop 'Half'") << "its end was told, in other words";
	Limits.FirstByteSeconds = 0.05;
	EXPECT_EQ(Ask(Hold(""), Limits), "Missing '' !Silent");
	EXPECT_EQ(Ask(
				  [](FPeerConnection& Connection)
				  {
					  FPeerConnection::FRequest Request;
					  Connection.ReadRequest(Request);
					  Connection.Send(StreamHead());
					  while (Connection.Send("data: " + std::string(1 << 20, 'x')))
					  {
					  }
				  }),
		"Missing '' !TooLarge")
		<< "a line without an end";

	FModelServer Server;
	{
		FScriptedPeer Gone([](FPeerConnection&) {});
		Server.BaseUrl = Gone.GetUrl();
	}
	FModelClient Client(Dialect, Server);
	const FModelReply Reply = Client.Ask(FModelRequest());
	EXPECT_EQ(Dump(Reply).substr(0, 23), "Missing '' !Unreachable");
	EXPECT_EQ(DescribeProblem({ EModelFault::Unreachable, "", 0, -1.0, 0 }, Server, "m"),
		"The server at " + Server.BaseUrl.substr(0, Server.BaseUrl.size() - 3) +
			" cannot be reached. Start it or correct the address, then send the message again.");
}

TEST(ModelClient, TheRequestSaysWhatItMust)
{
	FPeerConnection::FRequest Seen;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[&Seen](const FPeerConnection::FRequest& Request, int)
		{
			Seen = Request;
			return Stream({ Say("ok"), Chunk("{}", "stop"), "[DONE]" });
		}));
	FModelServer Server;
	Server.BaseUrl = Peer.GetUrl();
	Server.Key = Key;
	FModelRequest Request;
	Request.Model = "m";
	Request.Messages = {
		{ EModelRole::System, "Be \"short\".\n", {}, "" },
		{ EModelRole::User, "broken \xFF byte", {}, "" },
		{ EModelRole::Assistant, "", { { "call00001", "read_file", R"({"path":"a"})" } }, "" },
		{ EModelRole::Tool, "text", {}, "call00001" },
	};
	Request.Tools = { { "read_file", "Reads.", R"({"type":"object"})" } };
	Request.Options = R"({"temperature":0.5,"model":"other","stream":false})";
	FModelClient Client(Dialect, Server);
	EXPECT_EQ(Dump(Client.Ask(Request)), "Stop 'ok'");
	EXPECT_EQ(Seen.Path, "/v1/chat/completions");
	EXPECT_NE(Seen.Head.find("\r\nAuthorization: Bearer key-0123456789\r\n"), std::string::npos);
	EXPECT_EQ(Seen.Body,
		R"({"model":"m","messages":[{"role":"system","content":"Be \"short\".\n"},{"role":"user","content":"broken )"
		"\xEF\xBF\xBD"

		R"( byte"},{"role":"assistant","content":null,"tool_calls":[{"id":"call00001","type":"function",)"
		R"("function":{"name":"read_file","arguments":"{\"path\":\"a\"}"}}]},)"

		R"({"role":"tool","content":"text","tool_call_id":"call00001"}],"tools":[{"type":"function",)"
		R"("function":{"name":"read_file","description":"Reads.","parameters":{"type":"object"}}}],)"
		R"("stream":true,"stream_options":{"include_usage":true},"temperature":0.5})");
	Request.Options = "no json";
	Request.Tools.clear();
	Request.bAsksForUsage = false;
	Request.Messages.resize(1);
	Client.Ask(Request);
	EXPECT_EQ(Seen.Body, R"({"model":"m","messages":[{"role":"system","content":"Be \"short\".\n"}],"stream":true})");
}

TEST(ModelClient, TheKeyIsToldInNoPiece)
{
	FScriptedPeer Peer(FScriptedPeer::SendOnce(Stream({ Chunk(R"({"reasoning_content":"key-0123456789? key-01"})"), Say("key-key-01234"),
		Say("5"), Say("6789, key-0123456789key-012345678"), Call(0, "c", "a", R"({"x":"key-0123456789"})"), Say("key-0"),
		Chunk("{}", "stop"), "[DONE]" })));
	FModelServer Server;
	Server.BaseUrl = Peer.GetUrl();
	Server.Key = Key;
	FModelClient Client(Dialect, Server);
	std::string Told;
	Client.Ask(FModelRequest(), [&Told](const FReplyPiece& Piece) { Told += Piece.Bytes; });
	EXPECT_EQ(Told, R"([key]? key-01key-[key], [key]key-012345678a{"x":"[key]"}key-0)");
}

TEST(ModelClient, WhatAModelHasSaidIsNoReasonToRefuseTheNextRequest)
{
	const std::tuple<const char*, FModelCall, const char*> Cases[] = {
		{ "in order", { "c", "a_b-C9", R"({ "x": 1 })" }, R"(a_b-C9 { "x": 1 })" },
		{ "a name that is none", { "c", "functions.read file", "{}" }, "functions_read_file {}" },
		{ "no name", { "c", "", "{}" }, "unknown {}" },
		{ "half an object", { "c", "a", R"({"x":)" }, R"(a {"unreadable":"{\"x\":"})" },
		{ "nothing, since it was too large", { "c", "a", "", true }, R"(a {"unreadable":""})" },
		{ "a list", { "c", "a", "[1]" }, R"(a {"unreadable":"[1]"})" },
		{ "the text of an object", { "c", "a", R"("{\"x\":1}")" }, R"(a {"x":1})" },
		{ "a text", { "c", "a", R"("x")" }, R"(a {"unreadable":"\"x\""})" },
	};
	for (const auto& [Why, Call, Written] : Cases)
	{
		SCOPED_TRACE(Why);
		FModelRequest Request;
		Request.Messages = { { EModelRole::Assistant, "", { Call }, "" }, { EModelRole::Tool, "done", {}, Call.Id } };
		FModelServer Server;
		Server.BaseUrl = "http://127.0.0.1";
		rapidjson::Document Body;
		Body.Parse(Dialect.MakeRequest(Server, Request).Body.c_str());
		ASSERT_FALSE(Body.HasParseError());
		const auto& Function = Body["messages"][0]["tool_calls"][0]["function"];
		EXPECT_EQ(std::string(Function["name"].GetString()) + ' ' + Function["arguments"].GetString(), Written);
	}
}

TEST(ModelClient, ListsOfModels)
{
	const std::pair<const char*, const char*> Cases[] = {
		{ R"({"object":"list","data":[{"id":"tiny","meta":{"n_ctx":8192,"n_ctx_train":32768}},{"id":"b"}]})", "tiny 8192; b 0; " },
		{ R"({"models":[{"name":"x"}],"data":[{"id":"a","max_model_len":4096}]})", "a 4096; " },
		{ R"({"models":[{"name":"x"}]})", "x 0; " },
		{ R"([{"id":"a","context_length":100},{"id":7},{},null])", "a 100; " },
		{ R"({"models":["a","b"]})", "a 0; b 0; " },
		{ R"({"data":[{"id":"a","max_context_length":9000,"loaded_context_length":4096}]})", "a 4096; " },
		{ R"({"data":[]})", "" },
		{ R"({"data":null})", "!" },
		{ "<html>", "!" },
		{ "", "!" },
	};
	for (const auto& [Body, Expected] : Cases)
	{
		std::vector<FModelInfo> Models;
		std::string Text = Dialect.ReadList(Body, Models) ? "" : "!";
		for (const FModelInfo& Model : Models)
		{
			Text += Model.Id + ' ' + std::to_string(Model.ContextTokens) + "; ";
		}
		EXPECT_EQ(Text, Expected) << Body;
	}
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[](const FPeerConnection::FRequest& Request, int Number)
		{
			return Number == 0 ? Json("200 OK", R"({"data":[{"id":")" + Request.Path + "\"}]}")
							   : Json("401 No", R"({"error":"key-0123456789 is wrong"})");
		}));
	FModelServer Server;
	Server.BaseUrl = Peer.GetUrl();
	Server.Key = Key;
	FModelClient Client(Dialect, Server);
	std::vector<FModelInfo> Models;
	EXPECT_EQ(Client.ListModels(Models).Fault, EModelFault::None);
	ASSERT_EQ(Models.size(), 1u);
	EXPECT_EQ(Models[0].Id, "/v1/models");
	const FModelProblem Problem = Client.ListModels(Models);
	EXPECT_EQ(Problem.Fault, EModelFault::Refused);
	EXPECT_EQ(Problem.Detail, "[key] is wrong");
}

TEST(ModelClient, BaseAddressesAsUsersGiveThem)
{
	const std::pair<const char*, const char*> Cases[] = {
		{ "http://127.0.0.1:8080", "http://127.0.0.1:8080/v1" },
		{ "http://127.0.0.1:8080/", "http://127.0.0.1:8080/v1" },
		{ "http://127.0.0.1:8080/v1/", "http://127.0.0.1:8080/v1" },
		{ "https://a.example/api/v1/chat/completions", "https://a.example/api/v1" },
		{ "https://a.example/openai", "https://a.example/openai" },
		{ "http://[::1]:8080/v1/chat/completions/", "http://[::1]:8080/v1" },
		{ "http://a.example/v1/completions", "http://a.example/v1" },
		{ "http://a.example/v1/models", "http://a.example/v1" },
	};
	for (const auto& [Text, Base] : Cases)
	{
		EXPECT_EQ(FChatCompletions::MakeBaseUrl(Text), Base);
	}
}
