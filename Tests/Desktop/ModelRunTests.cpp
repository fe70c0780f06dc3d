#include "Desktop/ProgramDriver.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <mutex>

using namespace PeerText;
namespace fs = std::filesystem;

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
			if (Body.find("\"tool_call_id\":\"call00002\"") != std::string::npos)
			{
				return Stream({ Say("Wrote **notes.md**."), Chunk("{}", "stop"), "[DONE]" });
			}
			const bool bHasLooked = Body.find("\"tool_call_id\":\"call00001\"") != std::string::npos;
			return Stream({ Say(bHasLooked ? "Now I write." : "I look."),
				bHasLooked ? Call(0, "call00002", "create_file", R"({"path":"notes.md","content":"from the model\n"})")
						   : Call(0, "call00001", "search_files", R"({"term":")" + Project.Symbol + R"("})"),
				Chunk("{}", "tool_calls"), "[DONE]" });
		}));
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--server", Peer.GetUrl(), "--prompt", "take notes" },
		"", Project.OutFolder.string(), { "VELMORA_SERVER_KEY=secret-key-qzvw", "http_proxy=http://127.0.0.1:9" });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Output, "Wrote **notes.md**.")) << Run.Output;
	EXPECT_EQ(ReadFile(Project.Folder / "notes.md"), "from the model\n");
	ASSERT_EQ(Requests.size(), 4u);
	EXPECT_TRUE(Contains(Requests[1].Body, "\"model\":\"tiny\""));
	EXPECT_TRUE(Contains(Requests[2].Body, Project.File)) << "the result of the search: " << Requests[2].Body;
	EXPECT_TRUE(Contains(Requests[3].Head, "Authorization: Bearer secret-key-qzvw"));
	EXPECT_FALSE(Contains(Run.Output + Run.Error, "secret-key-qzvw"));

	const FRun Models = RunProgram({ "--server", Peer.GetUrl(), "--list-models" });
	EXPECT_EQ(Models.ExitCode, 0) << Models.Error;
	EXPECT_EQ(Models.Output, "tiny  8192 tokens\n");
}

TEST(ModelRun, WithoutTheWallsNoCommandRunsAndThatIsSaid)
{
	// The program sees a machine without the one that makes the walls, and a model that asks for a command all the same.
	const FRandomProject Project;
	std::mutex Mutex;
	std::string FirstBody;
	std::string LastBody;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[&](const FPeerConnection::FRequest& Request, int)
		{
			const std::scoped_lock Lock(Mutex);
			if (Request.Method == "GET")
			{
				return Answer("404 No", "application/json", "{}");
			}
			FirstBody = FirstBody.empty() ? Request.Body : FirstBody;
			LastBody = Request.Body;
			const bool bHasResult = Contains(Request.Body, "\"tool_call_id\"");
			return Stream({ bHasResult ? Say("No.") : Call(0, "call00001", "run_command", R"({"command":"touch made.txt"})"),
				Chunk("{}", bHasResult ? "stop" : "tool_calls"), "[DONE]" });
		}));
	const std::string Line = "env -u DISPLAY -u WAYLAND_DISPLAY XDG_DATA_HOME='" + Project.Path("data") + "' XDG_CONFIG_HOME='" +
		Project.Path("config") + "' timeout 120 bwrap --dev-bind / / --ro-bind /dev/null /usr/bin/bwrap '" + std::string(VELMORA_PROGRAM) +
		"' --headless --project '" + Project.Folder.string() + "' --server " + Peer.GetUrl() +
		" --model m --allow run_command --prompt 'touch it' >'" + Project.Path("printed") + "' 2>&1";
	EXPECT_NE(std::system(Line.c_str()), -1);
	EXPECT_FALSE(Contains(FirstBody, "\"name\":\"run_command\"")) << FirstBody;
	EXPECT_TRUE(Contains(FirstBody, "You cannot run commands: bubblewrap is not installed")) << FirstBody;
	EXPECT_TRUE(Contains(LastBody, "bubblewrap is not installed (/usr/bin/bwrap), so no commands can be run.")) << LastBody;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("printed")), "No.")) << ReadFile(Project.Path("printed"));
	EXPECT_FALSE(fs::exists(Project.Folder / "made.txt"));
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
	EXPECT_TRUE(Contains(Empty.Error, "No connection is set up.")) << Empty.Error;
	const FRun Gone = RunProgram(
		{ "--headless", "--project", Project.Folder.string(), "--server", "http://127.0.0.1:1", "--model", "m", "--prompt", "x" });
	EXPECT_EQ(Gone.ExitCode, 1);
	EXPECT_TRUE(Contains(Gone.Output + Gone.Error, "The server at http://127.0.0.1:1 cannot be reached")) << Gone.Output << Gone.Error;
}

TEST(ModelRun, AConnectionIsPickedInTheMenuAndItsActivityIsShown)
{
	const FRandomProject Project;
	std::mutex Mutex;
	std::string Heads;
	int Posts = 0;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[&](const FPeerConnection::FRequest& Request, int)
		{
			const std::scoped_lock Lock(Mutex);
			Heads += Request.Head;
			if (Request.Method == "GET")
			{
				return Answer("200 OK", "application/json", R"({"data":[{"id":"tiny","meta":{"n_ctx":8192}}]})");
			}
			++Posts;
			return Stream({ Chunk(R"({"reasoning_content":"Let me think."})"), Say("Hello from the model."), Chunk("{}", "stop"),
				R"({"choices":[],"usage":{"prompt_tokens":1234,"completion_tokens":56}})", "[DONE]" });
		}));
	const std::string Config = Project.Path("config/velmora-ui/connections.json");
	std::filesystem::create_directories(std::filesystem::path(Config).parent_path());
	std::ofstream(Config) << R"({ "connections": [ { "name": "local", "url": ")" << Peer.GetUrl()
						  << R"(", "model": "tiny", "key_variable": "PEER_KEY" } ] })";
	std::filesystem::permissions(Config, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
	const std::string Script = Project.Write("steps.txt",
		"wait idle 30\nclick Tools\nclick Agent\nclick local\nwait idle 10\nclick #InputTextBox\ntype hello\nkey CTRL+ENTER\nwait idle 30\n"
		"dump answered.json\nclick Window\nclick Agent Activity\nwait idle 10\ndump activity.json\n"
		"click #CopyActivity\nclick Velmora AI\nclick #InputTextBox\nkey CTRL+V\nwait idle 10\ndump all.json\nkey CTRL+A\nkey DELETE\n"
		"click Window\nclick Agent Activity\nclick #ActivityList\nkey DOWN\n"
		"key CTRL+C\nclick Velmora AI\nclick #InputTextBox\nkey CTRL+V\nwait idle 10\ndump copied.json\nkey CTRL+A\nkey DELETE\n"
		"click Tools\nclick Agent\nclick Built-in agent\nwait idle 10\nclick #InputTextBox\ntype help\nkey CTRL+ENTER\n"
		"wait idle 30\ndump local.json\n");
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", Script }, "", Project.OutFolder.string(),
		{ "XDG_CONFIG_HOME=" + Project.Path("config"), "PEER_KEY=secret-key-qzvw" });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Heads, "Authorization: Bearer secret-key-qzvw"));
	const std::string Answered = ReadFile(Project.Path("answered.json"));
	EXPECT_TRUE(Contains(Answered, " - local - Velmora UI\"")) << "the title names who answers";
	EXPECT_TRUE(Contains(Answered, "Hello from the model."));
	const std::string Activity = ReadFile(Project.Path("activity.json"));
	for (const char* Text : { "local, tiny", "1 request, 1,290 tokens", "Let me think." })
	{
		EXPECT_TRUE(Contains(Activity, Text)) << Text;
	}
	// A dump has of a list its first text; what is copied has the lines whole.
	const std::string All = ReadFile(Project.Path("all.json"));
	const std::string Copied = ReadFile(Project.Path("copied.json"));
	for (const std::string& Text : { All, Copied })
	{
		EXPECT_TRUE(Contains(Text, "1,234 + 56 tokens, 1,290 of 8,192 used, 6,902 left")) << Text;
	}
	EXPECT_FALSE(Contains(Activity + All + Copied, "qzvw")) << "a key is shown nowhere";
	const std::string Local = ReadFile(Project.Path("local.json"));
	EXPECT_TRUE(Contains(Local, " - Built-in agent - Velmora UI\""));
	EXPECT_TRUE(Contains(Local, "Hello from the model.")) << "the conversation goes on";
	EXPECT_TRUE(Contains(Local, "I answer from the files of this project"));
	EXPECT_EQ(Posts, 1) << "the built-in agent asks nobody";
}
