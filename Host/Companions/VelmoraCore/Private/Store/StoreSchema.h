#pragma once

#include <string>
#include <string_view>

#include "CoreMinimal.h"

#include "Agent/ConversationTypes.h"
#include "Host/Sqlite.h"

/**
 * How conversations lie in the database, and the statements on them. A function that changes something is called
 * within a transaction. A row whose checksum is wrong is Damaged, one that is not there is Missing.
 *
 * conversations  number (row id), id, mode, updated (UTC, ticks), opening, checksum
 * messages       key (row id: number of the conversation * 2^31 + position), role, flags, content, checksum
 * recoveries     file names of databases set aside whose conversations are still to be taken over
 * attachments    what was attached to messages, if anything was (AttachedFiles.h)
 *
 * The messages of a conversation lie side by side in the order of their keys, with no further index. Contents are
 * UTF-16 units, little endian, so that any text comes back as it was. Each row carries a checksum over its key and all
 * that it holds: it tells rotten bytes that the database itself would take for text, and what a row is when the pages
 * that lead to it are lost.
 */
namespace Velmora::StoreSchema
{
	constexpr int64 ApplicationId = 0x56454c43; // "VELC"

	// The build may raise it, to try how versions get along.
#ifndef VELMORA_STORE_VERSION
#define VELMORA_STORE_VERSION 1
#endif
	constexpr int64 Version = VELMORA_STORE_VERSION;
	constexpr int64 PositionBits = 31;

	/** How many messages an opening holds at most. */
	constexpr int32 MaxOpeningMessages = 16;

	/** Bit of the flags of a message. */
	constexpr int64 HasToolCallsFlag = 1;

	constexpr int64 MakeKey(int64 Number, int64 Position)
	{
		return (Number << PositionBits) + Position;
	}
	constexpr int64 GetNumber(int64 Key)
	{
		return Key >> PositionBits;
	}

	/**
	 * Opens an existing file as stores are worked with: with full flushes, deleted rows overwritten, the log left when it closes.
	 *
	 * @param TimeoutMilliseconds  How long others are waited for from here on. Opening is a read already, and the first to open after
	 *                             a crash keeps everybody else out until it has read the log.
	 */
	FOutcome Open(FSqliteConnection& Connection, const std::string& Path, ESqliteAccess Access, int32 TimeoutMilliseconds);

	/** Makes tables in a new file. One transaction, marked complete by its version. */
	FOutcome Create(FSqliteConnection& Connection);

	/** What the file says; negative when it cannot be read. */
	int64 ReadVersion(FSqliteConnection& Connection);

	/** Makes a store of an earlier version one of this. One transaction. */
	FOutcome Upgrade(FSqliteConnection& Connection);

	/** The application and version fit, and every table has its columns. False also when the file cannot be read. */
	bool HasTables(FSqliteConnection& Connection);

	/**
	 * The messages up to the first one of the user, for summaries: at most 16, each of at most 1,024 units. A longer
	 * one begins at its first character that is no white space, and ends with an ellipsis if more than white space was
	 * cut, so that a title made of it is the title of the whole. Pure.
	 */
	std::string MakeOpening(const TArray<FConversationMessage>& Messages);
	bool ReadOpening(std::string_view Opening, TArray<FConversationMessage>& OutMessages);

	uint64 HashConversation(int64 Number, std::string_view Id, int64 Mode, int64 Updated, std::string_view Opening);
	uint64 HashMessage(int64 Key, int64 Role, int64 Flags, std::string_view Content);

	/** Everything of a conversation but its messages. */
	struct FConversationRow
	{
		int64 Number = 0;
		std::string Id;
		int64 Mode = 0;
		int64 Updated = 0;
		std::string Opening;
	};

	FOutcome FindConversation(FSqliteConnection& Connection, const FString& Id, FConversationRow& OutRow);

	/** Gives the row its number. */
	FOutcome InsertConversation(FSqliteConnection& Connection, FConversationRow& InOutRow);
	FOutcome UpdateConversation(FSqliteConnection& Connection, const FConversationRow& Row);
	FOutcome DeleteConversation(FSqliteConnection& Connection, int64 Number);
	FOutcome DeleteAll(FSqliteConnection& Connection);

	/** After the last message of the conversation. @return Its key. */
	TOutcome<int64> AddMessage(FSqliteConnection& Connection, int64 Number, const FConversationMessage& Message);
	/** How many messages, from First on, are the last ones of the conversation already, in this order. */
	TOutcome<int32> CountStored(FSqliteConnection& Connection, int64 Number, const TArray<FConversationMessage>& Messages, int32 First);
	FOutcome DeleteMessage(FSqliteConnection& Connection, int64 Key);
	FOutcome DeleteMessagesAfter(FSqliteConnection& Connection, int64 Number, int32 KeepCount);
	/** @param MaxCount  Negative for all. */
	FOutcome ReadMessages(FSqliteConnection& Connection, int64 Number, int32 MaxCount, TArray<FConversationMessage>& OutMessages);
	/** All that can be read, also when some rows are damaged. */
	FOutcome ReadSummaries(FSqliteConnection& Connection, TArray<FConversationMetadata>& OutSummaries);

	/** Reads every row and compares checksums. */
	FOutcome VerifyRows(FSqliteConnection& Connection);

	std::string EncodeId(const FString& Id);

	/** A stored content: UTF-16 units as they are. */
	FString ToText(std::string_view Units);
	FConversationMetadata ToMetadata(const FConversationRow& Row);
	EConversationMode ToMode(int64 Stored);
	EConversationRole ToRole(int64 Stored);

	/** UTC of a stored time as the local time that metadata holds. */
	FDateTime ToLocalTime(int64 UtcTicks);
}
