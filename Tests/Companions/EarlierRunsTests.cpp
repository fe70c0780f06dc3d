#include "ChangeFixture.h"

using Velmora::FChangeJournal;
using Velmora::FUndoRequest;

namespace
{
	/** What the journals of earlier runs are good for. */
	class EarlierRuns : public FChangeTest
	{
	};
}

TEST_F(EarlierRuns, CanBeUndone)
{
	Project.Write("a.md", "before\n");
	Project.Write("b.md", "before\n");
	Journal.reset();
	OpenJournal();
	Journal->OpenTransaction("T2", "C", 2, "mark");
	Journal->AddMessage("T2", 4);
	ASSERT_TRUE(MakeTools("T1").WriteFile("a.md", "one\n").bSuccess);
	ASSERT_TRUE(MakeTools("T2").WriteFile("a.md", "two\n").bSuccess);
	ASSERT_TRUE(MakeTools("T2").DeleteFile("b.md").bSuccess);
	Journal->OpenTransaction("T3", "C", 6);
	Journal.reset();

	// 1. A later run knows each message, also one for which nothing was changed, and undoes the last ones.
	std::vector<std::shared_ptr<FChangeJournal>> Adopted = FChangeJournal::AdoptDeadJournals(UndoFolder, false);
	ASSERT_EQ(Adopted.size(), 1u);
	EXPECT_TRUE(FChangeJournal::AdoptDeadJournals(UndoFolder, false).empty()) << "two runs cannot have the same";
	EXPECT_EQ(Adopted[0]->FindTransactionOf("C", 6)->TransactionId, "T3");
	EXPECT_EQ(Adopted[0]->FindTransactionOf("C", 4)->MessageIndex, 2);
	EXPECT_FALSE(Adopted[0]->FindTransactionOf("C", 2, "another")) << "another message stands there now";
	EXPECT_FALSE(Adopted[0]->FindTransactionOf("D", 2, "mark"));
	EXPECT_EQ(Adopted[0]->FindTransactionOf("C", 2, "mark")->TransactionId, "T2");
	const auto UndoIn = [](FChangeJournal& In, const char* Transaction)
	{
		FUndoRequest Request;
		Request.TransactionId = Transaction;
		Request.ConversationId = "C";
		Request.Commit = [](int) { return std::string(); };
		return In.Undo(Request);
	};
	EXPECT_TRUE(UndoIn(*Adopted[0], "T2").bSuccess);
	EXPECT_EQ(ReadFile("a.md") + ReadFile("b.md"), "one\nbefore\n");

	// 2. A run after that does not know them any more, but the one before them.
	Adopted.clear();
	Adopted = FChangeJournal::AdoptDeadJournals(UndoFolder, false);
	ASSERT_EQ(Adopted.size(), 1u);
	EXPECT_FALSE(Adopted[0]->FindTransactionOf("C", 2, "mark"));
	EXPECT_FALSE(Adopted[0]->FindTransactionOf("C", 6));
	Project.Write("a.md", "by hand\n");
	EXPECT_TRUE(UndoIn(*Adopted[0], "T1").bSuccess);
	EXPECT_EQ(ReadFile("a.md") + ReadFile("a.conflict-1.md"), "before\nby hand\n");
	Adopted.clear();
	EXPECT_FALSE(std::filesystem::exists(UndoFolder)) << "nothing is left to undo";
}

TEST_F(EarlierRuns, AreKeptWithinBounds)
{
	Journal.reset();
	for (size_t Run = 0; Run < FChangeJournal::MaxAdopted + 3; ++Run)
	{
		OpenJournal();
		ASSERT_TRUE(MakeTools().WriteFile("a.md", std::to_string(Run)).bSuccess);
		Journal.reset();
	}
	std::vector<std::shared_ptr<FChangeJournal>> Adopted = FChangeJournal::AdoptDeadJournals(UndoFolder, false);
	EXPECT_EQ(Adopted.size(), FChangeJournal::MaxAdopted);
	EXPECT_EQ(static_cast<size_t>(std::distance(std::filesystem::directory_iterator(UndoFolder), {})), FChangeJournal::MaxAdopted);
	for (const std::shared_ptr<FChangeJournal>& Old : Adopted)
	{
		Old->ForgetConversations([](const std::string& Id) { return Id == "C"; });
	}
	Adopted.clear();
	EXPECT_FALSE(std::filesystem::exists(UndoFolder)) << "with its conversation goes what it was before";
}

TEST_F(EarlierRuns, ComeFromAnotherFolderWholeOrNotAtAll)
{
	namespace fs = std::filesystem;
	Project.Write("a.md", "before\n");
	ASSERT_TRUE(MakeTools().WriteFile("a.md", "after\n").bSuccess);
	const std::string Home = Project.Root.native() + "-home";
	const auto Bring = [&] { return FChangeJournal::BringDeadJournals(UndoFolder, Home + "/undo"); };

	// 1. Not what is in use.
	EXPECT_TRUE(Bring().IsDone());
	EXPECT_FALSE(fs::exists(Home));
	Journal.reset();
	const fs::path There = fs::directory_iterator(UndoFolder)->path();
	const std::vector<std::string> Before = ListTree(UndoFolder);

	// 2. Not what cannot come: to no folder, or in part only.
	std::ofstream(Home).put('x');
	EXPECT_TRUE(Bring().GetWords().find(Home) != std::string::npos) << Bring().GetWords();
	fs::remove(Home);
	ASSERT_EQ(mkfifo((There / "contents/pipe").c_str(), 0600), 0);
	EXPECT_FALSE(Bring().IsDone());
	EXPECT_TRUE(fs::is_empty(Home + "/undo")) << "no half of it";
	fs::remove(There / "contents/pipe");
	EXPECT_EQ(ListTree(UndoFolder), Before);

	// 3. After one that was killed while it copied; and once more, as if it had been killed before the other one was gone.
	const fs::path Here = fs::path(Home) / "undo" / There.filename();
	fs::create_directories(fs::path(Home) / "undo" / (".new-" + There.filename().native()) / "contents/half");
	fs::copy(UndoFolder, UndoFolder + "-copy", fs::copy_options::recursive);
	fs::last_write_time(There / "changes.log", fs::file_time_type::clock::now() - std::chrono::hours(24 * 7));
	const fs::file_time_type Time = fs::last_write_time(There / "changes.log");
	EXPECT_TRUE(Bring().IsDone());
	EXPECT_FALSE(fs::exists(UndoFolder));
	EXPECT_EQ(fs::last_write_time(Here / "changes.log"), Time) << "it is as old as before";
	EXPECT_EQ(std::distance(fs::directory_iterator(Home + "/undo"), {}), 1);
	fs::rename(UndoFolder + "-copy", UndoFolder);
	EXPECT_TRUE(Bring().IsDone());
	EXPECT_FALSE(fs::exists(UndoFolder));

	// 4. What lost its log while it went is none any more.
	fs::create_directories(There);
	fs::copy(Here / "lock", There / "lock");
	fs::rename(Here, Home + "/aside");
	EXPECT_TRUE(Bring().IsDone());
	EXPECT_TRUE(fs::is_empty(Home + "/undo"));
	fs::rename(Home + "/aside", Here);

	// 5. It is good for what it was.
	std::vector<std::shared_ptr<FChangeJournal>> Adopted = FChangeJournal::AdoptDeadJournals(Home + "/undo", false);
	ASSERT_EQ(Adopted.size(), 1u);
	FUndoRequest Request;
	Request.TransactionId = "T1";
	Request.ConversationId = "C";
	Request.Commit = [](int) { return std::string(); };
	EXPECT_TRUE(Adopted[0]->Undo(Request).bSuccess);
	EXPECT_EQ(ReadFile("a.md"), "before\n");
	Adopted.clear();
	fs::remove_all(Home);
}
