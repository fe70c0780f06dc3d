#include "CodeIntel/IndexDatabase.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Raised when tables or ranks change: an index of another format is built anew. */
		constexpr int FormatVersion = 1;

		/** How long another program's transaction is waited for: a build of its own may take as long. */
		constexpr int BusySeconds = 90;
		constexpr int BusyMilliseconds = 20;

		/** More rows than asked for are taken, so that those of the right letter case can come first. */
		constexpr int RowsForOne = 4;

		struct FKindRank
		{
			std::string_view Kind;
			int Rank;
		};

		/** What a reader who asks for a name wants first. */
		// clang-format off
		constexpr FKindRank KindRanks[] = {
			{ "class", 0 }, { "struct", 0 }, { "interface", 0 }, { "enum", 0 }, { "union", 0 },
			{ "function", 1 }, { "method", 1 }, { "macro", 1 }, { "typedef", 1 },
			{ "variable", 2 }, { "property", 2 }, { "event", 2 },
			{ "member", 3 }, { "field", 3 }, { "enumerator", 3 },
			{ "prototype", 4 }, { "namespace", 4 },
			{ "section", 6 }, { "key", 6 }, { "object", 7 }, { "array", 7 }, { "string", 7 }, { "number", 7 }, { "boolean", 7 },
			{ "null", 7 },
		};
		// clang-format on
		constexpr int OtherRank = 5;

		int GetRank(std::string_view Kind)
		{
			const auto Found =
				std::find_if(std::begin(KindRanks), std::end(KindRanks), [Kind](const FKindRank& Row) { return Row.Kind == Kind; });
			return Found == std::end(KindRanks) ? OtherRank : Found->Rank;
		}

		std::string ToLowerLetters(std::string_view Text)
		{
			std::string Lower(Text);
			std::transform(Lower.begin(), Lower.end(), Lower.begin(),
				[](char Byte) { return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte; });
			return Lower;
		}

		/** "::" and "." are one and the same between scopes. */
		std::string FoldScope(std::string_view Scope)
		{
			std::string Folded;
			for (size_t Index = 0; Index < Scope.size(); ++Index)
			{
				const bool bIsColons = Scope.substr(Index, 2) == "::";
				Folded.push_back(bIsColons ? '.' : Scope[Index]);
				Index += bIsColons ? 1 : 0;
			}
			return ToLowerLetters(Folded);
		}

		/** For LIKE, a backslash as its escape. */
		std::string MakeEndPattern(std::string_view Text)
		{
			std::string Pattern = "%";
			for (const char Byte : Text)
			{
				if (Byte == '%' || Byte == '_' || Byte == '\\')
				{
					Pattern.push_back('\\');
				}
				Pattern.push_back(Byte);
			}
			return Pattern;
		}

		bool IsWithin(std::string_view Scope, std::string_view Wanted)
		{
			const std::string Folded = FoldScope(Scope);
			return Folded.size() >= Wanted.size() && Folded.compare(Folded.size() - Wanted.size(), Wanted.size(), Wanted) == 0 &&
				(Folded.size() == Wanted.size() || Folded[Folded.size() - Wanted.size() - 1] == '.');
		}
	}

	/** One run of a prepared statement, free again at the end. */
	class FIndexDatabase::FStatement
	{
	public:
		explicit FStatement(sqlite3_stmt* InStatement)
			: Statement(InStatement)
		{
		}
		~FStatement()
		{
			if (Statement)
			{
				sqlite3_reset(Statement);
				sqlite3_clear_bindings(Statement);
			}
		}
		FStatement(const FStatement&) = delete;
		FStatement& operator=(const FStatement&) = delete;

		FStatement& Bind(int64_t Value)
		{
			Note(sqlite3_bind_int64(Statement, ++Bound, Value));
			return *this;
		}
		FStatement& BindReal(double Value)
		{
			Note(sqlite3_bind_double(Statement, ++Bound, Value));
			return *this;
		}
		FStatement& BindText(std::string_view Text)
		{
			Note(sqlite3_bind_text64(Statement, ++Bound, Text.empty() ? "" : Text.data(), Text.size(), SQLITE_STATIC, SQLITE_UTF8));
			return *this;
		}
		FStatement& BindBytes(std::string_view Bytes)
		{
			Note(sqlite3_bind_blob64(Statement, ++Bound, Bytes.empty() ? "" : Bytes.data(), Bytes.size(), SQLITE_STATIC));
			return *this;
		}

		bool Next()
		{
			const int Code = Statement && !bHasFailed ? sqlite3_step(Statement) : SQLITE_ERROR;
			bHasFailed = Code != SQLITE_ROW && Code != SQLITE_DONE;
			return Code == SQLITE_ROW;
		}
		bool Finish()
		{
			while (Next())
			{
			}
			return !bHasFailed;
		}
		bool HasFailed() const { return bHasFailed; }

		int64_t GetInteger(int Column) const { return sqlite3_column_int64(Statement, Column); }
		double GetReal(int Column) const { return sqlite3_column_double(Statement, Column); }
		std::string GetBytes(int Column) const
		{
			const void* const Bytes = sqlite3_column_blob(Statement, Column);
			return Bytes ? std::string(static_cast<const char*>(Bytes), static_cast<size_t>(sqlite3_column_bytes(Statement, Column)))
						 : std::string();
		}

	private:
		void Note(int Code) { bHasFailed |= Code != SQLITE_OK; }

		sqlite3_stmt* const Statement;
		int Bound = 0;
		bool bHasFailed = false;
	};

	FIndexDatabase::FIndexDatabase(const std::atomic<bool>& bInStop)
		: bStop(bInStop)
	{
	}

	FIndexDatabase::~FIndexDatabase()
	{
		ForgetStatements();
		sqlite3_close(Database);
	}

	void FIndexDatabase::ForgetStatements()
	{
		for (const auto& [Sql, Statement] : Statements)
		{
			sqlite3_finalize(Statement);
		}
		Statements.clear();
	}

	bool FIndexDatabase::Open(const std::string& Path, int Flags)
	{
		constexpr int StepsBetweenChecks = 20000;
		OpenCode = sqlite3_open_v2(Path.c_str(), &Database, Flags | SQLITE_OPEN_NOMUTEX, nullptr);
		if (OpenCode != SQLITE_OK)
		{
			return false;
		}
		sqlite3_extended_result_codes(Database, 1);
		sqlite3_db_config(Database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
		sqlite3_db_config(Database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
		sqlite3_busy_handler(Database, &FIndexDatabase::OnBusy, this);
		sqlite3_progress_handler(
			Database, StepsBetweenChecks, [](void* Self) { return static_cast<FIndexDatabase*>(Self)->bStop ? 1 : 0; }, this);
		return true;
	}

	int FIndexDatabase::OnBusy(void* Self, int Count)
	{
		if (static_cast<FIndexDatabase*>(Self)->bStop || Count >= BusySeconds * 1000 / BusyMilliseconds)
		{
			return 0;
		}
		std::this_thread::sleep_for(std::chrono::milliseconds(BusyMilliseconds));
		return 1;
	}

	bool FIndexDatabase::OpenForWriting(const std::string& Path, const std::string& InRoot)
	{
		Root = InRoot;
		// A new file is for the user alone, and so is the log that takes its mode from it.
		if (const int Made = open(Path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); Made >= 0)
		{
			close(Made);
		}
		// With a write-ahead log lookups go on during a build, and an unfinished build is as if it had never begun.
		return Open(Path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) && Execute("PRAGMA journal_mode=WAL") &&
			Execute("PRAGMA synchronous=NORMAL") && Execute("PRAGMA cache_size=-8192") && Prepare();
	}

	bool FIndexDatabase::OpenForReading(const std::string& Path)
	{
		// Not as a read-only file: then nobody could make the log's index anew.
		return Open(Path, SQLITE_OPEN_READWRITE) && Execute("PRAGMA query_only=ON");
	}

	bool FIndexDatabase::Execute(const char* Sql)
	{
		return sqlite3_exec(Database, Sql, nullptr, nullptr, nullptr) == SQLITE_OK;
	}

	sqlite3_stmt* FIndexDatabase::Get(const char* Sql)
	{
		for (const auto& [Known, Statement] : Statements)
		{
			if (Known == Sql)
			{
				return Statement;
			}
		}
		sqlite3_stmt* Statement = nullptr;
		if (sqlite3_prepare_v3(Database, Sql, -1, SQLITE_PREPARE_PERSISTENT, &Statement, nullptr) == SQLITE_OK)
		{
			Statements.emplace_back(Sql, Statement);
		}
		return Statement;
	}

	bool FIndexDatabase::IsOfThisFormat()
	{
		{
			FStatement Version(Get("PRAGMA user_version"));
			if (!Version.Next() || Version.GetInteger(0) != FormatVersion)
			{
				return false;
			}
		}
		FStatement Build(Get("SELECT root FROM build"));
		return Build.Next() && Build.GetBytes(0) == Root;
	}

	bool FIndexDatabase::Prepare()
	{
		if (IsOfThisFormat())
		{
			return true;
		}
		const EIndexError Error = GetError();
		if (Error == EIndexError::Damaged || Error == EIndexError::Stopped || Error == EIndexError::Busy)
		{
			return false;
		}
		ForgetStatements();
		if (!Execute("BEGIN IMMEDIATE"))
		{
			return false;
		}
		// Another program may have done it meanwhile.
		const bool bIsDone = (IsOfThisFormat() || CreateTables()) && Execute("COMMIT");
		if (!bIsDone)
		{
			Cancel();
		}
		return bIsDone;
	}

	bool FIndexDatabase::CreateTables()
	{
		ForgetStatements();
		const std::string Version = "PRAGMA user_version=" + std::to_string(FormatVersion);
		const bool bAreMade = Execute("DROP TABLE IF EXISTS symbols; DROP TABLE IF EXISTS files; DROP TABLE IF EXISTS new_symbols; DROP "
									  "TABLE IF EXISTS new_files; DROP TABLE IF EXISTS build;"
									  "CREATE TABLE build (root BLOB NOT NULL, is_complete INTEGER NOT NULL, seconds REAL NOT NULL);"
									  "CREATE TABLE files (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, modified INTEGER NOT NULL, "
									  "size INTEGER NOT NULL, has_failed INTEGER NOT NULL);"
									  "CREATE TABLE symbols (file INTEGER NOT NULL, line INTEGER NOT NULL, rank INTEGER NOT NULL, kind "
									  "TEXT NOT NULL, name TEXT NOT NULL COLLATE NOCASE, scope TEXT NOT NULL);"
									  "CREATE INDEX symbols_by_name ON symbols (name, rank, scope);"
									  "CREATE INDEX symbols_by_file ON symbols (file, line);") &&
			Execute(Version.c_str());
		return bAreMade && FStatement(Get("INSERT INTO build VALUES (?, 0, 0)")).BindBytes(Root).Finish();
	}

	bool FIndexDatabase::CheckWhole()
	{
		FStatement Check(Get("PRAGMA quick_check(1)"));
		return Check.Next() && Check.GetBytes(0) == "ok";
	}

	bool FIndexDatabase::ReadFigures(FIndexFigures& Out)
	{
		FStatement Build(Get("SELECT is_complete, seconds FROM build"));
		FStatement Files(Get("SELECT count(*), coalesce(sum(has_failed), 0) FROM files"));
		FStatement Symbols(Get("SELECT count(*) FROM symbols"));
		if (!Build.Next() || !Files.Next() || !Symbols.Next())
		{
			return false;
		}
		Out.bIsComplete = Build.GetInteger(0) != 0;
		Out.BuildSeconds = Build.GetReal(1);
		Out.FailedFiles = static_cast<int32>(Files.GetInteger(1));
		Out.Files = static_cast<int32>(Files.GetInteger(0)) - Out.FailedFiles;
		Out.Symbols = static_cast<int32>(Symbols.GetInteger(0));
		return true;
	}

	bool FIndexDatabase::BeginBuild()
	{
		ForgetStatements();
		return Execute("BEGIN IMMEDIATE;"
					   "CREATE TABLE new_files (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, modified INTEGER NOT NULL, size INTEGER "
					   "NOT NULL, has_failed INTEGER NOT NULL);"
					   "CREATE TABLE new_symbols (file INTEGER NOT NULL, line INTEGER NOT NULL, rank INTEGER NOT NULL, kind TEXT NOT NULL, "
					   "name TEXT NOT NULL COLLATE NOCASE, scope TEXT NOT NULL)");
	}

	bool FIndexDatabase::AddBuilt(const FIndexFile& File, const FFileSymbols& Symbols)
	{
		return Insert("INSERT INTO new_files (path, modified, size, has_failed) VALUES (?, ?, ?, ?)",
			"INSERT INTO new_symbols VALUES (?, ?, ?, ?, ?, ?)", File, Symbols);
	}

	bool FIndexDatabase::Insert(const char* FileSql, const char* SymbolSql, const FIndexFile& File, const FFileSymbols& Symbols)
	{
		if (!FStatement(Get(FileSql)).BindBytes(File.Path).Bind(File.Modified).Bind(File.Size).Bind(Symbols.bFailed ? 1 : 0).Finish())
		{
			return false;
		}
		const int64_t Id = sqlite3_last_insert_rowid(Database);
		for (const FIndexSymbol& Symbol : Symbols.Symbols)
		{
			if (!FStatement(Get(SymbolSql))
					 .Bind(Id)
					 .Bind(Symbol.Line)
					 .Bind(GetRank(Symbol.Kind))
					 .BindText(Symbol.Kind)
					 .BindText(Symbol.Name)
					 .BindText(Symbol.Scope)
					 .Finish())
			{
				return false;
			}
		}
		return true;
	}

	bool FIndexDatabase::FinishBuild(double Seconds)
	{
		ForgetStatements();
		// Indexes made at the end are quicker than kept ones, and closely packed.
		const bool bIsSwapped = Execute("DROP TABLE symbols; DROP TABLE files;"
										"ALTER TABLE new_files RENAME TO files; ALTER TABLE new_symbols RENAME TO symbols;"
										"CREATE INDEX symbols_by_name ON symbols (name, rank, scope);"
										"CREATE INDEX symbols_by_file ON symbols (file, line);") &&
			FStatement(Get("UPDATE build SET is_complete = 1, seconds = ?")).BindReal(Seconds).Finish();
		if (!bIsSwapped || !Execute("COMMIT"))
		{
			return false;
		}
		// What is in the log is kept in any case; this only keeps it short.
		Execute("PRAGMA wal_checkpoint(TRUNCATE)");
		return true;
	}

	bool FIndexDatabase::BeginChanges()
	{
		return Execute("BEGIN IMMEDIATE");
	}

	bool FIndexDatabase::ReplaceFile(const FIndexFile& File, const FFileSymbols& Symbols)
	{
		return FStatement(Get("DELETE FROM symbols WHERE file = (SELECT id FROM files WHERE path = ?)")).BindBytes(File.Path).Finish() &&
			FStatement(Get("DELETE FROM files WHERE path = ?")).BindBytes(File.Path).Finish() &&
			Insert("INSERT INTO files (path, modified, size, has_failed) VALUES (?, ?, ?, ?)",
				"INSERT INTO symbols VALUES (?, ?, ?, ?, ?, ?)", File, Symbols);
	}

	bool FIndexDatabase::RemoveFile(const std::string& Path)
	{
		const std::string First = Path + '/';
		const std::string Last = Path + static_cast<char>('/' + 1);
		return FStatement(Get("DELETE FROM symbols WHERE file IN (SELECT id FROM files WHERE path = ? OR (path > ? AND path < ?))"))
				   .BindBytes(Path)
				   .BindBytes(First)
				   .BindBytes(Last)
				   .Finish() &&
			FStatement(Get("DELETE FROM files WHERE path = ? OR (path > ? AND path < ?)"))
				.BindBytes(Path)
				.BindBytes(First)
				.BindBytes(Last)
				.Finish();
	}

	bool FIndexDatabase::FinishChanges()
	{
		return Execute("COMMIT");
	}

	void FIndexDatabase::Cancel()
	{
		// The way back must not be stopped by what stopped the way forth.
		sqlite3_progress_handler(Database, 0, nullptr, nullptr);
		ForgetStatements();
		if (sqlite3_get_autocommit(Database) == 0)
		{
			Execute("ROLLBACK");
		}
		sqlite3_progress_handler(
			Database, 20000, [](void* Self) { return static_cast<FIndexDatabase*>(Self)->bStop ? 1 : 0; }, this);
	}

	bool FIndexDatabase::ReadFiles(std::unordered_map<std::string, FIndexFile>& Out)
	{
		FStatement Files(Get("SELECT path, modified, size FROM files"));
		while (Files.Next())
		{
			FIndexFile File = { Files.GetBytes(0), Files.GetInteger(1), Files.GetInteger(2) };
			std::string Path = File.Path;
			Out.emplace(std::move(Path), std::move(File));
		}
		return !Files.HasFailed();
	}

	bool FIndexDatabase::ReadFile(const std::string& Path, FIndexFile& Out)
	{
		FStatement File(Get("SELECT modified, size FROM files WHERE path = ?"));
		if (!File.BindBytes(Path).Next())
		{
			return false;
		}
		Out = { Path, File.GetInteger(0), File.GetInteger(1) };
		return true;
	}

	bool FIndexDatabase::Compact()
	{
		ForgetStatements();
		if (!Execute("VACUUM"))
		{
			return false;
		}
		Execute("PRAGMA wal_checkpoint(TRUNCATE)");
		return true;
	}

	bool FIndexDatabase::RunFinding(const char* Sql, std::string_view First, std::string_view Last, std::string_view Scope, int32 MaxCount,
		std::vector<FIndexSymbol>& Out)
	{
		FStatement Finding(Get(Sql));
		Finding.BindText(First);
		const std::string Pattern = MakeEndPattern(Scope);
		Finding.BindText(Last.empty() ? Pattern : Last);
		Finding.Bind(Last.empty() ? int64_t{ MaxCount } * RowsForOne : MaxCount);
		while (Finding.Next())
		{
			FIndexSymbol Symbol = { Finding.GetBytes(0), Finding.GetBytes(1), Finding.GetBytes(2), Finding.GetBytes(3),
				static_cast<int32>(Finding.GetInteger(4)) };
			if (Scope.empty() || IsWithin(Symbol.Scope, Scope))
			{
				Out.push_back(std::move(Symbol));
			}
		}
		return !Finding.HasFailed();
	}

	bool FIndexDatabase::FindSymbol(std::string_view Name, int32 MaxCount, FIndexLookup& Out)
	{
		// A scope in front; "~" belongs to the name.
		const size_t Dot = Name.find_last_of(".:");
		std::string_view Last = Dot == std::string_view::npos || Dot + 1 == Name.size() ? Name : Name.substr(Dot + 1);
		std::string Scope = Last.size() == Name.size() ? std::string() : FoldScope(Name.substr(0, Dot + 1));
		while (!Scope.empty() && Scope.back() == '.')
		{
			Scope.pop_back();
		}
		constexpr const char* ByName = "SELECT s.name, s.kind, s.scope, f.path, s.line FROM symbols s JOIN files f ON f.id = s.file WHERE "
									   "s.name = ? AND replace(s.scope, '::', '.') LIKE ? ESCAPE '\\' ORDER BY s.rank LIMIT ?";
		// A key or a file's name may have dots of its own.
		if (!RunFinding(ByName, Last, {}, Scope, MaxCount, Out.Symbols) ||
			(Out.Symbols.empty() && !Scope.empty() && !RunFinding(ByName, Name, {}, {}, MaxCount, Out.Symbols)))
		{
			return false;
		}
		Out.bIsExact = !Out.Symbols.empty();
		if (Out.bIsExact)
		{
			std::stable_sort(Out.Symbols.begin(), Out.Symbols.end(),
				[Last](const FIndexSymbol& A, const FIndexSymbol& B)
				{
					const int RankA = GetRank(A.Kind);
					const int RankB = GetRank(B.Kind);
					return RankA != RankB ? RankA < RankB : A.Name == Last && B.Name != Last;
				});
			Out.Symbols.resize(std::min(Out.Symbols.size(), static_cast<size_t>(std::max(MaxCount, 0))));
			return true;
		}
		if (Last.empty() || !Scope.empty())
		{
			return true;
		}
		// Behind every name that begins so: no name holds the last character there is.
		const std::string End = std::string(Last) + "\xF4\x8F\xBF\xBF";
		return RunFinding("SELECT s.name, s.kind, s.scope, f.path, s.line FROM symbols s JOIN files f ON f.id = s.file WHERE s.name >= ? "
						  "AND s.name < ? ORDER BY s.name, s.rank LIMIT ?",
			Last, End, {}, MaxCount, Out.Symbols);
	}

	bool FIndexDatabase::ReadOutline(std::string_view Path, int32 MaxCount, FIndexLookup& Out)
	{
		FStatement File(Get("SELECT id FROM files WHERE path = ? AND has_failed = 0"));
		if (!File.BindBytes(Path).Next())
		{
			return !File.HasFailed();
		}
		Out.bIsExact = true;
		FStatement Symbols(Get("SELECT name, kind, scope, line FROM symbols WHERE file = ? ORDER BY line, rowid LIMIT ?"));
		Symbols.Bind(File.GetInteger(0)).Bind(MaxCount);
		while (Symbols.Next())
		{
			Out.Symbols.push_back({ Symbols.GetBytes(0), Symbols.GetBytes(1), Symbols.GetBytes(2), std::string(Path),
				static_cast<int32>(Symbols.GetInteger(3)) });
		}
		return !Symbols.HasFailed();
	}

	EIndexError FIndexDatabase::GetError() const
	{
		const int Code = Database ? sqlite3_extended_errcode(Database) : OpenCode;
		switch (Code & 0xff)
		{
		case SQLITE_OK:
		case SQLITE_ROW:
		case SQLITE_DONE:
			return EIndexError::None;
		case SQLITE_BUSY:
		case SQLITE_LOCKED:
			return EIndexError::Busy;
		case SQLITE_INTERRUPT:
			return EIndexError::Stopped;
		case SQLITE_CORRUPT:
		case SQLITE_NOTADB:
			return EIndexError::Damaged;
		default:
			return Code == SQLITE_IOERR_SHORT_READ ? EIndexError::Damaged : EIndexError::Other;
		}
	}

	FString FIndexDatabase::DescribeError() const
	{
		switch (GetError())
		{
		case EIndexError::Busy:
			return TEXT("another program is at work on it");
		case EIndexError::Damaged:
			return TEXT("the file is damaged");
		case EIndexError::Stopped:
			return TEXT("it was stopped");
		default:
			return UTF8_TO_TCHAR(Database ? sqlite3_errmsg(Database) : sqlite3_errstr(OpenCode));
		}
	}
}
