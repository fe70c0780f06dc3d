#include "Desktop/ProgramDriver.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <mutex>

using namespace PeerText;

TEST(ModelRun, AModelReadsChangesAndAnswers)
{
	const FRandomProject Project;
	std::mutex Mutex;
	std::vector<FPeerConnection::FRequest> Requests;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[&](const FPeerConnection::FRequest& Request, int)
		{
			const std::scoped_lock Lock(Mutex);
			Requests.push_back(Request);
			if (Request.Method == "GET")
			{
				return Answer("200 OK", "application/json", R"({"data":[{"id":"tiny","meta":{"n_ctx":8192}}]})");
			}
			const std::string& Body = Request.Body;
			if (Body.find("\"tool_call_id\":\"c2\"") != std::string::npos)
			{
				return Stream({ Say("Wrote **notes.md**."), Chunk("{}", "stop"), "[DONE]" });
			}
			const bool bHasLooked = Body.find("\"tool_call_id\":\"c1\"") != std::string::npos;
			return Stream({ Say(bHasLooked ? "Now I write." : "I look."),
				bHasLooked ? Call(0, "c2", "create_file", R"({"path":"notes.md","content":"from the model\n"})")
						   : Call(0, "c1", "search_files", R"({"term":")" + Project.Symbol + R"("})"),
				Chunk("{}", "tool_calls"), "[DONE]" });
		}));
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--server", Peer.GetUrl(), "--prompt", "take notes" },
		"", Project.OutFolder.string(), { "VELMORA_SERVER_KEY=secret-key-4711", "http_proxy=http://127.0.0.1:9" });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Output, "Wrote **notes.md**.")) << Run.Output;
	EXPECT_EQ(ReadFile(Project.Folder / "notes.md"), "from the model\n");
	ASSERT_EQ(Requests.size(), 4u);
	EXPECT_TRUE(Contains(Requests[1].Body, "\"model\":\"tiny\""));
	EXPECT_TRUE(Contains(Requests[2].Body, Project.File)) << "the result of the search: " << Requests[2].Body;
	EXPECT_TRUE(Contains(Requests[3].Head, "Authorization: Bearer secret-key-4711"));
	EXPECT_FALSE(Contains(Run.Output + Run.Error, "secret-key-4711"));

	const FRun Models = RunProgram({ "--server", Peer.GetUrl(), "--list-models" });
	EXPECT_EQ(Models.ExitCode, 0) << Models.Error;
	EXPECT_EQ(Models.Output, "tiny  8192 tokens\n");
}

TEST(ModelRun, WrongChoicesAreTold)
{
	const FRandomProject Project;
	const std::string Config = "XDG_CONFIG_HOME=" + Project.OutFolder.string();
	const FRun Unknown = RunProgram({ "--connection", "nobody", "--prompt", "x" }, "", "", { Config });
	EXPECT_EQ(Unknown.ExitCode, 2);
	EXPECT_TRUE(Contains(Unknown.Error, "There is no connection \"nobody\"")) << Unknown.Error;
	EXPECT_EQ(RunProgram({ "--server", "ftp://x", "--prompt", "x" }).ExitCode, 2);
	EXPECT_EQ(RunProgram({ "--server", "http://127.0.0.1:1", "--connection", "x" }).ExitCode, 2);
	EXPECT_EQ(RunProgram({ "--list-models" }).ExitCode, 2);
	const FRun Empty = RunProgram({ "--list-connections" }, "", "", { Config });
	EXPECT_EQ(Empty.ExitCode, 0);
	EXPECT_EQ(Empty.Output, "");
	const FRun Gone = RunProgram(
		{ "--headless", "--project", Project.Folder.string(), "--server", "http://127.0.0.1:1", "--model", "m", "--prompt", "x" });
	EXPECT_EQ(Gone.ExitCode, 1);
	EXPECT_TRUE(Contains(Gone.Output + Gone.Error, "The server at http://127.0.0.1:1 cannot be reached")) << Gone.Output << Gone.Error;
}
