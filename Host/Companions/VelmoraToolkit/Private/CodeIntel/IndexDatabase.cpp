#include "CodeIntel/IndexDatabase.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

#include "Host/FileDescriptor.h"

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Raised when tables or ranks change: an index of another format is built anew. */
		constexpr int FormatVersion = 1;

		/** How long another program's transaction is waited for: a build of its own may take as long. */
		constexpr int BusyMilliseconds = 90'000;

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

	FIndexDatabase::FIndexDatabase(const std::atomic<bool>& bInStop)
		: bStop(bInStop)
	{
		Connection.SetTimeout(BusyMilliseconds);
		Connection.SetStopFlag(&bStop);
	}

	FOutcome FIndexDatabase::OpenForWriting(const std::string& Path, const std::string& InRoot)
	{
		Root = InRoot;
		// A new file is for the user alone, and so is the log that takes its mode from it.
		(void)FFileDescriptor::Open(Path, O_WRONLY | O_CREAT | O_EXCL, 0600);
		for (const char* const Ending : { "", "-wal", "-shm" })
		{
			HostRetryInterrupted([Name = Path + Ending] { return chmod(Name.c_str(), 0600); });
		}
		if (FOutcome Opened = Connection.Open(Path, ESqliteAccess::Create); !Opened)
		{
			return Opened;
		}
		// With a write-ahead log lookups go on during a build, and an unfinished build is as if it had never begun.
		const FOutcome Set = Connection.Execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA cache_size=-8192");
		return Set ? Prepare() : Set;
	}

	FOutcome FIndexDatabase::OpenForReading(const std::string& Path)
	{
		// Not as a read-only file: then nobody could make the log's index anew.
		const FOutcome Opened = Connection.Open(Path, ESqliteAccess::Write);
		return Opened ? Connection.Execute("PRAGMA query_only=ON") : Opened;
	}

	bool FIndexDatabase::IsOfThisFormat()
	{
		{
			FSqliteQuery Version = Connection.Query("PRAGMA user_version");
			if (!Version.Next() || Version.GetInteger(0) != FormatVersion)
			{
				return false;
			}
		}
		FSqliteQuery Build = Connection.Query("SELECT root FROM build");
		return Build.Next() && Build.GetBytes(0) == Root;
	}

	FOutcome FIndexDatabase::Prepare()
	{
		if (IsOfThisFormat())
		{
			return FOutcome::Done();
		}
		if (FOutcome Error = Connection.GetError(); Error.Is(EOutcome::Damaged) || Error.Is(EOutcome::Stopped) || Error.Is(EOutcome::Busy))
		{
			return Error;
		}
		Connection.ForgetStatements();
		FOutcome Step = Connection.Execute("BEGIN IMMEDIATE");
		if (!Step)
		{
			return Step;
		}
		// Another program may have done it meanwhile.
		Step = IsOfThisFormat() ? FOutcome::Done() : CreateTables();
		Step = Step ? Connection.Execute("COMMIT") : Step;
		if (!Step)
		{
			Cancel();
		}
		return Step;
	}

	FOutcome FIndexDatabase::CreateTables()
	{
		Connection.ForgetStatements();
		const std::string Version = "PRAGMA user_version=" + std::to_string(FormatVersion);
		FOutcome Step =
			Connection.Execute("DROP TABLE IF EXISTS symbols; DROP TABLE IF EXISTS files; DROP TABLE IF EXISTS new_symbols; DROP "
							   "TABLE IF EXISTS new_files; DROP TABLE IF EXISTS build;"
							   "CREATE TABLE build (root BLOB NOT NULL, is_complete INTEGER NOT NULL, seconds REAL NOT NULL);"
							   "CREATE TABLE files (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, modified INTEGER NOT NULL, "
							   "size INTEGER NOT NULL, has_failed INTEGER NOT NULL);"
							   "CREATE TABLE symbols (file INTEGER NOT NULL, line INTEGER NOT NULL, rank INTEGER NOT NULL, kind "
							   "TEXT NOT NULL, name TEXT NOT NULL COLLATE NOCASE, scope TEXT NOT NULL);"
							   "CREATE INDEX symbols_by_name ON symbols (name, rank, scope);"
							   "CREATE INDEX symbols_by_file ON symbols (file, line);");
		Step = Step ? Connection.Execute(Version.c_str()) : Step;
		return Step ? Connection.Query("INSERT INTO build VALUES (?, 0, 0)").BindBytes(Root).Finish() : Step;
	}

	FOutcome FIndexDatabase::CheckWhole()
	{
		FSqliteQuery Check = Connection.Query("PRAGMA quick_check(1)");
		const bool bIsSound = Check.Next() && Check.GetBytes(0) == "ok";
		return bIsSound || Check.HasFailed() ? Check.GetOutcome() : FOutcome(EOutcome::Damaged, "the file is damaged");
	}

	FOutcome FIndexDatabase::ReadFigures(FIndexFigures& Out)
	{
		FSqliteQuery Build = Connection.Query("SELECT is_complete, seconds FROM build");
		FSqliteQuery Files = Connection.Query("SELECT count(*), coalesce(sum(has_failed), 0) FROM files");
		FSqliteQuery Symbols = Connection.Query("SELECT count(*) FROM symbols");
		if (!Build.Next() || !Files.Next() || !Symbols.Next())
		{
			return Connection.GetError();
		}
		Out.bIsComplete = Build.GetInteger(0) != 0;
		Out.BuildSeconds = Build.GetReal(1);
		Out.FailedFiles = static_cast<int32>(Files.GetInteger(1));
		Out.Files = static_cast<int32>(Files.GetInteger(0)) - Out.FailedFiles;
		Out.Symbols = static_cast<int32>(Symbols.GetInteger(0));
		return FOutcome::Done();
	}

	FOutcome FIndexDatabase::BeginBuild()
	{
		Connection.ForgetStatements();
		return Connection.Execute(
			"BEGIN IMMEDIATE;"
			"CREATE TABLE new_files (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, modified INTEGER NOT NULL, size INTEGER "
			"NOT NULL, has_failed INTEGER NOT NULL);"
			"CREATE TABLE new_symbols (file INTEGER NOT NULL, line INTEGER NOT NULL, rank INTEGER NOT NULL, kind TEXT NOT NULL, "
			"name TEXT NOT NULL COLLATE NOCASE, scope TEXT NOT NULL)");
	}

	FOutcome FIndexDatabase::AddBuilt(const FIndexFile& File, const FFileSymbols& Symbols)
	{
		return Insert("INSERT INTO new_files (path, modified, size, has_failed) VALUES (?, ?, ?, ?)",
			"INSERT INTO new_symbols VALUES (?, ?, ?, ?, ?, ?)", File, Symbols);
	}

	FOutcome FIndexDatabase::Insert(const char* FileSql, const char* SymbolSql, const FIndexFile& File, const FFileSymbols& Symbols)
	{
		FOutcome Step =
			Connection.Query(FileSql).BindBytes(File.Path).Bind(File.Modified).Bind(File.Size).Bind(Symbols.bFailed ? 1 : 0).Finish();
		const int64 Id = Connection.GetLastRow();
		for (size_t Index = 0; Step && Index < Symbols.Symbols.size(); ++Index)
		{
			const FIndexSymbol& Symbol = Symbols.Symbols[Index];
			Step = Connection.Query(SymbolSql)
					   .Bind(Id)
					   .Bind(Symbol.Line)
					   .Bind(GetRank(Symbol.Kind))
					   .BindText(Symbol.Kind)
					   .BindText(Symbol.Name)
					   .BindText(Symbol.Scope)
					   .Finish();
		}
		return Step;
	}

	FOutcome FIndexDatabase::FinishBuild(double Seconds)
	{
		Connection.ForgetStatements();
		// Indexes made at the end are quicker than kept ones, and closely packed.
		FOutcome Step = Connection.Execute("DROP TABLE symbols; DROP TABLE files;"
										   "ALTER TABLE new_files RENAME TO files; ALTER TABLE new_symbols RENAME TO symbols;"
										   "CREATE INDEX symbols_by_name ON symbols (name, rank, scope);"
										   "CREATE INDEX symbols_by_file ON symbols (file, line);");
		Step = Step ? Connection.Query("UPDATE build SET is_complete = 1, seconds = ?").BindReal(Seconds).Finish() : Step;
		Step = Step ? Connection.Execute("COMMIT") : Step;
		if (Step)
		{
			(void)Connection.Checkpoint(true); // What is in the log is kept in any case; this only keeps it short.
		}
		return Step;
	}

	FOutcome FIndexDatabase::BeginChanges()
	{
		return Connection.Execute("BEGIN IMMEDIATE");
	}

	FOutcome FIndexDatabase::ReplaceFile(const FIndexFile& File, const FFileSymbols& Symbols)
	{
		FOutcome Step =
			Connection.Query("DELETE FROM symbols WHERE file = (SELECT id FROM files WHERE path = ?)").BindBytes(File.Path).Finish();
		Step = Step ? Connection.Query("DELETE FROM files WHERE path = ?").BindBytes(File.Path).Finish() : Step;
		return Step ? Insert("INSERT INTO files (path, modified, size, has_failed) VALUES (?, ?, ?, ?)",
						  "INSERT INTO symbols VALUES (?, ?, ?, ?, ?, ?)", File, Symbols)
					: Step;
	}

	FOutcome FIndexDatabase::RemoveFile(const std::string& Path)
	{
		const std::string First = Path + '/';
		const std::string Last = Path + static_cast<char>('/' + 1);
		const FOutcome Step =
			Connection.Query("DELETE FROM symbols WHERE file IN (SELECT id FROM files WHERE path = ? OR (path > ? AND path < ?))")
				.BindBytes(Path)
				.BindBytes(First)
				.BindBytes(Last)
				.Finish();
		return Step ? Connection.Query("DELETE FROM files WHERE path = ? OR (path > ? AND path < ?)")
						  .BindBytes(Path)
						  .BindBytes(First)
						  .BindBytes(Last)
						  .Finish()
					: Step;
	}

	FOutcome FIndexDatabase::FinishChanges()
	{
		return Connection.Execute("COMMIT");
	}

	void FIndexDatabase::Cancel()
	{
		// The way back must not be stopped by what stopped the way forth.
		Connection.SetStopFlag(nullptr);
		Connection.ForgetStatements();
		if (Connection.IsInTransaction())
		{
			(void)Connection.Execute("ROLLBACK"); // The connection goes back by itself when it closes.
		}
		Connection.SetStopFlag(&bStop);
	}

	FOutcome FIndexDatabase::ReadFiles(std::unordered_map<std::string, FIndexFile>& Out)
	{
		FSqliteQuery Files = Connection.Query("SELECT path, modified, size FROM files");
		while (Files.Next())
		{
			FIndexFile File = { std::string(Files.GetBytes(0)), Files.GetInteger(1), Files.GetInteger(2) };
			std::string Path = File.Path;
			Out.emplace(std::move(Path), std::move(File));
		}
		return Files.GetOutcome();
	}

	FOutcome FIndexDatabase::ReadWithSymbols(std::unordered_map<std::string, FIndexedBefore>& Out)
	{
		FSqliteQuery Files =
			Connection.Query("SELECT path, modified, size FROM files WHERE EXISTS (SELECT 1 FROM symbols WHERE symbols.file = files.id)");
		while (Files.Next())
		{
			Out.emplace(Files.GetBytes(0), FIndexedBefore{ Files.GetInteger(1), Files.GetInteger(2) });
		}
		return Files.GetOutcome();
	}

	bool FIndexDatabase::HasSymbols(const std::string& Path)
	{
		FSqliteQuery Symbol = Connection.Query("SELECT 1 FROM symbols WHERE file = (SELECT id FROM files WHERE path = ?) LIMIT 1");
		return Symbol.BindBytes(Path).Next();
	}

	bool FIndexDatabase::ReadFile(const std::string& Path, FIndexFile& Out)
	{
		FSqliteQuery File = Connection.Query("SELECT modified, size FROM files WHERE path = ?");
		if (!File.BindBytes(Path).Next())
		{
			return false;
		}
		Out = { Path, File.GetInteger(0), File.GetInteger(1) };
		return true;
	}

	FOutcome FIndexDatabase::Compact()
	{
		Connection.ForgetStatements();
		FOutcome Compacted = Connection.Execute("VACUUM");
		if (Compacted)
		{
			(void)Connection.Checkpoint(true); // It is compact also with a log beside it.
		}
		return Compacted;
	}

	FOutcome FIndexDatabase::RunFinding(const char* Sql, std::string_view First, std::string_view Last, std::string_view Scope,
		int32 MaxCount, std::vector<FIndexSymbol>& Out)
	{
		FSqliteQuery Finding = Connection.Query(Sql);
		Finding.BindText(First);
		const std::string Pattern = MakeEndPattern(Scope);
		Finding.BindText(Last.empty() ? Pattern : Last);
		Finding.Bind(Last.empty() ? int64_t{ MaxCount } * RowsForOne : MaxCount);
		while (Finding.Next())
		{
			FIndexSymbol Symbol = { std::string(Finding.GetBytes(0)), std::string(Finding.GetBytes(1)), std::string(Finding.GetBytes(2)),
				std::string(Finding.GetBytes(3)), static_cast<int32>(Finding.GetInteger(4)) };
			if (Scope.empty() || IsWithin(Symbol.Scope, Scope))
			{
				Out.push_back(std::move(Symbol));
			}
		}
		return Finding.GetOutcome();
	}

	FOutcome FIndexDatabase::FindSymbol(std::string_view Name, int32 MaxCount, FIndexLookup& Out)
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
		FOutcome Found = RunFinding(ByName, Last, {}, Scope, MaxCount, Out.Symbols);
		if (Found && Out.Symbols.empty() && !Scope.empty())
		{
			Found = RunFinding(ByName, Name, {}, {}, MaxCount, Out.Symbols);
		}
		if (!Found)
		{
			return Found;
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
			return FOutcome::Done();
		}
		if (Last.empty() || !Scope.empty())
		{
			return FOutcome::Done();
		}
		// Behind every name that begins so: no name holds the last character there is.
		const std::string End = std::string(Last) + "\xF4\x8F\xBF\xBF";
		return RunFinding("SELECT s.name, s.kind, s.scope, f.path, s.line FROM symbols s JOIN files f ON f.id = s.file WHERE s.name >= ? "
						  "AND s.name < ? ORDER BY s.name, s.rank LIMIT ?",
			Last, End, {}, MaxCount, Out.Symbols);
	}

	FOutcome FIndexDatabase::ReadOutline(std::string_view Path, int32 MaxCount, FIndexLookup& Out)
	{
		FSqliteQuery File = Connection.Query("SELECT id FROM files WHERE path = ? AND has_failed = 0");
		if (!File.BindBytes(Path).Next())
		{
			return File.GetOutcome();
		}
		Out.bIsExact = true;
		FSqliteQuery Symbols = Connection.Query("SELECT name, kind, scope, line FROM symbols WHERE file = ? ORDER BY line, rowid LIMIT ?");
		Symbols.Bind(File.GetInteger(0)).Bind(MaxCount);
		while (Symbols.Next())
		{
			Out.Symbols.push_back({ std::string(Symbols.GetBytes(0)), std::string(Symbols.GetBytes(1)), std::string(Symbols.GetBytes(2)),
				std::string(Path), static_cast<int32>(Symbols.GetInteger(3)) });
		}
		return Symbols.GetOutcome();
	}
}
