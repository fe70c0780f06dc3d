#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	class FSqliteConnection;

	/** How an operation on the store ended. */
	enum class EStoreResult
	{
		Done, // For changes: on disk.
		Missing, // The store has no such conversation. Nothing has changed.
		Failed // The problem says why. Nothing has changed.
	};

	/**
	 * The conversations of one project in one SQLite file. Any thread: one operation at a time, on one connection that
	 * is opened when it is first needed and opened anew after a fault. Each change is one transaction, and is on the
	 * disk when it is reported as done. Other programs may use the same file.
	 *
	 * Ids are compared without letter case. Texts come back unit by unit as they were given, whatever they hold.
	 */
	class FConversationStore : public TSharedFromThis<FConversationStore>
	{
	public:
		/** The store of the project that is open now: the same object for all who hold it, closed in order when none does. */
		static TSharedRef<FConversationStore> GetDefault();

		/** @param Path  The database file. Neither it nor its folder need exist. */
		explicit FConversationStore(const FString& Path);
		~FConversationStore();
		FConversationStore(const FConversationStore&) = delete;
		FConversationStore& operator=(const FConversationStore&) = delete;

		/** How long an operation waits for its turn: a frame can spare little, a worker has time. */
		static constexpr int32 FramePatienceMilliseconds = 50;
		static constexpr int32 WorkerPatienceMilliseconds = 1000;

		/**
		 * Stores the messages of a conversation from index First on, and its mode, behind those that the store has. If
		 * the store does not have the conversation (or no longer), all of its messages are stored.
		 *
		 * @param InOutConversation  Its LastUpdated becomes the time of this change.
		 */
		EStoreResult Append(FConversationMetadata& InOutConversation, int32 First, FString& OutProblem);

		/**
		 * Stores one more message of a conversation that the store must have already. For workers.
		 *
		 * @param OutKey  Names the message, for Withdraw.
		 */
		EStoreResult AppendMessage(const FString& Id, const FConversationMessage& Message, int64& OutKey, FString& OutProblem);

		/** Takes back one message that was stored and never told. */
		EStoreResult Withdraw(const FString& Id, int64 Key, FString& OutProblem);

		/** Drops all messages of a conversation but the first KeepCount, and the whole conversation when that is zero. */
		EStoreResult TruncateMessages(const FString& Id, int32 KeepCount, FString& OutProblem);

		/** The same when MayDrop, which is given all messages, agrees; otherwise nothing has changed and it is Missing. For workers. */
		EStoreResult TruncateMessagesIf(
			const FString& Id, int32 KeepCount, const TFunction<bool(const TArray<FConversationMessage>&)>& MayDrop, FString& OutProblem);

		/** Reads one conversation with all its messages. */
		EStoreResult Load(const FString& Id, FConversationMetadata& OutConversation, FString& OutProblem);
		EStoreResult Delete(const FString& Id, FString& OutProblem);
		EStoreResult Clear(FString& OutProblem);

		/** All conversations, the latest first, each with its messages up to the first one of the user (see StoreSchema::MakeOpening) and
		 * no more. */
		EStoreResult GetSummaries(TArray<FConversationMetadata>& OutSummaries, FString& OutProblem);

		/**
		 * Opens the store if that has not happened, goes through the whole file, sets it aside if it is damaged, and
		 * takes over what can be read of files set aside. What there is to say becomes a notice (StoreNotices.h).
		 * Takes its time: for workers.
		 */
		void Check();

		/** Runs Check on a worker of its own. */
		void CheckSoon();

		/** Makes a running Check end soon, and the next end at once. For the end of the process. */
		void StopChecking() { bStopsChecking = true; }

		/** Writes what is pending into the main file and closes it. The next operation opens it again. */
		void Close();

		/** Reads summaries of any store on a connection of its own, for readers on other threads. A missing file is an empty store. */
		static bool ReadSummaries(const FString& Path, TArray<FConversationMetadata>& OutSummaries, bool& bOutIsDamaged);

		const FString& GetPath() const { return Path; }

	private:
		/** The right to use the connection, for one operation. */
		class FTurn;

		/** What is wrong with a file that cannot be used. Numbers are stored. */
		enum class EDamage
		{
			None = 0,
			Broken = 1, // Not readable as a database, or not consistent.
			Foreign = 2, // Another program's.
			Newer = 3 // Of a later version of this one.
		};

		enum class EAccess
		{
			Read,
			Write
		};

		/** Opens what must be open and does the work in one transaction, which is kept if the work is done. */
		EStoreResult Run(
			EAccess Access, int32 PatienceMilliseconds, FString& OutProblem, const TFunction<EStoreResult(FSqliteConnection&)>& Work);

		EStoreResult Truncate(const FString& Id, int32 KeepCount, const TFunction<bool(const TArray<FConversationMessage>&)>& MayDrop,
			int32 PatienceMilliseconds, FString& OutProblem);

		// The caller of these has the turn.
		bool Open(int32 PatienceMilliseconds, FString& OutProblem);
		EDamage Connect(int32 PatienceMilliseconds, FString& OutProblem);
		bool CreateFile(FString& OutProblem);
		bool SetAside(EDamage Damage, FString& OutProblem);
		bool IsStillInPlace() const;
		FString Explain(const FSqliteConnection& Failed);

		/** Makes the log as long as it will be, since to make a file longer costs the disk more than to write into it. */
		void ReserveLog();

		/** Lets those go first who wait for the turn: between the pieces of long work. */
		void LetOthersGoFirst() const;

		enum class EVerdict
		{
			Sound,
			Damaged,
			Unknown // It could not be read to its end.
		};
		EVerdict CheckWholeFile() const;
		void RecoverPending();

		/** False when it has to be done again. */
		bool RecoverFile(const std::string& Name, EDamage Damage);

		const FString Path;
		const std::string PathBytes;

		std::mutex TurnMutex;
		std::condition_variable TurnEnded;
		bool bIsTaken = false;
		std::atomic<int32> WaitingCount = 0;
		std::atomic<bool> bIsOpening = false;

		// What follows belongs to whoever has the turn.
		std::unique_ptr<FSqliteConnection> Connection;
		uint64 FileNumber = 0;
		bool bHasFoundRot = false;

		/** One thread at a time goes through the whole file. */
		std::mutex CheckMutex;
		bool bIsChecked = false;
		std::atomic<bool> bStopsChecking = false;
		std::atomic<bool> bNeedsCheck = false;
		std::atomic<bool> bIsCheckComing = false;
	};
}
