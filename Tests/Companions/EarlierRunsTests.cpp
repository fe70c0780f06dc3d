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
