#include "Desktop/ProgramDriver.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

// What the program does with a key and with clicks that were meant for something else, as a whole.

using namespace PeerText;
namespace fs = std::filesystem;

namespace
{
	constexpr const char* Key = "sk-0123456789-qzvw";

	std::string Finish(std::vector<std::string> Datas, const char* Reason)
	{
		Datas.push_back(Chunk("{}", Reason));
		Datas.push_back("[DONE]");
		return Stream(Datas);
	}
}

TEST(ModelSecret, AKeyIsSentAndWrittenNowhere)
{
	if (std::system("strace -V >/dev/null 2>&1") != 0)
	{
		GTEST_SKIP() << "strace is not installed";
	}
	// A server that says the key wherever it can.
	const FRandomProject Project;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[](const FPeerConnection::FRequest& Request, int)
		{
			const std::string Said = std::string("It is ") + Key + ".";
			if (Request.Method == "GET")
			{
				return Answer("200 OK", "application/json", R"({"data":[{"id":"m","meta":{"n_ctx":8192}}]})");
			}
			if (Contains(Request.Body, "\"tool_call_id\":\"call00001\""))
			{
				return Finish({ Chunk("{\"reasoning_content\":" + Quote(Said) + "}"), Say("It is sk-01234"), Say("56789-qzvw.") }, "stop");
			}
			return Contains(Request.Body, "again")
				? Finish({ Say(Said), Call(0, "call00001", "create_file", "{\"path\":\"n.md\",\"content\":" + Quote(Said) + "}") },
					  "tool_calls")
				: Answer("401 No", "application/json", "{\"error\":{\"message\":" + Quote("Incorrect API key: " + Said) + "}}");
		}));
	const std::string Config = Project.Path("config/velmora-ui/connections.json");
	fs::create_directories(fs::path(Config).parent_path());
	std::ofstream(Config) << R"({ "connections": [ { "name": "local", "url": ")" << Peer.GetUrl()
						  << R"(", "model": "m", "key_variable": "PEER_KEY" } ] })";
	fs::permissions(Config, fs::perms::owner_read | fs::perms::owner_write);
	Project.Write("steps.txt",
		"type go\nkey CTRL+ENTER\nwait idle 60\nclick #InputTextBox\ntype again\nkey CTRL+ENTER\nwait idle 60\ndump said.json\n"
		"click Window\nclick Agent Activity\nwait idle 10\nclick #CopyActivity\ndump activity.json\n"
		"click Window\nclick Output Log\nwait idle 10\ndump log.json\n");
	const std::string Line = "cd '" + Project.OutFolder.string() +
		"' && env -u DISPLAY -u WAYLAND_DISPLAY -u DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR=run XDG_DATA_HOME=data "
		"XDG_CONFIG_HOME=\"$PWD/config\" "
		"PEER_KEY=" +
		Key +
		" ASAN_OPTIONS=detect_leaks=0 timeout 120 strace -f -qq -s 65536 -e trace=write,writev,pwrite64,pwritev,sendto,sendmsg "
		"-o /dev/fd/9 9>'" +
		Project.Path("trace") + "' '" + std::string(VELMORA_PROGRAM) + "' --headless --project '" + Project.Folder.string() +
		"' --connection local --record tape --script steps.txt >printed 2>&1";
	ASSERT_EQ(std::system(Line.c_str()), 0) << Line << ReadFile(Project.Path("printed"));
	EXPECT_TRUE(Contains(ReadFile(Project.Path("said.json")), "It is [key].")) << "what hides it is seen";
	EXPECT_EQ(ReadFile(Project.Folder / "n.md"), "It is [key].");

	// 1. What was written, whether or not it still stands in a file. Sockets get it, so the trace would show it.
	bool bIsSent = false;
	std::ifstream Trace(Project.Path("trace"));
	for (std::string Call; std::getline(Trace, Call);)
	{
		const bool bHasKey = Contains(Call, Key);
		const bool bIsRequest = Contains(Call, "Authorization: Bearer ");
		bIsSent |= bHasKey && bIsRequest;
		EXPECT_TRUE(!bHasKey || bIsRequest) << Call.substr(0, 400);
	}
	EXPECT_TRUE(bIsSent);
	fs::remove(Project.Path("trace"));

	// 2. Every file that there is now, and all that was printed.
	int Files = 0;
	for (const fs::path& Root : { Project.OutFolder, Project.Folder })
	{
		for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(Root))
		{
			const bool bIsFile = Entry.is_regular_file();
			Files += bIsFile;
			EXPECT_FALSE(bIsFile && Contains(ReadFile(Entry.path()), "qzvw")) << Entry.path();
		}
	}
	EXPECT_GT(Files, 8) << "the store, the tape, the dumps and what was printed";
}

TEST(ModelSecret, ADoubleClickOnPauseGrantsNothing)
{
	const FRandomProject Project;
	std::ofstream(Project.Folder / "a.txt") << "one\n";
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[](const FPeerConnection::FRequest& Request, int)
		{
			return Request.Method == "GET" ? Answer("404 No", "application/json", "{}")
				: Contains(Request.Body, "\"tool_call_id\":\"call00001\"")
				? Finish({ Say("Done.") }, "stop")
				: Finish({ Call(0, "call00001", "run_command", R"({"command":"rm a.txt"})") }, "tool_calls");
		}));
	// Paused while the answer comes; the click that goes on meets the question, and another follows at once.
	const std::string Script = Project.Write("steps.txt",
		"type work\nkey CTRL+ENTER\nclick #PauseButton\nwait state Paused 5\ntick 120\nclick #ContinueButton\nwait state Paused 30\n"
		"click #ContinueButton\ntick 30\ndump asked.json\ntick 90\nclick #ContinueButton\nwait state AwaitingInput 30\nwait idle 30\n"
		"dump done.json\n");
	const FRun Run =
		RunProgram({ "--headless", "--project", Project.Folder.string(), "--server", Peer.GetUrl(), "--model", "m", "--script", Script },
			"", Project.OutFolder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("asked.json")), "\"state\": \"Paused\""));
	EXPECT_TRUE(Contains(ReadFile(Project.Path("done.json")), "Done."));
	EXPECT_FALSE(fs::exists(Project.Folder / "a.txt")) << "asked once more and granted";
}
