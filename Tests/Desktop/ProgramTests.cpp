#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

#include <fstream>

namespace fs = std::filesystem;

TEST(Program, HelpVersionAndWrongOptions)
{
	const std::tuple<std::vector<std::string>, int, const char*, const char*> Cases[] = {
		{ { "--help" }, 0, "--screenshot FILE", "" },
		{ { "--version" }, 0, "velmora ", "" },
		{ { "--nonsense" }, 2, "", "Unknown option \"--nonsense\"" },
		{ { "--prompt" }, 2, "", "--prompt needs a value" },
		{ { "-h" }, 0, "--list-models      print", "" },
		{ { "--draft=1" }, 2, "", "--draft takes no value" },
		{ { "--HEADLESS" }, 2, "", "Unknown option \"--HEADLESS\"" },
		{ { "--set", "a=b=c", "--prompt" }, 2, "", "--prompt needs a value" },
		{ { "--set", "=b" }, 2, "", "--set wants NAME=VALUE, not \"=b\"." },
		{ { "--set", "name" }, 2, "", "--set wants NAME=VALUE, not \"name\"." },
		{ { "--set", "nothing.there=1", "--headless" }, 2, "", "There is no console variable or command \"nothing.there\"." },
		{ { "--set", "velmora.ConversationHistoryRefresh.ForceSync=maybe", "--headless" }, 2, "", "takes a whole number, not \"maybe\"." },
		{ { "--prompt", "" }, 2, "", "--prompt wants a text" },
		{ { "--size", "12" }, 2, "", "1280x800" },
		{ { "--size", "0x5" }, 2, "", "1280x800" },
		{ { "--scale=nan" }, 2, "", "0.5 to 4" },
		{ { "--now", "yesterday", "--screenshot", "x.png" }, 2, "", "--now wants a local time" },
		{ { "--now=2026-01-31T12:00:00Z", "--screenshot", "x.png" }, 2, "", "--now wants a local time" },
		{ { "--now=2026-01-31" }, 2, "", "--now is for runs with" },
		{ { "--record-masked" }, 2, "", "--record-masked goes with --record." },
		{ { "--record", "x", "--prompt", "help" }, 2, "", "--record is for sessions in a window and for --script." },
		{ { "--replay", "x", "--project", "." }, 2, "", "--replay goes with --headless, --screenshot and --dump" },
		{ { "--replay", "/does/not/exist" }, 2, "", "The recording \"/does/not/exist\" cannot be read" },
		{ { "--headless", "--record", "/does/not/exist/x", "--dump", "x" }, 2, "", "The recording cannot be written to" },
		{ { "--script", "/does/not/exist" }, 2, "", "The script \"/does/not/exist\" could not be read" },
		{ { "--headless", "--project", "/does/not/exist", "--prompt", "help" }, 1, "", "\"/does/not/exist\" does not exist" },
	};
	for (const auto& [Arguments, ExitCode, Output, Error] : Cases)
	{
		SCOPED_TRACE(Arguments[0]);
		const FRun Run = RunProgram(Arguments);
		EXPECT_EQ(Run.ExitCode, ExitCode);
		EXPECT_TRUE(Contains(Run.Output, Output)) << Run.Output;
		EXPECT_TRUE(Contains(Run.Error, Error)) << Run.Error;
	}
}

TEST(Program, AnswersAPromptAboutTheRealProject)
{
	const FRandomProject Project;
	const fs::path Dump = Project.Folder / "dump.json";
	const fs::path Picture = Project.Folder / "answer.png";
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--prompt", "find " + Project.Symbol, "--dump",
		Dump.string(), "--screenshot", Picture.string() });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Output, Project.File)) << Run.Output;
	EXPECT_TRUE(Contains(Run.Output, std::to_string(Project.Line))) << Run.Output;
	EXPECT_TRUE(Contains(Run.Error, "Searching " + Project.Symbol + " ... ok")) << Run.Error;
	EXPECT_EQ(ReadFile(Picture).substr(0, 8), "\x89PNG\r\n\x1a\n");
	const std::string Json = ReadFile(Dump);
	for (const char* Part : { "\"state\": \"AwaitingInput\"", "\"statusText\": \"Ready\"", "\"type\": \"ToolSummary\"",
			 "\"status\": \"Success\"", "\"tag\": \"SendButton\"", "\"promptText\": \"\"", "\"worstFrameMs\"" })
	{
		EXPECT_TRUE(Contains(Json, Part)) << Part << "\n" << Json;
	}
}

TEST(Program, ReadsPromptsLineByLineWithoutADisplay)
{
	const FRandomProject Project;
	// Relative to the folder that it was started in; the last line has no end.
	const FRun Run = RunProgram({ "--project", "." }, "find " + Project.Symbol + "\r\n\nlist Source", Project.Folder.string());
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(Run.Error, "There is no display")) << Run.Error;
	const size_t First = Run.Output.find(Project.File);
	ASSERT_NE(First, std::string::npos) << Run.Output;
	EXPECT_NE(Run.Output.find(Project.File, Run.Output.find("Source", First + Project.File.size())), std::string::npos) << Run.Output;
}

TEST(Program, TellsWhenAFileCannotBeWritten)
{
	const FRun Run = RunProgram({ "--headless", "--project", ".", "--screenshot", "/proc/no/picture.png", "--dump", "/proc/no/dump.json" });
	EXPECT_EQ(Run.ExitCode, 1);
	EXPECT_TRUE(Contains(Run.Error, "The picture could not be written to \"/proc/no/picture.png\"")) << Run.Error;
	EXPECT_TRUE(Contains(Run.Error, "The dump could not be written to \"/proc/no/dump.json\"")) << Run.Error;
}

TEST(Program, PaintsAtSeveralSizesAndScales)
{
	const FRandomProject Project;
	for (const char* Size : { "1x1", "700x500", "2560x1600" })
	{
		const fs::path Picture = Project.Folder / (std::string(Size) + ".png");
		const FRun Run = RunProgram(
			{ "--headless", "--project", Project.Folder.string(), "--size", Size, "--scale", "2", "--screenshot", Picture.string() });
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		EXPECT_EQ(ReadFile(Picture).substr(1, 3), "PNG") << Size;
	}
}

TEST(Program, AReleaseFileOfTheUserBarsSending)
{
	const FRandomProject Project;
	const fs::path Data = Project.Folder / "data";
	const fs::path Dump = Project.Folder / "dump.json";
	fs::create_directories(Data / "Velmora");
	const auto DumpWith = [&](const std::string& Release)
	{
		std::ofstream(Data / "Velmora" / "Release.json") << Release;
		const FRun Run = RunProgram(
			{ "--headless", "--project", Project.Folder.string(), "--dump", Dump.string() }, "", "", { "XDG_DATA_HOME=" + Data.string() });
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		return Run.Error + ReadFile(Dump);
	};
	EXPECT_TRUE(Contains(
		DumpWith(R"({ "state": "RestartRequired", "message": "Start again, please" })"), "\"statusText\": \"Start again, please\""));
	const std::string Broken = DumpWith("nonsense");
	EXPECT_TRUE(Contains(Broken, "cannot be read as a JSON object")) << Broken;
	EXPECT_TRUE(Contains(Broken, "\"statusText\": \"Ready")) << Broken;
}
