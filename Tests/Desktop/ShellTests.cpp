#include "Desktop/ProgramDriver.h"
#include "Support/Base/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <set>

#include <pwd.h>
#include <sys/resource.h>
#include <unistd.h>

namespace fs = std::filesystem;

// The program as shells and scripts start it: what it answers them by exit codes and last lines, and where it writes.
namespace
{
	std::string LastLine(const std::string& Text)
	{
		const size_t End = Text.find_last_not_of('\n') + 1;
		const size_t Start = Text.rfind('\n', End - 1);
		return Text.substr(Start == std::string::npos ? 0 : Start + 1, End - (Start == std::string::npos ? 0 : Start + 1));
	}

	/** Everything below a folder, by relative paths. */
	std::set<std::string> ListAll(const fs::path& Folder)
	{
		std::set<std::string> Names;
		for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(Folder))
		{
			Names.insert(fs::relative(Entry.path(), Folder).string());
		}
		return Names;
	}
}

TEST(Shell, TheExitCodeTellsWhetherItWasDoneAndTheLastLineWhyNot)
{
	const FRandomProject Project;
	const std::tuple<const char*, int, const char*> Cases[] = {
		{ "create made.md with \"x\"", 0, "" },
		{ "find Nothing0815", 0, "" },
		{ "create made.md with \"x\"", 1, "velmora: Not changed: it is there already" },
		{ "delete nothing.md", 1, "velmora: Not changed: it cannot be found" },
		{ "create .git/hooks/post-commit with \"x\"", 1, "velmora: Not changed: " },
		{ "colourless green", 1, "velmora: The request was not understood." },
		{ "change something", 1, "velmora: It was not understood which change to make." },
		{ "delete it", 1, "velmora: Which file do you mean?" },
		{ "first find x, then delete nothing.md", 1, "velmora: Not changed: it cannot be found" },
	};
	for (const auto& [Prompt, ExitCode, Expected] : Cases)
	{
		SCOPED_TRACE(Prompt);
		const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--prompt", Prompt });
		EXPECT_EQ(Run.ExitCode, ExitCode) << Run.Output << Run.Error;
		if (ExitCode != 0)
		{
			EXPECT_EQ(LastLine(Run.Error).substr(0, std::string(Expected).size()), Expected) << Run.Error;
		}
	}
}

TEST(Shell, PromptsOfAPipeComeBeforeTheDumpWithoutIdleWaits)
{
	const FRandomProject Project;
	std::string Prompts = "find " + Project.Symbol + "\n";
	constexpr int Count = 20;
	for (int Index = 1; Index < Count; ++Index)
	{
		Prompts += "list Source\n";
	}
	const auto Time = [&](const std::string& Input)
	{
		const auto Start = std::chrono::steady_clock::now();
		const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--dump", Project.Path("dump.json") }, Input);
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		EXPECT_EQ(Contains(Run.Output, Project.File), !Input.empty()) << Run.Output;
		return std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
	};
	const double Idle = Time("");
	const double PerPrompt = (Time(Prompts) - Idle) / Count;
	RecordProperty("MillisecondsPerPrompt", static_cast<int>(PerPrompt * 1000.0));
	// The waits alone were 0.3 s.
	EXPECT_LT(PerPrompt, 0.25);
	const std::string Dump = ReadFile(Project.Path("dump.json"));
	size_t Answers = 0;
	for (size_t At = Dump.find("\"type\": \"AI\""); At != std::string::npos; At = Dump.find("\"type\": \"AI\"", At + 1))
	{
		++Answers;
	}
	EXPECT_EQ(Answers, static_cast<size_t>(Count));
	// An answer stands behind its own prompt, whatever follows at once.
	EXPECT_LT(Dump.find("\"type\": \"AI\""), Dump.find("list Source")) << Dump;

	const FRun Failed = RunProgram({ "--headless", "--project", Project.Folder.string() }, "delete nothing.md\nlist Source\n");
	EXPECT_EQ(Failed.ExitCode, 1);
	EXPECT_TRUE(Contains(Failed.Output, Project.File)) << "one that fails ends none of the others";
	EXPECT_EQ(LastLine(Failed.Error), "velmora: An earlier prompt failed: Not changed: it cannot be found") << Failed.Error;
}

TEST(Shell, WhatWouldBeLostOrMisreadIsRefused)
{
	const FRandomProject Project;
	const std::string Folder = Project.Folder.string();
	const FRun Twice = RunProgram({ "--headless", "--project", Folder, "--prompt", "create a.md with \"x\"", "--prompt", "list" });
	EXPECT_EQ(Twice.ExitCode, 2);
	EXPECT_TRUE(Contains(Twice.Error, "--prompt can be given once")) << Twice.Error;
	EXPECT_FALSE(fs::exists(Project.Path("a.md")));

	std::ofstream(Project.Path("file.txt")) << "text";
	const FRun File = RunProgram({ "--headless", "--project", Project.Path("file.txt"), "--prompt", "list" });
	EXPECT_EQ(File.ExitCode, 1);
	EXPECT_TRUE(Contains(File.Error, "is a file; its folder is wanted")) << File.Error;
}

TEST(Shell, ADumpMakesNoFolders)
{
	const FRandomProject Project;
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--dump", Project.Path("mistyped/dump.json") });
	EXPECT_EQ(Run.ExitCode, 1);
	EXPECT_TRUE(Contains(Run.Error, "The dump could not be written to")) << Run.Error;
	EXPECT_FALSE(fs::exists(Project.Path("mistyped")));
}

TEST(Shell, ARunWithoutHistoryLeavesNothingBehind)
{
	const FRandomProject Project;
	const FTempFolder Home;
	const std::vector<std::string> Extra = { "XDG_DATA_HOME=" + Home.AtBytes("data"), "XDG_RUNTIME_DIR=" + Home.AtBytes("run") };
	fs::create_directories(Home.AtBytes("run"));
	const std::vector<std::string> Ask = { "--headless", "--project", Project.Folder.string(), "--prompt", "create made.md with \"x\"" };
	std::vector<std::string> Quiet = Ask;
	Quiet.push_back("--no-history");
	const FRun Run = RunProgram(Quiet, "", "", Extra);
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(fs::exists(Project.Folder / "made.md")) << "the change itself stays";
	EXPECT_EQ(ListAll(Home.AtBytes("")), std::set<std::string>{ "run" });
	fs::remove(Project.Folder / "made.md");

	// What was said can be listed, named and searched until the end, and the tab says so.
	const std::string Script = Project.Write("run.txt",
		"type show notes of snails\nkey CTRL+ENTER\nwait idle 30\nkey CTRL+SHIFT+H\nwait idle 30\ndump list.json\nkey DOWN\nkey CTRL+P\n"
		"click #ConversationSearch\ntype snail\nwait idle 30\ndump found.json\n");
	const FRun Look = RunProgram(
		{ "--headless", "--no-history", "--project", Project.Folder.string(), "--script", Script }, "", Project.OutFolder.string(), Extra);
	EXPECT_EQ(Look.ExitCode, 0) << Look.Error;
	const std::string List = ReadFile(Project.Path("list.json"));
	EXPECT_TRUE(Contains(List, "1 conversation. This session keeps no history: they are gone when it ends.")) << List;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("found.json")), "found\"")) << ReadFile(Project.Path("found.json"));
	EXPECT_FALSE(Contains(ReadFile(Project.Path("found.json")), "could not be searched"));
	EXPECT_EQ(ListAll(Home.AtBytes("")), std::set<std::string>{ "run" });
	EXPECT_EQ(RunProgram(Ask, "", "", Extra).ExitCode, 0);
	EXPECT_GT(ListAll(Home.AtBytes("data")).size(), 1u) << "as it is without the option";
}

TEST(Shell, WithoutAHomeNothingIsWrittenIntoTheProject)
{
	const FRandomProject Project;
	const std::set<std::string> Before = ListAll(Project.Folder);
	// The home of the user's record: where there is none, the program refuses in words.
	const passwd* const Record = getpwuid(geteuid());
	const bool bHasHome = Record && Record->pw_dir && Record->pw_dir[0] == '/';
	const FRun Run = RunProgram({ "--headless", "--no-history", "--project", ".", "--prompt", "find " + Project.Symbol }, "",
		Project.Folder.string(), { "HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME" });
	EXPECT_EQ(Run.ExitCode, bHasHome ? 0 : 1) << Run.Error;
	EXPECT_EQ(Contains(Run.Error, "There is no home folder"), !bHasHome) << Run.Error;
	EXPECT_EQ(ListAll(Project.Folder), Before);
}

TEST(Shell, AHomeThatCannotBeWrittenStopsNobody)
{
	const FRandomProject Project;
	const FTempFolder Memory;
	// A file in the place of the folder holds up everybody, the system's user too.
	Project.Write("home", "not a folder");
	const std::vector<std::string> Extra = { "XDG_DATA_HOME=" + Project.Path("home"), "XDG_RUNTIME_DIR=" + Memory.AtBytes("") };
	const std::vector<std::string> Common = { "--headless", "--project", Project.Folder.string() };
	const auto Run = [&](std::vector<std::string> More)
	{
		More.insert(More.begin(), Common.begin(), Common.end());
		return RunProgram(More, "", "", Extra);
	};
	const FRun First = Run({ "--prompt", "create made.md with \"x\"" });
	EXPECT_EQ(First.ExitCode, 0) << First.Error;
	EXPECT_TRUE(fs::exists(Project.Folder / "made.md")) << First.Output;
	const size_t Told = First.Error.find("is kept in");
	ASSERT_NE(Told, std::string::npos) << First.Error;
	EXPECT_EQ(First.Error.find(Project.Path("home"), First.Error.find(Project.Path("home")) + 1), std::string::npos)
		<< "said once: " << First.Error;
	// What was typed is there again for the next one.
	Project.Write("run.txt", "wait idle 30\ntype half a sentence\ntick 90\nquit\n");
	EXPECT_EQ(Run({ "--draft", "--script", Project.Path("run.txt") }).ExitCode, 0);
	Project.Write("again.txt", "wait idle 30\ndump " + Project.Path("again.json") + "\n");
	EXPECT_EQ(Run({ "--draft", "--script", Project.Path("again.txt") }).ExitCode, 0);
	EXPECT_TRUE(Contains(ReadFile(Project.Path("again.json")), "\"promptText\": \"half a sentence\""));
	const std::string Spare = Memory.AtBytes("velmora-" + std::to_string(geteuid()));
	EXPECT_EQ(fs::status(Spare).permissions(), fs::perms::owner_all);

	// When the folder can be written again it all comes back, the conversations beside those that are there.
	fs::remove(Project.Path("home"));
	const std::string Other = Memory.AtBytes("elsewhere");
	fs::create_directory(Other);
	const FRun Before = RunProgram({ "--headless", "--project", Project.Folder.string(), "--prompt", "what is in this project?" }, "", "",
		{ "XDG_DATA_HOME=" + Project.Path("home"), "XDG_RUNTIME_DIR=" + Other });
	EXPECT_EQ(Before.ExitCode, 0) << Before.Error;
	const FRun Bringing = Run({ "--prompt", "what is in this project?" });
	EXPECT_EQ(Bringing.ExitCode, 0) << "that they come is no failure of the turn they come into: " << Bringing.Error;
	Project.Write("home.txt",
		"wait idle 30\ndump " + Project.Path("home.json") +
			"\nclick #ConversationComboBox\nwait idle 30\nclick create made.md with \"x\"\n" + "wait idle 30\ndump " +
			Project.Path("brought.json") + "\nclick Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\n");
	const FRun Back = Run({ "--draft", "--script", Project.Path("home.txt") });
	EXPECT_EQ(Back.ExitCode, 0) << Back.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("home.json")), "\"promptText\": \"half a sentence\""));
	EXPECT_TRUE(Contains(ReadFile(Project.Path("brought.json")), "Created [made.md]"));
	EXPECT_FALSE(fs::exists(Project.Folder / "made.md")) << "undone, as where it was said";
	for (const fs::directory_entry& Left : fs::directory_iterator(Spare))
	{
		EXPECT_EQ(Left.path().extension(), ".lock") << Left.path();
	}
}

TEST(Shell, AFileBeyondTheUsersLimitFailsInWords)
{
	const FRandomProject Project;
	const std::string Large(300'000, 'x');
	std::ofstream(Project.Folder / "large.txt") << Large;
	rlimit Before{};
	ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &Before), 0);
	const rlimit Limit{ 100'000, Before.rlim_max };
	ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &Limit), 0);
	const FRun Run = RunProgram(
		{ "--headless", "--no-history", "--project", Project.Folder.string() }, "append \"y\" to large.txt\ncreate small.md with \"1\"\n");
	setrlimit(RLIMIT_FSIZE, &Before);
	EXPECT_EQ(Run.ExitCode, 1) << Run.Error;
	EXPECT_TRUE(Contains(Run.Output, "the file would become too large")) << Run.Output;
	EXPECT_EQ(ReadFile((Project.Folder / "large.txt").string()), Large);
	EXPECT_TRUE(fs::exists(Project.Folder / "small.md")) << Run.Output;
}

TEST(Shell, StreamsThatAreMissingOrFull)
{
	const FRandomProject Project;
	const auto RunInShell = [&Project](const std::string& Rest)
	{
		const std::string Line = "HOME='" + Project.Path("") + "' XDG_DATA_HOME='" + Project.Path("data") + "' timeout 60 '" +
			VELMORA_PROGRAM + "' --headless --project '" + Project.Folder.string() + "' " + Rest;
		return WEXITSTATUS(std::system(Line.c_str()));
	};
	EXPECT_EQ(RunInShell("<&- >&- 2>&-"), 0) << "there is nothing to answer";
	EXPECT_EQ(RunInShell("--prompt 'create made.md with \"1\"' <&- >&- 2>&-"), 0);
	EXPECT_EQ(ReadFile((Project.Folder / "made.md").string()), "1");
	const std::string Told = Project.Path("told");
	EXPECT_EQ(RunInShell("--prompt 'what is in this project?' >/dev/full 2>'" + Told + "'"), 1);
	EXPECT_TRUE(Contains(ReadFile(Told), "velmora: Not all could be written to the standard output.")) << ReadFile(Told);
}
