#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

// What hands do in the window and where they end up, as a dump tells it.
namespace
{
	std::string FindField(const std::string& Dump, const std::string& Name)
	{
		std::smatch Match;
		return std::regex_search(Dump, Match, std::regex("\"" + Name + "\": \"([^\"]*)\"")) ? Match[1].str() : std::string("<none>");
	}

	class Window : public testing::Test
	{
	protected:
		/** Runs a script; its dumps lie beside the project. */
		void Run(const std::string& Script, const std::vector<std::string>& More = {})
		{
			std::vector<std::string> Arguments = { "--headless", "--project", Project.Folder.string(), "--now", "2026-01-31T12:00:00",
				"--set", "velmora.conversationhistoryrefresh.forcesync=1", "--script", Project.Write("run.txt", Script) };
			Arguments.insert(Arguments.end(), More.begin(), More.end());
			const FRun Result = RunProgram(Arguments, "", Project.OutFolder.string());
			EXPECT_EQ(Result.ExitCode, 0) << Result.Error;
		}
		/** The same with a data folder and a draft that the next run finds. */
		void RunKept(const std::string& Script)
		{
			const FRun Result =
				RunProgram({ "--headless", "--draft", "--project", Project.Folder.string(), "--now", "2026-01-31T12:00:00", "--set",
							   "velmora.conversationhistoryrefresh.forcesync=1", "--script", Project.Write("run.txt", Script) },
					"", Project.OutFolder.string(), { "XDG_DATA_HOME=" + Project.Path("data") });
			EXPECT_EQ(Result.ExitCode, 0) << Result.Error;
		}
		std::string Dump(const std::string& Name) const { return ReadFile(Project.Path(Name)); }
		std::string FocusIn(const std::string& Name) const { return FindField(Dump(Name), "focus"); }

		const FRandomProject Project;
	};
}

TEST_F(Window, ThePromptHasTheKeyboardAfterWhatIsDoneInTheChat)
{
	const std::string Ask = "type find " + Project.Symbol + "\nkey CTRL+ENTER\nwait idle 60\n";
	const std::pair<const char*, std::string> Cases[] = {
		{ "a mode picked", "click #ModeComboBox\ntick 5\nclick Advisor\n" },
		{ "sent by the button", "type find " + Project.Symbol + "\ntick 5\nclick #SendButton\nwait idle 60\n" },
		{ "a new conversation", Ask + "click #NewConversationButton\n" },
		// In the empty conversation: back over the changed files, Clear and Export.
		{ "a new conversation by the keyboard",
			Ask + "click #NewConversationButton\ntick 5\nkey SHIFT+TAB\nkey SHIFT+TAB\nkey SHIFT+TAB\nkey SHIFT+TAB\nkey SPACE\n" },
		{ "cleared", Ask + "click #ClearButton\nanswer Yes\n" },
		{ "not cleared", Ask + "click #ClearButton\nanswer No\n" },
		{ "undone", Ask + "scroll #MessageList 100\ntick 30\nclick #UndoButton\nanswer Yes\n" },
		{ "exported", Ask + "click #ExportButton\nanswer file " + Project.Path("out.md") + "\n" },
		{ "another one opened",
			Ask + "click #NewConversationButton\ntick 5\nclick #ConversationComboBox\ntick 60\nclick find " + Project.Symbol + "\n" },
		{ "the tab opened again", "click Window\nclick Close Tab\ntick 5\nclick Tools\nclick Velmora AI\n" },
	};
	for (const auto& [What, Script] : Cases)
	{
		SCOPED_TRACE(What);
		Run("wait idle 30\n" + Script + "tick 10\ntype half a sentence\ntick 5\ndump end.json\n");
		EXPECT_EQ(FocusIn("end.json"), "#InputTextBox");
		EXPECT_EQ(FindField(Dump("end.json"), "promptText"), "half a sentence");
	}
	// Who works in another text stays there.
	Run("wait idle 30\n" + Ask +
		"click Window\nclick Output Log\ntick 5\nclick #ConsoleInput\nclick Window\nclick Velmora AI\ntick 5\nclick Window\nclick Output "
		"Log\nclick #ConsoleInput\ntick 5\nclick Help\nclick About Velmora UI\nanswer OK\ntick 10\ndump end.json\n");
	EXPECT_EQ(FocusIn("end.json"), "#ConsoleInput");
}

TEST_F(Window, KeysScrollTheMessagesFromThePrompt)
{
	std::string Script = "wait idle 30\n";
	for (int Index = 0; Index < 8; ++Index)
	{
		Script += "type help\nkey CTRL+ENTER\nwait idle 60\n";
	}
	// A picture says where the messages are; what was typed stays, and the caret in it.
	Script += "type unsent\ntick 60\nscreenshot end.png\n";
	const std::pair<const char*, const char*> Keys[] = { { "CTRL+PageUp", "page" }, { "CTRL+Home", "home" }, { "ALT+Down", "line" },
		{ "CTRL+End", "back" } };
	for (const auto& [Key, Picture] : Keys)
	{
		Script += std::string("key ") + Key + "\ntick 60\nscreenshot " + Picture + ".png\n";
	}
	Script += "type !\ntick 5\ndump end.json\n";
	Run(Script, { "--size", "900x500" });
	const auto Picture = [this](const char* Name) { return ReadFile(Project.Path(std::string(Name) + ".png")); };
	EXPECT_FALSE(Picture("end").empty());
	EXPECT_TRUE(Picture("page") != Picture("end"));
	EXPECT_TRUE(Picture("home") != Picture("page"));
	EXPECT_TRUE(Picture("line") != Picture("home"));
	EXPECT_TRUE(Picture("back") == Picture("end"));
	EXPECT_EQ(FindField(Dump("end.json"), "promptText"), "unsent!");
}

TEST_F(Window, ADialogHasNoEmptyStop)
{
	Run("wait idle 30\ntype help\nkey CTRL+ENTER\nwait idle 60\nclick #ClearButton\ntick 5\ndump 0.json\nkey TAB\ndump 1.json\nkey "
		"TAB\ndump 2.json\nkey ESC\n");
	EXPECT_EQ(FocusIn("2.json"), FocusIn("0.json")) << "two buttons, two stops";
	EXPECT_EQ((std::set<std::string>{ FocusIn("0.json"), FocusIn("1.json") }), (std::set<std::string>{ "Yes", "No" }));
}

TEST_F(Window, AClosedTabLeavesAHint)
{
	Run("wait idle 30\ndump open.json\nclose-tab\ntick 5\ndump closed.json\nopen-tab\ntick 5\ndump again.json\n");
	EXPECT_FALSE(Contains(Dump("open.json"), "NoTabHint"));
	EXPECT_TRUE(Contains(Dump("closed.json"), "The menu Window opens them again.")) << Dump("closed.json");
	EXPECT_FALSE(Contains(Dump("again.json"), "NoTabHint"));
}

TEST_F(Window, OpenTabsAreThereAgain)
{
	RunKept("wait idle 30\nclick Window\nclick Agent Activity\nclick Window\nclick Output Log\ntick 5\nquit\n");
	RunKept("wait idle 30\ndump front.json\nclick Agent Activity\ntick 5\nclick Window\nclick Close Tab\ntick 5\nclick Velmora AI\ntick 5\n"
			"quit\n");
	const auto IsVisible = [this](const std::string& File, const std::string& Tag)
	{
		const std::string Text = Dump(File);
		const size_t At = Text.find("\"tag\": \"" + Tag + "\"");
		return At != std::string::npos && Contains(Text.substr(At, Tag.size() + 60), "\"visible\": true");
	};
	EXPECT_TRUE(IsVisible("front.json", "LogFilter")) << "what stood in front does so";
	RunKept("wait idle 30\ndump again.json\nclick Output Log\ntick 5\ndump log.json\n");
	EXPECT_EQ(FocusIn("again.json"), "#InputTextBox");
	EXPECT_TRUE(IsVisible("log.json", "LogFilter"));
	EXPECT_FALSE(Contains(ReadFile(Project.Path("data/Velmora/Tabs.txt")), "AgentActivity")) << "closed is closed";
	// A file that somebody has written opens nothing but tabs.
	Project.Write("data/Velmora/Tabs.txt", "NoSuchTab\n*/etc/passwd\n\n");
	RunKept("wait idle 30\ndump odd.json\nquit\n");
	EXPECT_EQ(FocusIn("odd.json"), "#InputTextBox");
}

TEST_F(Window, QuittingDuringATurnAsks)
{
	// A paused turn waits for as long as the script wants.
	const std::string Pause = "wait idle 30\ntype find " + Project.Symbol + "\nkey CTRL+ENTER\nclick #PauseButton\nwait state Paused 5\n";
	Run(Pause + "click File\nclick Exit\ndump asked.json\nanswer No\ntick 5\ndump stayed.json\n");
	EXPECT_TRUE(Contains(Dump("asked.json"), "The agent is at work. End the program all the same?")) << Dump("asked.json");
	EXPECT_EQ(FindField(Dump("stayed.json"), "state"), "Paused");
	// At rest nothing is asked, and the script ends with the program.
	Project.Write("run.txt", "wait idle 30\nkey CTRL+Q\ntick 5\ndump never.json\n");
	const FRun Ended = RunProgram(
		{ "--headless", "--project", Project.Folder.string(), "--script", Project.Path("run.txt") }, "", Project.OutFolder.string());
	EXPECT_EQ(Ended.ExitCode, 1) << Ended.Error;
	EXPECT_TRUE(Contains(Ended.Error, "closed before the script came to its end")) << Ended.Error;
}

TEST_F(Window, ADraftKeepsItsFiles)
{
	const std::string Part = Project.File.substr(0, 6);
	RunKept("wait idle 30\ntype look at @" + Part + "\nwait idle 30\nkey ENTER\ntick 60\ndump typed.json\nquit\n");
	EXPECT_TRUE(Contains(Dump("typed.json"), "/" + Project.File)) << Dump("typed.json");
	RunKept("wait idle 30\ndump again.json\nquit\n");
	const std::string Again = Dump("again.json");
	EXPECT_TRUE(Contains(Again.substr(Again.find("\"chips\"")), Project.File)) << Again;
	EXPECT_TRUE(Contains(FindField(Again, "promptText"), "look at ")) << Again;
}

TEST_F(Window, ATurnCutShortSaysSoWhenItIsOpenedAgain)
{
	// Of several steps a pause lets the one under way end, so the program ends before the last.
	const std::string Prompt = "first find " + Project.Symbol + ", then list Source, then help";
	RunKept("wait idle 30\ntype " + Prompt + "\nkey CTRL+ENTER\nclick #PauseButton\nwait state Paused 5\nquit\n");
	RunKept("wait idle 30\nclick #ConversationComboBox\ntick 60\nclick " + Prompt + "\nwait idle 30\ndump opened.json\n");
	EXPECT_TRUE(Contains(Dump("opened.json"), "The last turn of this conversation was cut short")) << Dump("opened.json");
}

TEST(ChipScroll, TheWheelReachesFilesThatTheRowHasNoRoomFor)
{
	const FRandomProject Project;
	std::string Steps = "resize 500 500\n";
	for (const char* const Name : { "FirstAttachedFile", "SecondAttachedFile", "ThirdAttachedFile", "FourthAttachedFile" })
	{
		std::ofstream(Project.Folder / (std::string(Name) + ".h")) << "\n";
		Steps += std::string("type  @") + Name + "\nwait idle 10\nkey ENTER\n";
	}
	const std::string Script = Project.Write("steps.txt",
		Steps + "wait idle 10\ndump before.json\nscroll #ContextChips -20\ntick 5\ndump after.json\nscroll #ContextChips 20\ntick 5\n" +
			"dump back.json\n");
	const FRun Run = RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", Script }, "", Project.OutFolder.string(),
		{ "XDG_DATA_HOME=" + Project.Path("data") });
	ASSERT_EQ(Run.ExitCode, 0) << Run.Error;
	// What is clipped away is nothing to a screen reader.
	const auto Shows = [&Project](const char* Dump, const char* Name)
	{ return Contains(ReadFile(Project.Path(Dump)), "label \\\"" + std::string(Name) + ".h\\\""); };
	EXPECT_TRUE(Shows("before.json", "FirstAttachedFile"));
	EXPECT_FALSE(Shows("before.json", "FourthAttachedFile"));
	EXPECT_FALSE(Shows("after.json", "FirstAttachedFile"));
	EXPECT_TRUE(Shows("after.json", "FourthAttachedFile"));
	EXPECT_TRUE(Shows("back.json", "FirstAttachedFile"));
}
