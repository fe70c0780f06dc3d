#include "Store/StoreSchema.h"

#include <cstring>
#include <vector>

#include "Text/Utf8Text.h"
#include "Host/HostClock.h"

#define VELMORA_TEXT_OF(Value) #Value
#define VELMORA_TEXT_OF_VALUE(Value) VELMORA_TEXT_OF(Value)
#define VELMORA_STORE_VERSION_TEXT VELMORA_TEXT_OF_VALUE(VELMORA_STORE_VERSION)

// Tables, statements and checksums of the store. A message's key is its conversation's number above its place, so that the
// messages of one conversation lie side by side and are read in one sweep without an index.
// Each row has a checksum over everything in it, its own key included. The database checks its pages' structure and not what
// stands in them; with sums a row is known to be as it was written, also when it is found without its table (StoreSalvage).
// A conversation's row repeats how it opens, so that the list of conversations reads no messages, and so that a
// conversation whose messages are lost still has its first words.
// Texts are kept as UTF-16 units, since a text may hold what UTF-8 cannot say, and has to come back as it was.

namespace Velmora::StoreSchema
{
	namespace
	{
		constexpr int32 MaxOpeningUnits = 1024;
		constexpr TCHAR Ellipsis = 0x2026;

		// One row for each conversation, and its messages in one table for all: a message's key is the number of its conversation and its
		// place in it, so that messages lie beside each other on disk and a conversation is a range of keys. Each row has a checksum, since
		// a page that the disk gave back wrongly is still a page to the database.
		constexpr char CreateSql[] = "BEGIN IMMEDIATE;"
									 "CREATE TABLE conversations(number INTEGER PRIMARY KEY, id TEXT NOT NULL COLLATE NOCASE UNIQUE, mode "
									 "INTEGER NOT NULL, updated INTEGER NOT NULL, opening BLOB NOT NULL, checksum INTEGER NOT NULL);"
									 "CREATE TABLE messages(key INTEGER PRIMARY KEY, role INTEGER NOT NULL, flags INTEGER NOT NULL, "
									 "content BLOB NOT NULL, checksum INTEGER NOT NULL);"
									 "CREATE TABLE recoveries(file TEXT PRIMARY KEY, damage INTEGER NOT NULL);"
									 "PRAGMA application_id=1447382083;"
									 "PRAGMA user_version=" VELMORA_STORE_VERSION_TEXT ";"
									 "COMMIT";
		static_assert(ApplicationId == 1447382083);

		/** No version so far has changed what earlier ones wrote: the number is all there is to it. */
		constexpr char UpgradeSql[] = "BEGIN IMMEDIATE; PRAGMA user_version=" VELMORA_STORE_VERSION_TEXT "; COMMIT";

		constexpr char FindSql[] = "SELECT number, id, mode, updated, opening, checksum FROM conversations WHERE id=?";
		// Ties go to the newer one, so that two conversations of the same tick keep their order in the list.
		constexpr char AllConversationsSql[] =
			"SELECT number, id, mode, updated, opening, checksum FROM conversations ORDER BY updated DESC, number DESC";
		constexpr char InsertConversationSql[] =
			"INSERT INTO conversations(number, id, mode, updated, opening, checksum) VALUES(?, ?, ?, ?, ?, ?)";
		constexpr char UpdateConversationSql[] = "UPDATE conversations SET mode=?, updated=?, opening=?, checksum=? WHERE number=?";
		constexpr char LastNumberSql[] = "SELECT max(number) FROM conversations";
		constexpr char DeleteConversationSql[] = "DELETE FROM conversations WHERE number=?";
		constexpr char LastKeySql[] = "SELECT max(key) FROM messages WHERE key>=? AND key<?";
		constexpr char InsertMessageSql[] = "INSERT INTO messages(key, role, flags, content, checksum) VALUES(?, ?, ?, ?, ?)";
		constexpr char DeleteMessageSql[] = "DELETE FROM messages WHERE key=?";
		constexpr char DeleteMessagesSql[] = "DELETE FROM messages WHERE key>=? AND key<?";
		constexpr char KeyAtSql[] = "SELECT key FROM messages WHERE key>=? AND key<? ORDER BY key LIMIT 1 OFFSET ?";
		constexpr char LastMessagesSql[] = "SELECT role, flags, content FROM messages WHERE key>=? AND key<? ORDER BY key DESC LIMIT ?";
		constexpr char MessagesSql[] =
			"SELECT key, role, flags, content, checksum FROM messages WHERE key>=? AND key<? ORDER BY key LIMIT ?";

		/**
		 * Eight bytes at a time, each mixed into all bits. No safeguard against people: it tells a row that a disk or a crash spoilt, and
		 * is worked out for every row of a large store.
		 */
		class FHash
		{
		public:
			void Add(uint64 Word)
			{
				Value = (Value ^ Word) * 0x9e3779b97f4a7c15ull;
				Value ^= Value >> 29;
			}

			void Add(std::string_view Bytes)
			{
				// The length goes in first, or two fields could trade bytes at their border and have the same sum.
				Add(static_cast<uint64>(Bytes.size()));
				const char* Position = Bytes.data();
				size_t Left = Bytes.size();
				for (; Left >= sizeof(uint64); Left -= sizeof(uint64), Position += sizeof(uint64))
				{
					uint64 Word = 0;
					memcpy(&Word, Position, sizeof(Word));
					Add(Word);
				}
				uint64 Rest = 0;
				if (Left > 0)
				{
					memcpy(&Rest, Position, Left);
				}
				Add(Rest);
			}

			uint64 Get() const { return Value; }

		private:
			uint64 Value = 0x243f6a8885a308d3ull;
		};

		bool ReadRow(const FSqliteQuery& Query, FConversationRow& OutRow)
		{
			OutRow.Number = Query.GetInteger(0);
			OutRow.Id = Query.GetBytes(1);
			OutRow.Mode = Query.GetInteger(2);
			OutRow.Updated = Query.GetInteger(3);
			OutRow.Opening = Query.GetBytes(4);
			return HashConversation(OutRow.Number, OutRow.Id, OutRow.Mode, OutRow.Updated, OutRow.Opening) ==
				static_cast<uint64>(Query.GetInteger(5));
		}

		FOutcome MakeDamaged()
		{
			return FOutcome(EOutcome::Damaged, "a row is not as it was written");
		}

		std::string_view BytesOf(FStringView Text)
		{
			return std::string_view(reinterpret_cast<const char*>(Text.GetData()), static_cast<size_t>(Text.Len()) * sizeof(TCHAR));
		}

		/** See MakeOpening. */
		FString ShortenForOpening(const FString& Text)
		{
			if (Text.Len() <= MaxOpeningUnits)
			{
				return Text;
			}
			// The text may be megabytes long, and the list shows a line: blanks at its front are skipped before it is cut, and a mark says
			// that something was, unless only blanks follow.
			int32 First = 0;
			while (First < Text.Len() && FChar::IsWhitespace(Text[First]))
			{
				++First;
			}
			FString Cut(FStringView(Text).Mid(First, MaxOpeningUnits));
			for (int32 Index = First + MaxOpeningUnits; Index < Text.Len(); ++Index)
			{
				if (!FChar::IsWhitespace(Text[Index]))
				{
					Cut.AppendChar(Ellipsis);
					break;
				}
			}
			return Cut;
		}

		void AppendInteger(std::string& Bytes, uint32 Value)
		{
			for (int Shift = 0; Shift < 32; Shift += 8)
			{
				Bytes.push_back(static_cast<char>(Value >> Shift & 0xff));
			}
		}
	}

	// Nothing said is lost by a power cut, and nothing deleted stays readable in free pages.
	FOutcome Open(FSqliteConnection& Connection, const std::string& Path, ESqliteAccess Access, int32 TimeoutMilliseconds)
	{
		Connection.SetTimeout(TimeoutMilliseconds);
		if (FOutcome Opened = Connection.Open(Path, Access); !Opened)
		{
			return Opened;
		}
		// A store that is set aside closes under another name, and what is folded back then would go to the wrong file.
		Connection.KeepLogOnClose();
		// FULL: what was told as stored must outlive the power. Deleted messages are overwritten, since the user wanted them gone.
		return Connection.Execute("PRAGMA synchronous=FULL; PRAGMA secure_delete=ON; PRAGMA cell_size_check=ON");
	}

	// The page size is fixed, because whoever salvages a file without a head has to know it.
	FOutcome Create(FSqliteConnection& Connection)
	{
		// Takes effect only while the file has no page yet.
		const FOutcome Sized = Connection.Execute("PRAGMA page_size=4096");
		return Sized ? Connection.Execute(CreateSql) : Sized;
	}

	int64 ReadVersion(FSqliteConnection& Connection)
	{
		return Connection.ReadInteger("PRAGMA user_version", -1);
	}

	FOutcome Upgrade(FSqliteConnection& Connection)
	{
		FOutcome Upgraded = Connection.Execute(UpgradeSql);
		if (!Upgraded)
		{
			(void)Connection.Execute("ROLLBACK");
		}
		return Upgraded;
	}

	bool HasTables(FSqliteConnection& Connection)
	{
		for (const char* Sql : { "SELECT number, id, mode, updated, opening, checksum FROM conversations LIMIT 1",
				 "SELECT key, role, flags, content, checksum FROM messages LIMIT 1", "SELECT file, damage FROM recoveries LIMIT 1" })
		{
			FSqliteQuery Query = Connection.Query(Sql);
			Query.Next();
			if (Query.HasFailed())
			{
				return false;
			}
		}
		return true;
	}

	FString ToText(std::string_view Units)
	{
		// The bytes lie as the database has them, for units perhaps at an odd place.
		std::vector<TCHAR> Aligned(Units.size() / sizeof(TCHAR));
		if (Aligned.empty())
		{
			return FString();
		}
		memcpy(Aligned.data(), Units.data(), Aligned.size() * sizeof(TCHAR));
		return FString(static_cast<int32>(Aligned.size()), Aligned.data());
	}

	// An opening is a list of: role, flags (one byte each), number of units (four), units.

	std::string MakeOpening(const TArray<FConversationMessage>& Messages)
	{
		std::string Opening;
		for (int32 Index = 0; Index < Messages.Num() && Index < MaxOpeningMessages; ++Index)
		{
			const FConversationMessage& Message = Messages[Index];
			const FString Text = ShortenForOpening(Message.Content);
			Opening.push_back(static_cast<char>(Message.Role));
			Opening.push_back(static_cast<char>(Message.bHasToolCalls ? HasToolCallsFlag : 0));
			AppendInteger(Opening, static_cast<uint32>(Text.Len()));
			Opening += BytesOf(Text);
			// The list names a conversation by what the user said first; what the agent said before that is kept for those who ask for it.
			if (Message.IsUserMessage())
			{
				break;
			}
		}
		return Opening;
	}

	bool ReadOpening(std::string_view Opening, TArray<FConversationMessage>& OutMessages)
	{
		constexpr size_t HeadSize = 6;
		while (Opening.size() >= HeadSize)
		{
			size_t Size = 0;
			for (size_t Index = 0; Index < 4; ++Index)
			{
				Size |= static_cast<size_t>(static_cast<unsigned char>(Opening[2 + Index])) << 8 * Index;
			}
			Size *= sizeof(TCHAR);
			// A length that lies must not be read past the end.
			if (Size > Opening.size() - HeadSize)
			{
				return false;
			}
			FConversationMessage Message;
			Message.Content = ToText(Opening.substr(HeadSize, Size));
			Message.Role = ToRole(Opening[0]);
			Message.bHasToolCalls = (Opening[1] & HasToolCallsFlag) != 0;
			OutMessages.Add(MoveTemp(Message));
			Opening.remove_prefix(HeadSize + Size);
		}
		return Opening.empty();
	}

	uint64 HashConversation(int64 Number, std::string_view Id, int64 Mode, int64 Updated, std::string_view Opening)
	{
		FHash Hash;
		// A letter of its own for each kind, so that a row of one table is never taken for one of the other.
		Hash.Add('C');
		Hash.Add(static_cast<uint64>(Number));
		Hash.Add(Id);
		Hash.Add(static_cast<uint64>(Mode));
		Hash.Add(static_cast<uint64>(Updated));
		Hash.Add(Opening);
		return Hash.Get();
	}

	uint64 HashMessage(int64 Key, int64 Role, int64 Flags, std::string_view Content)
	{
		FHash Hash;
		Hash.Add('M');
		Hash.Add(static_cast<uint64>(Key));
		Hash.Add(static_cast<uint64>(Role));
		Hash.Add(static_cast<uint64>(Flags));
		Hash.Add(Content);
		return Hash.Get();
	}

	FOutcome FindConversation(FSqliteConnection& Connection, const FString& Id, FConversationRow& OutRow)
	{
		const std::string Bytes = EncodeId(Id);
		FSqliteQuery Query = Connection.Query(FindSql);
		if (!Query.BindText(Bytes).Next())
		{
			return Query.HasFailed() ? Query.GetOutcome() : FOutcome(EOutcome::Missing, "there is no such conversation");
		}
		return ReadRow(Query, OutRow) ? FOutcome::Done() : MakeDamaged();
	}

	// Numbers grow and are never given twice while a later one exists, for the order of a list with equal times.
	FOutcome InsertConversation(FSqliteConnection& Connection, FConversationRow& InOutRow)
	{
		{
			FSqliteQuery Query = Connection.Query(LastNumberSql);
			if (!Query.Next())
			{
				return Query.GetOutcome();
			}
			// Counted here and not by the database, so that the number can go into the checksum of the row that is inserted.
			InOutRow.Number = Query.GetInteger(0) + 1;
		}
		const uint64 Checksum = HashConversation(InOutRow.Number, InOutRow.Id, InOutRow.Mode, InOutRow.Updated, InOutRow.Opening);
		return Connection.Query(InsertConversationSql)
			.Bind(InOutRow.Number)
			.BindText(InOutRow.Id)
			.Bind(InOutRow.Mode)
			.Bind(InOutRow.Updated)
			.BindBytes(InOutRow.Opening)
			.Bind(static_cast<int64>(Checksum))
			.Finish();
	}

	FOutcome UpdateConversation(FSqliteConnection& Connection, const FConversationRow& Row)
	{
		const uint64 Checksum = HashConversation(Row.Number, Row.Id, Row.Mode, Row.Updated, Row.Opening);
		return Connection.Query(UpdateConversationSql)
			.Bind(Row.Mode)
			.Bind(Row.Updated)
			.BindBytes(Row.Opening)
			.Bind(static_cast<int64>(Checksum))
			.Bind(Row.Number)
			.Finish();
	}

	FOutcome DeleteConversation(FSqliteConnection& Connection, int64 Number)
	{
		const FOutcome Emptied = Connection.Query(DeleteMessagesSql).Bind(MakeKey(Number, 0)).Bind(MakeKey(Number + 1, 0)).Finish();
		return Emptied ? Connection.Query(DeleteConversationSql).Bind(Number).Finish() : Emptied;
	}

	FOutcome DeleteAll(FSqliteConnection& Connection)
	{
		return Connection.Execute("DELETE FROM messages; DELETE FROM conversations");
	}

	TOutcome<int64> AddMessage(FSqliteConnection& Connection, int64 Number, const FConversationMessage& Message)
	{
		int64 Key = 0;
		{
			FSqliteQuery Query = Connection.Query(LastKeySql);
			if (!Query.Bind(MakeKey(Number, 0)).Bind(MakeKey(Number + 1, 0)).Next())
			{
				return Query.GetOutcome();
			}
			// The key after the last one, not the count: messages taken out of the middle leave gaps.
			Key = Query.IsNull(0) ? MakeKey(Number, 0) : Query.GetInteger(0) + 1;
		}
		const int64 Role = static_cast<int64>(Message.Role);
		const int64 Flags = Message.bHasToolCalls ? HasToolCallsFlag : 0;
		const FStringView Content(Message.Content);
		const FOutcome Inserted = Connection.Query(InsertMessageSql)
									  .Bind(Key)
									  .Bind(Role)
									  .Bind(Flags)
									  .BindBytes(BytesOf(Content))
									  .Bind(static_cast<int64>(HashMessage(Key, Role, Flags, BytesOf(Content))))
									  .Finish();
		return Inserted ? TOutcome<int64>(Key) : TOutcome<int64>(Inserted);
	}

	TOutcome<int32> CountStored(FSqliteConnection& Connection, int64 Number, const TArray<FConversationMessage>& Messages, int32 First)
	{
		// 1. The last rows, the last one first.
		struct FLast
		{
			int64 Role;
			bool bHasToolCalls;
			FString Content;
		};
		std::vector<FLast> Last;
		FSqliteQuery Query = Connection.Query(LastMessagesSql);
		Query.Bind(MakeKey(Number, 0)).Bind(MakeKey(Number + 1, 0)).Bind(Messages.Num() - First);
		while (Query.Next())
		{
			Last.push_back({ Query.GetInteger(0), (Query.GetInteger(1) & HasToolCallsFlag) != 0, ToText(Query.GetBytes(2)) });
		}
		if (Query.HasFailed())
		{
			return Query.GetOutcome();
		}
		// 2. The most of the messages that they end with.
		for (int32 Count = static_cast<int32>(Last.size()); Count > 0; --Count)
		{
			bool bIsSame = true;
			for (int32 Index = 0; bIsSame && Index < Count; ++Index)
			{
				const FLast& Row = Last[static_cast<size_t>(Count - 1 - Index)];
				const FConversationMessage& Message = Messages[First + Index];
				bIsSame = Row.Role == static_cast<int64>(Message.Role) && Row.bHasToolCalls == Message.bHasToolCalls &&
					Row.Content.Equals(Message.Content, ESearchCase::CaseSensitive);
			}
			if (bIsSame)
			{
				return Count;
			}
		}
		return 0;
	}

	FOutcome DeleteMessage(FSqliteConnection& Connection, int64 Key)
	{
		return Connection.Query(DeleteMessageSql).Bind(Key).Finish();
	}

	// Keys may have gaps, so the first to go is found by counting and not by adding.
	FOutcome DeleteMessagesAfter(FSqliteConnection& Connection, int64 Number, int32 KeepCount)
	{
		int64 First = 0;
		{
			FSqliteQuery Query = Connection.Query(KeyAtSql);
			// Which key that is only the database knows, because of the gaps. None: nothing has to go.
			if (!Query.Bind(MakeKey(Number, 0)).Bind(MakeKey(Number + 1, 0)).Bind(KeepCount).Next())
			{
				return Query.GetOutcome();
			}
			First = Query.GetInteger(0);
		}
		return Connection.Query(DeleteMessagesSql).Bind(First).Bind(MakeKey(Number + 1, 0)).Finish();
	}

	FOutcome ReadMessages(FSqliteConnection& Connection, int64 Number, int32 MaxCount, TArray<FConversationMessage>& OutMessages)
	{
		FSqliteQuery Query = Connection.Query(MessagesSql);
		Query.Bind(MakeKey(Number, 0)).Bind(MakeKey(Number + 1, 0)).Bind(MaxCount);
		while (Query.Next())
		{
			const int64 Role = Query.GetInteger(1);
			const int64 Flags = Query.GetInteger(2);
			if (HashMessage(Query.GetInteger(0), Role, Flags, Query.GetBytes(3)) != static_cast<uint64>(Query.GetInteger(4)))
			{
				return MakeDamaged();
			}
			FConversationMessage Message;
			Message.Content = ToText(Query.GetBytes(3));
			Message.Role = ToRole(Role);
			Message.bHasToolCalls = (Flags & HasToolCallsFlag) != 0;
			OutMessages.Add(MoveTemp(Message));
		}
		return Query.GetOutcome();
	}

	// Damaged rows are left out and reported; the others are shown meanwhile.
	FOutcome ReadSummaries(FSqliteConnection& Connection, TArray<FConversationMetadata>& OutSummaries)
	{
		FSqliteQuery Query = Connection.Query(AllConversationsSql);
		bool bIsDamaged = false;
		FConversationRow Row;
		while (Query.Next())
		{
			if (!ReadRow(Query, Row))
			{
				// The others are shown even so; the caller starts the salvage.
				bIsDamaged = true;
				continue;
			}
			FConversationMetadata& Summary = OutSummaries.Add_GetRef(ToMetadata(Row));
			ReadOpening(Row.Opening, Summary.Messages);
		}
		return Query.HasFailed() || !bIsDamaged ? Query.GetOutcome() : MakeDamaged();
	}

	FOutcome VerifyRows(FSqliteConnection& Connection)
	{
		{
			FSqliteQuery Query = Connection.Query(AllConversationsSql);
			FConversationRow Row;
			while (Query.Next())
			{
				if (!ReadRow(Query, Row))
				{
					return MakeDamaged();
				}
			}
			if (Query.HasFailed())
			{
				return Query.GetOutcome();
			}
		}
		FSqliteQuery Query = Connection.Query("SELECT key, role, flags, content, checksum FROM messages");
		while (Query.Next())
		{
			if (HashMessage(Query.GetInteger(0), Query.GetInteger(1), Query.GetInteger(2), Query.GetBytes(3)) !=
				static_cast<uint64>(Query.GetInteger(4)))
			{
				return MakeDamaged();
			}
		}
		return Query.GetOutcome();
	}

	std::string EncodeId(const FString& Id)
	{
		return Utf8Text::FromString(Id);
	}

	FConversationMetadata ToMetadata(const FConversationRow& Row)
	{
		FConversationMetadata Metadata;
		Metadata.Id = Utf8Text::ToString(Row.Id);
		Metadata.Mode = ToMode(Row.Mode);
		Metadata.LastUpdated = ToLocalTime(Row.Updated);
		return Metadata;
	}

	EConversationMode ToMode(int64 Stored)
	{
		return Stored >= 0 && Stored < static_cast<int64>(EConversationMode::General) ? static_cast<EConversationMode>(Stored)
																					  : EConversationMode::General;
	}

	EConversationRole ToRole(int64 Stored)
	{
		return Stored >= 0 && Stored < static_cast<int64>(EConversationRole::Tool) ? static_cast<EConversationRole>(Stored)
																				   : EConversationRole::Tool;
	}

	FDateTime ToLocalTime(int64 UtcTicks)
	{
		return FHostClock::UtcToLocal(FDateTime(UtcTicks));
	}
}
