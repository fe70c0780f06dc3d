#include "StoreFixture.h"

#include "Host/HostClock.h"
#include "Host/StoreLocation.h"
#include "Host/StoredConversations.h"
#include "Store/StoreSchema.h"
#include "Store/StoreTurn.h"
#include "Support/Base/SmallDisk.h"

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using Velmora::EConversationMode;
using Velmora::EConversationRole;
using Velmora::FConversationMetadata;

namespace
{
	using ConversationStores = FStoreTest;

	/** Every unit, which no comparison as UTF-8 would tell. */
	std::u16string Units(const FString& Text)
	{
		return std::u16string(*Text, static_cast<size_t>(Text.Len()));
	}
}

TEST_F(ConversationStores, TextsComeBackUnitByUnit)
{
	const TCHAR WithNul[] = { 'a', 0, 'b', 0 };
	const TCHAR Lone[] = { 0xd800, 'x', 0xdc00, 0xdc00, 0xd83d, 0xde00, 0xffff, 0xd800 };
	FString Long(TEXT("0123456789abcdef"));
	while (Long.Len() < 10'000'000)
	{
		Long += Long;
	}
	const std::vector<FString> Texts = { FString(TEXT("plain")), FString(), FString(4, WithNul), FString(8, Lone),
		FString(TEXT("\r\n\t\u00e4\u4e2d")), Long };
	{
		const TSharedRef<FStore> Store = OpenStore();
		FConversationMetadata Written = Conversation(TEXT("A"), Texts);
		Written.Mode = EConversationMode::Assets;
		Written.Messages.Add(Message(TEXT("tool"), EConversationRole::Tool));
		Written.Messages[1].bHasToolCalls = true;
		Put(*Store, Written);
	}
	const TOutcome<FConversationMetadata> Loaded = OpenStore()->Load(TEXT("a"));
	ASSERT_TRUE(Loaded) << "Letter case of ids does not matter. " << Loaded.GetWords();
	const FConversationMetadata& Stored = *Loaded;
	EXPECT_EQ(Utf8(Stored.Id), "A");
	EXPECT_EQ(Stored.Mode, EConversationMode::Assets);
	ASSERT_EQ(Stored.Messages.Num(), static_cast<int32>(Texts.size()) + 1);
	for (size_t Index = 0; Index < Texts.size(); ++Index)
	{
		EXPECT_TRUE(Units(Stored.Messages[static_cast<int32>(Index)].Content) == Units(Texts[Index])) << Index;
	}
	EXPECT_TRUE(Stored.Messages[1].HasToolCalls());
	EXPECT_TRUE(Stored.Messages[1].IsAssistantMessage());
	EXPECT_EQ(Stored.Messages.Last().Role, EConversationRole::Tool);
}

TEST_F(ConversationStores, WhatIsAttachedStaysWithItsMessage)
{
	const auto ReadAttached = [](FStore& Store)
	{
		const TOutcome<Velmora::FAttachedFiles> Loaded = Store.LoadAttached(TEXT("A"));
		std::string Line = Loaded ? "" : Loaded.GetWords();
		for (int32 Index = 0; Loaded && Index < 8; ++Index)
		{
			for (const FString& File : Loaded->FindRef(Index))
			{
				Line += std::to_string(Index) + " " + Utf8(File) + "|";
			}
		}
		return Line;
	};
	const TSharedRef<FStore> Store = OpenStore();
	FConversationMetadata Written = Conversation(TEXT("A"), { TEXT("none"), TEXT("answer"), TEXT("two"), TEXT("answer") });
	Put(*Store, Written);
	EXPECT_EQ(ReadAttached(*Store), "") << "a store that never had any";

	// A message that was taken back leaves a gap between the keys of the others.
	const TOutcome<int64> Untold = Store->AppendMessage(TEXT("A"), Message(TEXT("untold")));
	Written.Messages.Add(Message(TEXT("three")));
	Velmora::FAttachedFiles Attached;
	Attached.Add(2, { TEXT("stored before") });
	Attached.Add(4, { TEXT("Source/a b.cpp"), FString(), TEXT("\u00e4\u4e2d") });
	Written.Messages.Add(Message(TEXT("four")));
	Attached.Add(5, { TEXT("late.h") });
	ASSERT_TRUE(Store->Append(Written, 4, FStore::WorkerTimeoutMilliseconds, Attached));
	ASSERT_TRUE(Store->Withdraw(TEXT("A"), *Untold));
	const std::string Four = "4 Source/a b.cpp|4 |4 \u00e4\u4e2d|";
	EXPECT_EQ(ReadAttached(*OpenStore()), Four + "5 late.h|");

	// It goes with its message, on whatever way that goes, and never comes to another one.
	ASSERT_TRUE(Store->TruncateMessages(TEXT("A"), 5));
	EXPECT_EQ(ReadAttached(*Store), Four);
	Written.Messages.SetNum(6);
	ASSERT_TRUE(Store->Append(Written, 5));
	EXPECT_EQ(ReadAttached(*Store), Four);
	ASSERT_TRUE(Store->Clear());
	Put(*Store, Written);
	EXPECT_EQ(ReadAttached(*Store), "");
	Store->Close();
	Velmora::FSqliteConnection Database;
	ASSERT_TRUE(Database.Open(PathBytes(), Velmora::ESqliteAccess::Write));
	EXPECT_EQ(Database.ReadInteger("SELECT count(*) FROM attachments", -1), 0);

	// What is spoilt is none, and the message stays.
	ASSERT_TRUE(Database.Execute("INSERT INTO attachments SELECT key, x'010000007800', 1 FROM messages"));
	EXPECT_EQ(ReadAttached(*Store), "");
	EXPECT_EQ(Read(*Store, TEXT("A")), "none|answer|two|answer|three|four");
}

TEST_F(ConversationStores, SummariesEndWithTheFirstMessageOfTheUser)
{
	const TSharedRef<FStore> Store = OpenStore();
	FHostClock::UseSimulatedTime(FDateTime(2026, 7, 1, 12, 0, 0));
	Put(*Store, Conversation(TEXT("old"), { TEXT("first"), TEXT("answer"), TEXT("second") }));
	FHostClock::Advance(60.0);
	FConversationMetadata Late = Conversation(TEXT("late"), { TEXT("x") });
	Late.Messages[0].Role = EConversationRole::Tool;
	Late.Messages.Add(Message(TEXT("question")));
	Late.Messages.Add(Message(TEXT("more")));
	Put(*Store, Late);
	TArray<FConversationMetadata> Summaries;
	ASSERT_TRUE(FStore::ReadSummaries(PathBytes(), Summaries));
	ASSERT_EQ(Summaries.Num(), 2);
	EXPECT_EQ(Utf8(Summaries[0].Id), "late");
	EXPECT_EQ(Summaries[0].LastUpdated, FDateTime(2026, 7, 1, 12, 1, 0));
	EXPECT_EQ(Summaries[1].LastUpdated, FDateTime(2026, 7, 1, 12, 0, 0));
	ASSERT_EQ(Summaries[0].Messages.Num(), 2);
	EXPECT_EQ(Utf8(Summaries[0].Messages[1].Content), "question");
	ASSERT_EQ(Summaries[1].Messages.Num(), 1);
	EXPECT_EQ(Utf8(Summaries[1].Messages[0].Content), "first");

	// The one that was said something in comes first.
	FHostClock::Advance(60.0);
	EXPECT_TRUE(Store->AppendMessage(TEXT("old"), Message(TEXT("third"))));
	EXPECT_EQ(ReadIds(*Store), "old late ");
	FHostClock::UseRealTime();
}

TEST(StoreOpenings, LongMessagesAreCutSoThatTheirTitleStays)
{
	const FString Word = FString::ChrN(2000, TEXT('w'));
	const FString Blanks = FString::ChrN(3000, TEXT(' '));
	const std::tuple<const char*, FString, FString> Cases[] = {
		{ "short ones stay", TEXT("  a \n "), TEXT("  a \n ") },
		{ "1,024 stay", Word.Left(1024), Word.Left(1024) },
		{ "1,025 are cut", Word.Left(1025), Word.Left(1024) + FString(TEXT("\u2026")) },
		{ "white space before goes", Blanks + TEXT("x"), TEXT("x") },
		{ "white space behind needs no mark", FString(TEXT("x")) + Blanks, FString(TEXT("x")) + Blanks.Left(1023) },
		{ "a word far behind needs one", FString(TEXT("x")) + Blanks + TEXT("y"),
			FString(TEXT("x")) + Blanks.Left(1023) + FString(TEXT("\u2026")) },
	};
	for (const auto& [Why, Text, Expected] : Cases)
	{
		Velmora::FConversationMessage Message;
		Message.Content = Text;
		TArray<Velmora::FConversationMessage> Read;
		ASSERT_TRUE(Velmora::StoreSchema::ReadOpening(Velmora::StoreSchema::MakeOpening({ Message }), Read)) << Why;
		ASSERT_EQ(Read.Num(), 1) << Why;
		EXPECT_EQ(Utf8(Read[0].Content), Utf8(Expected)) << Why;
	}
}

TEST_F(ConversationStores, MessagesAreDroppedFromTheEnd)
{
	const char* Expected[] = { "(missing)", "a", "a|b", "a|b|c", "a|b|c" };
	for (int32 Keep = 0; Keep < 5; ++Keep)
	{
		const TSharedRef<FStore> Store = OpenStore();
		ASSERT_TRUE(Store->Clear());
		Put(*Store, Conversation(TEXT("other"), { TEXT("z") }));
		Put(*Store, Conversation(TEXT("A"), { TEXT("a"), TEXT("b"), TEXT("c") }));
		Put(*Store, Conversation(TEXT("third"), { TEXT("y") }));
		EXPECT_TRUE(Store->TruncateMessages(TEXT("A"), Keep));
		EXPECT_EQ(Read(*Store, TEXT("A")), Expected[Keep]) << Keep;
		EXPECT_EQ(Read(*Store, TEXT("other")) + Read(*Store, TEXT("third")), "zy");
		EXPECT_TRUE(Store->TruncateMessages(TEXT("none"), Keep).Is(EOutcome::Missing));
	}
}

TEST_F(ConversationStores, WhatWasNotToldIsTakenBackAlone)
{
	const TSharedRef<FStore> Store = OpenStore();
	Put(*Store, Conversation(TEXT("A"), { TEXT("a") }));
	const TOutcome<int64> Key = Store->AppendMessage(TEXT("A"), Message(TEXT("untold")));
	ASSERT_TRUE(Key);
	EXPECT_TRUE(Store->Withdraw(TEXT("other"), *Key).Is(EOutcome::Missing));
	EXPECT_EQ(Read(*Store, TEXT("A")), "a|untold");
	EXPECT_TRUE(Store->Withdraw(TEXT("A"), *Key));
	EXPECT_EQ(Read(*Store, TEXT("A")), "a");
	EXPECT_TRUE(Store->AppendMessage(TEXT("none"), Message(TEXT("x"))).Is(EOutcome::Missing));
}

TEST_F(ConversationStores, TwoProgramsShareOneStore)
{
	const TSharedRef<FStore> First = OpenStore();
	const TSharedRef<FStore> Second = OpenStore();
	FConversationMetadata Mine = Conversation(TEXT("A"), { TEXT("a") });
	ASSERT_TRUE(First->Append(Mine, 0));
	TOutcome<FConversationMetadata> Loaded = Second->Load(TEXT("A"));
	ASSERT_TRUE(Loaded);
	FConversationMetadata& Theirs = *Loaded;

	// Both go on with it: nothing of either is lost.
	Mine.Messages.Add(Message(TEXT("mine")));
	Theirs.Messages.Add(Message(TEXT("theirs")));
	EXPECT_TRUE(First->Append(Mine, 1));
	EXPECT_TRUE(Second->Append(Theirs, 1));
	EXPECT_EQ(Read(*First, TEXT("A")), "a|mine|theirs");

	// One deletes it: the other stores it again, whole, with its next message.
	EXPECT_TRUE(Second->Delete(TEXT("A")));
	EXPECT_TRUE(Second->Delete(TEXT("A")).Is(EOutcome::Missing));
	EXPECT_EQ(Read(*First, TEXT("A")), "(missing)");
	Mine.Messages.Add(Message(TEXT("again")));
	EXPECT_TRUE(First->Append(Mine, 2));
	EXPECT_EQ(Read(*Second, TEXT("A")), "a|mine|again");

	// One closes it and the other goes on.
	First->Close();
	Put(*Second, Conversation(TEXT("B"), { TEXT("b") }));
	EXPECT_EQ(ReadIds(*First), "B A ");
}

TEST_F(ConversationStores, ABusyStoreRefusesInWords)
{
	const TSharedRef<FStore> Store = OpenStore();
	Put(*Store, Conversation(TEXT("A"), { TEXT("a") }));
	Velmora::FSqliteConnection Other;
	ASSERT_TRUE(Other.Open(PathBytes(), Velmora::ESqliteAccess::Write));
	ASSERT_TRUE(Other.Execute("BEGIN IMMEDIATE"));
	FConversationMetadata Metadata = Conversation(TEXT("B"), { TEXT("b") });
	FOutcome Stored = Store->Append(Metadata, 0);
	EXPECT_TRUE(Stored.Is(EOutcome::Busy));
	EXPECT_TRUE(Holds(Stored.GetWords(), "is busy")) << Stored.GetWords();
	EXPECT_EQ(Read(*Store, TEXT("A")), "a") << "Readers are not held up.";
	ASSERT_TRUE(Other.Execute("COMMIT"));
	{
		const FStore::FTurn Ours(*Store, FStore::FrameTimeoutMilliseconds);
		Stored = Store->Append(Metadata, 0);
		EXPECT_TRUE(Stored.Is(EOutcome::Busy));
		EXPECT_TRUE(Holds(Stored.GetWords(), "still at work on the disk")) << Stored.GetWords() << " (no other program is to blame)";
	}
	EXPECT_TRUE(Store->Append(Metadata, 0));
}

// The first to open a store after a crash keeps everybody else out until it has read the log: with this test, a tenth of a second.
TEST_F(ConversationStores, AStoreThatIsJustBeingOpenedIsWaitedFor)
{
	const TSharedRef<FStore> Store = OpenStore();
	Put(*Store, Conversation(TEXT("A"), { TEXT("a") }));
	const auto WhileOthersAreKeptOut = [&](const auto& Work)
	{
		Store->Close();
		auto Other = std::make_unique<Velmora::FSqliteConnection>();
		ASSERT_TRUE(Other->Open(PathBytes(), Velmora::ESqliteAccess::Write));
		ASSERT_TRUE(Other->Execute("PRAGMA locking_mode=EXCLUSIVE; BEGIN IMMEDIATE; COMMIT"));
		std::thread Leaving(
			[Taken = std::move(Other)]() mutable
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(100));
				Taken.reset();
			});
		Work();
		Leaving.join();
	};
	WhileOthersAreKeptOut(
		[&]
		{
			TArray<FConversationMetadata> Summaries;
			EXPECT_TRUE(FStore::ReadSummaries(PathBytes(), Summaries));
			EXPECT_EQ(Summaries.Num(), 1);
		});
	WhileOthersAreKeptOut(
		[&]
		{
			FConversationMetadata More = Conversation(TEXT("B"), { TEXT("b") });
			const FOutcome Stored = Store->Append(More, 0, FStore::WorkerTimeoutMilliseconds);
			EXPECT_TRUE(Stored) << Stored.GetWords();
		});
	EXPECT_EQ(ReadIds(*Store), "B A ");
}

// The flush of a commit can fail when all of it is in the log already: who reads the log next takes it for done. Here another
// connection writes what the log would have held.
TEST_F(ConversationStores, WhatAFailedCommitMayHaveStoredIsNotStoredTwice)
{
	const TSharedRef<FStore> Store = OpenStore();
	FConversationMetadata Talk = Conversation(TEXT("A"), { TEXT("a"), TEXT("b") });
	Put(*Store, Talk);
	const FString Long = FString::ChrN(200 << 10, TEXT('x'));
	for (const FString& Text : { Long, FString(TEXT("next")), FString(TEXT("next")) })
	{
		Talk.Messages.Add(Message(Text));
	}
	{
		const FSmallDisk Disk(128 << 10);
		ASSERT_FALSE(Store->Append(Talk, 2));
	}
	FConversationMetadata InLog = Talk;
	InLog.Messages.SetNum(4);
	ASSERT_TRUE(OpenStore()->Append(InLog, 2));
	ASSERT_TRUE(Store->Append(Talk, 2));
	EXPECT_TRUE(Read(*Store, TEXT("A")) == "a|b|" + Utf8(Long) + "|next|next");
	// What is said twice is stored twice when nothing has failed.
	Talk.Messages.Add(Message(TEXT("next")));
	ASSERT_TRUE(Store->Append(Talk, 5));
	EXPECT_TRUE(Read(*Store, TEXT("A")).ends_with("|next|next|next"));
}

TEST_F(ConversationStores, WorksAgainWhenAFaultIsGone)
{
	const TSharedRef<FStore> Store = OpenStore();
	FConversationMetadata Metadata = Conversation(TEXT("A"), { TEXT("a") });

	Folder.Write("Velmora", "a file where the folder should be");
	FOutcome Stored = Store->Append(Metadata, 0);
	EXPECT_FALSE(Stored);
	EXPECT_TRUE(Holds(Stored.GetWords(), "part of the path is no folder") || Holds(Stored.GetWords(), "is a file")) << Stored.GetWords();
	std::filesystem::remove(Folder.AtBytes("Velmora"));

	// No file can be opened. Those that the process has already go on working.
	rlimit Limit;
	ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &Limit), 0);
	const int Next = open("/dev/null", O_RDONLY);
	rlimit Tight = Limit;
	Tight.rlim_cur = static_cast<rlim_t>(Next);
	close(Next);
	ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &Tight), 0);
	Stored = Store->Append(Metadata, 0);
	ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &Limit), 0);
	EXPECT_FALSE(Stored);
	EXPECT_TRUE(Holds(Stored.GetWords(), "too many open files")) << Stored.GetWords();
	EXPECT_TRUE(Store->Append(Metadata, 0));

	// Removed while it is in use: another one begins.
	std::filesystem::remove_all(Folder.AtBytes("Velmora"));
	EXPECT_TRUE(Store->Append(Metadata, 0));
	Store->Close();
	EXPECT_EQ(Read(*OpenStore(), TEXT("A")), "a");
}

TEST_F(ConversationStores, ManyThreadsAndProgramsWriteAndRead)
{
	constexpr int ThreadCount = 4;
	constexpr int MessageCount = 25;
	const TSharedRef<FStore> Shared = OpenStore();
	Put(*Shared, Conversation(TEXT("A"), { TEXT("start") }));
	std::atomic<int> Stored = 1;
	std::vector<std::thread> Threads;
	for (int Index = 0; Index < ThreadCount; ++Index)
	{
		Threads.emplace_back(
			[this, &Shared, &Stored, Index]
			{
				const TSharedRef<FStore> Store = Index % 2 == 0 ? Shared : OpenStore();
				for (int Count = 0; Count < MessageCount; ++Count)
				{
					// Refused when another one has been busy for too long; what was taken must be there.
					Stored += Store->AppendMessage(TEXT("A"), Message(TEXT("m"))) ? 1 : 0;
					TArray<FConversationMetadata> Summaries;
					EXPECT_TRUE(FStore::ReadSummaries(PathBytes(), Summaries));
					EXPECT_EQ(Summaries.Num(), 1);
				}
			});
	}
	for (std::thread& Thread : Threads)
	{
		Thread.join();
	}
	const TOutcome<FConversationMetadata> All = Shared->Load(TEXT("A"));
	ASSERT_TRUE(All) << All.GetWords();
	EXPECT_EQ(All->Messages.Num(), Stored.load());
	EXPECT_GT(Stored.load(), MessageCount);
}

TEST_F(ConversationStores, FilesAndFolderAreTheUsersAloneWhateverTheyWere)
{
	const auto ModeOf = [this](const std::string& Name)
	{
		struct stat Info;
		return stat(Folder.AtBytes(Name.c_str()).c_str(), &Info) == 0 ? Info.st_mode & 0777 : 0u;
	};
	const auto ExpectPrivate = [&]
	{
		EXPECT_EQ(ModeOf("Velmora"), 0700u);
		EXPECT_EQ(ModeOf("Velmora/Game.db"), 0600u);
		EXPECT_EQ(ModeOf("Velmora/Game.db-wal"), 0600u);
	};
	const mode_t Mask = umask(0277);
	const TSharedRef<FStore> First = OpenStore();
	Put(*First, Conversation(TEXT("A"), { TEXT("a") }));
	umask(Mask);
	ExpectPrivate();
	First->Close();
	for (const char* const Name : { "Velmora/Game.db", "Velmora/Game.db-wal" })
	{
		chmod(Folder.AtBytes(Name).c_str(), 0666);
	}
	chmod(Folder.AtBytes("Velmora").c_str(), 0777);
	const TSharedRef<FStore> Second = OpenStore();
	EXPECT_EQ(Read(*Second, TEXT("A")), "a");
	ExpectPrivate();
}

TEST_F(ConversationStores, NamesThatCannotBeReadStay)
{
	using Velmora::FConversationMark;
	using Velmora::FStoredConversations;
	Velmora::SetStoreFolders(Folder.At(), FString());
	const auto SetName = [](const TCHAR* Id, const TCHAR* Name)
	{ return Utf8(FStoredConversations::ChangeMark(Id, [Name](FConversationMark& Mark) { Mark.Name = Name; })); };
	EXPECT_EQ(SetName(TEXT("A"), TEXT("first")), "");
	const std::string Path = HostFileNameToBytes(Velmora::GetStoreLocation().GetMarksPath());
	// Root reads everything, so it works as somebody else here.
	const bool bIsRoot = geteuid() == 0;
	chmod(Folder.AtBytes().c_str(), 0777);
	ASSERT_EQ(chmod(Path.c_str(), 0200), 0);
	ASSERT_TRUE(!bIsRoot || seteuid(65534) == 0);
	EXPECT_EQ(SetName(TEXT("B"), TEXT("second")), "The names of conversations in " + Path + " cannot be read, so they stay as they are.");
	ASSERT_TRUE(!bIsRoot || seteuid(0) == 0);
	chmod(Path.c_str(), 0600);

	EXPECT_EQ(SetName(TEXT("B"), TEXT("second")), "");
	const TMap<FString, FConversationMark> Marks = FStoredConversations::ReadMarks();
	ASSERT_TRUE(Marks.Contains(TEXT("A")));
	EXPECT_EQ(Utf8(Marks[TEXT("A")].Name), "first");
	EXPECT_EQ(Marks.Num(), 2);
	Velmora::SetStoreFolders(FString(), FString());
}
