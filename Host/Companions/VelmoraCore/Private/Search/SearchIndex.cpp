#include "Search/SearchIndex.h"

#include <algorithm>
#include <unistd.h>
#include <unordered_map>

#include "Search/SearchText.h"
#include "Store/StoreSchema.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr int64 IndexVersion = 1;
		constexpr int32 TimeoutMilliseconds = 1000;

		/** So many conversations are taken in at once: a program that is ended loses no more, and others come in between. */
		constexpr int32 BatchSize = 64;

		/** The log is moved into the file when it holds more than 8 MB. */
		constexpr int32 MaxWaitingPages = 2048;

		// Documents that nobody needs stay among the words, where they cost time; when they are most of it the index is made anew.
		constexpr int64 MinStaleDocuments = 10'000;

		constexpr char CreateSql[] = "BEGIN IMMEDIATE;"
									 "CREATE VIRTUAL TABLE words USING fts5(text, content='', columnsize=0, detail=none, "
									 "prefix='1 2 3 4', tokenize='ascii');"
									 "CREATE TABLE documents(document INTEGER PRIMARY KEY AUTOINCREMENT, key INTEGER NOT NULL UNIQUE, "
									 "checksum INTEGER NOT NULL);"
									 "CREATE TABLE conversations(number INTEGER PRIMARY KEY, checksum INTEGER NOT NULL);"
									 "PRAGMA user_version=1;"
									 "COMMIT";
		constexpr char StaleSql[] =
			"SELECT coalesce((SELECT seq FROM sqlite_sequence WHERE name='documents'), 0) - (SELECT count(*) FROM documents)";
		constexpr char DocumentCountSql[] = "SELECT count(*) FROM documents";

		// Of the store. The latest changed comes last, so that the newest messages have the highest documents.
		constexpr char StoredConversationsSql[] = "SELECT number, checksum FROM conversations ORDER BY updated, number";
		constexpr char StoredMessagesSql[] = "SELECT key, checksum, content FROM messages WHERE key>=? AND key<? AND role<>? ORDER BY key";
		constexpr char StoredMessageSql[] = "SELECT role, content FROM messages WHERE key=? AND checksum=?";
		constexpr char StoredConversationSql[] = "SELECT id, updated FROM conversations WHERE number=?";
		constexpr char PositionSql[] = "SELECT count(*) FROM messages WHERE key>=? AND key<?";

		// Of the index.
		constexpr char KnownConversationsSql[] = "SELECT number, checksum FROM conversations";
		constexpr char KnownDocumentsSql[] = "SELECT key, checksum FROM documents WHERE key>=? AND key<?";
		constexpr char AddDocumentSql[] = "INSERT OR REPLACE INTO documents(key, checksum) VALUES(?, ?)";
		constexpr char AddWordsSql[] = "INSERT INTO words(rowid, text) VALUES(?, ?)";
		constexpr char DropDocumentSql[] = "DELETE FROM documents WHERE key=?";
		constexpr char DropDocumentsSql[] = "DELETE FROM documents WHERE key>=? AND key<?";
		constexpr char KnowConversationSql[] = "INSERT OR REPLACE INTO conversations(number, checksum) VALUES(?, ?)";
		constexpr char ForgetConversationSql[] = "DELETE FROM conversations WHERE number=?";
		constexpr char FindSql[] = "SELECT rowid FROM words WHERE words MATCH ? ORDER BY rowid DESC";
		constexpr char DocumentSql[] = "SELECT key, checksum FROM documents WHERE document=?";

		FOutcome MakeStopped()
		{
			return FOutcome(EOutcome::Stopped, "the search was ended");
		}
	}

	FSearchIndex::FSearchIndex(const std::string& InStorePath, const std::string& InIndexPath, const std::atomic<bool>& InStopFlag)
		: StorePath(InStorePath)
		, IndexPath(InIndexPath)
		, StopFlag(InStopFlag)
	{
	}

	FOutcome FSearchIndex::CreateIndex()
	{
		Index.reset();
		for (const char* const Ending : { "", "-wal", "-shm" })
		{
			unlink((IndexPath + Ending).c_str());
		}
		Index = std::make_unique<FSqliteConnection>();
		if (FOutcome Opened = Index->Open(IndexPath, ESqliteAccess::Create); !Opened)
		{
			return Opened;
		}
		Index->SetTimeout(TimeoutMilliseconds);
		FOutcome Created = Index->Execute("PRAGMA journal_mode=WAL");
		return Created ? Index->Execute(CreateSql) : Created;
	}

	FOutcome FSearchIndex::OpenIndex()
	{
		Index = std::make_unique<FSqliteConnection>();
		if (FOutcome Opened = Index->Open(IndexPath, ESqliteAccess::Write); !Opened)
		{
			return Opened;
		}
		Index->SetTimeout(TimeoutMilliseconds);
		const int64 Version = Index->ReadInteger("PRAGMA user_version", 0);
		if (Version != IndexVersion)
		{
			return Index->IsBusy() ? Index->GetError() : FOutcome(EOutcome::Damaged, "it is no index of this version", IndexPath);
		}
		return FOutcome::Done();
	}

	FOutcome FSearchIndex::Open()
	{
		FOutcome Opened = Index ? FOutcome::Done() : OpenIndex();
		if (!Opened && !Opened.Is(EOutcome::Busy))
		{
			// Whatever stands there is not worth mending: all of it can be read from the store again.
			Opened = CreateIndex();
		}
		if (!Opened)
		{
			Index.reset();
			return Opened;
		}
		Index->SetStopFlag(&StopFlag);
		// A power failure may cost the index, which is made anew, and nothing else.
		return Index->Execute("PRAGMA synchronous=NORMAL");
	}

	void FSearchIndex::LetGo()
	{
		Index.reset();
		unlink(IndexPath.c_str());
	}

	bool FSearchIndex::LetGoIfDamaged()
	{
		const bool bIsDamaged = Index->IsDamaged();
		if (bIsDamaged)
		{
			LetGo();
		}
		return bIsDamaged;
	}

	TOutcome<std::unique_ptr<FSqliteConnection>> FSearchIndex::OpenStore() const
	{
		if (access(StorePath.c_str(), F_OK) != 0)
		{
			return std::unique_ptr<FSqliteConnection>();
		}
		auto Store = std::make_unique<FSqliteConnection>();
		if (FOutcome Opened = StoreSchema::Open(*Store, StorePath, ESqliteAccess::Read, TimeoutMilliseconds); !Opened)
		{
			return Opened;
		}
		Store->SetStopFlag(&StopFlag);
		if (!StoreSchema::HasTables(*Store))
		{
			return Store->IsBusy() ? Store->GetError() : FOutcome(EOutcome::Damaged, "it is no store of conversations", StorePath);
		}
		return Store;
	}

	TOutcome<std::vector<FSearchIndex::FConversation>> FSearchIndex::ReadConversations(FSqliteConnection& Connection, const char* Sql)
	{
		std::vector<FConversation> Conversations;
		FSqliteQuery Query = Connection.Query(Sql);
		while (Query.Next())
		{
			Conversations.push_back({ Query.GetInteger(0), Query.GetInteger(1) });
		}
		const FOutcome Read = Query.GetOutcome();
		return Read ? TOutcome<std::vector<FConversation>>(std::move(Conversations)) : TOutcome<std::vector<FConversation>>(Read);
	}

	TOutcome<bool> FSearchIndex::CatchUp()
	{
		TOutcome<std::unique_ptr<FSqliteConnection>> Opened = OpenStore();
		if (!Opened || !*Opened)
		{
			return Opened ? TOutcome<bool>(false) : TOutcome<bool>(Opened);
		}
		FSqliteConnection& Store = **Opened;
		if (FOutcome Ready = Open(); !Ready)
		{
			return Ready;
		}
		const int64 Stale = Index->ReadInteger(StaleSql, 0);
		if (Stale > MinStaleDocuments && Stale > 2 * Index->ReadInteger(DocumentCountSql, 0))
		{
			LetGo();
			if (FOutcome Made = Open(); !Made)
			{
				return Made;
			}
		}
		TOutcome<bool> Taken = TakeDifference(Store);
		if (!Taken && !Index)
		{
			// It was damaged, and is made anew once.
			const FOutcome Made = Open();
			Taken = Made ? TakeDifference(Store) : TOutcome<bool>(Made);
		}
		return Taken;
	}

	TOutcome<bool> FSearchIndex::TakeDifference(FSqliteConnection& Store)
	{
		// 1. What differs.
		const TOutcome<FDifference> Difference = Compare(Store);
		if (!Difference)
		{
			LetGoIfDamaged();
			return FOutcome(Difference);
		}
		// 2. Taken in some at a time, each time whole.
		const std::vector<FConversation>& Changed = Difference->Changed;
		for (size_t First = 0; First < Changed.size(); First += BatchSize)
		{
			const FOutcome Taken = RunBatch(
				[&]
				{
					FOutcome Result;
					for (size_t Next = First; Result && Next < std::min(Changed.size(), First + BatchSize); ++Next)
					{
						Result = TakeIn(Store, Changed[Next]);
					}
					return Result;
				});
			if (!Taken)
			{
				return Taken;
			}
		}
		// 3. What is gone, at once: it is little work.
		const std::vector<int64>& Gone = Difference->Gone;
		FOutcome Forgotten = FOutcome::Done();
		if (!Gone.empty())
		{
			Forgotten = RunBatch(
				[&]
				{
					FOutcome Result;
					for (size_t Next = 0; Result && Next < Gone.size(); ++Next)
					{
						Result = Forget(Gone[Next]);
					}
					return Result;
				});
		}
		return Forgotten ? TOutcome<bool>(!Changed.empty() || !Gone.empty()) : TOutcome<bool>(Forgotten);
	}

	TOutcome<FSearchIndex::FDifference> FSearchIndex::Compare(FSqliteConnection& Store)
	{
		// Conversations whose checksum is another than the one known, and known ones that are gone.
		const TOutcome<std::vector<FConversation>> Stored = ReadConversations(Store, StoredConversationsSql);
		const TOutcome<std::vector<FConversation>> Known = ReadConversations(*Index, KnownConversationsSql);
		if (!Stored || !Known)
		{
			return Stored ? FOutcome(Known) : FOutcome(Stored);
		}
		std::unordered_map<int64, int64> Left;
		for (const FConversation& Conversation : *Known)
		{
			Left.emplace(Conversation.Number, Conversation.Checksum);
		}
		FDifference Difference;
		for (const FConversation& Conversation : *Stored)
		{
			const auto Found = Left.find(Conversation.Number);
			if (Found == Left.end() || Found->second != Conversation.Checksum)
			{
				Difference.Changed.push_back(Conversation);
			}
			if (Found != Left.end())
			{
				Left.erase(Found);
			}
		}
		for (const auto& [Number, Checksum] : Left)
		{
			Difference.Gone.push_back(Number);
		}
		return Difference;
	}

	FOutcome FSearchIndex::RunBatch(TFunctionRef<FOutcome()> Work)
	{
		FOutcome Result = Index->Execute("BEGIN IMMEDIATE");
		if (Result)
		{
			Result = Work();
			if (!Result && LetGoIfDamaged())
			{
				return Result;
			}
			FOutcome Ended = Index->Execute(Result ? "COMMIT" : "ROLLBACK");
			Result = Result ? Ended : Result;
		}
		if (Result && Index->GetWaitingPages() > MaxWaitingPages)
		{
			(void)Index->Checkpoint(false); // If somebody reads, the next one does it.
		}
		return StopFlag ? MakeStopped() : Result;
	}

	FOutcome FSearchIndex::TakeIn(FSqliteConnection& Store, const FConversation& Conversation)
	{
		const int64 First = StoreSchema::MakeKey(Conversation.Number, 0);
		const int64 End = StoreSchema::MakeKey(Conversation.Number + 1, 0);
		std::unordered_map<int64, int64> Known;
		{
			FSqliteQuery Query = Index->Query(KnownDocumentsSql);
			Query.Bind(First).Bind(End);
			while (Query.Next())
			{
				Known.emplace(Query.GetInteger(0), Query.GetInteger(1));
			}
			if (Query.HasFailed())
			{
				return Query.GetOutcome();
			}
		}
		FSqliteQuery Messages = Store.Query(StoredMessagesSql);
		Messages.Bind(First).Bind(End).Bind(static_cast<int64>(EConversationRole::Tool));
		while (Messages.Next())
		{
			const int64 Key = Messages.GetInteger(0);
			const int64 Checksum = Messages.GetInteger(1);
			const auto Found = Known.find(Key);
			const bool bIsKnown = Found != Known.end() && Found->second == Checksum;
			if (Found != Known.end())
			{
				Known.erase(Found);
			}
			if (!bIsKnown)
			{
				if (FOutcome Added = AddDocument(Key, Checksum, Messages.GetBytes(2)); !Added)
				{
					return Added;
				}
			}
		}
		if (Messages.HasFailed())
		{
			return Messages.GetOutcome();
		}
		for (const auto& [Key, Checksum] : Known)
		{
			if (FOutcome Dropped = Index->Query(DropDocumentSql).Bind(Key).Finish(); !Dropped)
			{
				return Dropped;
			}
		}
		return Index->Query(KnowConversationSql).Bind(Conversation.Number).Bind(Conversation.Checksum).Finish();
	}

	FOutcome FSearchIndex::AddDocument(int64 Key, int64 Checksum, std::string_view Content)
	{
		// The document that a message had before keeps its words; it is no document any more, so nobody looks at them.
		if (FOutcome Added = Index->Query(AddDocumentSql).Bind(Key).Bind(Checksum).Finish(); !Added)
		{
			return Added;
		}
		const std::string Words = SearchText::ToIndexed(StoreSchema::ToText(Content));
		return Index->Query(AddWordsSql).Bind(Index->GetLastRow()).BindText(Words).Finish();
	}

	FOutcome FSearchIndex::Forget(int64 Number)
	{
		const FOutcome Dropped =
			Index->Query(DropDocumentsSql).Bind(StoreSchema::MakeKey(Number, 0)).Bind(StoreSchema::MakeKey(Number + 1, 0)).Finish();
		return Dropped ? Index->Query(ForgetConversationSql).Bind(Number).Finish() : Dropped;
	}

	TOutcome<TArray<FConversationHit>> FSearchIndex::Find(const std::vector<FString>& Words, int32 MaxHits)
	{
		using FHits = TArray<FConversationHit>;
		FHits Hits;
		TOutcome<std::unique_ptr<FSqliteConnection>> Opened = OpenStore();
		if (!Opened)
		{
			return FOutcome(Opened);
		}
		if (SearchText::ToExpression(Words).empty() || !*Opened)
		{
			return Hits;
		}
		if (FOutcome Ready = Open(); !Ready)
		{
			return Ready;
		}
		const FOutcome Read = ReadHits(**Opened, Words, MaxHits, Hits);
		if (StopFlag)
		{
			return MakeStopped();
		}
		if (!Read)
		{
			LetGoIfDamaged();
			return Read;
		}
		return Hits;
	}

	FOutcome FSearchIndex::ReadHits(
		FSqliteConnection& Store, const std::vector<FString>& Words, int32 MaxHits, TArray<FConversationHit>& OutHits)
	{
		const std::string Expression = SearchText::ToExpression(Words);
		FSqliteQuery Documents = Index->Query(FindSql);
		Documents.BindText(Expression);
		while (OutHits.Num() < MaxHits && Documents.Next())
		{
			FSqliteQuery Document = Index->Query(DocumentSql);
			Document.Bind(Documents.GetInteger(0));
			FConversationHit Hit;
			if (Document.Next() && ReadHit(Store, Document.GetInteger(0), Document.GetInteger(1), Words, Hit))
			{
				OutHits.Add(MoveTemp(Hit));
			}
			if (Document.HasFailed())
			{
				return Document.GetOutcome();
			}
		}
		return Documents.GetOutcome();
	}

	bool FSearchIndex::ReadHit(
		FSqliteConnection& Store, int64 Key, int64 Checksum, const std::vector<FString>& Words, FConversationHit& OutHit)
	{
		FSqliteQuery Message = Store.Query(StoredMessageSql);
		Message.Bind(Key).Bind(Checksum);
		FSqliteQuery Conversation = Store.Query(StoredConversationSql);
		Conversation.Bind(StoreSchema::GetNumber(Key));
		if (!Message.Next() || !Conversation.Next())
		{
			return false;
		}
		OutHit.ConversationId = Utf8Text::ToString(Conversation.GetBytes(0));
		OutHit.LastUpdated = StoreSchema::ToLocalTime(Conversation.GetInteger(1));
		OutHit.Role = StoreSchema::ToRole(Message.GetInteger(0));
		OutHit.Excerpt = SearchText::MakeExcerpt(StoreSchema::ToText(Message.GetBytes(1)), Words, OutHit.Places);
		FSqliteQuery Position = Store.Query(PositionSql);
		Position.Bind(StoreSchema::MakeKey(StoreSchema::GetNumber(Key), 0)).Bind(Key);
		OutHit.Position = Position.Next() ? static_cast<int32>(Position.GetInteger(0)) : 0;
		return true;
	}
}
