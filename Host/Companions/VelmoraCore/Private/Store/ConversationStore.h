#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "CoreMinimal.h"
#include "Host/Outcome.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"
#include "Store/AttachedFiles.h"

namespace Velmora
{
	class FSqliteConnection;

	namespace StoreSchema
	{
		struct FConversationRow;
	}

	/**
	 * The conversations of one project in one SQLite file. Any thread: one operation at a time, on one connection that
	 * is opened when it is first needed and opened anew after a fault. Each change is one transaction, and is on the
	 * disk when it is reported as done. Other programs may use the same file.
	 *
	 * Operations are done, or nothing has changed: Missing when the store has no such conversation, Busy when it is worth
	 * another try, and for any other reason. The words are a sentence for the user.
	 *
	 * Ids are compared without letter case. Texts come back unit by unit as they were given, whatever they hold.
	 */
	class FConversationStore : public TSharedFromThis<FConversationStore>
	{
	public:
		/** The store of the project that is open now: the same object for all who hold it, closed in order when none does. */
		static TSharedRef<FConversationStore> GetDefault();

		/** @param Path  The database file. Neither it nor its folder need exist. */
		explicit FConversationStore(const std::string& Path);
		~FConversationStore();
		FConversationStore(const FConversationStore&) = delete;
		FConversationStore& operator=(const FConversationStore&) = delete;

		/** How long an operation waits for its turn: a frame can spare little, a worker has time. */
		static constexpr int32 FrameTimeoutMilliseconds = 50;
		static constexpr int32 WorkerTimeoutMilliseconds = 1000;

		/**
		 * Stores the messages of a conversation from index First on, and its mode, after those that the store has. If
		 * the store does not have the conversation (or no longer), all of its messages are stored.
		 *
		 * @param InOutConversation  Its LastUpdated becomes the time of this change.
		 * @param Attached           What was attached to its messages, stored with those that are.
		 */
		FOutcome Append(FConversationMetadata& InOutConversation, int32 First, int32 TimeoutMilliseconds = FrameTimeoutMilliseconds,
			const FAttachedFiles& Attached = FAttachedFiles());

		/**
		 * Stores one more message of a conversation that the store must have already. For workers.
		 *
		 * @return Names the message, for Withdraw.
		 */
		TOutcome<int64> AppendMessage(const FString& Id, const FConversationMessage& Message);

		/** Takes back one message that was stored and never told. */
		FOutcome Withdraw(const FString& Id, int64 Key);

		/** Drops all messages of a conversation but the first KeepCount, and the whole conversation when that is zero. */
		FOutcome TruncateMessages(const FString& Id, int32 KeepCount, int32 TimeoutMilliseconds = FrameTimeoutMilliseconds);

		/** The same when MayDrop, which is given all messages, agrees; otherwise nothing has changed and it is Missing. For workers. */
		using FMayDrop = TFunction<bool(const TArray<FConversationMessage>&)>;
		FOutcome TruncateMessagesIf(const FString& Id, int32 KeepCount, const FMayDrop& MayDrop);

		/** Reads one conversation with all its messages. */
		TOutcome<FConversationMetadata> Load(const FString& Id);

		/** What was attached to its messages. A file that was set aside is taken over without them. */
		TOutcome<FAttachedFiles> LoadAttached(const FString& Id);
		FOutcome Delete(const FString& Id);
		FOutcome Clear();

		/** All conversations, the latest first, each with its messages up to the first one of the user (see StoreSchema::MakeOpening) and
		 * no more. */
		TOutcome<TArray<FConversationMetadata>> GetSummaries();

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

		/**
		 * Reads summaries of any store on a connection of its own, for readers on other threads. A missing file is an empty store.
		 * Of a damaged one, what can be read.
		 */
		static FOutcome ReadSummaries(const std::string& Path, TArray<FConversationMetadata>& OutSummaries);

		/** The right to use the connection, for one operation. */
		class FTurn;

	private:
		/** What is wrong with a file that cannot be used. Numbers are stored. */
		enum class EDamage
		{
			None = 0,
			Broken = 1, // Not readable as a database, or not consistent.
			Foreign = 2, // Another program's.
			Newer = 3, // Of a later version of this one.
			Beside = 4 // None: an earlier version kept it beside a store of this one.
		};

		enum class EAccess
		{
			Read,
			Write
		};

		/** Opens what must be open and does the work in one transaction, which is kept if the work is done. */
		using FWork = TFunction<FOutcome(FSqliteConnection&)>;
		/** @param OutMayBeStored  The commit failed, and may have reached the log all the same. */
		FOutcome Run(EAccess Access, int32 TimeoutMilliseconds, const FWork& Work, bool* OutMayBeStored = nullptr);

		FOutcome Truncate(const FString& Id, int32 KeepCount, const FMayDrop& MayDrop, int32 TimeoutMilliseconds);

		// The caller of these has the turn.
		FOutcome RunOnce(EAccess Access, int32 TimeoutMilliseconds, bool bMayTakeTime, const FWork& Work);
		FOutcome Begin(EAccess Access, int32 TimeoutMilliseconds);
		FOutcome Open(int32 TimeoutMilliseconds);

		/** Done with what is wrong with the file, if anything is; an outcome of its own when that cannot be told. */
		TOutcome<EDamage> Connect(int32 TimeoutMilliseconds);
		TOutcome<EDamage> ConnectSurely(int32 TimeoutMilliseconds);
		FOutcome CreateFile();
		FOutcome SetAside(EDamage Damage);
		bool IsStillInPlace() const;

		/** As a sentence, and never Missing, which is for conversations. Has a damaged file looked through. */
		FOutcome Explain(const FOutcome& Failure);

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

		/** Gives one conversation by its number there; without an id when its own row is lost. */
		using FConversationSource = TFunction<void(int64, StoreSchema::FConversationRow&, TArray<FConversationMessage>&)>;

		/** Fills in what a lost row leaves open. */
		using FTakenName = TFunction<void(int64, StoreSchema::FConversationRow&)>;

		/** What becomes of a conversation that the store has already. */
		enum class EKnown
		{
			IsLeft,
			GoesOn // With the messages that the other file has more of.
		};

		/** Adds the conversations of another file that the store does not have, in transactions short enough for others to go between. */
		FOutcome TakeOver(
			const FConversationSource& Source, const std::vector<int64>& Numbers, const FTakenName& MakeId, EKnown Known, int32& OutCount);
		FOutcome AddRecovered(FSqliteConnection& Database, StoreSchema::FConversationRow& Row, const TArray<FConversationMessage>& Messages,
			EKnown Known, int64& InOutUnits, int32& InOutAdded);
		FOutcome GoOnWith(FSqliteConnection& Database, StoreSchema::FConversationRow& Stored, StoreSchema::FConversationRow& Row,
			const TArray<FConversationMessage>& Messages, int64& InOutUnits, int32& InOutAdded);

		/** False when it has to be done again. */
		bool RecoverFile(const std::string& Name, EDamage Damage);

		// A store that a later version has written is left where it is: this one then works on another beside it, NAME.v1.db
		// for NAME.db in the first version. A later version takes over what it finds there.
		const std::string& GetPath() const { return bIsBeside ? SidePath : BasePath; }
		void GoBeside();
		void TakeOverSideStores();

		/** Renames it, so that nobody writes to it any more, and notes it as to be taken over. */
		FOutcome ClaimSideStore(const std::string& Path);

		bool IsInDoubt(const FString& Id);
		void NoteDoubt(const FString& Id, const FOutcome& Stored, bool bMayBeStored);

		/** When every row of it can be read. */
		static bool RemoveSideStore(const std::string& Path);

		const std::string BasePath;
		const std::string SidePath;
		std::atomic<bool> bIsBeside = false;

		std::mutex TurnMutex;
		std::condition_variable TurnEnded;
		bool bIsTaken = false;
		std::atomic<int32> WaitingCount = 0;
		std::atomic<bool> bIsOpening = false;

		// What follows belongs to whoever has the turn.
		std::unique_ptr<FSqliteConnection> Connection;
		uint64 FileNumber = 0;
		bool bWasInterrupted = false;
		bool bHasCommitFailed = false;

		std::mutex DoubtMutex;
		/** Conversations with messages of which nobody knows whether they are in the store. */
		TArray<FString> InDoubt;

		/** One thread at a time goes through the whole file. */
		std::mutex CheckMutex;
		bool bIsChecked = false;
		std::atomic<bool> bStopsChecking = false;
		std::atomic<bool> bNeedsCheck = false;
		std::atomic<bool> bIsCheckComing = false;
	};
}
