#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

#include <filesystem>

// Sessions that are recorded, and shown again where neither their project nor an agent is.
namespace
{
	namespace fs = std::filesystem;

	const char* const Recording = "session.rec";
	const char* const Difference = "is not the recorded one";

	/** Runs a script and records it; end.png and end.json are how it ends. The project is gone afterwards. */
	FRun Record(const FRandomProject& Project, const std::string& Script, const std::vector<std::string>& More)
	{
		Project.Write("run.txt", Script);
		std::vector<std::string> Arguments = { "--headless", "--project", Project.Folder.string(), "--script", "run.txt", "--record",
			Recording, "--screenshot", "end.png", "--dump", "end.json" };
		Arguments.insert(Arguments.end(), More.begin(), More.end());
		const FRun Run = RunProgram(Arguments, "", Project.OutFolder.string());
		std::error_code Ignored;
		fs::remove_all(Project.Folder, Ignored);
		return Run;
	}

	const std::vector<std::string> Simulated = { "--now", "2026-01-31T12:00:00" };

	FRun Replay(const FRandomProject& Project, const std::string& File = Recording)
	{
		return RunProgram(
			{ "--headless", "--replay", File, "--screenshot", "again.png", "--dump", "again.json" }, "", Project.OutFolder.string());
	}

	void ExpectSameEnd(const FRandomProject& Project, const FRun& Run, const std::string& Picture, const std::string& Dump)
	{
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		EXPECT_FALSE(Contains(Run.Error, Difference)) << Run.Error;
		const std::string Shown = ReadFile(Project.Path("again.png"));
		ASSERT_FALSE(Shown.empty());
		EXPECT_TRUE(Shown == ReadFile(Project.Path(Picture)));
		EXPECT_EQ(ReadFile(Project.Path("again.json")), ReadFile(Project.Path(Dump)));
	}

	/** The recording up to where a script has written a file, and a little of the line behind. */
	void Cut(const FRandomProject& Project, const std::string& Remark)
	{
		const std::string Whole = ReadFile(Project.Path(Recording));
		const size_t Place = Whole.find("\nnote \"" + Remark + "\"\n");
		ASSERT_NE(Place, std::string::npos) << Remark;
		ASSERT_LT(Place + Remark.size() + 12, Whole.size());
		Project.Write("cut.rec", Whole.substr(0, Place + Remark.size() + 12));
	}
}

TEST(Record, ASessionIsShownAgainToTheByte)
{
	const FRandomProject Project;
	const FRun Run = Record(Project,
		"type find " + Project.Symbol + "\nkey CTRL+ENTER\nwait idle 60\nscreenshot mid.png\ntick 3\ndump mid.json\n" +
			"resize 900 600\ntick 5\ntype create notes.md with \"one\"\nkey CTRL+ENTER\nwait idle 60\nmove #SendButton\ntick 60\n" +
			"scroll #MessageList 5\ntick 30\nkey CTRL+EQUALS\ntick 10\ntype copied\nkey CTRL+A\nkey CTRL+X\nkey CTRL+V\nright-click "
			"#InputTextBox\nkey ESC\ntick 5\nkey CTRL+A\nkey DELETE\nclick Edit\nclick Edit Last Message\nanswer No\nwait idle 30\n" +
			"close-tab\ntick 5\nopen-tab\ntick 30\nupdate Downloading 40\ntick 5\nupdate Ready\ntype draft @" + Project.File.substr(0, 4) +
			"\ntick 30\n",
		Simulated);
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("end.json")), "draft @")) << "the session has come to its end";
	EXPECT_TRUE(Contains(ReadFile(Project.Path("mid.json")), Project.File)) << "the answer was recorded";
	ExpectSameEnd(Project, Replay(Project), "end.png", "end.json");
	EXPECT_FALSE(fs::exists(Project.Folder)) << "nothing is put where the project was";

	// A recording that was cut off ends where it was.
	Cut(Project, "dump mid.json");
	const FRun Second = Replay(Project, "cut.rec");
	EXPECT_EQ(Second.ExitCode, 0) << Second.Error;
	EXPECT_EQ(ReadFile(Project.Path("again.json")), ReadFile(Project.Path("mid.json")));
	Cut(Project, "screenshot mid.png");
	EXPECT_EQ(Replay(Project, "cut.rec").ExitCode, 0);
	EXPECT_TRUE(ReadFile(Project.Path("again.png")) == ReadFile(Project.Path("mid.png")));
}

TEST(Record, UndoAndAnAnsweredDialogAreShownAgain)
{
	const FRandomProject Project;
	const FRun Run = Record(Project,
		"type create notes.md with \"one\"\nkey CTRL+ENTER\nwait idle 30\n"
		"click Edit\nclick Edit Last Message\ntick 2\nanswer Yes\nwait idle 30\n",
		Simulated);
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_TRUE(Contains(ReadFile(Project.Path("end.json")), R"("promptText": "create notes.md with \"one\"")"));
	ExpectSameEnd(Project, Replay(Project), "end.png", "end.json");
}

TEST(Record, TheLookIsTheRecordedOne)
{
	const FRandomProject Project;
	std::vector<std::string> More = Simulated;
	More.insert(More.end(), { "--high-contrast", "on", "--reduced-motion", "on" });
	// The caret stands still where it would blink, and the first steps tell of the folder of then.
	const FRun Run = Record(Project, "type help\ntick 100\nclick Help\nclick First Steps\ntick 30\n", More);
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	ExpectSameEnd(Project, Replay(Project), "end.png", "end.json");
}

TEST(Record, RealTimeIsShownAgainToo)
{
	const FRandomProject Project;
	const FRun Run = Record(Project, "type find " + Project.Symbol + "\nkey CTRL+ENTER\nwait idle 60\ntype more\ntick 20\n", {});
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	const FRun Shown = Replay(Project);
	EXPECT_EQ(Shown.ExitCode, 0) << Shown.Error;
	EXPECT_FALSE(Contains(Shown.Error, Difference)) << Shown.Error;
	EXPECT_TRUE(ReadFile(Project.Path("again.png")) == ReadFile(Project.Path("end.png")));
}

TEST(Record, MaskedTextsHoldNoneOfTheWords)
{
	const FRandomProject Project;
	std::vector<std::string> More = Simulated;
	More.push_back("--record-masked");
	const FRun Run = Record(Project,
		"type find " + Project.Symbol + " pellucid\nkey CTRL+ENTER\nwait idle 60\ntype create zebra.md with \"quagga\"\nkey CTRL+ENTER\n" +
			"wait idle 60\nkey Q\ntick 5\n",
		More);
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string Written = ReadFile(Project.Path(Recording));
	for (const std::string& Word : { Project.Symbol, Project.File, std::string("pellucid"), std::string("zebra"), std::string("quagga"),
			 Project.Folder.filename().string(), std::string("down 0 Q") })
	{
		EXPECT_FALSE(Contains(Written, Word)) << Word;
	}
	EXPECT_TRUE(Contains(Written, "\"xxxx Xxxxxxxxxx xxxxxxxx\"")) << "its shape is there";
	const FRun Shown = Replay(Project);
	EXPECT_EQ(Shown.ExitCode, 0) << Shown.Error;
	const std::string Dump = ReadFile(Project.Path("again.json"));
	EXPECT_TRUE(Contains(Dump, "\"content\": \"xxxx Xxxxxxxxxx xxxxxxxx\"")) << Dump;
}

TEST(Record, AReplaySavesNothing)
{
	const FRandomProject Project;
	const std::string Export = Project.Path("mine.html");
	const FRun Run = Record(Project,
		"type help\nkey CTRL+ENTER\nwait idle 30\nclick #ExportButton\nkey CTRL+A\ntype " + Export + "\nkey ENTER\nwait idle 30\n",
		Simulated);
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	ASSERT_TRUE(fs::remove(Export)) << "the session itself has saved it";
	const FRun Shown = Replay(Project);
	EXPECT_EQ(Shown.ExitCode, 0) << Shown.Error;
	EXPECT_FALSE(fs::exists(Export));
	EXPECT_TRUE(fs::exists(Project.Path("again.png"))) << "what the user asks for is written";
}

TEST(Record, WhatIsBrokenOrOfAnotherIsNotObeyed)
{
	const FRandomProject Project;
	const std::string Begun = "velmora-record 1\nversion \"0\"\nstart 639055008000000000 0\nwindow 640 480 1\nsession 0 0 0\n";
	const std::tuple<std::string, int, const char*> Cases[] = {
		{ "hello\n", 2, "is no recording." },
		{ "velmora-record 99\n", 2, "was made by another version" },
		{ Begun + "begin\nt 0\nt one\n", 2, "Line 8 of the recording" },
		// Names that lead out of the run's own folder; calls, callbacks and lists out of turn; numbers of nothing.
		{ Begun + "project \"../../evil\"\nseed config \"../../evil.ini\" \"x\"\nseed user \"evil\" \"x\"\nbegin\nt 0\n", 0, "" },
		{ Begun +
				"begin\nagent 7\nt 0\nreturn 7 send \"1\"\ncallback 9 message \"a\"\ncallback 7 state \"99\" \"-1\" \"\"\ncut 7 5\n"
				"message 7 99 0 \"a\"\nfile \"a\" 0 77\nsummaries -1\nstored -1\ngate 77 \"\" \"\"\nt 0.1\ncall 7 send\nt 0.2\n",
			0, "" },
		{ Begun + "begin\nt 5\nt 1\nsize 99999999 -5 0 1\nt 2\npress 1 NoSuchKey 1e300 -1e300 99\npreedit 1 \"\" 99\nt 3\n", 0, "" },
	};
	for (const auto& [Content, ExitCode, Error] : Cases)
	{
		Project.Write("odd.rec", Content);
		fs::remove(Project.Path("again.png"));
		const FRun Run = Replay(Project, "odd.rec");
		EXPECT_EQ(Run.ExitCode, ExitCode) << Content << Run.Error;
		EXPECT_TRUE(Contains(Run.Error, Error)) << Content << Run.Error;
		EXPECT_EQ(fs::exists(Project.Path("again.png")), ExitCode == 0) << Content;
	}
}
