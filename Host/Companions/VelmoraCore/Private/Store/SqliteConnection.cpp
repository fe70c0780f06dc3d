#include "Store/SqliteConnection.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sqlite3.h>

#include "Text/Utf8Text.h"

namespace Velmora
{
	FSqliteQuery::~FSqliteQuery()
	{
		if (Statement)
		{
			sqlite3_reset(Statement);
			sqlite3_clear_bindings(Statement);
		}
	}

	void FSqliteQuery::Note(int Code)
	{
		bHasFailed = bHasFailed || Code != SQLITE_OK;
	}

	FSqliteQuery& FSqliteQuery::Bind(int64 Value)
	{
		Note(sqlite3_bind_int64(Statement, ++Bound, Value));
		return *this;
	}

	FSqliteQuery& FSqliteQuery::BindText(std::string_view Utf8)
	{
		Note(sqlite3_bind_text64(Statement, ++Bound, Utf8.empty() ? "" : Utf8.data(), Utf8.size(), SQLITE_STATIC, SQLITE_UTF8));
		return *this;
	}

	FSqliteQuery& FSqliteQuery::BindBytes(std::string_view Bytes)
	{
		// A null pointer would bind NULL instead of nothing.
		Note(sqlite3_bind_blob64(Statement, ++Bound, Bytes.empty() ? "" : Bytes.data(), Bytes.size(), SQLITE_STATIC));
		return *this;
	}

	FSqliteQuery& FSqliteQuery::BindUnits(FStringView Text)
	{
		return BindBytes(std::string_view(reinterpret_cast<const char*>(Text.GetData()), static_cast<size_t>(Text.Len()) * sizeof(TCHAR)));
	}

	bool FSqliteQuery::Next()
	{
		if (!Statement || bHasFailed)
		{
			bHasFailed = true;
			return false;
		}
		const int Code = sqlite3_step(Statement);
		bHasFailed = Code != SQLITE_ROW && Code != SQLITE_DONE;
		return Code == SQLITE_ROW;
	}

	bool FSqliteQuery::Finish()
	{
		while (Next())
		{
		}
		return !bHasFailed;
	}

	bool FSqliteQuery::IsNull(int Column) const
	{
		return sqlite3_column_type(Statement, Column) == SQLITE_NULL;
	}

	int64 FSqliteQuery::GetInteger(int Column) const
	{
		return sqlite3_column_int64(Statement, Column);
	}

	std::string_view FSqliteQuery::GetBytes(int Column) const
	{
		const void* Bytes = sqlite3_column_blob(Statement, Column);
		const int Count = sqlite3_column_bytes(Statement, Column);
		return Bytes ? std::string_view(static_cast<const char*>(Bytes), static_cast<size_t>(Count)) : std::string_view();
	}

	FString FSqliteQuery::GetUnits(int Column) const
	{
		const std::string_view Bytes = GetBytes(Column);
		const size_t Count = Bytes.size() / sizeof(TCHAR);
		if (reinterpret_cast<uintptr_t>(Bytes.data()) % alignof(TCHAR) == 0)
		{
			return Count == 0 ? FString() : FString(static_cast<int32>(Count), reinterpret_cast<const TCHAR*>(Bytes.data()));
		}
		std::vector<TCHAR> Aligned(Count);
		memcpy(Aligned.data(), Bytes.data(), Count * sizeof(TCHAR));
		return FString(static_cast<int32>(Count), Aligned.data());
	}

	FSqliteConnection::~FSqliteConnection()
	{
		for (const auto& [Sql, Statement] : Statements)
		{
			sqlite3_finalize(Statement);
		}
		sqlite3_close(Database);
	}

	bool FSqliteConnection::Open(const std::string& Path, bool bReadOnly)
	{
		OpenCode = sqlite3_open_v2(
			Path.c_str(), &Database, (bReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE) | SQLITE_OPEN_NOMUTEX, nullptr);
		if (!Database)
		{
			return false;
		}
		sqlite3_extended_result_codes(Database, 1);
		if (OpenCode != SQLITE_OK)
		{
			return false;
		}
		sqlite3_db_config(Database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
		sqlite3_db_config(Database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
		sqlite3_db_config(Database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
		sqlite3_wal_hook(Database, &FSqliteConnection::OnCommit, this);
		return Execute("PRAGMA synchronous=FULL") && Execute("PRAGMA secure_delete=ON") && Execute("PRAGMA cell_size_check=ON");
	}

	void FSqliteConnection::SetPatience(int32 Milliseconds)
	{
		sqlite3_busy_timeout(Database, Milliseconds);
	}

	void FSqliteConnection::SetStopCheck(bool (*ShouldStop)(const void*), const void* Context)
	{
		constexpr int StepsBetween = 10000;
		StopFunction = ShouldStop;
		StopContext = Context;
		sqlite3_progress_handler(
			Database, StepsBetween,
			[](void* Self)
			{
				const FSqliteConnection& Connection = *static_cast<FSqliteConnection*>(Self);
				return Connection.StopFunction(Connection.StopContext) ? 1 : 0;
			},
			this);
	}

	bool FSqliteConnection::Execute(const char* Sql)
	{
		return Database && sqlite3_exec(Database, Sql, nullptr, nullptr, nullptr) == SQLITE_OK;
	}

	FSqliteQuery FSqliteConnection::Query(const char* Sql)
	{
		for (const auto& [Known, Statement] : Statements)
		{
			if (Known == Sql)
			{
				return FSqliteQuery(Statement);
			}
		}
		sqlite3_stmt* Statement = nullptr;
		if (sqlite3_prepare_v3(Database, Sql, -1, SQLITE_PREPARE_PERSISTENT, &Statement, nullptr) == SQLITE_OK && Statement)
		{
			Statements.emplace_back(Sql, Statement);
		}
		return FSqliteQuery(Statement);
	}

	int64 FSqliteConnection::ReadInteger(const char* Sql, int64 Default)
	{
		FSqliteQuery Reading = Query(Sql);
		return Reading.Next() ? Reading.GetInteger(0) : Default;
	}

	int32 FSqliteConnection::GetChangeCount() const
	{
		return sqlite3_changes(Database);
	}

	int64 FSqliteConnection::GetLastRow() const
	{
		return sqlite3_last_insert_rowid(Database);
	}

	bool FSqliteConnection::Checkpoint(bool bEmptiesLog)
	{
		const bool bDone = sqlite3_wal_checkpoint_v2(Database, nullptr,
							   bEmptiesLog ? SQLITE_CHECKPOINT_TRUNCATE : SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr) == SQLITE_OK;
		WaitingPages = 0;
		return bDone;
	}

	int FSqliteConnection::OnCommit(void* Self, sqlite3*, const char*, int Pages)
	{
		static_cast<FSqliteConnection*>(Self)->WaitingPages = Pages;
		return SQLITE_OK;
	}

	int FSqliteConnection::GetErrorCode() const
	{
		return Database ? sqlite3_extended_errcode(Database) : OpenCode;
	}

	bool FSqliteConnection::IsBusy() const
	{
		const int Code = GetErrorCode() & 0xff;
		return Code == SQLITE_BUSY || Code == SQLITE_LOCKED;
	}

	bool FSqliteConnection::IsDamaged() const
	{
		const int Code = GetErrorCode() & 0xff;
		return Code == SQLITE_CORRUPT || Code == SQLITE_NOTADB || GetErrorCode() == SQLITE_IOERR_SHORT_READ;
	}

	bool FSqliteConnection::IsReadOnly() const
	{
		return (GetErrorCode() & 0xff) == SQLITE_READONLY;
	}

	bool FSqliteConnection::LacksTable() const
	{
		return GetErrorCode() == SQLITE_ERROR;
	}

	FString FSqliteConnection::DescribeError() const
	{
		const int Code = GetErrorCode();
		switch (Code & 0xff)
		{
		case SQLITE_BUSY:
		case SQLITE_LOCKED:
			return TEXT("another program is busy with it");
		case SQLITE_FULL:
			return TEXT("the disk is full");
		case SQLITE_READONLY:
			return TEXT("it cannot be written");
		case SQLITE_CORRUPT:
		case SQLITE_NOTADB:
			return TEXT("the file is damaged");
		default:
			break;
		}
		const int SystemError = Database ? sqlite3_system_errno(Database) : 0;
		// After a failure the library looks around a little; what is missing then is not the reason.
		const bool bIsStale = SystemError == ENOENT;
		const bool bIsSystemFailure = (Code & 0xff) == SQLITE_IOERR || (Code & 0xff) == SQLITE_CANTOPEN || (Code & 0xff) == SQLITE_PERM;
		return Utf8Text::ToString(bIsSystemFailure && !bIsStale && SystemError != 0 ? strerror(SystemError) : sqlite3_errstr(Code));
	}
}
