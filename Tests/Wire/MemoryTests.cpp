#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include <malloc.h>

// What a server that never ends may cost.

using namespace Velmora;
using namespace PeerText;

namespace
{
	constexpr long MaxGrowth = 64L * 1024 * 1024;

	/** Bytes that this process has at a time, at most since the last reset. */
	long ReadPeak()
	{
		std::ifstream Status("/proc/self/status");
		for (std::string Line; std::getline(Status, Line);)
		{
			if (Line.starts_with("VmHWM:"))
			{
				return std::atol(Line.c_str() + 6) * 1024;
			}
		}
		return 0;
	}

	/** From here on the peak is that of what follows; false where the system does not say. */
	bool ResetPeak()
	{
		malloc_trim(0);
		std::ofstream File("/proc/self/clear_refs");
		File << '5';
		File.flush();
		return File.good() && ReadPeak() > 0;
	}
}

TEST(ModelMemory, AnEndlessAnswerIsBounded)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
	GTEST_SKIP() << "a sanitizer keeps memory of its own";
#endif
	const std::string Filler(64 * 1024, 'x');
	const std::string Ok = "HTTP/1.1 200 OK\r\n";
	struct FCase
	{
		const char* Why;
		std::string Begin;
		std::string Again;
		EModelFault Fault;
	};
	const FCase Cases[] = {
		{ "compressed", Ok + "Content-Encoding: gzip\r\n\r\n\x1f\x8b", Filler, EModelFault::NoModelServer },
		{ "text", StreamHead(), Events({ Say(Filler) }), EModelFault::TooLarge },
		{ "nothing but blanks", StreamHead(), Events({ Say(std::string(64 * 1024, ' ')) }), EModelFault::TooLarge },
		{ "text in pieces of a byte", StreamHead(), Events(std::vector<std::string>(500, Say("x"))), EModelFault::TooLarge },
		{ "thinking", StreamHead(), Events({ Chunk("{\"reasoning_content\":\"" + Filler + "\"}") }), EModelFault::TooLarge },
		{ "arguments of one call", StreamHead(), Events({ Call(0, "c", "a", Filler) }), EModelFault::TooLarge },
		{ "calls without a number", StreamHead(), Events({ Chunk(R"({"tool_calls":[{"function":{"name":"a","arguments":"{}"}}]})") }),
			EModelFault::TooLarge },
		{ "a line", StreamHead() + "data: ", Filler, EModelFault::TooLarge },
		{ "lines of one event", StreamHead(), "data: " + Filler + "\n", EModelFault::TooLarge },
		{ "a chunk of nothing but brackets", StreamHead() + "data: ", std::string(64 * 1024, '['), EModelFault::TooLarge },
		{ "an answer that does not stream", Ok + "\r\n{\"choices\":[{\"message\":{\"content\":\"", Filler, EModelFault::TooLarge },
		{ "an answer in one event, larger than allowed", StreamHead(), Events({ Say(std::string(20 << 20, 'x')) }), EModelFault::TooLarge },
		{ "an answer in one event", StreamHead(), Events({ Say(std::string(15 << 20, 'x')), Chunk("{}", "stop"), "[DONE]" }),
			EModelFault::None },
		{ "an answer in one body", "",
			Answer("200 OK", "application/json", R"({"choices":[{"message":{"content":")" + std::string(15 << 20, 'x') + "\"}}]}"),
			EModelFault::None },
		{ "a refusal", "HTTP/1.1 400 No\r\n\r\n", Filler, EModelFault::BadRequest },
		{ "a head", Ok, "X-Line: " + std::string(900, 'x') + "\r\n", EModelFault::TooLarge },
	};
	const FChatCompletions Dialect;
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		FScriptedPeer Peer(
			[&Case](FPeerConnection& Connection)
			{
				FPeerConnection::FRequest Request;
				Connection.ReadRequest(Request);
				for (bool bIsOpen = Connection.Send(Case.Begin); bIsOpen;)
				{
					bIsOpen = Connection.Send(Case.Again) && Case.Fault != EModelFault::None;
				}
			});
		FModelServer Server;
		Server.BaseUrl = Peer.GetUrl();
		// What is only passed on would go on for long.
		Server.Limits.MaxBodyBytes = 160 * 1024 * 1024;
		FModelClient Client(Dialect, Server);
		if (!ResetPeak())
		{
			GTEST_SKIP() << "this system does not tell the peak";
		}
		const long Before = ReadPeak();
		{
			const FModelReply Reply = Client.Ask(FModelRequest());
			EXPECT_EQ(Reply.Problem.Fault, Case.Fault) << Reply.Problem.Detail;
		}
		const long Growth = ReadPeak() - Before;
		EXPECT_LT(Growth, MaxGrowth) << Growth / 1024 << " KiB";
		RecordProperty("KiB", static_cast<int>(Growth / 1024));
	}
}
