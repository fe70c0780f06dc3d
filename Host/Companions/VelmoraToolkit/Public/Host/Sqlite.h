#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Outcome.h"

struct sqlite3;
struct sqlite3_stmt;

// The one way to databases: texts and names are UTF-8 bytes on both sides. One thread at a time.

namespace Velmora
{
	class FSqliteConnection;

	/** One run of a prepared statement. What is bound must stay until the run is over; the statement is free again when this goes. */
	class VELMORATOOLKIT_API FSqliteQuery
	{
	public:
		/** @param InStatement  Null when it could not be prepared: the run fails. */
		FSqliteQuery(const FSqliteConnection& InConnection, sqlite3_stmt* InStatement)
			: Connection(InConnection)
			, Statement(InStatement)
		{
		}
		~FSqliteQuery();
		FSqliteQuery(const FSqliteQuery&) = delete;
		FSqliteQuery& operator=(const FSqliteQuery&) = delete;

		// Values for the statement's question marks, in order.
		FSqliteQuery& Bind(int64 Value);
		FSqliteQuery& BindReal(double Value);
		FSqliteQuery& BindText(std::string_view Utf8);
		FSqliteQuery& BindBytes(std::string_view Bytes);

		/** Goes to the next row. False at the end and after a failure. */
		bool Next();

		/** Runs to the end. */
		FOutcome Finish();

		/** A step or a binding has failed. */
		bool HasFailed() const { return bHasFailed; }

		/** Done unless it has failed. */
		FOutcome GetOutcome() const;

		// Of the row that Next has reached; columns from 0.
		bool IsNull(int Column) const;
		int64 GetInteger(int Column) const;
		double GetReal(int Column) const;

		/** Valid until the next step. */
		std::string_view GetBytes(int Column) const;

	private:
		void Note(int Code);

		const FSqliteConnection& Connection;
		sqlite3_stmt* const Statement;
		int Bound = 0;
		bool bHasFailed = false;
	};

	enum class ESqliteAccess
	{
		Read,
		Write,
		Create // Write, and make the file when there is none.
	};

	/** One connection to one database file. */
	class VELMORATOOLKIT_API FSqliteConnection
	{
	public:
		FSqliteConnection() = default;
		~FSqliteConnection();
		FSqliteConnection(const FSqliteConnection&) = delete;
		FSqliteConnection& operator=(const FSqliteConnection&) = delete;

		/** What the file says of itself (triggers, views) is trusted with nothing. Once for each object. */
		FOutcome Open(const std::string& Path, ESqliteAccess Access);

		/** How long another connection's transaction is waited for; at first not at all. */
		void SetTimeout(int32 InMilliseconds) { TimeoutMilliseconds = InMilliseconds; }

		/** Ends what runs, and what waits for others, soon after the flag is set; null for nothing. The flag must outlive this. */
		void SetStopFlag(const std::atomic<bool>* InStopFlag);

		/** Nothing is checkpointed or removed when the connection closes: the file may bear another name by then. */
		void KeepLogOnClose();

		/** Statements and pragmas without parameters. */
		FOutcome Execute(const char* Sql);

		/** @param Sql  A literal: it is prepared once and found again by its address. */
		FSqliteQuery Query(const char* Sql);

		/** Before tables are dropped or changed that a statement may be about. */
		void ForgetStatements();

		/** First column of the first row of a pragma or query; the default without one. */
		int64 ReadInteger(const char* Sql, int64 Default);

		int32 GetChangeCount() const;
		int64 GetLastRow() const;
		bool IsInTransaction() const;

		/** Pages that wait in the write-ahead log, after the last commit of this connection. */
		int32 GetWaitingPages() const { return WaitingPages; }

		/** @param bEmptiesLog  Also cuts the log to nothing, if no other connection reads. */
		FOutcome Checkpoint(bool bEmptiesLog);

		/** Why the last call failed; a clause. Failed when it did not. */
		FOutcome GetError() const;

		// What kind of failure the last one was.
		bool IsBusy() const;
		bool IsDamaged() const;
		bool IsInterrupted() const;

		/** Nothing may be written, or nothing might be when the file was opened. */
		bool IsReadOnly() const;

		/** The statement did not fit the file: it lacks a table or a column. */
		bool LacksTable() const;

		/** A signal interrupted a call of the system for good: worth another try of the whole transaction. */
		bool WasInterruptedBySignal() const;

	private:
		int GetErrorCode() const;
		FOutcome ToOutcome(int Code) const;
		static int OnCommit(void* Self, sqlite3* Database, const char* Name, int Pages);
		static int OnBusy(void* Self, int Count);
		static int OnProgress(void* Self);

		sqlite3* Database = nullptr;
		std::vector<std::pair<const char*, sqlite3_stmt*>> Statements;
		const std::atomic<bool>* StopFlag = nullptr;
		std::chrono::steady_clock::time_point BusySince;
		int32 TimeoutMilliseconds = 0;
		int OpenCode = 0;
		int32 WaitingPages = 0;
	};
}
