#include "Changes/UndoRun.h"
#include "ChangeFixture.h"

#include <thread>

using Velmora::FChangeJournal;

namespace
{
	/** What others do while there is something to undo. */
	using UndoMeanwhile = FChangeTest;
}

TEST_F(UndoMeanwhile, WhatIsMadeOfAFileMeanwhileStays)
{
	Project.Write("written.txt", "before\n");
	Project.Write("deleted.txt", "before\n");
	MakeTools().WriteFile("written.txt", "by the agent\n");
	MakeTools().DeleteFile("deleted.txt");
	MakeTools().CreateFile("created.txt", "by the agent\n");
	const std::vector<std::string> Before = ListProject();
	const std::string Folder = std::filesystem::directory_iterator(UndoFolder)->path().native();
	const Velmora::FLoggedHistory History = Velmora::FChangeLog::Read(Folder);

	for (const char* Path : { "written.txt", "deleted.txt", "created.txt" })
	{
		const std::string Agents = ReadFile(Path);
		const bool bWasThere = std::filesystem::exists(Project.PathOf(Path));
		Velmora::FKeptContents Contents(Folder);
		Velmora::FUndoPlan Plan(Contents);
		Plan.Add(History.Transactions.front());
		bool bIsCommitted = false;
		const Velmora::FUndoEnd End = Velmora::PerformUndo(
			Plan, false,
			[&] // All has been looked at, and nothing is changed yet.
			{
				Project.Write(Path, "by hand at that moment\n");
				return std::string();
			},
			[&]
			{
				bIsCommitted = true;
				return std::string();
			});

		EXPECT_EQ(End.Problem, std::string("`") + Path + "` cannot be restored: it was changed by somebody else at that moment.");
		EXPECT_EQ(End.Lost, "");
		EXPECT_FALSE(bIsCommitted);
		EXPECT_EQ(ReadFile(Path), "by hand at that moment\n");
		std::filesystem::remove(Project.PathOf(Path));
		if (bWasThere)
		{
			Project.Write(Path, Agents);
		}
	}
	EXPECT_EQ(ListProject(), Before) << "the others are as they were, and nothing is left beside";
}

TEST_F(UndoMeanwhile, ACopyHasANameThatIsShortEnough)
{
	const std::string Paths[] = { std::string(251, 'n') + ".txt", "a." + std::string(253, 'e'),
		std::string(243, 'x') + "\xC3\xBC" + std::string(9, 'y') };
	for (const std::string& Path : Paths)
	{
		Project.Write(Path, "before\n");
		EXPECT_TRUE(MakeTools().WriteFile(Path, "by the agent\n").bSuccess);
		Project.Write(Path, "by hand\n");
	}
	EXPECT_EQ(UndoRequest().Problem, "");
	for (const std::string& Path : Paths)
	{
		EXPECT_EQ(ReadFile(Path), "before\n");
	}
	for (const std::string& Copy :
		{ std::string(240, 'n') + ".conflict-1.txt", "a." + std::string(242, 'e') + ".conflict-1", std::string(243, 'x') + ".conflict-1" })
	{
		EXPECT_EQ(ReadFile(Copy), "by hand\n") << Copy;
	}
}

TEST_F(UndoMeanwhile, WhatIsRemovedFromTheUndoFolderStopsOneRequestOnly)
{
	Project.Write("a.txt", "before\n");
	EXPECT_TRUE(MakeTools().WriteFile("a.txt", "first\n").bSuccess);
	std::filesystem::remove_all(UndoFolder);
	EXPECT_EQ(MakeTools().WriteFile("a.txt", "second\n").Problem,
		"what was kept for undo has been removed from the disk. Earlier changes cannot be undone any more; ask once more for this one");
	EXPECT_EQ(UndoRequest().Problem, "What was done after that message is not known any more, so nothing was undone.");
	EXPECT_EQ(ReadFile("a.txt"), "first\n");

	Journal->OpenTransaction("T2", "C", 2);
	EXPECT_TRUE(MakeTools("T2").WriteFile("a.txt", "third\n").bSuccess);
	EXPECT_TRUE(UndoRequest("T2").bSuccess);
	EXPECT_EQ(ReadFile("a.txt"), "first\n");
}

TEST_F(UndoMeanwhile, ProgramsTakeTurnsAtAFile)
{
	constexpr int ProgramCount = 4;
	constexpr int LineCount = 25;
	Project.Write("a.txt", "");
	std::vector<std::thread> Programs;
	for (int Program = 0; Program < ProgramCount; ++Program)
	{
		Programs.emplace_back(
			[this]
			{
				FChangeJournal Other(UndoFolder);
				Other.SetDurable(false);
				Other.OpenTransaction("T", "C", 0);
				Velmora::FChangeTools Tools(Project.Root.native(), Other, "T");
				Tools.SetDurable(false);
				for (int Line = 0; Line < LineCount; ++Line)
				{
					EXPECT_EQ(Tools.AppendToFile("a.txt", "line\n").Problem, "");
				}
			});
	}
	for (std::thread& Program : Programs)
	{
		Program.join();
	}
	const std::string Bytes = ReadFile("a.txt");
	EXPECT_EQ(std::count(Bytes.begin(), Bytes.end(), '\n'), ProgramCount * LineCount);
}
