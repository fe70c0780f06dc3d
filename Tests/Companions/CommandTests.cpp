#include "Tools/PermissionRules.h"
#include "ChangeFixture.h"
#include "Tools/CommandSandbox.h"
#include "Tools/ToolBox.h"

#include <chrono>
#include <fcntl.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Velmora;

namespace
{
	/** Commands on a project. Where no sandbox can be made these tests fail: a machine that tries changes must have one. */
	class CommandTests : public FChangeTest
	{
	protected:
		void SetUp() override
		{
			FChangeTest::SetUp();
			ASSERT_EQ(FCommandSandbox::WhyUnavailable(), "");
		}

		/** By the tool, as if the user had agreed to it. */
		FToolResult Run(const std::string& Command)
		{
			const FProjectFiles Files(Project.Root.native());
			FToolBox Tools(Files, Journal.get(), "T1", [this] { return bIsCancelled.load(); });
			FToolArguments Arguments;
			Arguments.Set("command", Command);
			const FToolResult Asked = Tools.Run("run_command", Arguments);
			EXPECT_TRUE(Asked.Question) << "nothing runs unasked";
			Question = Asked.Question ? Asked.Question->Reason + Asked.Question->Details : std::string();
			return Tools.Run("run_command", Arguments, true);
		}

		/** By the sandbox alone, right in the project folder. */
		FCommandEnd RunBare(const std::string& Line, const FCommandLimits& Limits = FCommandLimits()) const
		{
			FSandboxedCommand Command;
			Command.Line = Line;
			Command.ProjectFolder = Command.WritableFolder = Project.Root.native();
			Command.Limits = Limits;
			return FCommandSandbox::Run(Command, [this] { return bIsCancelled.load(); });
		}

		std::string Read(const std::string& Path) const
		{
			std::ifstream File(Project.PathOf(Path), std::ios::binary);
			return std::string(std::istreambuf_iterator<char>(File), {});
		}

		bool Exists(const std::string& Path) const { return std::filesystem::exists(Project.PathOf(Path)); }

		/** Whether a process with that in its command line is still there. */
		static bool IsRunning(const std::string& Word)
		{
			for (const auto& Entry : std::filesystem::directory_iterator("/proc"))
			{
				std::ifstream File(Entry.path() / "cmdline", std::ios::binary);
				// A process that ends meanwhile fails the stream; an iterator would throw.
				std::ostringstream Read;
				Read << File.rdbuf();
				const std::string Line = Read.str();
				if (Line.find(Word) != std::string::npos)
				{
					return true;
				}
			}
			return false;
		}

		static bool WaitUntil(const std::function<bool()>& Condition)
		{
			for (int Try = 0; Try < 500 && !Condition(); ++Try)
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(10));
			}
			return Condition();
		}

		static bool Holds(const std::string& Whole, const std::string& Part) { return Whole.find(Part) != std::string::npos; }

		std::atomic<bool> bIsCancelled = false;
		std::string Question;
	};
}

TEST_F(CommandTests, WhatACommandChangesCanBeUndoneToTheByte)
{
	Project.Write("src/a.txt", "one\r\ntwo");
	Project.Write("src/gone.txt", "bye\n");
	Project.Write("same.txt", "same\n");
	const FToolResult Result = Run("printf 'x\\000y' > src/bin.dat; printf 'two\\n' >> src/a.txt; rm src/gone.txt; mkdir -p n/m; "
								   "echo new > n/m/f.sh; chmod 755 n/m/f.sh; echo same > same.txt; echo said; echo wrong >&2");
	EXPECT_TRUE(Result.bSuccess) << Result.Text;
	EXPECT_EQ(Result.Sentence, "Done, 4 files changed");
	EXPECT_TRUE(Holds(Result.Text, "said\nwrong\n")) << Result.Text;
	EXPECT_TRUE(Holds(Question, "```bash\nprintf")) << Question;
	EXPECT_EQ(Read("src/a.txt"), "one\r\ntwotwo\n");
	EXPECT_EQ(Read("src/bin.dat"), std::string("x\0y", 3));
	EXPECT_FALSE(Exists("src/gone.txt"));
	struct stat Info = {};
	EXPECT_EQ(stat(Project.PathOf("n/m/f.sh").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0755u);

	EXPECT_TRUE(UndoRequest().bSuccess);
	EXPECT_EQ(Read("src/a.txt"), "one\r\ntwo");
	EXPECT_EQ(Read("src/gone.txt"), "bye\n");
	EXPECT_FALSE(Exists("src/bin.dat"));
	EXPECT_FALSE(Exists("n"));

	EXPECT_FALSE(Run("exit 3").bSuccess);
	EXPECT_EQ(Run("exit 3").Sentence, "Ended with exit code 3");

	const FProjectFiles Files(Project.Root.native());
	FToolBox Tools(Files, Journal.get(), "T1", [] { return false; });
	for (const std::string& Hidden : { std::string("echo a\0b", 8), std::string("echo a\rb"), std::string(" ") })
	{
		const FToolResult Refused = Tools.Run("run_command", FToolArguments().Set("command", Hidden), true);
		EXPECT_FALSE(Refused.bSuccess || Refused.Question) << "what cannot be shown is not run";
	}
}

TEST_F(CommandTests, ModesLinksAndEmptyFoldersComeAlong)
{
	Project.Write("a.sh", "echo\n");
	Project.Write("b.txt", "b\n");
	Project.Write("dir/c.txt", "c\n");
	Project.Write("old/d.txt", "d\n");
	Project.Write("f", "f\n");
	std::filesystem::create_symlink("a.sh", Project.Root / "was");
	SetMode("a.sh", 0640);
	const std::vector<std::string> Before = ListProject();
	const FToolResult Result =
		Run("chmod 755 a.sh; rm b.txt; ln -s dir/c.txt b.txt; ln -sfn dir was; mkdir -p new/empty made; ln -s ../a.sh made/up; "
			"ln -s / out; ln -s dir/../../z zig; ln -s .git/hooks hooks; chmod 700 dir; "
			"mv old/d.txt made/d.txt; rmdir old; rm f; mkdir f; echo x > f/x");
	EXPECT_TRUE(Result.bSuccess) << Result.Text;
	struct stat Info = {};
	EXPECT_EQ(stat(Project.PathOf("a.sh").c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 07777, 0755u);
	EXPECT_EQ(std::filesystem::read_symlink(Project.Root / "b.txt"), "dir/c.txt");
	EXPECT_EQ(std::filesystem::read_symlink(Project.Root / "was"), "dir");
	EXPECT_EQ(std::filesystem::read_symlink(Project.Root / "made/up"), "../a.sh");
	EXPECT_TRUE(std::filesystem::is_directory(Project.Root / "new/empty"));
	EXPECT_EQ(Read("f/x"), "x\n");
	for (const char* Left : { "out", "zig", "hooks" })
	{
		EXPECT_FALSE(std::filesystem::is_symlink(Project.Root / Left)) << Left;
	}
	for (const char* Told : { "out was not taken over: it is a link that leads out of the project", "zig was not taken over",
			 "hooks was not taken over: it is a link to what commands may not write", "The mode of dir was not taken over",
			 "The folder old stays, without its files" })
	{
		EXPECT_TRUE(Holds(Result.Text, Told)) << Told << " in " << Result.Text;
	}

	EXPECT_TRUE(UndoRequest().bSuccess);
	EXPECT_EQ(ListProject(), Before) << "to the mode, link and folder";
}

TEST_F(CommandTests, NothingBeyondTheProjectIsInReach)
{
	// 1. Things of the machine that a command must not get at.
	const std::string Outside = Project.Root.native() + "-outside";
	std::filesystem::create_directories(Outside + "/home");
	std::ofstream(Outside + "/home/private") << "mine";
	const std::string Left = "/var/tmp/velmora-" + std::to_string(getpid());
	std::ofstream(Left + "-left") << "mine";
	const std::string Home = getenv("HOME") ? getenv("HOME") : "";
	setenv("HOME", (Outside + "/home").c_str(), 1);
	setenv("VELMORA_TEST_SECRET", "sesame", 1);
	const int Leak = open((Outside + "/home/private").c_str(), O_RDONLY);
	ASSERT_GE(fcntl(Leak, F_DUPFD, 77), 77);

	// 2. Each of them, tried by a command.
	const std::tuple<const char*, std::string, const char*> Cases[] = {
		{ "the machine cannot be written", "(echo x > /etc/velmora-test) 2>/dev/null || echo refused", "refused\n" },
		{ "nor made writable", "mount -o remount,rw / 2>/dev/null || echo refused", "refused\n" },
		{ "no rights at all", "grep -E '^Cap(Eff|Prm|Bnd):' /proc/self/status | grep -cv 0000000000000000", "0\n" },
		{ "the home is hidden", "ls -A '" + Outside + "/home' 2>/dev/null | wc -l", "0\n" },
		{ "also the others", "ls -A /root /home 2>/dev/null | grep -v : | grep -v '^$' | wc -l", "0\n" },
		{ "left-overs and sockets", "ls /run /var/tmp /dev/shm | grep -v : | grep -v '^$' | wc -l", "0\n" },
		{ "fresh folders can be used", "echo ok > /tmp/x && echo ok > /var/tmp/y && cat /tmp/x /var/tmp/y", "ok\nok\n" },
		{ "no network", "tail -n +3 /proc/net/dev | grep -cv lo:", "0\n" },
		{ "no environment", "env | grep -c -e VELMORA -e sesame", "0\n" },
		{ "nor that of its parent", "tr '\\0' '\\n' < /proc/1/environ | grep -c -e VELMORA -e sesame", "0\n" },
		{ "no descriptors", "ls /proc/self/fd /proc/1/fd | grep -c -e 77", "0\n" },
		{ "no other processes", "ls /proc | grep -c '^[0-9]' | awk '{ print ($1 < 8) }'", "1\n" },
		{ "no terminal of the user's", "awk '{ print ($6 != 0 && $7 == 0) }' /proc/self/stat", "1\n" },
		{ "nobody types", "wc -c", "0\n" },
	};
	for (const auto& [Why, Line, Output] : Cases)
	{
		EXPECT_EQ(RunBare(Line).Output, Output) << Why;
	}
	EXPECT_FALSE(std::filesystem::exists("/etc/velmora-test"));

	close(77);
	close(Leak);
	unsetenv("VELMORA_TEST_SECRET");
	Home.empty() ? unsetenv("HOME") : setenv("HOME", Home.c_str(), 1);
	std::filesystem::remove_all(Outside);
	std::filesystem::remove(Left + "-left");
}

TEST_F(CommandTests, TheWallsHoldForOrdinaryUsersToo)
{
	std::filesystem::permissions(Project.Root, std::filesystem::perms::all);
	int Pipe[2] = {};
	ASSERT_EQ(pipe(Pipe), 0);
	const pid_t Child = fork();
	if (Child == 0)
	{
		// As root the tests above have shown it for root; here nobody runs it, who may do nothing on this machine.
		const bool bIsNobody = getuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
		const FCommandEnd End =
			RunBare("grep -cE '^CapEff:.*[1-9a-f]' /proc/self/status; (echo x > /etc/velmora-test) 2>/dev/null || echo refused; "
					"tail -n +3 /proc/net/dev | grep -cv lo:; echo made > made.txt");
		const std::string Text = (bIsNobody ? "" : "still root ") + End.Output;
		(void)!write(Pipe[1], Text.data(), Text.size());
		_exit(0);
	}
	close(Pipe[1]);
	char Buffer[4096];
	std::string Said;
	for (ssize_t Count = 0; (Count = read(Pipe[0], Buffer, sizeof(Buffer))) > 0;)
	{
		Said.append(Buffer, static_cast<size_t>(Count));
	}
	close(Pipe[0]);
	waitpid(Child, nullptr, 0);
	EXPECT_EQ(Said, "0\nrefused\n0\n");
	EXPECT_EQ(Read("made.txt"), "made\n");
}

TEST_F(CommandTests, WhatSteersToolsAndWhatIsSecretStaysOutOfReach)
{
	Project.Write(".git/config", "[core]\n");
	Project.Write(".vscode/tasks.json", "{}\n");
	Project.Write("sub/.envrc", "true\n");
	Project.Write(".env", "KEY=sesame\n");
	Project.Write("Saved/chat.db", "talk\n");
	const FToolResult Result = Run("cat .git/config sub/.envrc; cat .env Saved/chat.db 2>/dev/null; "
								   "echo a > .git/config; echo b > .vscode/tasks.json; rm -f sub/.envrc; rm -rf .git; echo c > .envrc; "
								   "mkdir .github; echo d > .github/x.yml; echo fine > fine.txt; echo e > .env");
	EXPECT_TRUE(Holds(Result.Text, "[core]\ntrue\n")) << Result.Text;
	EXPECT_FALSE(Holds(Result.Text, "sesame") || Holds(Result.Text, "talk")) << Result.Text;
	EXPECT_EQ(Read(".git/config"), "[core]\n");
	EXPECT_EQ(Read(".vscode/tasks.json"), "{}\n");
	EXPECT_EQ(Read("sub/.envrc"), "true\n");
	EXPECT_EQ(Read(".env"), "KEY=sesame\n");
	EXPECT_FALSE(Exists(".envrc") || Exists(".github"));
	EXPECT_TRUE(Holds(Result.Text, ".envrc was not taken over")) << Result.Text;
	EXPECT_EQ(Read("fine.txt"), "fine\n");
}

TEST_F(CommandTests, EverythingHasABound)
{
	using EWhy = FCommandEnd::EWhy;
	struct FCase
	{
		const char* Line;
		EWhy Why;
		void (*Set)(FCommandLimits&);
	};
	const FCase Cases[] = {
		{ "sleep 6171", EWhy::TooLong, [](FCommandLimits& Limits) { Limits.MaxSeconds = 0.3; } },
		{ "head -c 400000000 /dev/zero | tail -c 399999999 | sleep 6171", EWhy::TooMuchMemory,
			[](FCommandLimits& Limits) { Limits.MaxMemoryBytes = 100 << 20; } },
		{ "for i in $(seq 80); do sleep 6171 & done; wait", EWhy::TooManyProcesses,
			[](FCommandLimits& Limits) { Limits.MaxProcesses = 40; } },
		{ "yes", EWhy::TooMuchOutput, [](FCommandLimits& Limits) { Limits.MaxOutput = 1 << 20; } },
		{ "head -c 3000000 /dev/zero > /tmp/big || exit 0; sleep 6171", EWhy::Exited,
			[](FCommandLimits& Limits) { Limits.MaxFileBytes = 1 << 20; } },
	};
	for (const FCase& Case : Cases)
	{
		FCommandLimits Limits;
		Limits.MaxSeconds = 20.0;
		Case.Set(Limits);
		const FCommandEnd End = RunBare(Case.Line, Limits);
		EXPECT_EQ(static_cast<int>(End.Why), static_cast<int>(Case.Why)) << Case.Line << ": " << End.Output.substr(0, 200);
		EXPECT_LT(End.Output.size(), Limits.MaxKeptOutput + 200);
	}
	EXPECT_TRUE(WaitUntil([] { return !IsRunning("6171"); })) << "nothing is left behind";
}

TEST_F(CommandTests, ACommandGoesWithWhoWantedIt)
{
	std::thread Canceller(
		[this]
		{
			WaitUntil([this] { return Exists("started"); });
			bIsCancelled = true;
		});
	const FCommandEnd End = RunBare("(sleep 6172 &) ; echo x > started; sleep 6172");
	Canceller.join();
	EXPECT_EQ(static_cast<int>(End.Why), static_cast<int>(FCommandEnd::EWhy::Cancelled));
	EXPECT_TRUE(WaitUntil([] { return !IsRunning("6172"); }));
	bIsCancelled = false;

	const pid_t Child = fork();
	if (Child == 0)
	{
		RunBare("echo x > again; sleep 6173");
		_exit(0);
	}
	EXPECT_TRUE(WaitUntil([this] { return Exists("again"); }));
	kill(Child, SIGKILL);
	waitpid(Child, nullptr, 0);
	EXPECT_TRUE(WaitUntil([] { return !IsRunning("6173"); })) << "it dies with the program";
}

TEST_F(CommandTests, WhatSomebodyElseChangedMeanwhileStays)
{
	Project.Write("a.txt", "old\n");
	Project.Write("b.txt", "old\n");
	std::thread Editor(
		[this]
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(400));
			Project.Write("a.txt", "by hand\n");
		});
	const FToolResult Result = Run("sleep 1; echo new > a.txt; echo new > b.txt");
	Editor.join();
	EXPECT_EQ(Read("a.txt"), "by hand\n");
	EXPECT_EQ(Read("b.txt"), "new\n");
	EXPECT_TRUE(Holds(Result.Text, "a.txt was not taken over: somebody else has changed it")) << Result.Text;
}

TEST_F(CommandTests, TooLargeAProjectIsAskedForInOtherWords)
{
	Project.Write(".envrc", "true\n");
	Project.Write(".env", "KEY=sesame\n");
	Project.Write("large.bin", "");
	std::filesystem::resize_file(Project.PathOf("large.bin"), uint64_t(300) << 20);
	const FToolResult Result = Run("cat .env; echo x > .envrc; echo made > made.txt");
	EXPECT_TRUE(Holds(Question, "Undo will not cover")) << Question;
	EXPECT_EQ(Read("made.txt"), "made\n");
	EXPECT_EQ(Read(".envrc"), "true\n");
	EXPECT_FALSE(Holds(Result.Text, "sesame"));
	EXPECT_TRUE(Holds(Result.Text, "cannot be undone")) << Result.Text;
}

TEST_F(CommandTests, ARuleForACommandIsNoneForAnother)
{
	const std::string Path = Project.PathOf("rules");
	const FPermissionRules Rules(Path, { "run_command make test", "run_command git" });
	const std::pair<const char*, EPermission> Cases[] = {
		{ "make test", EPermission::Allowed },
		{ "make test -j4 ARGS=x", EPermission::Allowed },
		{ "make tes", EPermission::Ask },
		{ "make test-everything", EPermission::Ask },
		{ "make test; rm -rf .", EPermission::Ask },
		{ "make test && curl x", EPermission::Ask },
		{ "make test `x`", EPermission::Ask },
		{ "make test $(x)", EPermission::Ask },
		{ "make test\nrm x", EPermission::Ask },
		{ "make test > /x", EPermission::Ask },
		{ "git status", EPermission::Allowed },
	};
	for (const auto& [Command, Permission] : Cases)
	{
		EXPECT_EQ(static_cast<int>(Rules.Judge("run_command", Command)), static_cast<int>(Permission)) << Command;
	}
	const FPermissionRules All(Path, { "run_command" });
	EXPECT_EQ(static_cast<int>(All.Judge("run_command", "a; b")), static_cast<int>(EPermission::Allowed));
}
