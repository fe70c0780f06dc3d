// A process that dies in the middle of a recovery leaves steps undone. To stop there, and to take one step alone, this file reaches
// past access control.

#include "StoreFixture.h"

#include "Host/HostTasks.h"
#include "Store/StoreSalvage.h"
#include "Store/StoreSchema.h"

#include <algorithm>
#include <cstdio>
#include <future>
#include <map>
#include <random>
#include <set>
#include <sys/stat.h>

using Velmora::FConversationMetadata;

namespace
{
	constexpr size_t PageSize = 4096;

	/** Damages stores and looks at what comes back. */
	class StoreRecovery : public FStoreTest
	{
	protected:
		~StoreRecovery() override { Velmora::StoreNotices::Take(); }

		static std::string Units(const FString& Text)
		{
			return std::string(reinterpret_cast<const char*>(*Text), static_cast<size_t>(Text.Len()) * sizeof(TCHAR));
		}

		/**
		 * Texts that name their conversation again and again, so that every page which holds a part of one can be told
		 * by its bytes.
		 */
		void WriteConversations(FStore& Store, int Count, unsigned Seed)
		{
			std::mt19937 Random(Seed);
			for (int Number = 0; Number < Count; ++Number)
			{
				char Id[33];
				snprintf(Id, sizeof(Id), "%08X%08X%08X%08X", Number, static_cast<unsigned>(Random()), static_cast<unsigned>(Random()),
					static_cast<unsigned>(Random()));
				std::vector<FString> Texts;
				const int MessageCount = 1 + static_cast<int>(Random() % 6);
				for (int Index = 0; Index < MessageCount; ++Index)
				{
					// Some go over several pages.
					const int Length = Random() % 10 == 0 ? 9000 : 20 + static_cast<int>(Random() % 400);
					FString Text;
					while (Text.Len() < Length)
					{
						Text += FString(UTF8_TO_TCHAR(Id)) + TEXT(" ");
					}
					Text.AppendInt(Index);
					Texts.push_back(Text);
				}
				Written[Id] = Texts;
				Put(Store, Conversation(FString(Id), Texts));
			}
		}

		/** Conversations of which something lies on a page. */
		std::set<std::string> FindOnPage(const std::string& Bytes, size_t Page) const
		{
			const std::string Part = Bytes.substr(Page * PageSize, PageSize);
			std::set<std::string> Found;
			for (const auto& [Id, Texts] : Written)
			{
				// Half of an id may lie at either end of a page.
				const std::string Wide = Units(FString(Id.c_str()));
				const size_t Half = Wide.size() / 2;
				if (Part.find(Id) != std::string::npos || Part.find(Wide.substr(0, Half)) != std::string::npos ||
					Part.find(Wide.substr(Half)) != std::string::npos)
				{
					Found.insert(Id);
				}
			}
			return Found;
		}

		/** What is in the store is what was written; everything but the ids left out is there and whole. */
		void ExpectAllBut(FStore& Store, const std::set<std::string>& Lost) const
		{
			for (const auto& [Id, Texts] : Written)
			{
				std::string Whole;
				for (const FString& Text : Texts)
				{
					Whole += (Whole.empty() ? "" : "|") + Utf8(Text);
				}
				const std::string Found = Read(Store, FString(Id.c_str()));
				if (Lost.count(Id) == 0)
				{
					EXPECT_TRUE(Found == Whole) << Id << ": " << Found.substr(0, 200);
				}
				else if (Found != "(missing)")
				{
					for (size_t Start = 0; Start < Found.size(); Start = std::min(Found.size(), Found.find('|', Start)) + 1)
					{
						const std::string One = Found.substr(Start, Found.find('|', Start) - Start);
						EXPECT_TRUE(Holds(Whole, One) || Holds(One, Whole.substr(0, 500))) << "Not what was said: " << One.substr(0, 200);
					}
				}
			}
		}

		/** Puts these bytes in the place of the store and sees what comes back. */
		void ExpectRecovered(const std::string& Bytes, const std::set<std::string>& Lost)
		{
			std::filesystem::remove_all(Folder.AtBytes("Velmora"));
			WriteFile(Bytes);
			const TSharedRef<FStore> Store = OpenStore();
			CheckStore(*Store);
			ExpectAllBut(*Store, Lost);
		}

		std::vector<std::string> ListAside() const
		{
			std::vector<std::string> Names;
			for (const auto& Entry : std::filesystem::directory_iterator(Folder.AtBytes("Velmora")))
			{
				const std::string Name = Entry.path().filename();
				const bool bGoesWithAnother =
					Name.size() > 4 && (Name.substr(Name.size() - 4) == "-wal" || Name.substr(Name.size() - 4) == "-shm");
				if (Name != "Game.db" && !bGoesWithAnother)
				{
					Names.push_back(Name);
				}
			}
			std::sort(Names.begin(), Names.end());
			return Names;
		}

		/** Also to the end of a check that the store has begun by itself. */
		static void CheckStore(FStore& Store)
		{
			Store.Check();
			EXPECT_TRUE(FHostTasks::WaitForBackground(30.0));
		}

		void WriteFile(const std::string& Bytes) const { Folder.Write("Velmora/Game.db", Bytes); }

		std::map<std::string, std::vector<FString>> Written;
	};
}

TEST_F(StoreRecovery, WhatIsNoStoreIsSetAsideAndTold)
{
	WriteConversations(*OpenStore(), 30, 1);
	const std::string Sound = Folder.Read("Velmora/Game.db");
	std::string Foreign;
	{
		Velmora::FSqliteConnection Database;
		Folder.Write("foreign.db", "");
		ASSERT_TRUE(Database.Open(Folder.AtBytes("foreign.db"), Velmora::ESqliteAccess::Write));
		ASSERT_TRUE(Database.Execute("CREATE TABLE shopping(item TEXT)"));
	}
	Foreign = Folder.Read("foreign.db");
	std::string BadHead = Sound;
	BadHead.replace(0, 100, std::string(100, '\x5a'));
	std::string Flipped = Sound;
	Flipped[100] = static_cast<char>(Flipped[100] ^ 0xff);
	std::string OtherApplication = Sound;
	OtherApplication[70] = static_cast<char>(OtherApplication[70] ^ 1);

	struct FCase
	{
		const char* Why;
		std::string Bytes;
		const char* Word;
		const char* Notice;
		bool bComesBack;
	};
	const FCase Cases[] = {
		{ "empty", "", "damaged", "was damaged", false },
		{ "a text", "Dear diary,\n", "damaged", "was damaged", false },
		{ "cut to its first bytes", Sound.substr(0, 50), "damaged", "was damaged", false },
		{ "without its head", BadHead, "damaged", "30 conversations were recovered", true },
		{ "a wrong first page", Flipped, "damaged", "30 conversations were recovered", true },
		{ "a wrong mark", OtherApplication, "damaged", "30 conversations were recovered", true },
		{ "another program's database", Foreign, "foreign", "belongs to another program", false },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Case.Why);
		std::filesystem::remove_all(Folder.AtBytes("Velmora"));
		WriteFile(Case.Bytes);
		const TSharedRef<FStore> Store = OpenStore();
		Put(*Store, Conversation(TEXT("new"), { TEXT("works at once") }));
		CheckStore(*Store);
		const std::vector<std::string> Aside = ListAside();
		ASSERT_FALSE(Aside.empty());
		EXPECT_EQ(Aside[0].rfind(std::string("Game.db.") + Case.Word + '-', 0), 0u) << Aside[0];
		EXPECT_EQ(Folder.Read("Velmora/" + Aside[0]), Case.Bytes) << "The old file is not touched.";
		const std::vector<std::string> Notices = Velmora::StoreNotices::Take();
		ASSERT_EQ(Notices.size(), 1u);
		EXPECT_TRUE(Holds(Notices[0], Case.Notice)) << Notices[0];
		EXPECT_TRUE(Holds(Notices[0], Aside[0])) << Notices[0];
		EXPECT_EQ(Read(*Store, TEXT("new")), "works at once");
		if (Case.bComesBack)
		{
			ExpectAllBut(*Store, {});
		}
		CheckStore(*Store);
		EXPECT_EQ(Velmora::StoreNotices::Take().size(), 0u) << "Told once.";
	}
}

TEST_F(StoreRecovery, WhatIsNoFileIsSetAside)
{
	for (const bool bIsPipe : { false, true })
	{
		SCOPED_TRACE(bIsPipe);
		std::filesystem::remove_all(Folder.AtBytes("Velmora"));
		std::filesystem::create_directories(bIsPipe ? Folder.AtBytes("Velmora") : Folder.AtBytes("Velmora/Game.db/inside"));
		if (bIsPipe)
		{
			ASSERT_EQ(mkfifo(PathBytes().c_str(), 0600), 0);
		}
		const TSharedRef<FStore> Store = OpenStore();
		Put(*Store, Conversation(TEXT("new"), { TEXT("works") }));
		CheckStore(*Store);
		EXPECT_EQ(Read(*Store, TEXT("new")), "works");
		EXPECT_EQ(ListAside().size(), 1u);
		EXPECT_EQ(Velmora::StoreNotices::Take().size(), 1u);
	}
}

TEST_F(StoreRecovery, OneLostPageCostsOnlyWhatLiesOnIt)
{
	WriteConversations(*OpenStore(), 200, 2);
	const std::string Sound = Folder.Read("Velmora/Game.db");
	const size_t PageCount = Sound.size() / PageSize;
	ASSERT_GT(PageCount, 100u);
	std::mt19937 Random(3);
	std::vector<std::vector<size_t>> Rounds = { { 0 }, { 1 }, { 2 }, { 3 }, { 4 } };
	for (int Round = 0; Round < 8; ++Round)
	{
		// One in a hundred, anywhere.
		std::vector<size_t> Pages;
		for (size_t Count = 0; Count < (PageCount + 99) / 100; ++Count)
		{
			Pages.push_back(Random() % PageCount);
		}
		Rounds.push_back(Pages);
	}
	for (const std::vector<size_t>& Pages : Rounds)
	{
		SCOPED_TRACE(::testing::PrintToString(Pages));
		std::string Bytes = Sound;
		std::set<std::string> Lost;
		for (const size_t Page : Pages)
		{
			Lost.merge(FindOnPage(Sound, Page));
			for (size_t Offset = 0; Offset < PageSize; ++Offset)
			{
				Bytes[Page * PageSize + Offset] = static_cast<char>(Random());
			}
		}
		EXPECT_LT(Lost.size(), Written.size() / 2) << "The test would be empty.";
		ExpectRecovered(Bytes, Lost);
		EXPECT_EQ(Velmora::StoreNotices::Take().size(), 1u);
	}
}

TEST_F(StoreRecovery, AFlippedBitIsNeverReadAsText)
{
	WriteConversations(*OpenStore(), 60, 4);
	const std::string Sound = Folder.Read("Velmora/Game.db");
	std::mt19937 Random(5);
	for (int Round = 0; Round < 25; ++Round)
	{
		const size_t Position = Random() % Sound.size();
		SCOPED_TRACE(Position);
		std::string Bytes = Sound;
		Bytes[Position] = static_cast<char>(Bytes[Position] ^ (1 << Random() % 8));
		ExpectRecovered(Bytes, FindOnPage(Sound, Position / PageSize));
	}
}

TEST_F(StoreRecovery, ACutFileKeepsWhatIsLeft)
{
	WriteConversations(*OpenStore(), 60, 6);
	const std::string Sound = Folder.Read("Velmora/Game.db");
	for (const size_t Size : { Sound.size() / 2, Sound.size() - PageSize, Sound.size() - 1 })
	{
		SCOPED_TRACE(Size);
		std::set<std::string> Lost;
		for (size_t Page = Size / PageSize; Page * PageSize < Sound.size(); ++Page)
		{
			Lost.merge(FindOnPage(Sound, Page));
		}
		EXPECT_LT(Lost.size(), Written.size());
		ExpectRecovered(Sound.substr(0, Size), Lost);
	}
}

TEST_F(StoreRecovery, WhatIsOnlyInTheLogComesBackToo)
{
	const TSharedRef<FStore> Alive = OpenStore();
	WriteConversations(*Alive, 40, 7);
	// As a program leaves it that is killed now.
	const std::string Log = Folder.Read("Velmora/Game.db-wal");
	ASSERT_GT(Log.size(), 100'000u);
	std::string Bytes = Folder.Read("Velmora/Game.db");
	Alive->Close();
	std::filesystem::remove_all(Folder.AtBytes("Velmora"));
	Bytes.replace(0, 100, std::string(100, 'x'));
	WriteFile(Bytes);
	Folder.Write("Velmora/Game.db-wal", Log);
	const TSharedRef<FStore> Store = OpenStore();
	CheckStore(*Store);
	ExpectAllBut(*Store, {});
}

TEST_F(StoreRecovery, ALogThatSpeaksOfPagesWithoutEndIsReadToItsEnd)
{
	std::string Log;
	const auto Add = [&Log](std::initializer_list<uint32> Words)
	{
		for (const uint32 Word : Words)
		{
			for (int Shift = 24; Shift >= 0; Shift -= 8)
			{
				Log += static_cast<char>(Word >> Shift & 0xff);
			}
		}
	};
	uint32 First = 0;
	uint32 Second = 0;
	const auto Sum = [&](size_t Offset, size_t Size)
	{
		for (const size_t End = Offset + Size; Offset < End; Offset += 8)
		{
			uint32 Words[2];
			memcpy(Words, Log.data() + Offset, 8);
			First += Words[0] + Second;
			Second += Words[1] + First;
		}
	};
	// A head whose sums are of little-endian words, and one page far away that ends a transaction.
	Add({ 0x377f0682, 3007000, PageSize, 0, 1, 2 });
	Sum(0, 24);
	Add({ First, Second, 0xffffffff, 0xffffffff, 1, 2 });
	const std::string Page(PageSize, '\x0d');
	Sum(32, 8);
	const size_t SumsAt = std::exchange(Log, Log + Page).size();
	Sum(SumsAt, PageSize);
	Log.resize(SumsAt);
	Add({ First, Second });
	Log += Page;
	WriteFile(std::string(3 * PageSize, 'x'));
	Folder.Write("Velmora/Game.db-wal", Log);

	Velmora::FStoreSalvage Salvage(Folder.AtBytes("Velmora/Game.db"));
	std::atomic<bool> bStops = false;
	std::future<bool> Scan = std::async(std::launch::async, [&] { return Salvage.Scan(bStops); });
	const bool bEnds = Scan.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
	bStops = true;
	EXPECT_TRUE(Scan.get() && bEnds);
	EXPECT_TRUE(Salvage.GetNumbers().empty());
}

TEST_F(StoreRecovery, RottenTextIsNoticedWhenItIsRead)
{
	WriteConversations(*OpenStore(), 20, 8);
	std::string Bytes = Folder.Read("Velmora/Game.db");
	const std::string Needle = Units(FString(Written.begin()->first.c_str()));
	for (size_t Position = Bytes.find(Needle); Position != std::string::npos; Position = Bytes.find(Needle, Position + 2))
	{
		Bytes[Position] = 'Z';
	}
	WriteFile(Bytes);
	const TSharedRef<FStore> Store = OpenStore();
	EXPECT_TRUE(Holds(Read(*Store, FString(Written.begin()->first.c_str())), "is damaged"));
	CheckStore(*Store);
	ExpectAllBut(*Store, { Written.begin()->first });
	EXPECT_EQ(ListAside().size(), 1u) << "Set aside once, however often it is noticed.";
	EXPECT_EQ(Velmora::StoreNotices::Take().size(), 1u);
}

TEST_F(StoreRecovery, AConversationThatIsNotAsItWasWrittenIsNotRead)
{
	{
		const TSharedRef<FStore> Store = OpenStore();
		Put(*Store, Conversation(TEXT("A"), { TEXT("mine"), TEXT("answer") }));
		Put(*Store, Conversation(TEXT("B"), { TEXT("other") }));
		Store->Close();
		Velmora::FSqliteConnection Database;
		ASSERT_TRUE(Database.Open(PathBytes(), Velmora::ESqliteAccess::Write));
		ASSERT_TRUE(Database.Execute("UPDATE conversations SET mode=mode+1 WHERE id='A'"));
	}
	const TSharedRef<FStore> Store = OpenStore();
	EXPECT_TRUE(Holds(Read(*Store, TEXT("A")), "is damaged")) << "all its messages are whole";
	EXPECT_EQ(Read(*Store, TEXT("B")), "other");
}

TEST_F(StoreRecovery, ARecoveryThatWasCutOffGoesOnAtTheNextStart)
{
	WriteConversations(*OpenStore(), 50, 9);
	std::string Bytes = Folder.Read("Velmora/Game.db");
	Bytes.replace(0, 100, std::string(100, 'x'));
	WriteFile(Bytes);
	const std::string First = Written.begin()->first;
	{
		const TSharedRef<FStore> Store = OpenStore();
		Store->bIsCheckComing = true; // Nobody looks after it yet.
		Put(*Store, Conversation(FString(First.c_str()), { TEXT("said since") }));
		EXPECT_EQ(Velmora::StoreNotices::Take().size(), 0u);
	}
	const TSharedRef<FStore> Store = OpenStore();
	CheckStore(*Store);
	EXPECT_EQ(Read(*Store, FString(First.c_str())), "said since") << "What is newer stays.";
	Written.erase(First);
	ExpectAllBut(*Store, {});
	EXPECT_EQ(Velmora::StoreNotices::Take().size(), 1u);
}

TEST_F(StoreRecovery, ASetAsideThatWasCutOffIsFinished)
{
	WriteConversations(*OpenStore(), 20, 10);
	std::string Bytes = Folder.Read("Velmora/Game.db");
	Bytes.replace(0, 100, std::string(100, 'x'));
	WriteFile(Bytes);
	{
		const TSharedRef<FStore> Store = OpenStore();
		Store->bIsCheckComing = true;
		Put(*Store, Conversation(TEXT("new"), { TEXT("a") }));
		EXPECT_TRUE(Store->Delete(TEXT("new")));
	}
	// Died between the two renamings: the old file has its new name, the new one not yet.
	std::filesystem::rename(PathBytes(), PathBytes() + ".new");
	const TSharedRef<FStore> Store = OpenStore();
	Put(*Store, Conversation(TEXT("later"), { TEXT("b") }));
	CheckStore(*Store);
	ExpectAllBut(*Store, {});
	EXPECT_EQ(Read(*Store, TEXT("later")), "b");
}

TEST_F(StoreRecovery, WhatOthersWriteWhileAFileIsSetAsideIsNotLost)
{
	const TSharedRef<FStore> Other = OpenStore();
	Put(*Other, Conversation(TEXT("A"), { TEXT("a") }));
	const TSharedRef<FStore> Store = OpenStore();
	ASSERT_EQ(Read(*Store, TEXT("A")), "a");
	ASSERT_TRUE(Store->SetAside(FStore::EDamage::Broken));
	// The other one has the old file open still.
	Put(*Other, Conversation(TEXT("B"), { TEXT("b") }));
	EXPECT_EQ(Read(*Store, TEXT("B")), "b");
	CheckStore(*Store);
	EXPECT_EQ(Read(*Other, TEXT("A")), "a");
}
