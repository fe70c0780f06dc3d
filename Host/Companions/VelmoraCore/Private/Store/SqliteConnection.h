#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CoreMinimal.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Velmora
{
	/** One run of a prepared statement. What is bound must stay until the run is over; the statement is free again when this goes. */
	class FSqliteQuery
	{
	public:
		explicit FSqliteQuery(sqlite3_stmt* InStatement)
			: Statement(InStatement)
		{
		}
		~FSqliteQuery();
		FSqliteQuery(const FSqliteQuery&) = delete;
		FSqliteQuery& operator=(const FSqliteQuery&) = delete;

		// Values for the statement's question marks, in order.
		FSqliteQuery& Bind(int64 Value);
		FSqliteQuery& BindText(std::string_view Utf8);
		FSqliteQuery& BindBytes(std::string_view Bytes);
		FSqliteQuery& BindUnits(FStringView Text);

		/** Goes to the next row. False at the end and after a failure. */
		bool Next();
		/** Runs a statement that gives no rows. False after a failure. */
		bool Finish();
		/** A step or a binding has failed. */
		bool HasFailed() const { return bHasFailed; }

		bool IsNull(int Column) const;
		int64 GetInteger(int Column) const;
		/** Valid until the next step. */
		std::string_view GetBytes(int Column) const;
		FString GetUnits(int Column) const;

	private:
		void Note(int Code);

		sqlite3_stmt* Statement;
		int Bound = 0;
		bool bHasFailed = false;
	};

	/** One connection to one database file. Belongs to one thread at a time. */
	class FSqliteConnection
	{
	public:
		FSqliteConnection() = default;
		~FSqliteConnection();
		FSqliteConnection(const FSqliteConnection&) = delete;
		FSqliteConnection& operator=(const FSqliteConnection&) = delete;

		/**
		 * Opens an existing file. Nothing is checkpointed or removed when the connection closes, since the file may bear
		 * another name by then.
		 */
		bool Open(const std::string& Path, bool bReadOnly);
		void SetPatience(int32 Milliseconds);

		/** Ends what runs when the function returns true; asked often. */
		void SetStopCheck(bool (*ShouldStop)(const void*), const void* Context);

		/** Statements and pragmas without parameters. */
		bool Execute(const char* Sql);

		/** @param Sql  A literal: it is prepared once and found again by its address. */
		FSqliteQuery Query(const char* Sql);

		/** First column of the first row of a pragma or query; the default without one. */
		int64 ReadInteger(const char* Sql, int64 Default);

		int32 GetChangeCount() const;
		int64 GetLastRow() const;

		/** Pages that wait in the write-ahead log, after the last commit of this connection. */
		int32 GetWaitingPages() const { return WaitingPages; }
		/** @param bEmptiesLog  Also cuts the log to nothing, if no other connection reads. */
		bool Checkpoint(bool bEmptiesLog);

		/** Extended result code of the last failure; 0 when there was none since Open. */
		int GetErrorCode() const;
		bool IsBusy() const;
		bool IsDamaged() const;
		/** The last call was refused because nothing may be written, or because the file was opened when nothing might be. */
		bool IsReadOnly() const;
		/** The statement did not fit the file: it lacks a table or a column. */
		bool LacksTable() const;
		/** Why the last call failed: words without a full stop. */
		FString DescribeError() const;

	private:
		static int OnCommit(void* Self, sqlite3* Database, const char* Name, int Pages);

		sqlite3* Database = nullptr;
		std::vector<std::pair<const char*, sqlite3_stmt*>> Statements;
		bool (*StopFunction)(const void*) = nullptr;
		const void* StopContext = nullptr;
		int OpenCode = 0;
		int32 WaitingPages = 0;
	};
}
