#include "Model/Transcript.h"
#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Support/StreamServer.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

// What a model's answer costs while it streams, beside the client library for Node if one is installed (NODE_PATH names the folder),
// and what the request of a long conversation costs. Servers are processes of their own on loopback.

using Velmora::FChatCompletions;
using Velmora::FConversationMessage;

namespace
{
	constexpr int ChunkCount = 100'000;
	constexpr std::string_view Word = " word,";

	/** An answer of many small pieces, one chunk of the transfer for each, as servers send them. */
	const std::string& GetStream()
	{
		static const std::string Stream = []
		{
			std::string Made = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nTransfer-Encoding: chunked\r\n\r\n";
			const auto Add = [&Made](const std::string& Event)
			{
				char Length[16];
				snprintf(Length, sizeof(Length), "%zx\r\n", Event.size());
				Made += Length + Event + "\r\n";
			};
			const std::string Head =
				R"(data: {"id":"chatcmpl-1","object":"chat.completion.chunk","created":1,"model":"m","choices":[{"index":0,)";
			for (int Index = 0; Index < ChunkCount; ++Index)
			{
				Add(Head + R"("delta":{"content":")" + std::string(Word) + R"("},"finish_reason":null}]})" + "\n\n");
			}
			Add(Head + R"("delta":{},"finish_reason":"stop"}]})" + "\n\n");
			Add("data: [DONE]\n\n");
			return Made + "0\r\n\r\n";
		}();
		return Stream;
	}

	/** Processor time of this process, all threads, user and system. */
	double GetProcessSeconds()
	{
		rusage Usage = {};
		getrusage(RUSAGE_SELF, &Usage);
		const auto Seconds = [](const timeval& Time)
		{ return static_cast<double>(Time.tv_sec) + static_cast<double>(Time.tv_usec) * 1e-6; };
		return Seconds(Usage.ru_utime) + Seconds(Usage.ru_stime);
	}

	void ReadStream(benchmark::State& State)
	{
		const FStreamServer Server(GetStream());
		const FChatCompletions Dialect;
		Velmora::FModelServer Address;
		Address.BaseUrl = "http://127.0.0.1:" + std::to_string(Server.GetPort()) + "/v1";
		for (auto _ : State)
		{
			Velmora::FModelClient Client(Dialect, Address);
			Velmora::FModelRequest Request;
			Request.Model = "m";
			Request.Messages.push_back({ Velmora::EModelRole::User, "hello", {}, {} });
			const double Before = GetProcessSeconds();
			const Velmora::FModelReply Reply = Client.Ask(Request);
			State.SetIterationTime(GetProcessSeconds() - Before);
			if (Reply.Problem || Reply.Text.size() != ChunkCount * Word.size())
			{
				State.SkipWithError(("The stream was not read: " + Reply.Problem.Detail).c_str());
				break;
			}
		}
	}

	void ReadStreamWithNode(benchmark::State& State)
	{
		const FStreamServer Server(GetStream());
		const std::string Command =
			"node " VELMORA_SOURCE_DIR "/Benchmarks/Support/read-stream.cjs " + std::to_string(Server.GetPort()) + " 2>/dev/null";
		for (auto _ : State)
		{
			double Milliseconds = 0.0;
			unsigned long Characters = 0;
			FILE* const Pipe = popen(Command.c_str(), "r");
			const int Read = Pipe ? fscanf(Pipe, "%lf %lu", &Milliseconds, &Characters) : 0;
			if (!Pipe || pclose(Pipe) != 0 || Read != 2 || Characters != ChunkCount * Word.size())
			{
				State.SkipWithError("No client library for Node: npm install openai, and NODE_PATH to its folder node_modules.");
				break;
			}
			State.SetIterationTime(Milliseconds / 1000.0);
		}
	}

	/** What is sent with the next message of a conversation of so many: the stored messages put in order, and the request's body. */
	void BuildRequest(benchmark::State& State)
	{
		TArray<FConversationMessage> Stored;
		for (int64_t Index = 0; Index < State.range(0); ++Index)
		{
			FConversationMessage Message;
			Message.Role = Index % 2 == 0 ? Velmora::EConversationRole::User : Velmora::EConversationRole::Assistant;
			while (Message.Content.Len() < 600)
			{
				Message.Content += TEXT("The number is used in the second loop, \"as is\"; ");
			}
			Stored.Add(Message);
		}
		const FChatCompletions Dialect;
		Velmora::FModelServer Server;
		Server.BaseUrl = "http://127.0.0.1:8080/v1";
		for (auto _ : State)
		{
			Velmora::FModelRequest Request;
			Request.Model = "m";
			Request.Messages = Velmora::Transcript::Read(Stored);
			benchmark::DoNotOptimize(Dialect.MakeRequest(Server, Request));
		}
	}
}

BENCHMARK(ReadStream)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(ReadStreamWithNode)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BuildRequest)->Arg(10'000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
