#include "Host/Sqlite.h"

#include <algorithm>
#include <cerrno>
#include <sqlite3.h>
#include <thread>

// The one place that calls the database library. Statements are prepared once for each text of SQL, which is compared by
// address, since all of them are literals. A query that is left half read is reset by its destructor, so that none holds a
// lock by oversight.
// Errors collect in the query and are asked for at its end: code that reads rows stays code that reads rows.

namespace Velmora
{
	FSqliteQuery::~FSqliteQuery()
	{
		// Given back clean, since the statement is kept: bytes that it still points to are gone with the caller.
		if (Statement)
		{
			sqlite3_reset(Statement);
			sqlite3_clear_bindings(Statement);
		}
	}

	void FSqliteQuery::Note(int Code)
	{
		// A binding that failed must not run with what was bound before, so the first failure decides.
		bHasFailed = bHasFailed || Code != SQLITE_OK;
	}

	FSqliteQuery& FSqliteQuery::Bind(int64 Value)
	{
		Note(sqlite3_bind_int64(Statement, ++Bound, Value));
		return *this;
	}

	FSqliteQuery& FSqliteQuery::BindReal(double Value)
	{
		Note(sqlite3_bind_double(Statement, ++Bound, Value));
		return *this;
	}

	FSqliteQuery& FSqliteQuery::BindText(std::string_view Utf8)
	{
		// Not copied: what is bound lives longer than the query, which ends with the caller's statement.
		Note(sqlite3_bind_text64(Statement, ++Bound, Utf8.empty() ? "" : Utf8.data(), Utf8.size(), SQLITE_STATIC, SQLITE_UTF8));
		return *this;
	}

	FSqliteQuery& FSqliteQuery::BindBytes(std::string_view Bytes)
	{
		// A null pointer would bind NULL instead of nothing.
		Note(sqlite3_bind_blob64(Statement, ++Bound, Bytes.empty() ? "" : Bytes.data(), Bytes.size(), SQLITE_STATIC));
		return *this;
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

	FOutcome FSqliteQuery::Finish()
	{
		while (Next())
		{
		}
		return GetOutcome();
	}

	FOutcome FSqliteQuery::GetOutcome() const
	{
		return bHasFailed ? Connection.GetError() : FOutcome::Done();
	}

	bool FSqliteQuery::IsNull(int Column) const
	{
		return sqlite3_column_type(Statement, Column) == SQLITE_NULL;
	}

	int64 FSqliteQuery::GetInteger(int Column) const
	{
		return sqlite3_column_int64(Statement, Column);
	}

	double FSqliteQuery::GetReal(int Column) const
	{
		return sqlite3_column_double(Statement, Column);
	}

	std::string_view FSqliteQuery::GetBytes(int Column) const
	{
		// The blob first: asking for its size may convert the value, and a pointer from before would be stale.
		const void* Bytes = sqlite3_column_blob(Statement, Column);
		const int Count = sqlite3_column_bytes(Statement, Column);
		return Bytes ? std::string_view(static_cast<const char*>(Bytes), static_cast<size_t>(Count)) : std::string_view();
	}

	FSqliteConnection::~FSqliteConnection()
	{
		ForgetStatements();
		sqlite3_close(Database);
	}

	// Extended codes, because a short read is damage while any other read error is the disk's. The defensive switches keep a
	// prepared file from running anything: a database in a project folder is data.
	FOutcome FSqliteConnection::Open(const std::string& Path, ESqliteAccess Access)
	{
		const int Flags = Access == ESqliteAccess::Read ? SQLITE_OPEN_READONLY
			: Access == ESqliteAccess::Write			? SQLITE_OPEN_READWRITE
														: SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
		// A connection belongs to one thread at a time, which its owner's lock sees to: the library's locks would be paid for twice.
		OpenCode = sqlite3_open_v2(Path.c_str(), &Database, Flags | SQLITE_OPEN_NOMUTEX, nullptr);
		if (Database)
		{
			sqlite3_extended_result_codes(Database, 1);
		}
		if (OpenCode != SQLITE_OK)
		{
			return GetError();
		}
		// The file may come from elsewhere: what stands in its schema must neither write it in odd ways nor call functions.
		sqlite3_db_config(Database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
		sqlite3_db_config(Database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
		sqlite3_busy_handler(Database, &FSqliteConnection::OnBusy, this);
		sqlite3_wal_hook(Database, &FSqliteConnection::OnCommit, this);
		SetStopFlag(StopFlag);
		return FOutcome::Done();
	}

	// The library's own waiting knows no stop flag, and its pauses grow too long for a window that is being closed.
	int FSqliteConnection::OnBusy(void* Self, int Count)
	{
		FSqliteConnection& Connection = *static_cast<FSqliteConnection*>(Self);
		const auto Now = std::chrono::steady_clock::now();
		if (Count == 0)
		{
			Connection.BusySince = Now;
		}
		const auto Left = std::chrono::milliseconds(Connection.TimeoutMilliseconds) - (Now - Connection.BusySince);
		if (Left <= Left.zero() || (Connection.StopFlag && *Connection.StopFlag))
		{
			return 0;
		}
		// Most transactions are over in a moment, and who waits for a long one need not look often.
		constexpr int LongestMilliseconds = 20;
		const auto Pause = std::chrono::milliseconds(std::min(1 + Count, LongestMilliseconds));
		std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(Pause, Left));
		return 1;
	}

	int FSqliteConnection::OnProgress(void* Self)
	{
		return *static_cast<FSqliteConnection*>(Self)->StopFlag ? 1 : 0;
	}

	void FSqliteConnection::SetStopFlag(const std::atomic<bool>* InStopFlag)
	{
		// Told a few thousand times a second at most, or the question would cost more than the work.
		constexpr int StepsBetween = 10000;
		StopFlag = InStopFlag;
		if (Database)
		{
			sqlite3_progress_handler(Database, StopFlag ? StepsBetween : 0, StopFlag ? &FSqliteConnection::OnProgress : nullptr, this);
		}
	}

	// Folding the log in takes as long as the log is, and closing is what a user waits for.
	void FSqliteConnection::KeepLogOnClose()
	{
		sqlite3_db_config(Database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
	}

	FOutcome FSqliteConnection::Execute(const char* Sql)
	{
		return Database && sqlite3_exec(Database, Sql, nullptr, nullptr, nullptr) == SQLITE_OK ? FOutcome::Done() : GetError();
	}

	FSqliteQuery FSqliteConnection::Query(const char* Sql)
	{
		// By the text's address: callers pass constants, and comparing them letter by letter would cost more than finding them.
		for (const auto& [Known, Statement] : Statements)
		{
			if (Known == Sql)
			{
				return FSqliteQuery(*this, Statement);
			}
		}
		sqlite3_stmt* Statement = nullptr;
		if (sqlite3_prepare_v3(Database, Sql, -1, SQLITE_PREPARE_PERSISTENT, &Statement, nullptr) == SQLITE_OK && Statement)
		{
			Statements.emplace_back(Sql, Statement);
		}
		return FSqliteQuery(*this, Statement);
	}

	void FSqliteConnection::ForgetStatements()
	{
		for (const auto& [Sql, Statement] : Statements)
		{
			sqlite3_finalize(Statement);
		}
		Statements.clear();
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

	bool FSqliteConnection::IsInTransaction() const
	{
		return sqlite3_get_autocommit(Database) == 0;
	}

	FOutcome FSqliteConnection::Checkpoint(bool bEmptiesLog)
	{
		// TRUNCATE waits for readers and empties the log; PASSIVE takes what can be had without disturbing anybody.
		const int Code = sqlite3_wal_checkpoint_v2(
			Database, nullptr, bEmptiesLog ? SQLITE_CHECKPOINT_TRUNCATE : SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
		WaitingPages = 0;
		return Code == SQLITE_OK ? FOutcome::Done() : ToOutcome(Code);
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
		return GetError().Is(EOutcome::Busy);
	}

	bool FSqliteConnection::IsDamaged() const
	{
		return GetError().Is(EOutcome::Damaged);
	}

	bool FSqliteConnection::IsInterrupted() const
	{
		return GetError().Is(EOutcome::Stopped);
	}

	bool FSqliteConnection::IsReadOnly() const
	{
		return (GetErrorCode() & 0xff) == SQLITE_READONLY;
	}

	bool FSqliteConnection::LacksTable() const
	{
		return GetErrorCode() == SQLITE_ERROR;
	}

	bool FSqliteConnection::WasInterruptedBySignal() const
	{
		const int Code = GetErrorCode();
		if ((Code & 0xff) != SQLITE_IOERR || !Database)
		{
			return false;
		}
		// The library looks around after a failed flush, and at times the reason is lost by that.
		const int SystemError = sqlite3_system_errno(Database);
		return SystemError == EINTR || (Code == SQLITE_IOERR_FSYNC && SystemError == 0);
	}

	FOutcome FSqliteConnection::GetError() const
	{
		return ToOutcome(GetErrorCode());
	}

	// 1. Codes with a meaning of their own. 2. A file that ends too early. 3. What the system says. 4. The library's words.
	FOutcome FSqliteConnection::ToOutcome(int Code) const
	{
		// The plain kind, whatever the detail: details grow with the library's versions.
		const int Kind = Code & 0xff;
		switch (Kind)
		{
		case SQLITE_BUSY:
		case SQLITE_LOCKED:
			return FOutcome(EOutcome::Busy, "another program is busy with it");
		case SQLITE_FULL:
			return FOutcome(EOutcome::Full, "the disk is full");
		case SQLITE_READONLY:
			return FOutcome(EOutcome::Denied, "it cannot be written");
		case SQLITE_CORRUPT:
		case SQLITE_NOTADB:
			return FOutcome(EOutcome::Damaged, "the file is damaged");
		case SQLITE_INTERRUPT:
			return FOutcome(EOutcome::Stopped, "it was stopped");
		default:
			break;
		}
		// A page that should be there and is not: the file was cut.
		if (Code == SQLITE_IOERR_SHORT_READ)
		{
			return FOutcome(EOutcome::Damaged, "the file is damaged");
		}
		const int SystemError = Database ? sqlite3_system_errno(Database) : 0;
		// After a failure the library looks around a little; what is missing then is not the reason.
		const bool bIsSystemFailure = Kind == SQLITE_IOERR || Kind == SQLITE_CANTOPEN || Kind == SQLITE_PERM;
		if (bIsSystemFailure && SystemError != 0 && SystemError != ENOENT)
		{
			return FOutcome::FromSystem(SystemError);
		}
		return FOutcome(EOutcome::Failed, sqlite3_errstr(Code));
	}
}
