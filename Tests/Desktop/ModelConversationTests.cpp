#include "Desktop/ProgramDriver.h"
#include "Support/Peer/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>

// Whole conversations of the program with a scripted server, as a user has them.

using namespace PeerText;
namespace fs = std::filesystem;

namespace
{
	bool HasResult(const std::string& Body, const std::string& CallId)
	{
		return Contains(Body, "\"tool_call_id\":\"" + CallId + '"');
	}

	std::string Finish(std::vector<std::string> Datas, const char* Reason)
	{
		Datas.push_back(Chunk("{}", Reason));
		Datas.push_back("[DONE]");
		return Stream(Datas);
	}

	/** As a program dies that is killed, wherever it is. Only the one that works on that project. */
	void KillProgramOf(const fs::path& Project)
	{
		for (const fs::directory_entry& Entry : fs::directory_iterator("/proc"))
		{
			std::error_code Error;
			const std::string Line = ReadFile(Entry.path() / "cmdline");
			if (Contains(Line, Project.string()) && fs::read_symlink(Entry.path() / "exe", Error) == fs::canonical(VELMORA_PROGRAM))
			{
				kill(std::atoi(Entry.path().filename().c_str()), SIGKILL);
			}
		}
	}

	/** The program with a server, by a script; what it stores stays from run to run. */
	FRun RunWith(const FScriptedPeer& Peer, const FRandomProject& Project, const std::string& Steps)
	{
		const std::string Script = Project.Write("steps.txt", Steps);
		return RunProgram(
			{ "--headless", "--project", Project.Folder.string(), "--server", Peer.GetUrl(), "--model", "m", "--script", Script }, "",
			Project.OutFolder.string(), { "XDG_DATA_HOME=" + Project.Path("data") });
	}

	const char* const OpenLatest =
		"wait idle 30\nclick Conversations are stored in the Velmora folder in your Engine's Saved folder\nkey DOWN\nkey ENTER\n"
		"wait idle 30\n";
}

TEST(ModelConversation, RoundsQuestionsARefusalAndAStop)
{
	const FRandomProject Project;
	std::ofstream(Project.Folder / "a.txt") << "one\n";
	std::mutex Mutex;
	std::string LastBody;
	std::atomic<bool> bWasClosed = false;
	FScriptedPeer Peer(
		[&](FPeerConnection& Connection)
		{
			FPeerConnection::FRequest Request;
			while (Connection.ReadRequest(Request))
			{
				const std::scoped_lock Lock(Mutex);
				const std::string& Body = Request.Body;
				LastBody = Body;
				std::string Text;
				if (Contains(Body, "tell me for ever"))
				{
					Connection.Send(StreamHead() + Events({ Say("Once upon a time") }));
					bWasClosed = Connection.WaitForClose();
					return;
				}
				if (Request.Method == "GET")
				{
					Text = Answer("404 No", "application/json", "{}");
				}
				else if (HasResult(Body, "call00005"))
				{
					Text = Finish({ Say("All **done**.") }, "stop");
				}
				else if (HasResult(Body, "call00004"))
				{
					// Long enough for the script to see the state between the two questions.
					usleep(500000);
					Text = Finish({ Call(0, "call00005", "run_command", R"({"command":"rm a.txt"})") }, "tool_calls");
				}
				else if (HasResult(Body, "call00003"))
				{
					Text = Finish({ Call(0, "call00004", "run_command", R"({"command":"echo three >> a.txt"})") }, "tool_calls");
				}
				else if (HasResult(Body, "call00001"))
				{
					Text = Finish(
						{ Say("Now I change it."), Call(0, "call00003", "edit_file", R"({"path":"a.txt","old":"one","new":"two"})") },
						"tool_calls");
				}
				else
				{
					Text = Finish({ Say("I look."),
									  Call(0, "call00000", "update_plan",
										  R"({"goal":"G","steps":[{"text":"Look around","status":"running"},{"text":"Change it"}]})"),
									  Call(1, "call00001", "read_file", R"({"path":"a.txt"})"),
									  Call(2, "call00002", "search_files", "{\"term\":\"" + Project.Symbol + "\"}") },
						"tool_calls");
				}
				Connection.Send(Text);
			}
		});
	const FRun Run = RunWith(Peer, Project,
		"type work\nkey CTRL+ENTER\nwait state Paused 30\ndump question.json\ntick 90\nclick #ContinueButton\n"
		"wait state Thinking 30\nwait state Paused 30\ntick 60\nclick Refuse\nwait state AwaitingInput 30\nwait idle 30\ndump done.json\n"
		"click #InputTextBox\ntype tell me for ever\nkey CTRL+ENTER\nwait state Thinking 30\ntick 60\nclick #CancelButton\n"
		"wait state Cancelled 5\ndump stopped.json\nclick Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\n"
		"key CTRL+A\nkey DELETE\nclick Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\ndump undone.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string Question = ReadFile(Project.Path("question.json"));
	EXPECT_TRUE(Contains(Question, "echo three >> a.txt")) << Question;
	const std::string Done = ReadFile(Project.Path("done.json"));
	for (const char* Shown : { "I look.", "Now I change it.", "All **done**.", "Look around" })
	{
		EXPECT_TRUE(Contains(Done, Shown)) << Shown << " in " << Done;
	}
	EXPECT_TRUE(HasResult(LastBody, "call00002")) << "parallel calls are answered each: " << LastBody;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("stopped.json")), "\"state\": \"Cancelled\""));
	EXPECT_TRUE(bWasClosed);
	EXPECT_FALSE(Contains(LastBody, "Once upon")) << "half an answer is not sent back";
	EXPECT_EQ(ReadFile(Project.Folder / "a.txt"), "one\n") << "undone to the byte, the command's part too";
	EXPECT_TRUE(Contains(ReadFile(Project.Path("undone.json")), "\"promptText\": \"work\""));
}

TEST(ModelConversation, GoesOnAfterTheProgramWasKilledInMidTurn)
{
	// Killed while it waits for the answer, in mid-stream, and while a tool runs.
	for (const char* Moment : { "waiting", "streaming", "tool" })
	{
		SCOPED_TRACE(Moment);
		const std::string When = Moment;
		const FRandomProject Project;
		std::mutex Mutex;
		std::string LastBody;
		FScriptedPeer Peer(
			[&](FPeerConnection& Connection)
			{
				FPeerConnection::FRequest Request;
				while (Connection.ReadRequest(Request))
				{
					const std::scoped_lock Lock(Mutex);
					LastBody = Request.Body;
					if (Request.Method == "GET")
					{
						Connection.Send(Answer("404 No", "application/json", "{}"));
					}
					else if (Contains(Request.Body, "and now?"))
					{
						Connection.Send(Finish({ Say("Here I am again.") }, "stop"));
					}
					else if (When == "tool")
					{
						Connection.Send(Finish({ Say("I write."), Call(0, "call00001", "create_file", R"({"path":"n.md","content":"x\n"})"),
												   Call(1, "call00002", "run_command", R"({"command":"sleep 60"})") },
							"tool_calls"));
						for (int Try = 0; Try < 500 && !fs::exists(Project.Folder / "n.md"); ++Try)
						{
							usleep(10000);
						}
						KillProgramOf(Project.Folder);
						return;
					}
					else if (!HasResult(Request.Body, "call00001"))
					{
						Connection.Send(Finish(
							{ Say("I write."), Call(0, "call00001", "create_file", R"({"path":"n.md","content":"x\n"})") }, "tool_calls"));
					}
					else
					{
						if (When == "streaming")
						{
							Connection.Send(StreamHead() + Events({ Say("Half an ans") }));
							usleep(200000);
						}
						KillProgramOf(Project.Folder);
						return;
					}
				}
			});
		EXPECT_EQ(RunWith(Peer, Project, "type go\nkey CTRL+ENTER\nwait state AwaitingInput 60\n").ExitCode, 128 + SIGKILL);
		EXPECT_EQ(ReadFile(Project.Folder / "n.md"), "x\n");
		const FRun Run = RunWith(Peer, Project,
			std::string(OpenLatest) +
				"dump loaded.json\nclick #InputTextBox\ntype and now?\nkey CTRL+ENTER\nwait idle 30\ndump next.json\n"
				"click Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\nkey CTRL+A\nkey DELETE\n"
				"click Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\ndump undone.json\n");
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		const std::string Loaded = ReadFile(Project.Path("loaded.json"));
		EXPECT_TRUE(Contains(Loaded, "\"content\": \"go\"")) << Loaded;
		EXPECT_TRUE(Contains(Loaded, "was cut short")) << Loaded;
		EXPECT_TRUE(Contains(ReadFile(Project.Path("next.json")), "Here I am again."));
		// The request that a server takes: each call that was made has its result, and what was said stands once and in order.
		EXPECT_TRUE(HasResult(LastBody, "call00001")) << LastBody;
		EXPECT_EQ(HasResult(LastBody, "call00002"), When == "tool") << LastBody;
		EXPECT_FALSE(Contains(LastBody, "Half an ans"));
		const size_t Asked = LastBody.find("\"content\":\"go\"");
		const size_t Called = LastBody.find("\"tool_calls\"");
		EXPECT_TRUE(Asked < Called && Called < LastBody.find("\"tool_call_id\"") && Called < LastBody.find("and now?")) << LastBody;
		EXPECT_FALSE(fs::exists(Project.Folder / "n.md")) << "what the run that was killed did can be taken back";
		EXPECT_TRUE(Contains(ReadFile(Project.Path("undone.json")), "\"promptText\": \"go\""));
	}
}

TEST(ModelConversation, WithoutAConnectionNoNetworkIsTouched)
{
	if (std::system("strace -V >/dev/null 2>&1") != 0)
	{
		GTEST_SKIP() << "strace is not installed";
	}
	const FRandomProject Project;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach([](const FPeerConnection::FRequest&, int) { return Finish({ Say("Hello.") }, "stop"); }));
	Project.Write("steps.txt",
		"type find " + Project.Symbol +
			"\nkey CTRL+ENTER\nwait idle 60\nclick #InputTextBox\ntype create n.md with \"x\"\nkey CTRL+ENTER\nwait idle 60\n"
			"click Tools\nkey ESC\ndump end.json\n");
	const auto Trace = [&Project](const std::string& More)
	{
		const std::string Line = "cd '" + Project.OutFolder.string() +
			"' && env -u DISPLAY -u WAYLAND_DISPLAY XDG_DATA_HOME=data XDG_CONFIG_HOME=config ASAN_OPTIONS=detect_leaks=0 "
			"timeout 120 strace -f -qq -e trace=socket,connect,sendto -o sockets '" +
			std::string(VELMORA_PROGRAM) + "' --headless --project '" + Project.Folder.string() + "' --script steps.txt " + More +
			" >/dev/null 2>&1";
		EXPECT_EQ(std::system(Line.c_str()), 0) << Line;
		return Contains(ReadFile(Project.Path("sockets")), "AF_INET");
	};
	EXPECT_FALSE(Trace("")) << ReadFile(Project.Path("sockets"));
	EXPECT_TRUE(fs::exists(Project.Folder / "n.md"));
	EXPECT_TRUE(Trace("--model m --server " + Peer.GetUrl())) << "the trace would show it";
}
