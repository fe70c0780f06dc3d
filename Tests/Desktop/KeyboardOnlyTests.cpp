#include "Desktop/KeyboardSession.h"
#include "Support/Base/VirtualDisplay.h"
#include "Support/Peer/ScriptedPeer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace PeerText;

// All that a user does, by scripts without a pointer, one a subject.

namespace
{
	const char* const PromptLine = "text box \"Prompt\" (focused";

	bool HasLine(const FRandomProject& Project, int Part, const std::string& Line)
	{
		const std::vector<std::string> Tree = ReadTree(Project, Part);
		return std::find(Tree.begin(), Tree.end(), Line) != Tree.end();
	}

	/** States with that in them. */
	int CountLines(const FRandomProject& Project, int Part, const std::string& Word)
	{
		const std::vector<std::string> Tree = ReadTree(Project, Part);
		const auto Holds = [&Word](const std::string& Line) { return Line.rfind("status \"", 0) == 0 && Contains(Line, Word); };
		return static_cast<int>(std::count_if(Tree.begin(), Tree.end(), Holds));
	}

	std::string Send(const std::string& Prompt)
	{
		return "key CTRL+L\ntick 5\nkey CTRL+A\ntype " + Prompt + "\nkey CTRL+ENTER\n";
	}
}

TEST(KeyboardOnly, AConversationIsHadAndLookedAfter)
{
	const FRandomProject Project;
	RunKeyboardSession(Project,
		{
			{ "a file is attached", "type see @" + Project.File + "\ntick 60\nkey ENTER\ntick 30\n", "group \"Attached files\"" },
			{ "its chip is a stop after Clear", Repeat("key TAB", 11), "button \"\u00D7\" (focused)" },
			{ "and taken off", "key SPACEBAR\ntick 10\n", PromptLine },
			{ "the prompt is cleared, written in two lines, and sent",
				"key CTRL+L\nkey CTRL+A\nkey DELETE\ntype create one.md with \"hello\"\\n\nkey CTRL+ENTER\nwait idle 30\n",
				"list item \"Velmora AI\"" },
			{ "menus", "key F10\ntick 5\nkey RIGHT\nkey RIGHT\nkey DOWN\ntick 5\n", "menu item \"Permissions\" (focused, selected)" },
			{ "out of the menus", "key ESC\nkey ESC\ntick 5\nkey CTRL+L\n", PromptLine },
			{ "the plan", Repeat("key TAB", 2), "button \"Toggle conversation plan sidebar\" (focused)" },
			{ "is closed", "key ENTER\ntick 20\n", "button \"Toggle conversation plan sidebar\" (focused)" },
			{ "and opened", "key ENTER\ntick 20\n", "group \"Plan\"" },
			{ "the second sidebar opens", "key TAB\ntick 3\nkey ENTER\ntick 20\n", "group \"Behavior\"" },
			{ "and closes; the conversations are a stop", "key ENTER\ntick 20\n" + Repeat("key TAB", 2),
				"combo box \"Conversation\" (focused" },
			{ "saving, as another kind",
				Repeat("key TAB", 2) + "key ENTER\ntick 30\ntype " + Project.Path("saved") + "\n" + Repeat("key TAB", 1) +
					"key ENTER\ntick 20\n" + Repeat("key DOWN", 1),
				"list item \"Plain Text (*.txt)\" (selected)" },
			{ "which gives the ending", "key ENTER\ntick 20\n" + Repeat("key TAB", 1) + "key ENTER\ntick 60\n", PromptLine },
			{ "the files that were changed", "key SHIFT+TAB\ntick 5\nkey ENTER\n", "group \"Changed Files (1)\" (expanded)" },
			{ "and one of them", "key TAB\n", "button \"one.md just now\" (focused)" },
			{ "a message's arrow", "key CTRL+L\n" + Repeat("key TAB", 9),
				"button \"Undo all changes made after this message.\" (focused)" },
			{ "asks before it takes back", "key ENTER\ntick 20\n", "button \"No\" (focused)" },
			{ "and does", "key TAB\ntick 5\nkey ENTER\ntick 30\nwait idle 30\n", "text box \"Prompt\" (focused" },
			{ "another answer", Send("help") + "wait idle 30\n", "list item \"Velmora AI\"" },
			{ "a new conversation", "key CTRL+N\nwait idle 30\ntick 10\n", PromptLine },
			{ "has a mode of its own", Repeat("key TAB", 1) + "key ENTER\ntick 20\nkey UP\ntick 5\nkey ENTER\ntick 20\n", PromptLine },
			{ "and words", Send("help") + "wait idle 30\n", "list item \"Velmora AI\"" },
			{ "Clear asks", Repeat("key TAB", 8) + "key ENTER\ntick 20\n", "button \"No\" (focused)" },
			{ "and deletes", "key TAB\ntick 5\nkey ENTER\ntick 30\nwait idle 30\n", "group \"Welcome\"" },
			{ "the list of the conversations", Repeat("key TAB", 6) + "key ENTER\ntick 20\n",
				"combo box \"Conversation\" (focused, expanded" },
			{ "brings back the other one", "key DOWN\ntick 10\nkey ENTER\ntick 20\nwait idle 30\n", "list item \"Velmora AI\"" },
			{ "a tab is closed, and the other stands there", "key CTRL+SHIFT+H\ntick 60\nkey CTRL+TAB\ntick 5\nkey CTRL+F4\ntick 20\n",
				"tab \"Conversations\" (selected" },
		});
	EXPECT_FALSE(HasLine(Project, 7, "group \"Plan\""));
	EXPECT_TRUE(HasLine(Project, 21, "combo box \"Mode\" (disabled, has popup) = \"Assets\""));
	EXPECT_FALSE(std::filesystem::exists(Project.Folder / "one.md")) << "taken back";
	EXPECT_TRUE(Contains(ReadFile(Project.Path("saved.txt")), "hello"));
}

TEST(KeyboardOnly, ATurnIsPausedStoppedAndAnswered)
{
	const FRandomProject Project;
	const std::string Asks = "key CTRL+ENTER\nwait state Paused 30\ntick 60\n";
	RunKeyboardSession(Project,
		{
			{ "paused", Send("find " + Project.Symbol) + "key F9\nwait state Paused 30\ntick 60\n", PromptLine },
			{ "goes on", "key SHIFT+F9\nwait state AwaitingInput 30\ntick 60\n", "list item \"Velmora AI\"" },
			{ "paused again", Send("find " + Project.Symbol) + "key F9\nwait state Paused 30\ntick 60\n", PromptLine },
			{ "and stopped", "key ESC\nwait state Cancelled 30\ntick 60\n", PromptLine },
			{ "once", "type create .vscode/tasks.json with \"x\"\n" + Asks + "key F8\nwait state AwaitingInput 30\ntick 60\n", PromptLine },
			{ "no", "type create .vscode/launch.json with \"x\"\n" + Asks + "key CTRL+F8\nwait state AwaitingInput 30\ntick 60\n",
				PromptLine },
			{ "always", "type create .vscode/settings.json with \"x\"\n" + Asks + "key SHIFT+F8\nwait state AwaitingInput 30\ntick 60\n",
				PromptLine },
			{ "is a rule", PickEntry("T", 1) + "tick 20\n" + Repeat("key TAB", 5), "button \"Remove\" (focused)" },
			{ "that is taken back", "key ENTER\ntick 90\n", "label \"There are none: the agent asks each time." },
			{ "what hides alone lets go of the keyboard",
				Send("find " + Project.Symbol) + "key F9\nwait state Paused 30\ntick 60\nkey TAB\ntick 5\nkey SHIFT+F9\n" +
					"wait state AwaitingInput 30\ntick 60\n",
				PromptLine },
		});
	EXPECT_TRUE(std::filesystem::exists(Project.Folder / ".vscode/tasks.json"));
	EXPECT_FALSE(std::filesystem::exists(Project.Folder / ".vscode/launch.json"));
	EXPECT_TRUE(std::filesystem::exists(Project.Folder / ".vscode/settings.json"));
	EXPECT_TRUE(HasLine(Project, 7, "label \".vscode/settings.json\u2026\""));
}

TEST(KeyboardOnly, ConversationsAreSearchedNamedPinnedDeletedAndSaved)
{
	const FRandomProject Project;
	RunKeyboardSession(Project,
		{
			{ "words", Send("find " + Project.Symbol) + "wait idle 30\n", PromptLine },
			{ "are looked for", "key CTRL+F\ntick 5\ntype " + Project.Symbol + "\ntick 30\n",
				"text box \"Find in the conversation\" (focused) = \"" + Project.Symbol },
			{ "on and back", "key F3\ntick 5\nkey F3\ntick 5\nkey SHIFT+F3\ntick 10\n", "status \"" },
			{ "a part of a word", "key CTRL+A\ntype " + Project.Symbol.substr(0, 6) + "\ntick 30\n", "status \"" },
			{ "is no whole one", Repeat("key TAB", 4) + "key SPACEBAR\ntick 30\n", "check box \"Whole words\" (focused, checked)" },
			{ "nor one of another case",
				"key SPACEBAR\ntick 5\nkey SHIFT+TAB\ntick 5\nkey SPACEBAR\nkey CTRL+F\ntick 5\nkey CTRL+A\ntype FIND\ntick 30\n",
				"check box \"Match case\" (checked)" },
			{ "Find is left", "key ESC\ntick 5\nkey CTRL+L\n", PromptLine },
			{ "all conversations", "key CTRL+SHIFT+H\ntick 60\ntype " + Project.Symbol + "\ntick 60\nkey DOWN\ntick 5\n",
				"list \"Conversations\" (focused)" },
			{ "one is named", "key F2\ntick 10\nkey CTRL+A\ntype My Name\nkey ENTER\ntick 60\n", "list \"Conversations\" (focused)" },
			{ "pinned", "key CTRL+P\ntick 400\n", "button \"Unpin\"" },
			{ "deleted", "key DELETE\ntick 30\n", "button \"Undo\"" },
			{ "and brought back", "key CTRL+Z\ntick 60\n", "list item \"My Name" },
			{ "saved",
				"key CTRL+SHIFT+H\ntick 10\nkey DOWN\ntick 5\nkey CTRL+E\ntick 20\ntype " + Project.Path("all.txt") +
					"\nkey ENTER\ntick 60\n",
				"list \"Conversations\" (focused)" },
			{ "opened", "key ENTER\ntick 60\n", PromptLine },
			{ "larger", "key CTRL+EQUALS\ntick 5\n", PromptLine },
			{ "smaller, and as it was", "key CTRL+HYPHEN\ntick 5\nkey CTRL+HYPHEN\ntick 5\nkey CTRL+ZERO\ntick 5\n", PromptLine },
		});
	EXPECT_EQ(CountLines(Project, 1, " of ") + CountLines(Project, 2, " of ") + CountLines(Project, 3, " of "), 3);
	EXPECT_TRUE(ReadTree(Project, 1) != ReadTree(Project, 2)) << "another place";
	EXPECT_TRUE(HasLine(Project, 4, "status \"No hits\""));
	EXPECT_TRUE(HasLine(Project, 5, "status \"No hits\""));
	EXPECT_TRUE(std::filesystem::exists(Project.Path("all.txt")));
}

TEST(KeyboardOnly, PagesOfTheSettingsAreWorked)
{
	const FRandomProject Project;
	std::filesystem::create_directories(Project.Folder / "Engine");
	const std::string Address = "http://127.0.0.1:9";
	RunKeyboardSession(Project,
		{
			{ "the page of the keys", PickEntry("T", 2) + "tick 20\n", "text box \"Search the settings\" (focused)" },
			{ "a command", Repeat("key TAB", 5), "button \"Change\" (focused)" },
			{ "gets another key", "key ENTER\ntick 5\nkey CTRL+ALT+N\ntick 20\n", "label \"Ctrl+Alt+N\"" },
			{ "its own place has kept the keyboard", "", "button \"Change\" (focused)" },
			{ "the key does it", Repeat("key CTRL+TAB", 1) + Send("help") + "wait idle 30\nkey CTRL+ALT+N\nwait idle 30\n",
				"label \"Started new  conversation\"" },
			{ "and back", Repeat("key CTRL+TAB", 1) + Repeat("key TAB", 2) + "key ENTER\ntick 20\n", "label \"Ctrl+N\"" },
			{ "connections",
				Repeat("key SHIFT+TAB", 1) + "key CTRL+F4\ntick 20\n" + PickEntry("T", 2) + "tick 20\n" + Repeat("key TAB", 2) +
					"key ENTER\ntick 20\n",
				"button \"Connections\" (focused)" },
			{ "one is added", Repeat("key TAB", 3) + "key ENTER\ntick 20\n", "label \"Not stored yet." },
			{ "named at once", "type mine\ntick 5\n", "button \"mine\"" },
			{ "and given its address", Repeat("key TAB", 2) + "type " + Address + "\ntick 60\n",
				"text box \"Base URL\" (focused) = \"" + Address + "\"" },
			{ "it is made the default", Repeat("key SHIFT+TAB", 3) + "key ENTER\ntick 60\n", "button \"mine (default)\"" },
			{ "and removed", Repeat("key TAB", 1) + "key ENTER\ntick 60\n", "button \"Add\"" },
			{ "the general page",
				"key CTRL+F4\ntick 20\n" + PickEntry("W", 0) + "tick 20\n" + Repeat("key TAB", 1) + "key ENTER\ntick 20\n",
				"button \"Velmora AI\" (focused)" },
			{ "a text", Repeat("key TAB", 7) + "type be brief\ntick 10\n",
				"text box \"Guidelines and Tips\" (focused, multi-line) = \"be brief\"" },
			{ "the dialog for a folder", Repeat("key TAB", 5) + "key ENTER\ntick 20\n", "list \"Files\" (focused" },
			{ "has no stop but these", Repeat("key TAB", 6), "button \"Choose\" (focused)" },
			{ "and takes one", "key ENTER\ntick 20\n", "text box \"Engine Source Folder\" = \"" + Project.Folder.string() },
		});
	EXPECT_TRUE(HasLine(Project, 9, "button \"mine\""));
	EXPECT_FALSE(HasLine(Project, 11, "button \"mine\"") || HasLine(Project, 11, "button \"mine (default)\""));
}

TEST(KeyboardOnly, LogAndConsoleAreWorked)
{
	const FRandomProject Project;
	RunKeyboardSession(Project,
		{
			{ "the log", PickEntry("W", 3) + "tick 20\n", "text box \"Show lines with\" (focused)" },
			{ "a name is completed", Repeat("key TAB", 4) + "type velmora.conv\nkey TAB\ntick 5\n",
				"text box \"Console command\" (focused) = \"velmora.ConversationHistoryRefresh.ForceSync" },
			{ "and asked for", "key ENTER\ntick 10\n", "list item \"velmora.ConversationHistoryRefresh.ForceSync = \\\"1\\\"\"" },
			{ "brought back", "key UP\ntick 5\n",
				"text box \"Console command\" (focused) = \"velmora.ConversationHistoryRefresh.ForceSync" },
			{ "filtered", Repeat("key SHIFT+TAB", 4) + "type = \"1\ntick 20\n",
				"list item \"velmora.ConversationHistoryRefresh.ForceSync = " },
			{ "cleared", Repeat("key TAB", 2) + "key ENTER\ntick 20\n", "button \"Clear Log\" (focused)" },
		});
	EXPECT_TRUE(HasLine(Project, 3, "list item \"> velmora.ConversationHistoryRefresh.ForceSync\""));
	EXPECT_FALSE(HasLine(Project, 4, "list item \"> velmora.ConversationHistoryRefresh.ForceSync\""));
	EXPECT_FALSE(HasLine(Project, 5, "list item \"velmora.ConversationHistoryRefresh.ForceSync = \\\"1\\\"\""));
}

TEST(KeyboardOnly, AModelIsPickedAndItsActivityLookedThrough)
{
	const FRandomProject Project;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach(
		[](const FPeerConnection::FRequest& Request, int)
		{
			return Request.Method == "GET" ? Answer("200 OK", "application/json", R"({"data":[{"id":"tiny"}]})")
										   : Stream({ Say("Hello from the model."), Chunk("{}", "stop"), "[DONE]" });
		}));
	const std::string Config = Project.Path("config/velmora-ui/connections.json");
	std::filesystem::create_directories(std::filesystem::path(Config).parent_path());
	std::ofstream(Config) << R"({ "connections": [ { "name": "local", "url": ")" << Peer.GetUrl() << R"(", "model": "tiny" } ] })";
	std::filesystem::permissions(Config, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
	RunKeyboardSession(Project,
		{
			{ "who answers", "key ALT+T\ntick 5\nkey RIGHT\ntick 10\nkey DOWN\ntick 5\n", "check menu item \"local\" (focused, selected" },
			{ "is picked", "key ENTER\ntick 20\n", PromptLine },
			{ "and answers", Send("hello") + "wait state AwaitingInput 30\nwait idle 30\n", "label \"Hello from the model.\"" },
			{ "what was sent", PickEntry("W", 4) + "tick 20\n" + Repeat("key TAB", 3) + "key DOWN\ntick 10\n",
				"list \"Requests and tools\" (focused" },
			{ "is copied", "key CTRL+C\ntick 5\nkey CTRL+L\nkey CTRL+V\ntick 10\n", "text box \"Prompt\" (focused, multi-line) = \"" },
			{ "and cleared", "key CTRL+TAB\ntick 5\nkey SHIFT+TAB\ntick 5\nkey ENTER\ntick 20\n", "button \"Clear\" (focused)" },
		},
		{ "--headless" });
	const auto CountEvents = [&Project](int Part)
	{
		const std::vector<std::string> Tree = ReadTree(Project, Part);
		return std::count_if(Tree.begin(), Tree.end(), [](const std::string& Line) { return Line.rfind("list item \"", 0) == 0; });
	};
	EXPECT_EQ(CountEvents(3), 1);
	EXPECT_EQ(CountEvents(5), 0);
	const std::vector<std::string> Copied = ReadTree(Project, 4);
	EXPECT_TRUE(std::any_of(Copied.begin(), Copied.end(),
		[](const std::string& Line) { return Line.rfind(PromptLine, 0) == 0 && Contains(Line, "Hello from the model."); }));
}

TEST(KeyboardOnly, TheModelOfAConnectionIsPickedAndTyped)
{
	const FRandomProject Project;
	FScriptedPeer Peer(FScriptedPeer::AnswerEach([](const FPeerConnection::FRequest&, int)
		{ return Answer("200 OK", "application/json", R"({"data":[{"id":"tiny"},{"id":"a-much-longer-name-of-a-model"}]})"); }));
	const std::string Config = Project.Path("config/velmora-ui/connections.json");
	std::filesystem::create_directories(std::filesystem::path(Config).parent_path());
	std::ofstream(Config) << R"({ "connections": [ { "name": "local", "url": ")" << Peer.GetUrl() << R"(" } ] })";
	std::filesystem::permissions(Config, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
	const std::string Answered = "tick 60\nwait idle 30\ntick 60\nwait idle 30\n";
	RunKeyboardSession(Project,
		{
			{ "what the server has",
				PickEntry("T", 2) + "tick 20\n" + Repeat("key TAB", 2) + "key ENTER\ntick 20\n" + Repeat("key TAB", 16),
				"combo box \"Models that the server offers\" (focused" },
			{ "is asked for, and shown while the list is open", "key ENTER\n" + Answered, "list item \"a-much-longer-name-of-a-model\"" },
			{ "one is taken", Repeat("key DOWN", 2) + "key ENTER\ntick 20\n", "text box \"Model\" = \"a-much-longer-name-of-a-model\"" },
			{ "another is typed", "key SHIFT+TAB\ntick 5\nkey CTRL+A\ntype tiny\ntick 60\n", "text box \"Model\" (focused) = \"tiny\"" },
			{ "and the list begins with it", "key TAB\ntick 5\nkey ENTER\ntick 20\n", "list item \"tiny\" (selected)" },
			{ "the other again", Repeat("key DOWN", 1) + "key ENTER\ntick 60\n", "text box \"Model\" = \"a-much-longer-name-of-a-model\"" },
		},
		{ "--headless" });
	EXPECT_TRUE(HasLine(Project, 1, "list \"Models that the server offers\""));
	EXPECT_TRUE(Contains(ReadFile(Config), "a-much-longer-name-of-a-model"));
}

// Without a window nothing is opened.
TEST(KeyboardOnly, AFileIsReadInTheSourceViewer)
{
	if (!IsInstalled("Xvfb"))
	{
		GTEST_SKIP() << "Xvfb is not installed (package xvfb)";
	}
	const FVirtualDisplay Display;
	ASSERT_NE(Display.GetName(), "");
	const FRandomProject Project;
	const std::string Number = std::to_string(Project.Line);
	RunKeyboardSession(Project,
		{
			{ "a place in an answer", Send("find " + Project.Symbol) + "wait idle 30\n" + Repeat("key TAB", 13),
				"link \"Source/" + Project.File + ":" + Number + "\" (focused)" },
			{ "is opened at its line", "key ENTER\nwait idle 30\n", "tab \"Source\" (selected" },
			{ "looked through", "key CTRL+F\ntick 10\ntype void\nwait idle 30\n", "status \"1 of 1\"" },
			{ "left", "key ESC\ntick 10\n", "list \"" },
			{ "and copied from", "key CTRL+C\ntick 10\nkey CTRL+L\nkey CTRL+V\nwait idle 30\n",
				"text box \"Prompt\" (focused, multi-line) = \"void " + Project.Symbol + "()" },
		},
		{}, { "DISPLAY=" + Display.GetName(), "PATH=/nowhere", "VISUAL", "EDITOR" });
}
