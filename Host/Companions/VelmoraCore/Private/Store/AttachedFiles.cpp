#include "Store/AttachedFiles.h"

#include <cstring>
#include <string>
#include <string_view>

#include "Host/Sqlite.h"
#include "Store/StoreSchema.h"

namespace Velmora::AttachedFiles
{
	namespace
	{
		// The trigger does what every way to delete messages would have to remember.
		constexpr char CreateSql[] =
			"CREATE TABLE IF NOT EXISTS attachments(key INTEGER PRIMARY KEY, files BLOB NOT NULL, checksum INTEGER NOT NULL);"
			"CREATE TRIGGER IF NOT EXISTS attachments_go AFTER DELETE ON messages "
			"BEGIN DELETE FROM attachments WHERE key=OLD.key; END";
		constexpr char HasTableSql[] = "SELECT 1 FROM sqlite_master WHERE type='table' AND name='attachments'";
		constexpr char InsertSql[] = "INSERT OR REPLACE INTO attachments(key, files, checksum) VALUES(?, ?, ?)";
		constexpr char ReadSql[] = "SELECT key, files, checksum FROM attachments WHERE key>=? AND key<? ORDER BY key";
		constexpr char KeysSql[] = "SELECT key FROM messages WHERE key>=? AND key<=? ORDER BY key";

		// A list of: number of units (four bytes, the lowest first), units.

		std::string Encode(const TArray<FString>& Files)
		{
			std::string Bytes;
			for (const FString& File : Files)
			{
				const uint32 Length = static_cast<uint32>(File.Len());
				for (int Shift = 0; Shift < 32; Shift += 8)
				{
					Bytes.push_back(static_cast<char>(Length >> Shift & 0xff));
				}
				Bytes.append(reinterpret_cast<const char*>(*File), Length * sizeof(TCHAR));
			}
			return Bytes;
		}

		TArray<FString> Decode(std::string_view Bytes)
		{
			constexpr size_t HeadSize = 4;
			TArray<FString> Files;
			while (Bytes.size() >= HeadSize)
			{
				size_t Length = 0;
				for (size_t Index = 0; Index < HeadSize; ++Index)
				{
					Length |= static_cast<size_t>(static_cast<unsigned char>(Bytes[Index])) << 8 * Index;
				}
				Bytes.remove_prefix(HeadSize);
				if (Length > Bytes.size() / sizeof(TCHAR))
				{
					break;
				}
				Files.Add(StoreSchema::ToText(Bytes.substr(0, Length * sizeof(TCHAR))));
				Bytes.remove_prefix(Length * sizeof(TCHAR));
			}
			return Files;
		}

		/** No message has that role, so that a row of one table is never taken for one of the other. */
		uint64 Hash(int64 Key, std::string_view Bytes)
		{
			constexpr int64 NoRole = -1;
			return StoreSchema::HashMessage(Key, NoRole, 0, Bytes);
		}
	}

	FOutcome Add(FSqliteConnection& Connection, int64 Key, const TArray<FString>& Files)
	{
		const FOutcome Made = Connection.Execute(CreateSql);
		const std::string Bytes = Encode(Files);
		return Made ? Connection.Query(InsertSql).Bind(Key).BindBytes(Bytes).Bind(static_cast<int64>(Hash(Key, Bytes))).Finish() : Made;
	}

	FOutcome Read(FSqliteConnection& Connection, int64 Number, FAttachedFiles& OutFiles)
	{
		// 1. Few stores have any.
		{
			FSqliteQuery HasTable = Connection.Query(HasTableSql);
			if (!HasTable.Next())
			{
				return HasTable.GetOutcome();
			}
		}
		// 2. By the key of the message.
		TArray<TPair<int64, TArray<FString>>> ByKey;
		FSqliteQuery Rows = Connection.Query(ReadSql);
		Rows.Bind(StoreSchema::MakeKey(Number, 0)).Bind(StoreSchema::MakeKey(Number + 1, 0));
		while (Rows.Next())
		{
			const int64 Key = Rows.GetInteger(0);
			const std::string_view Bytes = Rows.GetBytes(1);
			if (Hash(Key, Bytes) == static_cast<uint64>(Rows.GetInteger(2)))
			{
				ByKey.Emplace(Key, Decode(Bytes));
			}
		}
		if (ByKey.IsEmpty())
		{
			return Rows.GetOutcome();
		}
		// 3. Keys have gaps, so places are counted.
		FSqliteQuery Keys = Connection.Query(KeysSql);
		Keys.Bind(StoreSchema::MakeKey(Number, 0)).Bind(ByKey.Last().Key);
		int32 Next = 0;
		for (int32 Place = 0; Next < ByKey.Num() && Keys.Next(); ++Place)
		{
			if (Keys.GetInteger(0) == ByKey[Next].Key)
			{
				OutFiles.Add(Place, MoveTemp(ByKey[Next].Value));
				++Next;
			}
		}
		return Keys.GetOutcome();
	}
}
