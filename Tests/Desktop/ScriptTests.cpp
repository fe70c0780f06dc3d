#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

// Scripts as a user runs them.
namespace
{
	const char* const ScriptNow = "2026-01-31T12:00:00";

	/** Runs a script on a project in simulated time. Files that it names lie beside the project. */
	FRun RunScript(const FRandomProject& Project, const std::string& Script, const std::vector<std::string>& More = {})
	{
		std::vector<std::string> Arguments = { "--headless", "--project", Project.Folder.string(), "--now", ScriptNow, "--script",
			"run.txt" };
		Arguments.insert(Arguments.end(), More.begin(), More.end());
		Project.Write("run.txt", Script);
		return RunProgram(Arguments, "", Project.OutFolder.string());
	}

	/** The entry of a control in a dump, or nothing. */
	std::string FindControl(const std::string& Dump, const std::string& Tag)
	{
		const size_t Start = Dump.find("\"tag\": \"" + Tag + "\"");
		return Start == std::string::npos ? std::string() : Dump.substr(Start, Dump.find('}', Start) - Start);
	}
}

TEST(Script, AsksAndWritesWhatIsOnScreen)
{
	const FRandomProject Project;
	const FRun Run = RunScript(Project,
		"# a question\ntype find " + Project.Symbol +
			"\ndump typed.json\nkey ctrl+enter\nwait idle 60\ndump answer.json\nscreenshot answer.png\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("typed.json")), "\"promptText\": \"find " + Project.Symbol + "\""));
	const std::string Dump = ReadFile(Project.Path("answer.json"));
	EXPECT_TRUE(Contains(Dump, Project.File)) << Dump;
	EXPECT_TRUE(Contains(Dump, "\"state\": \"AwaitingInput\"")) << Dump;
	EXPECT_TRUE(Contains(Dump, "\"worstFrameMs\": 0,")) << Dump;
	EXPECT_EQ(ReadFile(Project.Path("answer.png")).substr(1, 3), "PNG");
}

TEST(Script, ChangedFilesAreToldAndOpenedByTheirPathsInTheProject)
{
	const FRandomProject Project;
	const std::string Relative = std::filesystem::relative(Project.Folder, Project.OutFolder).string();
	const FRun Run = RunScript(Project,
		"type create docs/made.md with \"x\"\nkey CTRL+ENTER\nwait idle 60\nclick #ChangedFilesHeader\nwait idle 10\nclick Created: "
		"docs/made.md\ndump end.json\n",
		{ "--project", Relative });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Error, "Would open: " + (Project.Folder / "docs/made.md").string())) << Run.Error;
	EXPECT_FALSE(ReadFile(Project.Path("end.json")).empty());
}

TEST(Script, RunsInRealTimeToo)
{
	const FRandomProject Project;
	Project.Write(
		"run.txt", "type find " + Project.Symbol + "\nclick #SendButton\nwait state AwaitingInput 30\nwait idle 30\ndump answer.json\n");
	const FRun Run =
		RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", "run.txt" }, "", Project.OutFolder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("answer.json")), Project.File));
}

TEST(Script, RepeatsByteByByte)
{
	const FRandomProject Project;
	const std::string Script = "type find " + Project.Symbol +
		"\nkey CTRL+ENTER\ntick 3\nscreenshot busy.png\ndump busy.json\nwait idle 60\nmove #SendButton\ntick 60\nresize 700 500\ntick "
		"40\nscreenshot end.png\ndump end.json\n";
	const char* const Files[] = { "busy.png", "busy.json", "end.png", "end.json" };
	std::string First[4];
	for (int Round = 0; Round < 3; ++Round)
	{
		const FRun Run = RunScript(Project, Script);
		ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
		for (int Index = 0; Index < 4; ++Index)
		{
			const std::string Bytes = ReadFile(Project.Path(Files[Index]));
			ASSERT_FALSE(Bytes.empty()) << Files[Index];
			First[Index] = Round == 0 ? Bytes : First[Index];
			EXPECT_TRUE(Bytes == First[Index]) << Files[Index] << " differs in round " << Round;
		}
	}
	EXPECT_TRUE(First[0] != First[2]);
	// What is pictured is a turn under way, not one that has not begun or is over.
	EXPECT_TRUE(Contains(First[1], "\"state\": \"Thinking\"") || Contains(First[1], "\"state\": \"ExecutingTools\"")) << First[1];
}

TEST(Script, StopsWithTheLineThatFails)
{
	const std::pair<const char*, const char*> Cases[] = {
		{ "tick 1\n\njump 3\n", "script run.txt:3: There is no step \"jump\"." },
		{ "answer file a.txt\n", "script run.txt:1: No save dialog is open." },
		{ "tick 2\nclick #NoSuchTag\n", "script run.txt:2: Nothing on screen is called \"#NoSuchTag\"." },
		{ "click no such text\n", "script run.txt:1: Nothing on screen is called \"no such text\"." },
		{ "answer Yes\n", "script run.txt:1: No dialog is open." },
		{ "wait state Paused 1\n", "script run.txt:1: The state is not Paused, but Ready after 1 seconds." },
		{ "screenshot /proc/no.png\n", "script run.txt:1: The file \"/proc/no.png\" could not be written." },
		{ "dump /proc/no.json\n", "script run.txt:1: The file \"/proc/no.json\" could not be written." },
		{ "close-tab\nclick #SendButton\n", "script run.txt:2: Nothing on screen is called \"#SendButton\"." },
	};
	const FRandomProject Project;
	for (const auto& [Script, Error] : Cases)
	{
		SCOPED_TRACE(Script);
		const FRun Run = RunScript(Project, Script);
		EXPECT_EQ(Run.ExitCode, 2);
		EXPECT_TRUE(Contains(Run.Error, Error)) << Run.Error;
	}
}

TEST(Script, ListsBothWhenANameIsNotClear)
{
	const FRandomProject Project;
	const FRun Run =
		RunScript(Project, "type list Source\nkey CTRL+ENTER\nwait idle 60\ntype list Source\nkey CTRL+ENTER\nwait idle 60\nclick You\n");
	EXPECT_EQ(Run.ExitCode, 2);
	EXPECT_TRUE(Contains(Run.Error, "script run.txt:7: 2 widgets are called \"You\": STextBlock at ")) << Run.Error;
	EXPECT_TRUE(Contains(Run.Error, "; STextBlock at ")) << Run.Error;
}

TEST(Script, WaitsForAQuestionAndReachesWhatIsScrolledAside)
{
	const FRandomProject Project;
	const std::string Ask = "type create .vscode/tasks.json with \"x\"\nkey CTRL+ENTER\nwait state Paused 30\n";
	// The question stands while the simulated time goes on; the narrow tab has its last button out of view.
	const FRun Run = RunScript(Project,
		Ask + "tick 60\nclick Refuse\nwait idle 30\nresize 360 640\ntick 60\nclick Open Velmora settings\ntick 30\ndump end.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_FALSE(std::filesystem::exists(Project.Folder / ".vscode/tasks.json"));
	const std::string Dump = ReadFile(Project.Path("end.json"));
	EXPECT_TRUE(Contains(Dump, "\"state\": \"AwaitingInput\"")) << Dump;
	EXPECT_TRUE(Contains(Dump, "Project Settings")) << Dump;
}

TEST(Script, AQuestionIsShortInALowWindow)
{
	const std::string Folder = ".vscode/" + std::string(60, 'n');
	const std::string All = "The agent asks: create_file " + Folder + ".json\\nThe conversation shows what it would do.";
	const std::string Short = "The agent asks: create_file " + Folder.substr(0, 36) + "\xE2\x80\xA6\"";
	const std::tuple<const char*, const char*, std::string> Rows[] = { { "360x400", "1", All }, { "360x399", "1", Short },
		{ "720x799", "2", Short } };
	for (const auto& [Size, Scale, Words] : Rows)
	{
		const FRandomProject Project;
		const FRun Run = RunScript(Project,
			std::string("type create ") + Folder + ".json with \"x\"\nkey CTRL+ENTER\nwait state Paused 30\ntick 60\ndump asked.json\n",
			{ "--size", Size, "--scale", Scale });
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		const std::string Dump = ReadFile(Project.Path("asked.json"));
		EXPECT_TRUE(Contains(Dump, Words)) << Size << Dump.substr(Dump.find("\"toasts\""), 400);
	}
}

TEST(Script, PausesContinuesAndCancels)
{
	const FRandomProject Project;
	const std::string Ask = "type find " + Project.Symbol + "\nkey CTRL+ENTER\n";
	const FRun Run = RunScript(Project,
		Ask +
			"click #PauseButton\nwait state Paused 5\ntick 60\ndump paused.json\nclick #ContinueButton\nwait idle 60\ndump "
			"continued.json\nclick #InputTextBox\n" +
			Ask + "click #CancelButton\nwait state Cancelled 5\nwait idle 5\ndump cancelled.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string Paused = ReadFile(Project.Path("paused.json"));
	EXPECT_TRUE(Contains(Paused, "\"state\": \"Paused\""));
	EXPECT_TRUE(Contains(FindControl(Paused, "ContinueButton"), "\"visible\": true")) << Paused;
	EXPECT_FALSE(Contains(Paused, "\"type\": \"AI\"")) << Paused;
	const std::string Continued = ReadFile(Project.Path("continued.json"));
	EXPECT_TRUE(Contains(Continued, "\"type\": \"AI\"")) << Continued;
	EXPECT_TRUE(Contains(Continued, Project.File)) << Continued;
	const std::string Cancelled = ReadFile(Project.Path("cancelled.json"));
	EXPECT_EQ(Cancelled.find("\"type\": \"AI\""), Cancelled.rfind("\"type\": \"AI\"")) << Cancelled;
}

TEST(Script, ClosesAndOpensTheTab)
{
	const FRandomProject Project;
	const FRun Run = RunScript(
		Project, "close-tab\ntick 2\ndump closed.json\nopen-tab\ntick 5\ntype hello\ntick 1\ndump open.json\nquit\njust never reached\n");
	EXPECT_EQ(Run.ExitCode, 2) << "the whole script is read before it runs";
	const FRun Second = RunScript(
		Project, "close-tab\ntick 2\ndump closed.json\nopen-tab\ntick 5\ntype hello\ntick 1\ndump open.json\nquit\nclick #NeverReached\n");
	EXPECT_EQ(Second.ExitCode, 0) << Second.Error;
	EXPECT_EQ(FindControl(ReadFile(Project.Path("closed.json")), "SendButton"), "");
	EXPECT_TRUE(Contains(ReadFile(Project.Path("open.json")), "\"promptText\": \"hello\""));
}

TEST(Script, ScrollsAndBringsIntoView)
{
	const FRandomProject Project;
	std::string Script = "resize 800 420\n";
	for (int Turn = 0; Turn < 4; ++Turn)
	{
		Script += "type list Source\nkey CTRL+ENTER\nwait idle 60\n";
	}
	const FRun Run = RunScript(Project, Script + "screenshot end.png\nscroll #MessageList 5\ntick 60\nscreenshot up.png\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(ReadFile(Project.Path("end.png")) != ReadFile(Project.Path("up.png")));
}

TEST(Script, WorksAtTheSmallestAndAtLargeSizes)
{
	const FRandomProject Project;
	const FRun Run = RunScript(Project,
		"resize 1 1\ntick 2\ntype find " + Project.Symbol +
			"\nkey CTRL+ENTER\nwait idle 60\nscreenshot small.png\nresize 4000 3000\nwait idle 60\nscreenshot large.png\nresize 1280 "
			"800\nwait idle 60\nscreenshot again.png\ndump end.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("end.json")), Project.File));
	const FRun Plain = RunScript(Project, "tick 2\ntype find " + Project.Symbol + "\nkey CTRL+ENTER\nwait idle 60\nscreenshot plain.png\n");
	EXPECT_EQ(Plain.ExitCode, 0) << Plain.Error;
	EXPECT_TRUE(ReadFile(Project.Path("again.png")) == ReadFile(Project.Path("plain.png")))
		<< "a resized window looks other than one that always had its size";
}
