#include "Model/ChatCompletions.h"
#include "Model/ModelClient.h"
#include "Support/Base/TempFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

// A server with certificates made for the test, by the openssl program.

using namespace Velmora;

namespace
{
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

			// The shell says its number before it becomes the server.
			const std::string Serve = "cd '" + Folder.AtBytes("") +
				"' && echo $$ && exec openssl s_server -WWW -accept 127.0.0.1:0 -cert server.pem -key server.key 2>/dev/null";
			Server = popen(Serve.c_str(), "r");
			ASSERT_NE(Server, nullptr);
			char Line[256];
			while (Port == 0 && std::fgets(Line, sizeof(Line), Server))
			{
				Process = Process == 0 ? std::atoi(Line) : Process;
				const std::string Said = Line;
				Port = Said.rfind("ACCEPT ", 0) == 0 ? std::atoi(Said.substr(Said.rfind(':') + 1).c_str()) : 0;
			}
			ASSERT_NE(Port, 0) << "it does not say where it listens";
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

		/** What the server lists, or the words for the user. */
		std::string List(const char* Host, const std::string& CaFile) const
		{
			FModelServer Asked;
			Asked.BaseUrl = std::string("https://") + Host + ':' + std::to_string(Port) + "/v1";
			Asked.CaFile = CaFile.empty() ? std::string() : Folder.AtBytes(CaFile);
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

		FTempFolder Folder;
		FILE* Server = nullptr;
		pid_t Process = 0;
		int Port = 0;
	};
}

TEST_F(FTlsTest, OnlyAServerThatIsVouchedForUnderItsNameIsTrusted)
{
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
