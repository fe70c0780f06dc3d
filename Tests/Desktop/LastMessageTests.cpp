#include "Desktop/ProgramDriver.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace
{
	int CountParts(const std::string& Text, const std::string& Part)
	{
		int Count = 0;
		for (size_t At = Text.find(Part); At != std::string::npos; At = Text.find(Part, At + 1))
		{
			++Count;
		}
		return Count;
	}

	FRun RunScript(const FRandomProject& Project, const std::string& Steps)
	{
		const std::string Script = Project.Write("steps.txt", Steps);
		return RunProgram({ "--headless", "--project", Project.Folder.string(), "--script", Script }, "", Project.OutFolder.string(),
			{ "XDG_DATA_HOME=" + Project.Path("data") });
	}

	/** What earlier runs have kept for undo. */
	void RemoveUndoFolders(const std::string& DataFolder)
	{
		for (const fs::directory_entry& Entry : fs::directory_iterator(fs::path(DataFolder) / "Velmora"))
		{
			if (Entry.path().extension() == ".undo")
			{
				fs::remove_all(Entry.path());
			}
		}
	}

	const char* const SendNotes = "type create notes.md with \"one\"\nkey CTRL+ENTER\nwait idle 30\n";
}

TEST(LastMessage, IsSentAgainAndPutBackIntoTheBox)
{
	const FRandomProject Project;
	const FRun Run = RunScript(Project,
		std::string(SendNotes) +
			"type a draft\nclick Edit\nclick Send Last Message Again\nanswer Yes\nwait idle 30\ndump again.json\n"
			"click Edit\nclick Edit Last Message\nanswer No\nwait idle 30\ndump no.json\n"
			"click Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\ndump edited.json\n"
			"click Edit\ndump menu.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string Again = ReadFile(Project.Path("again.json"));
	EXPECT_EQ(CountParts(Again, "\"type\": \"User\""), 1) << Again;
	EXPECT_TRUE(Contains(Again, "\"promptText\": \"a draft\"")) << "what was not sent stays";
	EXPECT_FALSE(Contains(Again, "already exists")) << "the file of the first time was undone";
	EXPECT_EQ(CountParts(ReadFile(Project.Path("no.json")), "\"type\": \"User\""), 1) << "No changes nothing";
	const std::string Edited = ReadFile(Project.Path("edited.json"));
	EXPECT_EQ(CountParts(Edited, "\"type\": \"User\""), 0) << Edited;
	EXPECT_TRUE(Contains(Edited, R"("promptText": "create notes.md with \"one\"\na draft")")) << Edited;
	EXPECT_FALSE(fs::exists(Project.Folder / "notes.md"));
	EXPECT_TRUE(Contains(ReadFile(Project.Path("menu.json")), "Edit Last Message")) << "greyed, but in its place";
}

TEST(LastMessage, IsTakenBackAfterARestartToo)
{
	const std::string Load = "wait idle 30\nclick Conversations are stored in the Velmora folder in your Engine's Saved folder\n"
							 "key DOWN\nkey ENTER\nwait idle 30\ndump loaded.json\n";
	const std::string Edit = "click Edit\nclick Edit Last Message\ndump question.json\nanswer Yes\nwait idle 30\ndump edited.json\n";
	for (const bool bIsKept : { true, false })
	{
		SCOPED_TRACE(bIsKept);
		const FRandomProject Project;
		ASSERT_EQ(RunScript(Project, SendNotes).ExitCode, 0);
		if (!bIsKept)
		{
			RemoveUndoFolders(Project.Path("data"));
		}
		const FRun Run = RunScript(Project, Load + Edit);
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		EXPECT_EQ(CountParts(ReadFile(Project.Path("loaded.json")), "\"type\": \"User\""), 1);
		EXPECT_EQ(Contains(ReadFile(Project.Path("question.json")), "no longer kept"), !bIsKept);
		const std::string Edited = ReadFile(Project.Path("edited.json"));
		EXPECT_EQ(CountParts(Edited, "\"type\": \"User\""), 0) << Edited;
		EXPECT_TRUE(Contains(Edited, R"("promptText": "create notes.md with \"one\"")")) << Edited;
		EXPECT_EQ(fs::exists(Project.Folder / "notes.md"), !bIsKept) << "as was said in the question";
	}

	const FRandomProject Project;
	ASSERT_EQ(RunScript(Project, SendNotes).ExitCode, 0);
	const FRun Run = RunScript(Project, Load + "click Edit\nclick Send Last Message Again\nanswer Yes\nwait idle 30\ndump again.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	const std::string Again = ReadFile(Project.Path("again.json"));
	EXPECT_EQ(CountParts(Again, "\"type\": \"User\""), 1) << Again;
	EXPECT_FALSE(Contains(Again, "already exists")) << "the file of the first time was undone";
}

TEST(LastMessage, BringsItsFilesBackAfterARestart)
{
	const FRandomProject Project;
	const std::string Attach = "type look @" + Project.File.substr(0, 6) + "\nwait idle 30\nkey ENTER\ntick 60\ndump attached.json\n";
	ASSERT_EQ(RunScript(Project, "wait idle 30\n" + Attach + "key CTRL+ENTER\nwait idle 30\ndump sent.json\n").ExitCode, 0);
	const auto ListChips = [&Project](const char* Dump)
	{
		const std::string All = ReadFile(Project.Path(Dump));
		const size_t Begin = All.find("\"chips\"");
		return Begin == std::string::npos ? All : All.substr(Begin, All.find(']', Begin) - Begin);
	};
	ASSERT_TRUE(Contains(ListChips("attached.json"), Project.File)) << "the test itself";
	ASSERT_FALSE(Contains(ListChips("sent.json"), Project.File)) << "they went out";

	const std::string Load = "wait idle 30\nclick Conversations are stored in the Velmora folder in your Engine's Saved folder\n"
							 "key DOWN\nkey ENTER\nwait idle 30\n";
	const FRun Run = RunScript(Project,
		Load + "click Edit\nclick Send Last Message Again\nanswer Yes\nwait idle 30\ndump again.json\n" +
			"click Edit\nclick Edit Last Message\nanswer Yes\nwait idle 30\ndump edited.json\n");
	EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
	EXPECT_EQ(CountParts(ReadFile(Project.Path("again.json")), "\"type\": \"User\""), 1);
	EXPECT_FALSE(Contains(ListChips("again.json"), Project.File)) << "sent again with it";
	EXPECT_TRUE(Contains(ListChips("edited.json"), Project.File)) << ListChips("edited.json");
}

TEST(AgentQuestionKeys, AnswerWhatTheAgentAsks)
{
	struct FCase
	{
		const char* Key;
		bool bIsDone;
		bool bIsRule;
	};
	for (const FCase& Case : { FCase{ "F8", true, false }, FCase{ "SHIFT+F8", true, true }, FCase{ "CTRL+F8", false, false } })
	{
		SCOPED_TRACE(Case.Key);
		const FRandomProject Project;
		const FRun Run = RunScript(Project,
			std::string("type create .vscode/tasks.json with \"x\"\nkey CTRL+ENTER\nwait state Paused 30\ntype a draft\nkey ") + Case.Key +
				"\nwait idle 30\ndump after.json\n");
		EXPECT_EQ(Run.ExitCode, 0) << Run.Error;
		EXPECT_EQ(fs::exists(Project.Folder / ".vscode/tasks.json"), Case.bIsDone);
		EXPECT_TRUE(Contains(ReadFile(Project.Path("after.json")), "\"promptText\": \"a draft\"")) << "the draft is left alone";
		bool bHasRule = false;
		for (const fs::directory_entry& Entry : fs::recursive_directory_iterator(Project.Path("data")))
		{
			bHasRule = bHasRule || Entry.path().extension() == ".rules";
		}
		EXPECT_EQ(bHasRule, Case.bIsRule);
	}
}
