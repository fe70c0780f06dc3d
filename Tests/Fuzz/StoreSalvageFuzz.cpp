#include "Fuzz/FuzzText.h"
#include "Store/StoreSalvage.h"

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sqlite3.h>
#include <string>
#include <unistd.h>

using namespace Velmora;

namespace
{
	/** A small store with short, long and empty messages, and the same with its last messages in a log. */
	struct FSoundStore
	{
		std::string Folder;
		std::string File;
		std::string Log;

		FSoundStore()
		{
			char Name[] = "/tmp/velmora-fuzz-XXXXXX";
			FUZZ_CHECK(mkdtemp(Name) != nullptr);
			Folder = Name;
			const std::string Path = Folder + "/sound";
			sqlite3* Database = nullptr;
			FUZZ_CHECK(sqlite3_open(Path.c_str(), &Database) == SQLITE_OK);
			Run(Database,
				"PRAGMA page_size=512; PRAGMA journal_mode=WAL;"
				"CREATE TABLE conversations(number INTEGER PRIMARY KEY, id TEXT NOT NULL COLLATE NOCASE UNIQUE, mode INTEGER NOT NULL,"
				"updated INTEGER NOT NULL, opening BLOB NOT NULL, checksum INTEGER NOT NULL);"
				"CREATE TABLE messages(key INTEGER PRIMARY KEY, role INTEGER NOT NULL, flags INTEGER NOT NULL, content BLOB NOT NULL,"
				"checksum INTEGER NOT NULL)");
			for (int64 Number = 1; Number <= 3; ++Number)
			{
				const std::string Id = std::to_string(Number);
				const uint64 Checksum = StoreSchema::HashConversation(Number, Id, 1, 7, "");
				Run(Database,
					"INSERT INTO conversations VALUES(" + Id + ",'" + Id + "',1,7,x''," + std::to_string(static_cast<int64>(Checksum)) +
						")");
				for (int64 Position = 0; Position < 8; ++Position)
				{
					const std::string Content(static_cast<size_t>(Position == 5 ? 6000 : Position * 2), 'x');
					const int64 Key = StoreSchema::MakeKey(Number, Position);
					const uint64 Sum = StoreSchema::HashMessage(Key, 0, 0, Content);
					Run(Database,
						"INSERT INTO messages VALUES(" + std::to_string(Key) + ",0,0,CAST('" + Content + "' AS BLOB)," +
							std::to_string(static_cast<int64>(Sum)) + ")");
				}
				if (Number == 2)
				{
					Run(Database, "PRAGMA wal_checkpoint(TRUNCATE)");
				}
			}
			File = ReadAll(Path);
			Log = ReadAll(Path + "-wal");
			sqlite3_close(Database);
		}
		~FSoundStore() { std::filesystem::remove_all(Folder); }

		static void Run(sqlite3* Database, const std::string& Sql)
		{
			FUZZ_CHECK(sqlite3_exec(Database, Sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK);
		}
		static std::string ReadAll(const std::string& Path)
		{
			std::ifstream Stream(Path, std::ios::binary);
			return std::string(std::istreambuf_iterator<char>(Stream), {});
		}
		static void WriteAll(const std::string& Path, const std::string& Bytes) { std::ofstream(Path, std::ios::binary) << Bytes; }
	};

	/** Changes that the input names: place, kind, value. */
	void Damage(std::string& Bytes, FFuzzInput& Input)
	{
		if (Bytes.empty())
		{
			return;
		}
		const size_t Place = (Input.TakeWord() | static_cast<size_t>(Input.TakeByte()) << 16) % Bytes.size();
		const uint8 Kind = Input.TakeByte();
		switch (Kind % 5)
		{
		case 0:
			Bytes[Place] = static_cast<char>(Input.TakeByte());
			break;
		case 1:
			Bytes.resize(Place);
			break;
		case 2:
			Bytes.replace(Place, std::min<size_t>(Input.TakeByte(), Bytes.size() - Place), Input.TakeBytes(Kind / 5));
			break;
		case 3:
			// A page in the place of another one: numbers that lead in circles.
			Bytes.replace(Place / 512 * 512, 512, Bytes.substr(Input.TakeByte() * 512 % Bytes.size(), 512));
			break;
		case 4:
			Bytes[Place] = static_cast<char>(Bytes[Place] ^ (1 << Kind / 5 % 8));
			break;
		}
	}
}

// A store that is damaged anywhere is read to its end, and every message that comes back is one that was written.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	static const FSoundStore Sound;
	FFuzzInput Input(Data, Size);
	std::string File = Sound.File;
	std::string Log = Sound.Log;
	while (!Input.IsEmpty())
	{
		Damage(Input.TakeByte() % 3 == 0 ? Log : File, Input);
	}
	const std::string Path = Sound.Folder + "/damaged";
	FSoundStore::WriteAll(Path, File);
	FSoundStore::WriteAll(Path + "-wal", Log);
	const std::atomic<bool> bStops = false;
	FStoreSalvage Salvage(Path);
	if (!Salvage.Scan(bStops))
	{
		return 0;
	}
	const bool bSound = File == Sound.File && Log == Sound.Log;
	FUZZ_CHECK(!bSound || Salvage.GetNumbers().size() == 3);
	for (const int64 Number : Salvage.GetNumbers())
	{
		FUZZ_CHECK(Number >= 1 && Number <= 3);
		StoreSchema::FConversationRow Row;
		TArray<FConversationMessage> Messages;
		Salvage.Read(Number, Row, Messages);
		FUZZ_CHECK(Messages.Num() <= 8 && (!bSound || Messages.Num() == 8));
		for (const FConversationMessage& Message : Messages)
		{
			FUZZ_CHECK(Message.Content.Len() <= 3000);
			for (const TCHAR Unit : Message.Content)
			{
				FUZZ_CHECK(Unit == 0x7878);
			}
		}
	}
	return 0;
}
