#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Velmora;
using namespace PeerText;

namespace
{
	const FChatCompletions Dialect;
	using FAnswers = std::map<std::string, std::string>;

	/** A server that knows these paths, and what it was asked in turn. */
	class FSizePeer
	{
	public:
		explicit FSizePeer(FAnswers InAnswers)
			: Answers(std::move(InAnswers))
			, Peer(
				  [this](FPeerConnection& Connection)
				  {
					  FPeerConnection::FRequest Request;
					  while (Connection.ReadRequest(Request))
					  {
						  const std::scoped_lock Lock(Mutex);
						  Asked += (Asked.empty() ? "" : " ") + Request.Path + Request.Body;
						  Heads += Request.Head;
						  const auto Found = Answers.find(Request.Path);
						  const bool bIsKnown = Found != Answers.end();
						  if (!Connection.Send(bIsKnown ? Found->second : Answer("404 Not Found", "text/plain", "404 page not found")))
						  {
							  return;
						  }
						  if (bIsKnown && Found->second.find("Connection: close") != std::string::npos)
						  {
							  Connection.WaitForClose();
							  return;
						  }
					  }
				  },
				  true)
		{
		}

		std::optional<int64_t> AskForSize(const char* Model, double Seconds = 5.0, const char* Path = "/v1")
		{
			FModelServer Server;
			Server.BaseUrl = "http://127.0.0.1:" + std::to_string(Peer.GetPort()) + Path;
			Server.Key = "key-0123456789";
			FModelClient Client(Dialect, Server);
			return Client.AskForSize(Model, Seconds);
		}

		const FAnswers Answers;
		std::mutex Mutex;
		std::string Asked;
		std::string Heads;
		FScriptedPeer Peer;
	};

	std::string Json(std::string_view Body)
	{
		return Answer("200 OK", "application/json", Body);
	}
}

TEST(ModelSizes, EachServerTellsThemInItsOwnPlace)
{
	const std::string Show = R"({"license":"x","model_info":{"clip.context_length":77,"general.architecture":"llama",)"
							 R"("llama.context_length":131072,"llama.rope.original_context_length":9}})";
	const std::tuple<const char*, FAnswers, int64_t> Cases[] = {
		{ "llama.cpp", { { "/props", Json(R"({"default_generation_settings":{"n_ctx":8192,"params":{}},"total_slots":1})") } }, 8192 },
		{ "Ollama: what the model could take", { { "/api/ps", Json(R"({"models":[]})") }, { "/api/show", Json(Show) } }, 131072 },
		{ "Ollama: what it is to be loaded with",
			{ { "/api/show", Json(R"({"parameters":"stop \"num_ctx 5\"\nnum_ctx                        4096\n",)" + Show.substr(1)) } },
			4096 },
		{ "Ollama: what is loaded, under its whole name",
			{ { "/api/ps", Json(R"({"models":[{"name":"x","context_length":1},{"name":"m:latest","context_length":2048}]})") },
				{ "/api/show", Json(Show) } },
			2048 },
		{ "an architecture that is not named", { { "/api/show", Json(R"({"model_info":{"a.b":1,"a.context_length":512}})") } }, 512 },
		{ "LM Studio", { { "/api/v0/models", Json(R"({"data":[{"id":"m","max_context_length":9000,"loaded_context_length":4096}]})") } },
			4096 },
		{ "one that answers everything with 200",
			{ { "/props", Json(R"({"error":"Unexpected endpoint"})") }, { "/api/ps", Answer("200 OK", "text/html", "<html>") },
				{ "/api/show", Json("[[1],2]") }, { "/api/v0/models", Json("") } },
			0 },
		{ "figures that are none",
			{ { "/props", Json(R"({"default_generation_settings":{"n_ctx":9223372036854775807}})") },
				{ "/api/show", Json(R"({"parameters":"num_ctx -5","model_info":{"general.architecture":7,"a.context_length":"9"}})") },
				{ "/api/ps", Json(R"({"models":[{"name":"m","context_length":1e30}]})") },
				{ "/api/v0/models", Json(R"({"data":[{"id":"other","context_length":5}]})") } },
			0 },
		{ "more than anybody needs to say", { { "/props", Json("\"" + std::string(5 << 20, 'x') + "\"") }, { "/api/show", Json(Show) } },
			131072 },
		{ "deep as a well", { { "/props", Json(std::string(1 << 20, '[')) } }, 0 },
		{ "the key in another place",
			{ { "/props", Answer("401 No", "application/json", R"({"default_generation_settings":{"n_ctx":1}})") },
				{ "/api/show", Json(Show) } },
			131072 },
	};
	for (const auto& [Why, Answers, Size] : Cases)
	{
		FSizePeer Peer(Answers);
		EXPECT_EQ(Peer.AskForSize("m"), Size) << Why;
	}
	FSizePeer Nothing({});
	EXPECT_EQ(Nothing.AskForSize("a \"b\""), 0);
	EXPECT_EQ(Nothing.Asked, R"(/props /api/ps /api/show{"model":"a \"b\""} /api/v0/models)");
	EXPECT_EQ(Nothing.Peer.GetConnectionCount(), 1);
	EXPECT_EQ(
		FSizePeer({ { "/x/props", Json(R"({"default_generation_settings":{"n_ctx":7}})") } }).AskForSize("m", 5.0, "/x/v1/models"), 7);
	EXPECT_EQ(Nothing.AskForSize("m", 5.0, "/openai"), 0);
	EXPECT_EQ(Nothing.Asked.find("/openai"), std::string::npos) << "nothing is known of such a server";
}

TEST(ModelSizes, NobodyElseIsAskedAndNobodyIsWaitedFor)
{
	FSizePeer Other({});
	const std::string There = "http://127.0.0.1:" + std::to_string(Other.Peer.GetPort()) + "/props";
	FSizePeer Sends({ { "/props", "HTTP/1.1 307 Go\r\nLocation: " + There + "\r\nContent-Length: 0\r\n\r\n" } });
	EXPECT_EQ(Sends.AskForSize("m"), 0);
	EXPECT_EQ(Other.Peer.GetConnectionCount(), 0) << "the key would travel";
	EXPECT_NE(Sends.Heads.find("Authorization: Bearer key-0123456789"), std::string::npos);

	// One that never ends takes the time of all.
	FSizePeer Hangs(FAnswers{ { "/props", std::string("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n{") } });
	const auto Start = std::chrono::steady_clock::now();
	EXPECT_EQ(Hangs.AskForSize("m", 0.2), 0);
	EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(3));
	EXPECT_EQ(Hangs.Asked, "/props");

	FModelServer Server;
	Server.BaseUrl = Hangs.Peer.GetUrl();
	FModelClient Client(Dialect, Server);
	std::thread Stop(
		[&Client]
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(50));
			Client.Cancel();
		});
	EXPECT_EQ(Client.AskForSize("m", 60.0), std::nullopt) << "who is stopped knows nothing";
	Stop.join();
}
