#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "CoreMinimal.h"

#include "Host/ConversationSearch.h"
#include "Host/Outcome.h"
#include "Host/Sqlite.h"

namespace Velmora
{
	/**
	 * The words of all messages of a store, in a database of their own. What it knows may be older than the store: a message is a hit
	 * only if it still stands there as it was when it was read. One thread at a time; several programs may use the same file.
	 *
	 * words          full-text table without contents: the words of each document
	 * documents      document (row of words; a number is never used twice), key of the message in the store, its checksum there
	 * conversations  number and checksum of each conversation as it was when its messages were read
	 */
	class FSearchIndex
	{
	public:
		/** @param InStopFlag  Ends what runs soon after it is set; the outcome is Stopped. Must outlive this. */
		FSearchIndex(const std::string& InStorePath, const std::string& InIndexPath, const std::atomic<bool>& InStopFlag);

		/**
		 * Takes in what was stored since the last time, and forgets what is gone. What was done before a stop is kept.
		 *
		 * @return Whether anything has changed.
		 */
		TOutcome<bool> CatchUp();

		/** The newest messages that hold words with these beginnings. Nothing when there is no store. */
		TOutcome<TArray<FConversationHit>> Find(const std::vector<FString>& Words, int32 MaxHits);

	private:
		struct FConversation
		{
			int64 Number = 0;
			int64 Checksum = 0;
		};

		FOutcome Open();
		FOutcome OpenIndex();
		FOutcome CreateIndex();

		/** Closes the index and removes its file; the next use makes it anew from the store. No query of it may be under way. */
		void LetGo();
		bool LetGoIfDamaged();

		/** Null when there is no store to read. Opened anew each time: the file may have been set aside and replaced. */
		TOutcome<std::unique_ptr<FSqliteConnection>> OpenStore() const;
		static TOutcome<std::vector<FConversation>> ReadConversations(FSqliteConnection& Connection, const char* Sql);

		/** What the store and the index differ in. */
		struct FDifference
		{
			std::vector<FConversation> Changed;
			std::vector<int64> Gone;
		};
		TOutcome<FDifference> Compare(FSqliteConnection& Store);

		/** One round of CatchUp. Without an index when this comes back, it was damaged. */
		TOutcome<bool> TakeDifference(FSqliteConnection& Store);

		/** Runs work in a transaction of its own, whole or not at all. */
		FOutcome RunBatch(TFunctionRef<FOutcome()> Work);
		FOutcome TakeIn(FSqliteConnection& Store, const FConversation& Conversation);
		FOutcome Forget(int64 Number);
		FOutcome AddDocument(int64 Key, int64 Checksum, std::string_view Content);
		FOutcome ReadHits(FSqliteConnection& Store, const std::vector<FString>& Words, int32 MaxHits, TArray<FConversationHit>& OutHits);

		/** False when the message is no longer what the index has read. */
		static bool ReadHit(
			FSqliteConnection& Store, int64 Key, int64 Checksum, const std::vector<FString>& Words, FConversationHit& OutHit);

		const std::string StorePath;
		const std::string IndexPath;
		const std::atomic<bool>& StopFlag;
		std::unique_ptr<FSqliteConnection> Index;
	};
}
