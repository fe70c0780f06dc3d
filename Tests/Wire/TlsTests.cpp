#include "Http/HttpStream.h"
#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "ReplyDump.h"
#include "Support/Base/TempFolder.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <poll.h>
#include <thread>

// A server with certificates made for the test, by the openssl program.

using namespace Velmora;

namespace
{
	/** Without the first it takes letters at the beginning of what is sent for commands; the second has it say where it listens. */
	const char* const SendsWhatIsWritten = "-quiet -debug -naccept 1";

	class FTlsTest : public testing::Test
	{
	protected:
		void SetUp() override
		{
			if (std::system("openssl version >/dev/null 2>&1") != 0)
			{
				GTEST_SKIP() << "openssl is not installed";
			}
			// An authority, and a server that it vouches for under one name alone.
			const std::string Make = "cd '" + Folder.AtBytes("") +
				"' && exec 2>log && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ca.key -out ca.pem -days "
				"2 "
				"-subj '/CN=Test authority' && openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout server.key "
				"-out server.csr -subj '/CN=localhost' && printf 'subjectAltName=DNS:localhost' > names && "
				"openssl x509 -req -in server.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 2 -extfile names -out server.pem && "
				"openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout other.key -out other.pem -days 2 "
				"-subj '/CN=Another authority' && mkdir v1";
			ASSERT_EQ(std::system(Make.c_str()), 0) << Make;
			std::ofstream(Folder.AtBytes("v1/models")) << R"({"data":[{"id":"far","max_model_len":4096}]})";
		}

		void TearDown() override
		{
			if (Process > 0)
			{
				kill(Process, SIGTERM);
			}
			if (Server)
			{
				pclose(Server);
			}
		}

		/** Starts the server, which sends what is written to Server, or files. What it says, the request among it, goes to a file. */
		void Serve(const char* Options)
		{
			// One that is gone is not written to.
			signal(SIGPIPE, SIG_IGN);
			// The shell says its number before it becomes the server.
			const std::string Command = "cd '" + Folder.AtBytes("") +
				"' && echo PROCESS $$ > said && exec openssl s_server -accept 127.0.0.1:0 -cert server.pem -key server.key " + Options +
				" >> said 2>/dev/null";
			Server = popen(Command.c_str(), "w");
			ASSERT_NE(Server, nullptr);
			ASSERT_TRUE(WaitUntilSaid("\nACCEPT ")) << "it does not say where it listens";
			const std::string Said = ReadSaid();
			Process = std::atoi(Said.c_str() + Said.find(' '));
			Port = std::atoi(Said.c_str() + Said.find(':', Said.find("\nACCEPT ")) + 1);
			ASSERT_NE(Port, 0) << Said;
		}

		std::string ReadSaid() const
		{
			std::ifstream File(Folder.AtBytes("said"), std::ios::binary);
			return std::string(std::istreambuf_iterator<char>(File), {});
		}

		bool WaitUntilSaid(const char* Part) const
		{
			for (int Try = 0; Try < 2000; ++Try)
			{
				// The line must be there with its end.
				const std::string Said = ReadSaid();
				const size_t Place = Said.find(Part);
				if (Place != std::string::npos && Said.find('\n', Place + 1) != std::string::npos)
				{
					return true;
				}
				std::this_thread::sleep_for(std::chrono::milliseconds(5));
			}
			return false;
		}

		bool WaitUntilGone() const
		{
			pollfd Pipe = { fileno(Server), 0, 0 };
			return poll(&Pipe, 1, 10'000) == 1 && (Pipe.revents & POLLERR) != 0;
		}

		void Send(const std::string& Bytes) const
		{
			std::fwrite(Bytes.data(), 1, Bytes.size(), Server);
			std::fflush(Server);
		}

		FModelServer MakeServer(const char* Host, const std::string& CaFile) const
		{
			FModelServer Asked;
			Asked.BaseUrl = std::string("https://") + Host + ':' + std::to_string(Port) + "/v1";
			Asked.CaFile = CaFile.empty() ? std::string() : Folder.AtBytes(CaFile);
			return Asked;
		}

		/** Waits until the server has been sent a text so many times, each with the end of a line behind it. */
		bool WaitUntilSent(const std::string& Line, int Times) const
		{
			for (int Try = 0; Try < 2000; ++Try)
			{
				const std::string Said = ReadSaid();
				int Count = 0;
				for (size_t Place = Said.find(Line); Place != std::string::npos; Place = Said.find(Line, Place + 1))
				{
					++Count;
				}
				if (Count >= Times)
				{
					return true;
				}
				std::this_thread::sleep_for(std::chrono::milliseconds(5));
			}
			return false;
		}

		/** What the server lists, or the words for the user. */
		std::string List(const char* Host, const std::string& CaFile) const
		{
			const FModelServer Asked = MakeServer(Host, CaFile);
			const FChatCompletions Dialect;
			FModelClient Client(Dialect, Asked);
			std::vector<FModelInfo> Models;
			const FModelProblem Problem = Client.ListModels(Models);
			if (Problem)
			{
				EXPECT_TRUE(Models.empty());
				return DescribeProblem(Problem, Asked, "far");
			}
			return Models.size() == 1 ? Models[0].Id : "(no list)";
		}

		/** A frame of HTTP/2. */
		static std::string Frame(char Type, char Flags, char StreamId, const std::string& Payload)
		{
			const char Head[] = { 0, 0, static_cast<char>(Payload.size()), Type, Flags, 0, 0, 0, StreamId };
			return std::string(Head, sizeof(Head)) + Payload;
		}

		/** Status 200 and a whole body. */
		static std::string AnswerFrames(char StreamId, const std::string& Body)
		{
			return Frame(1, 4, StreamId, "\x88") + Frame(0, 1, StreamId, Body);
		}

		FTempFolder Folder;
		FILE* Server = nullptr;
		pid_t Process = 0;
		int Port = 0;
	};
}

TEST_F(FTlsTest, OnlyAServerThatIsVouchedForUnderItsNameIsTrusted)
{
	ASSERT_NO_FATAL_FAILURE(Serve("-WWW"));
	EXPECT_EQ(List("localhost", "ca.pem"), "far");
	struct FCase
	{
		const char* Why;
		const char* Host;
		const char* CaFile;
	};
	for (const FCase& Case : { FCase{ "nobody vouches for it", "localhost", "" }, FCase{ "somebody else would", "localhost", "other.pem" },
			 FCase{ "it goes by another name", "127.0.0.1", "ca.pem" } })
	{
		SCOPED_TRACE(Case.Why);
		const std::string Words = List(Case.Host, Case.CaFile);
		EXPECT_NE(Words.find("certificate"), std::string::npos) << Words;
	}
	EXPECT_NE(List("localhost", "missing.pem"), "far");
}

TEST_F(FTlsTest, AnAnswerIsStreamedPieceByPiece)
{
	ASSERT_NO_FATAL_FAILURE(Serve(SendsWhatIsWritten));
	constexpr int Pieces = 5000;
	std::vector<std::string> Datas;
	std::string Whole;
	for (int Index = 0; Index < Pieces; ++Index)
	{
		const std::string Piece = std::to_string(Index) + " \u00e4\n";
		Datas.push_back(PeerText::Say(Piece));
		Whole += Piece;
	}
	Datas.push_back(PeerText::Chunk("{}", "stop"));
	Datas.push_back("[DONE]");
	std::promise<void> FirstIsThere;
	std::thread Peer(
		[&]
		{
			EXPECT_TRUE(WaitUntilSaid("POST /v1/chat/completions"));
			const std::string Stream = PeerText::Stream(Datas);
			// The first pieces are told before the rest is sent.
			const size_t Half = Stream.size() / 2;
			Send(Stream.substr(0, Half));
			EXPECT_EQ(FirstIsThere.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
			Send(Stream.substr(Half));
		});
	const FChatCompletions Dialect;
	FModelClient Client(Dialect, MakeServer("localhost", "ca.pem"));
	std::string Told;
	const FModelReply Reply = Client.Ask(FModelRequest(),
		[&](const FReplyPiece& Piece)
		{
			if (Told.empty())
			{
				FirstIsThere.set_value();
			}
			Told += Piece.Bytes;
		});
	Peer.join();
	EXPECT_FALSE(Reply.Problem) << WireTests::Dump(Reply).substr(0, 400);
	EXPECT_TRUE(Reply.Text == Whole) << Reply.Text.size();
	EXPECT_TRUE(Told == Whole) << Told.size();
}

TEST_F(FTlsTest, CancelInMidStreamClosesTheConnection)
{
	ASSERT_NO_FATAL_FAILURE(Serve(SendsWhatIsWritten));
	const FChatCompletions Dialect;
	FModelClient Client(Dialect, MakeServer("localhost", "ca.pem"));
	std::promise<void> IsStreaming;
	FModelReply Reply;
	std::thread Worker([&] { Reply = Client.Ask(FModelRequest(), [&](const FReplyPiece&) { IsStreaming.set_value(); }); });
	EXPECT_TRUE(WaitUntilSaid("POST /v1/chat/completions"));
	Send(PeerText::StreamHead() + PeerText::Events({ PeerText::Say("half ") }));
	EXPECT_EQ(IsStreaming.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
	Client.Cancel();
	Worker.join();
	EXPECT_EQ(WireTests::Dump(Reply), "Missing 'half ' !Cancelled");
	// It takes one connection, and ends with that.
	EXPECT_TRUE(WaitUntilGone());
}

TEST_F(FTlsTest, AKeptConnectionThatIsGivenUpIsMadeAnew)
{
	ASSERT_NO_FATAL_FAILURE(Serve("-quiet -debug -alpn h2 -naccept 2"));
	const std::string Settings = Frame(4, 0, 0, "") + Frame(4, 1, 0, "");
	// Says that it has taken no request after the first one, and nothing more.
	const std::string GoAway = Frame(7, 0, 0, std::string("\0\0\0\1\0\0\0\0", 8));
	std::thread Peer(
		[&]
		{
			EXPECT_TRUE(WaitUntilSent("first\n", 1));
			Send(Settings + AnswerFrames(1, "one"));
			EXPECT_TRUE(WaitUntilSent("second\n", 1));
			Send(GoAway);
			EXPECT_TRUE(WaitUntilSent("second\n", 2)) << "it was not asked again";
			Send(Settings + AnswerFrames(1, "two"));
		});
	struct FBody : IHttpReader
	{
		virtual void OnHead(const FHttpHead&) override { ++Heads; }
		virtual EFlow OnBytes(std::string_view Bytes) override
		{
			Text += Bytes;
			return EFlow::More;
		}
		std::string Text;
		int Heads = 0;
	};
	FHttpStream Stream;
	FHttpRequest Request;
	Request.Url = "https://localhost:" + std::to_string(Port) + "/";
	Request.CaFile = Folder.AtBytes("ca.pem");
	for (const auto& [Asked, Answered] : { std::pair("first\n", "one"), std::pair("second\n", "two") })
	{
		Request.Body = Asked;
		FBody Body;
		const FHttpReply Reply = Stream.Run(Request, Body);
		EXPECT_EQ(Reply.End, EHttpEnd::Complete) << Reply.Detail;
		EXPECT_EQ(Body.Text, Answered);
		EXPECT_EQ(Body.Heads, 1);
	}
	Peer.join();
}
