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
#include "Host/Sqlite.h"

namespace Velmora::CodeIntel
{
	/** What the index says of itself. */
	struct FIndexFigures
	{
		bool bIsComplete = false;
		int32 Files = 0;
		int32 FailedFiles = 0;
		int32 Symbols = 0;
		double BuildSeconds = 0.0;
	};

	/** When a file was indexed last. */
	struct FIndexedBefore
	{
		int64_t Modified = 0;
		int64_t Size = 0;
	};

	/**
	 * One connection to an index file. A build happens in one transaction beside the tables in use, so that whatever ends it
	 * leaves these as they were, for other connections and programs too. One thread at a time.
	 *
	 * An operation that fails says so by code (Busy, Damaged, Stopped) and with a clause.
	 */
	class FIndexDatabase
	{
	public:
		explicit FIndexDatabase(const std::atomic<bool>& bInStop);
		FIndexDatabase(const FIndexDatabase&) = delete;
		FIndexDatabase& operator=(const FIndexDatabase&) = delete;

		/** Makes the file and its tables when there are none, and an index of another format or root empty. */
		FOutcome OpenForWriting(const std::string& Path, const std::string& InRoot);

		/** An existing file. */
		FOutcome OpenForReading(const std::string& Path);

		/** Reads every page. */
		FOutcome CheckWhole();
		FOutcome ReadFigures(FIndexFigures& Out);

		// Full build.
		FOutcome BeginBuild();
		FOutcome AddBuilt(const FIndexFile& File, const FFileSymbols& Symbols);
		FOutcome FinishBuild(double Seconds);

		// Changes of single files, between BeginChanges and FinishChanges.
		FOutcome BeginChanges();
		FOutcome ReplaceFile(const FIndexFile& File, const FFileSymbols& Symbols);

		/** A file, or all below a folder of that name. */
		FOutcome RemoveFile(const std::string& Path);
		FOutcome FinishChanges();

		/** Undoes what was begun. */
		void Cancel();

		/** What is indexed, with the stamps of then. */
		FOutcome ReadFiles(std::unordered_map<std::string, FIndexFile>& Out);

		/** The stamps of files that have symbols. */
		FOutcome ReadWithSymbols(std::unordered_map<std::string, FIndexedBefore>& Out);
		bool HasSymbols(const std::string& Path);

		/** The stamp of one file; false without one. */
		bool ReadFile(const std::string& Path, FIndexFile& Out);
		FOutcome Compact();

		FOutcome FindSymbol(std::string_view Name, int32 MaxCount, FIndexLookup& Out);
		FOutcome ReadOutline(std::string_view Path, int32 MaxCount, FIndexLookup& Out);

	private:
		FOutcome Prepare();
		FOutcome CreateTables();
		bool IsOfThisFormat();
		FOutcome Insert(const char* FileSql, const char* SymbolSql, const FIndexFile& File, const FFileSymbols& Symbols);
		FOutcome RunFinding(const char* Sql, std::string_view First, std::string_view Last, std::string_view Scope, int32 MaxCount,
			std::vector<FIndexSymbol>& Out);

		const std::atomic<bool>& bStop;
		FSqliteConnection Connection;
		std::string Root;
	};
}
