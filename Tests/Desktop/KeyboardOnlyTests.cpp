#include "Desktop/ProgramDriver.h"

#include <filesystem>
#include <gtest/gtest.h>

// All that a user does, by a script without a pointer: no step of it clicks, scrolls or presses an entry by its name.

namespace
{
	std::string Repeat(const std::string& Step, int Times)
	{
		std::string Steps;
		for (int Index = 0; Index < Times; ++Index)
		{
			Steps += Step + "\ntick 3\n";
		}
		return Steps;
	}

	/** Lines of the accessible tree as a dump writes them, with the marks that JSON puts before quotes. */
	std::string Quote(const std::string& Line)
	{
		std::string Result;
		for (const char Letter : Line)
		{
			Result += Letter == '"' ? "\\\"" : std::string(1, Letter);
		}
		return Result;
	}
}

TEST(KeyboardOnly, EveryFeatureIsReachedAndUsed)
{
	const FRandomProject Project;
	const struct
	{
		const char* What;
		std::string Steps;
		/** In the dump after the steps. */
		std::string Line;
	} Parts[] = {
		{ "a file is attached", "type see @" + Project.File + "\ntick 60\nkey ENTER\ntick 30\n", "group \"Attached files\"" },
		{ "the prompt is cleared, written in two lines, and sent",
			"key CTRL+A\nkey DELETE\ntype create one.md with \"hello\"\\n\nkey CTRL+ENTER\nwait idle 30\n", "list item \"Velmora AI\"" },
		{ "a question is answered",
			"type create .vscode/tasks.json with \"x\"\nkey CTRL+ENTER\nwait state Paused 30\ntick 30\nkey F8\nwait idle 30\n",
			"text box \"Prompt\" (focused" },
		{ "the conversation is looked through", "key CTRL+F\ntype hello\ntick 30\nkey F3\nkey SHIFT+F3\ntick 10\n",
			"text box \"Find in the conversation\" (focused) = \"hello\"" },
		{ "and left", "key ESC\ntick 5\nkey CTRL+L\ntick 5\n", "text box \"Prompt\" (focused" },
		{ "menus", "key F10\ntick 5\nkey RIGHT\nkey RIGHT\nkey DOWN\ntick 5\n", "(focused, selected)" },
		{ "out of the menus", "key ESC\nkey ESC\ntick 5\nkey CTRL+L\ntick 5\n", "text box \"Prompt\" (focused" },
		{ "the first sidebar", Repeat("key TAB", 2), "button \"Toggle conversation plan sidebar\" (focused)" },
		{ "the second one opens", "key TAB\ntick 3\nkey ENTER\ntick 20\n", "group \"Behavior\"" },
		{ "and closes; the conversations are a stop", "key ENTER\ntick 20\n" + Repeat("key TAB", 2),
			"combo box \"Conversation\" (focused" },
		{ "their list opens and closes", "key ENTER\ntick 20\nkey ESC\ntick 20\n", "combo box \"Conversation\" (focused" },
		{ "saving", Repeat("key TAB", 2) + "key ENTER\ntick 30\ntype " + Project.Path("saved.md") + "\nkey ENTER\ntick 60\n",
			"text box \"Prompt\" (focused" },
		{ "from the prompt back to the files that were changed", "key SHIFT+TAB\ntick 5\n", "button \"Changed Files (2)\" (focused" },
		{ "all conversations are searched", "key CTRL+SHIFT+H\ntick 60\ntype hello\ntick 60\nkey DOWN\ntick 5\n",
			"text box \"Search all conversations\" = \"hello\"" },
		{ "one is named", "key F2\ntick 10\nkey CTRL+A\ntype My Name\nkey ENTER\ntick 60\n", "My Name" },
		{ "pinned, deleted, and brought back", "key CTRL+P\ntick 30\nkey DELETE\ntick 30\nkey CTRL+Z\ntick 60\n", "Pinned" },
		{ "one is opened", "key ENTER\ntick 60\n", "text box \"Prompt\" (focused" },
		{ "zoom", "key CTRL+EQUALS\ntick 5\nkey CTRL+ZERO\ntick 5\n", "text box \"Prompt\" (focused" },
		{ "a tab is closed, and the other stands there", "key CTRL+TAB\ntick 5\nkey CTRL+F4\ntick 20\n", "tab \"Velmora AI\" (" },
		{ "a new conversation", "key CTRL+N\nwait idle 30\ntick 10\n", "text box \"Prompt\" (focused" },
	};
	std::string Script;
	int Number = 0;
	for (const auto& Part : Parts)
	{
		Script += Part.Steps + "dump part" + std::to_string(Number++) + "\n";
	}
	const FRun Run = RunProgram({ "--headless", "--size", "1280x900", "--project", Project.Folder.string(), "--set",
									"velmora.conversationhistoryrefresh.forcesync=1", "--script", Project.Write("keys.txt", Script) },
		"", Project.OutFolder.string(), { "XDG_DATA_HOME=" + Project.Path("data") });
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	Number = 0;
	for (const auto& Part : Parts)
	{
		SCOPED_TRACE(Part.What);
		const std::string Dump = ReadFile(Project.Path("part" + std::to_string(Number++)));
		EXPECT_TRUE(Contains(Dump, Quote(Part.Line)))
			<< Dump.substr(Dump.find("\"accessible\"") == std::string::npos ? 0 : Dump.find("\"accessible\""));
	}
	EXPECT_TRUE(Contains(ReadFile(Project.Folder / "one.md"), "hello"));
	EXPECT_TRUE(std::filesystem::exists(Project.Folder / ".vscode/tasks.json"));
	// Units of sixteen bits.
	EXPECT_TRUE(Contains(ReadFile(Project.Path("saved.md")), std::string("h\0e\0l\0l\0o", 9)));
	EXPECT_FALSE(Contains(ReadFile(Project.Path("part18")), Quote("tab \"Conversations\"")));
	EXPECT_FALSE(Contains(ReadFile(Project.Path("part19")), "\"type\": \"User\"")) << "a new conversation is empty";
}
