#include "ChangeFixture.h"

#include <sys/wait.h>
#include <unistd.h>

using Velmora::FChangeJournal;

namespace
{
	/** A process that dies in the middle of an undo, and what the next one makes of it. */
	class UndoRecovery : public FChangeTest
	{
	protected:
		void SetUp() override
		{
			FChangeTest::SetUp();
			Journal.reset();
		}

		void Populate() const
		{
			for (const std::filesystem::directory_entry& Entry : std::filesystem::directory_iterator(Project.Root))
			{
				std::filesystem::remove_all(Entry);
			}
			for (const char* Path : { "a.md", "b.md", "z.md" })
			{
				Project.Write(Path, "before\n");
			}
		}

		/** Runs it in a process that ends without a word. */
		template <typename FWork>
		void DieIn(const FWork& Work)
		{
			const pid_t Child = fork();
			if (Child == 0)
			{
				OpenJournal();
				Work();
				_exit(0);
			}
			int Status = 0;
			ASSERT_EQ(waitpid(Child, &Status, 0), Child);
			ASSERT_EQ(WEXITSTATUS(Status), 0);
		}

		/** Two requests, with a file changed by hand between them and one afterwards. */
		void ChangeFiles()
		{
			bool bDone = MakeTools("T1").WriteFile("a.md", "agent 1\n").bSuccess;
			bDone = MakeTools("T1").CreateFile("made/new.md", "agent 1\n").bSuccess && bDone;
			Project.Write("a.md", "by hand 1\n");
			Journal->OpenTransaction("T2", "C", 2);
			for (const char* Path : { "a.md", "b.md" })
			{
				bDone = MakeTools("T2").WriteFile(Path, "agent 2\n").bSuccess && bDone;
			}
			bDone = MakeTools("T2").DeleteFile("z.md").bSuccess && bDone;
			bDone = !MakeTools("T2").CreateFile("b.md/x", "it is no folder").bSuccess && bDone;
			Project.Write("b.md", "by hand 2\n");
			bDone ? void() : _exit(1);
		}

		/** The files are back, the messages are not gone. */
		void DieInUndo()
		{
			DieIn(
				[this]
				{
					ChangeFiles();
					Undo("T1", [](int) -> std::string { _exit(0); });
					_exit(2);
				});
		}
	};
}

TEST_F(UndoRecovery, TheNextStartFinishesItWhereverItStopped)
{
	// What each step of an undo has not done yet.
	const std::function<void()> NotDone[] = { [this] { Project.Write("a.md", "agent 2\n"); },
		[this] { Project.Write("b.md", "by hand 2\n"); }, [this] { Project.Write("made/new.md", "agent 1\n"); },
		[this] { std::filesystem::remove(Project.Root / "z.md"); },
		[this]
		{
			Project.Write("b.md", "by hand 2\n");
			std::filesystem::remove(Project.Root / "b.conflict-1.md");
		},
		[this] { std::filesystem::remove(Project.Root / "a.conflict-1.md"); } };
	for (unsigned Mask = 0; Mask < 1u << std::size(NotDone) && !HasFailure(); ++Mask)
	{
		SCOPED_TRACE(Mask);
		Populate();
		DieInUndo();
		for (size_t Step = 0; Step < std::size(NotDone); ++Step)
		{
			if (Mask >> Step & 1)
			{
				NotDone[Step]();
			}
		}
		FinishedMessages.clear();
		const std::vector<Velmora::FRecoveredUndo> All = RecoverAll();
		ASSERT_EQ(All.size(), 1u);
		EXPECT_TRUE(All[0].bIsFinished);
		EXPECT_EQ(All[0].Sentences,
			(std::vector<std::string>{
				"An undo had been cut short when the program ended. It is finished now: the files and the conversation are as they were "
				"before the request.",
				"`b.md` had been changed by hand since. It is back as it was before the request; what you had made of it is in "
				"`b.conflict-1.md`.",
				"`a.md` had been changed by hand between two changes. It is back as it was before the request; what you had made of it "
				"then "
				"is in `a.conflict-1.md`." }));
		EXPECT_EQ(FinishedMessages, "C 0 mark0");
		for (const char* Path : { "a.md", "b.md", "z.md" })
		{
			EXPECT_EQ(ReadFile(Path), "before\n") << Path;
		}
		EXPECT_EQ(ReadFile("a.conflict-1.md"), "by hand 1\n");
		EXPECT_EQ(ReadFile("b.conflict-1.md"), "by hand 2\n");
		EXPECT_EQ(ListProject().size(), 5u);
		EXPECT_TRUE(std::filesystem::is_empty(UndoFolder));
	}
}

TEST_F(UndoRecovery, WhatCannotBeFinishedIsTriedAgainAndGivenUpInTheEnd)
{
	Populate();
	DieInUndo();
	Project.Write("a.md", "by hand 3\n");
	std::vector<Velmora::FRecoveredUndo> All = RecoverAll("The store is busy.");
	ASSERT_EQ(All.size(), 1u);
	EXPECT_FALSE(All[0].bIsFinished);
	EXPECT_EQ(All[0].Sentences,
		(std::vector<std::string>{
			"An undo had been cut short when the program ended and could not be finished. The store is busy. Some of "
			"its files may be restored and others not. It is tried again at the next start." }));
	EXPECT_EQ(ReadFile("a.md"), "by hand 3\n");
	All = RecoverAll();
	ASSERT_EQ(All.size(), 1u);
	EXPECT_TRUE(All[0].bIsFinished);
	EXPECT_EQ(ReadFile("a.md"), "before\n");
	EXPECT_EQ(ReadFile("a.conflict-2.md"), "by hand 3\n") << "made since the process died";
	EXPECT_EQ(All[0].Sentences.size(), 4u);

	Populate();
	DieInUndo();
	std::filesystem::remove(Project.Root / "z.md");
	Project.Write("z.md/inside.txt", "mine");
	for (const char* Last : { "It is tried again at the next start.", "It is tried again at the next start.", "It is not tried again." })
	{
		All = RecoverAll();
		ASSERT_EQ(All.size(), 1u);
		const std::string Told = All[0].Sentences[0];
		EXPECT_NE(Told.find("`z.md` cannot be restored: something that is no file has taken its place."), std::string::npos) << Told;
		EXPECT_EQ(Told.substr(Told.size() - std::string(Last).size()), Last);
	}
	EXPECT_TRUE(RecoverAll().empty());
}

TEST_F(UndoRecovery, AnUndoThatWasOverIsLeftAlone)
{
	const std::function<void()> Ends[] = { [this] { UndoRequest("T2"); },
		[this] { Undo("T2", [](int) { return std::string("The store is busy."); }); },
		[this]
		{
			UndoRequest("T2");
			MakeTools("T1").WriteFile("z.md", "agent 3\n");
		} };
	for (size_t Index = 0; Index < std::size(Ends); ++Index)
	{
		SCOPED_TRACE(Index);
		Populate();
		std::filesystem::remove_all(UndoFolder); // What the one before has left is kept for its first request.
		DieIn(
			[&]
			{
				ChangeFiles();
				Ends[Index]();
				Project.Write("a.md", "by hand at last\n");
			});
		const std::vector<std::string> Before = ListProject();
		EXPECT_TRUE(RecoverAll().empty());
		EXPECT_EQ(ListProject(), Before);
		ASSERT_EQ(FChangeJournal::AdoptDeadJournals(UndoFolder, false).size(), 1u);
		EXPECT_EQ(FChangeJournal::AdoptDeadJournals(UndoFolder, false)[0]->Has("T2"), Index == 1) << "taken back, or undone";
	}
}
