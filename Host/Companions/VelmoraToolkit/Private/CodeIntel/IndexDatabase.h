#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "CoreMinimal.h"

#include "CodeIntel/IndexFiles.h"
#include "CodeIntel/SymbolExtractor.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Velmora::CodeIntel
{
	enum class EIndexError
	{
		None,
		Busy,
		Damaged,
		Stopped,
		Other
	};

	/** What the index says of itself. */
	struct FIndexFigures
	{
		bool bIsComplete = false;
		int32 Files = 0;
		int32 FailedFiles = 0;
		int32 Symbols = 0;
		double BuildSeconds = 0.0;
	};

	/**
	 * One connection to an index file. A build happens in one transaction beside the tables in use, so that whatever ends it
	 * leaves these as they were, for other connections and programs too. One thread at a time.
	 *
	 * Operations return false on failure; GetError and DescribeError tell why.
	 */
	class FIndexDatabase
	{
	public:
		explicit FIndexDatabase(const std::atomic<bool>& bInStop);
		~FIndexDatabase();
		FIndexDatabase(const FIndexDatabase&) = delete;
		FIndexDatabase& operator=(const FIndexDatabase&) = delete;

		/** Makes the file and its tables when there are none, and an index of another format or root empty. */
		bool OpenForWriting(const std::string& Path, const std::string& InRoot);

		/** An existing file. */
		bool OpenForReading(const std::string& Path);

		/** Reads every page. */
		bool CheckWhole();
		bool ReadFigures(FIndexFigures& Out);

		// Full build.
		bool BeginBuild();
		bool AddBuilt(const FIndexFile& File, const FFileSymbols& Symbols);
		bool FinishBuild(double Seconds);

		// Changes of single files, between BeginChanges and FinishChanges.
		bool BeginChanges();
		bool ReplaceFile(const FIndexFile& File, const FFileSymbols& Symbols);

		/** A file, or all below a folder of that name. */
		bool RemoveFile(const std::string& Path);
		bool FinishChanges();

		/** Undoes what was begun. */
		void Cancel();

		/** What is indexed, with the stamps of then. */
		bool ReadFiles(std::unordered_map<std::string, FIndexFile>& Out);

		/** The stamp of one file; false without one. */
		bool ReadFile(const std::string& Path, FIndexFile& Out);
		bool Compact();

		bool FindSymbol(std::string_view Name, int32 MaxCount, FIndexLookup& Out);
		bool ReadOutline(std::string_view Path, int32 MaxCount, FIndexLookup& Out);

		EIndexError GetError() const;

		/** A clause. */
		FString DescribeError() const;

	private:
		class FStatement;

		bool Open(const std::string& Path, int Flags);
		bool Execute(const char* Sql);
		bool Prepare();
		bool CreateTables();
		bool IsOfThisFormat();

		/** The statement of a literal, prepared once. */
		sqlite3_stmt* Get(const char* Sql);
		void ForgetStatements();
		bool Insert(const char* FileSql, const char* SymbolSql, const FIndexFile& File, const FFileSymbols& Symbols);
		bool RunFinding(const char* Sql, std::string_view First, std::string_view Last, std::string_view Scope, int32 MaxCount,
			std::vector<FIndexSymbol>& Out);
		static int OnBusy(void* Self, int Count);

		const std::atomic<bool>& bStop;
		sqlite3* Database = nullptr;
		std::vector<std::pair<const char*, sqlite3_stmt*>> Statements;
		std::string Root;
		int OpenCode = 0;
	};
}
