#include "StoreFixture.h"

#include <cstdio>
#include <filesystem>

namespace
{
	/** This version of the store in the test, a later one in a program of its own. */
	class StoreVersions : public FStoreTest
	{
	protected:
		/** What the later version says to a command. */
		std::string Later(const std::string& Command) const
		{
			std::string Said;
			FILE* const Pipe = popen((std::string(VELMORA_LATER_STORE) + " '" + PathBytes() + "' " + Command).c_str(), "r");
			char Buffer[256];
			while (Pipe && fgets(Buffer, sizeof(Buffer), Pipe))
			{
				Said += Buffer;
			}
			return Pipe && pclose(Pipe) == 0 ? Said : "(failed) " + Said;
		}

		/** Names in the store's folder, without what the database library keeps beside. */
		std::string ListFiles() const
		{
			std::vector<std::string> Names;
			for (const auto& Entry : std::filesystem::directory_iterator(Folder.AtBytes("Velmora")))
			{
				const std::string Name = Entry.path().filename().native();
				if (Name.find("-wal") == std::string::npos && Name.find("-shm") == std::string::npos)
				{
					Names.push_back(Name);
				}
			}
			std::sort(Names.begin(), Names.end());
			std::string Line;
			for (const std::string& Name : Names)
			{
				Line += Name + ' ';
			}
			return Line;
		}

		static void Start(FStore& Store)
		{
			Store.Check();
			EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
		}
	};
}

TEST_F(StoreVersions, TheStoreOfALaterVersionStaysAndThisOneWorksBesideIt)
{
	ASSERT_EQ(Later("put L theirs"), "done\n");
	ASSERT_EQ(Later("check"), "");
	const std::string Theirs = Folder.Read("Velmora/Game.db");
	{
		const TSharedRef<FStore> Store = OpenStore();
		Put(*Store, Conversation(TEXT("A"), { TEXT("ours"), TEXT("answer") }));
		Start(*Store);
		EXPECT_EQ(Read(*Store, TEXT("A")), "ours|answer");
		EXPECT_EQ(ReadIds(*Store), "A ");
		const std::vector<std::string> Notices = Velmora::StoreNotices::Take();
		ASSERT_EQ(Notices.size(), 1u);
		EXPECT_TRUE(Holds(Notices[0], "later version")) << Notices[0];
		EXPECT_TRUE(Holds(Notices[0], "Game.v1.db")) << Notices[0];
		TArray<Velmora::FConversationMetadata> Summaries;
		EXPECT_TRUE(FStore::ReadSummaries(PathBytes(), Summaries));
		EXPECT_EQ(Summaries.Num(), 1);
	}
	EXPECT_EQ(Folder.Read("Velmora/Game.db"), Theirs);
	EXPECT_EQ(ListFiles(), "Game.db Game.v1.db ");

	// Its next start takes over what is there, once.
	const std::string Said = Later("check");
	EXPECT_TRUE(Holds(Said, "1 conversation was taken over")) << Said;
	EXPECT_EQ(ListFiles(), "Game.db ");
	EXPECT_EQ(Later("add A more"), "done\n");
	EXPECT_EQ(Later("add L more"), "done\n");
	EXPECT_EQ(Later("check"), "");
}

TEST_F(StoreVersions, BothAtOnceLoseNothing)
{
	const TSharedRef<FStore> Store = OpenStore();
	Put(*Store, Conversation(TEXT("A"), { TEXT("1") }));
	Start(*Store);
	// The later one makes the store its own while this one has it open.
	ASSERT_EQ(Later("put L theirs"), "done\n");
	Put(*Store, Conversation(TEXT("B"), { TEXT("1"), TEXT("2") }));
	EXPECT_EQ(Read(*Store, TEXT("B")), "1|2");
	EXPECT_EQ(ListFiles(), "Game.db Game.v1.db ");
	// It takes over what stands beside; this one begins there anew, with a conversation that the other has by now.
	EXPECT_TRUE(Holds(Later("check"), "1 conversation"));
	Put(*Store, Conversation(TEXT("B"), { TEXT("1"), TEXT("2"), TEXT("3") }));
	EXPECT_TRUE(Holds(Later("check"), "1 conversation")) << "It goes on.";
	// Gone on with on both sides it becomes two.
	ASSERT_EQ(Later("add B theirs"), "done\n");
	Put(*Store, Conversation(TEXT("B"), { TEXT("1"), TEXT("2"), TEXT("3"), TEXT("ours") }));
	EXPECT_TRUE(Holds(Later("check"), "1 conversation"));
	EXPECT_EQ(ListFiles(), "Game.db ");

	// All of it is there: this version reads what the number alone keeps it from.
	{
		Velmora::FSqliteConnection Database;
		ASSERT_TRUE(Database.Open(PathBytes(), Velmora::ESqliteAccess::Write));
		Database.SetTimeout(1000);
		ASSERT_TRUE(Database.Execute("PRAGMA user_version=1"));
	}
	const TSharedRef<FStore> Whole = OpenStore();
	EXPECT_EQ(Read(*Whole, TEXT("A")), "1");
	EXPECT_EQ(Read(*Whole, TEXT("L")), "theirs");
	EXPECT_EQ(Read(*Whole, TEXT("B")), "1|2|3|theirs");
	const TOutcome<TArray<Velmora::FConversationMetadata>> All = Whole->GetSummaries();
	ASSERT_TRUE(All);
	ASSERT_EQ(All->Num(), 4);
	std::string Other;
	for (const Velmora::FConversationMetadata& Summary : *All)
	{
		const std::string Id = Utf8(Summary.Id);
		Other = Id != "A" && Id != "B" && Id != "L" ? Read(*Whole, Summary.Id) : Other;
	}
	EXPECT_EQ(Other, "1|2|3|ours");
}
