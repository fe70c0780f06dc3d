#include "Desktop/ProgramDriver.h"
#include "Support/Base/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

/** The program in a real window. Skipped, and said so, where there is no virtual display to open it on. */
class DesktopRun : public testing::Test
{
protected:
	virtual void SetUp() override
	{
		if (!IsInstalled("Xvfb") || !IsInstalled("xdotool"))
		{
			GTEST_SKIP() << "Xvfb or xdotool is not installed (packages xvfb, xdotool)";
		}
		Display = std::make_unique<FVirtualDisplay>();
		ASSERT_NE(Display->GetName(), "");
	}

	/** Runs commands for the shell beside the program, in the same display; W is the program's window. */
	FRun RunBeside(const std::vector<std::string>& Arguments, const std::string& Commands, const std::string& Folder)
	{
		const std::string Line = "export DISPLAY=" + Display->GetName() +
			"; W=$(timeout 60 xdotool search --sync --onlyvisible --name 'Velmora UI' | head -n 1); " + Commands;
		std::thread Hands([&Line]() { EXPECT_EQ(std::system(Line.c_str()), 0) << Line; });
		const FRun Run = RunProgram(Arguments, "", Folder, { "DISPLAY=" + Display->GetName() });
		Hands.join();
		return Run;
	}

	std::unique_ptr<FVirtualDisplay> Display;
};

TEST_F(DesktopRun, AnswersWhatIsTypedOnTheKeyboard)
{
	const FRandomProject Project;
	Project.Write("run.txt", "wait state AwaitingInput 60\nwait idle 60\nscreenshot answer.png\ndump answer.json\n");
	const FRun Run = RunBeside({ "--project", Project.Folder.string(), "--script", "run.txt" },
		"sleep 0.5; xdotool windowfocus --sync $W type --delay 20 'find " + Project.Symbol + "' && xdotool key ctrl+Return",
		Project.OutFolder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string Dump = ReadFile(Project.Path("answer.json"));
	EXPECT_TRUE(Contains(Dump, "find " + Project.Symbol)) << Dump;
	EXPECT_TRUE(Contains(Dump, Project.File)) << Dump;
	EXPECT_EQ(ReadFile(Project.Path("answer.png")).substr(1, 3), "PNG");
}

TEST_F(DesktopRun, AnAnswerIsOnScreenWhileNobodyTouchesAnything)
{
	const FRandomProject Project;
	// Steps that wait bring no frame. The caret has come to rest before the pictures; the pointer's move brings a frame at last.
	Project.Write("run.txt",
		"wait state AwaitingInput 60\ntick 720\nscreenshot shown.png\ndump answer.json\nmove #StatusText\ntick 60\n"
		"screenshot true.png\n");
	const FRun Run = RunBeside({ "--project", Project.Folder.string(), "--script", "run.txt" },
		"sleep 0.5; xdotool windowfocus --sync $W type --delay 20 'find " + Project.Symbol + "' && xdotool key ctrl+Return",
		Project.OutFolder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("answer.json")), Project.File));
	EXPECT_TRUE(ReadFile(Project.Path("shown.png")) == ReadFile(Project.Path("true.png"))) << "something waited for a hand";
}

TEST_F(DesktopRun, GoesOnWhileHiddenAndShowsItAfterwards)
{
	const FRandomProject Project;
	Project.Write("run.txt",
		"wait idle 60\ndump start.json\ntick 240\nscreenshot before.png\ntype find " + Project.Symbol +
			"\nkey CTRL+ENTER\nwait state AwaitingInput 60\ntick 60\nscreenshot hidden.png\ndump hidden.json\ntick 240\nscreenshot "
			"after.png\ndump after.json\n");
	const std::string Await = "until [ -e " + Project.OutFolder.string() + "/";
	const std::string Commands = Await + "start.json ]; do sleep 0.05; done; xdotool windowunmap $W; " + Await +
		"hidden.json ]; do sleep 0.05; done; xdotool windowmap $W";
	const FRun Run = RunBeside({ "--project", Project.Folder.string(), "--script", "run.txt" }, Commands, Project.OutFolder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("hidden.json")), "\"state\": \"AwaitingInput\""))
		<< "the agent stood still while the window was hidden";
	EXPECT_TRUE(Contains(ReadFile(Project.Path("after.json")), Project.File));
	EXPECT_TRUE(ReadFile(Project.Path("before.png")) == ReadFile(Project.Path("hidden.png"))) << "a hidden window was painted";
	EXPECT_TRUE(ReadFile(Project.Path("before.png")) != ReadFile(Project.Path("after.png")));
}

TEST_F(DesktopRun, SaysSoWhenTheDisplayIsLost)
{
	const FRandomProject Project;
	const std::string Ready = Project.Path("ready.json");
	const std::string Script = Project.Write("run.txt", "wait idle 60\ndump " + Ready + "\ntick 6000\n");
	std::thread Killer(
		[this, &Ready]()
		{
			for (int Look = 0; Look < 1200 && !std::filesystem::exists(Ready); ++Look)
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(50));
			}
			Display->Stop();
		});
	const FRun Run = RunProgram({ "--project", ".", "--script", Script }, "", Project.Folder.string(), { "DISPLAY=" + Display->GetName() });
	Killer.join();
	EXPECT_EQ(Run.ExitCode, 1);
	EXPECT_TRUE(Contains(Run.Error, "display")) << Run.Error;
}
