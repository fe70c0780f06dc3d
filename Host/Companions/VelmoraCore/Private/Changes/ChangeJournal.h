#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Changes/ChangeLog.h"
#include "Changes/ChangeRecord.h"
#include "Changes/KeptContents.h"
#include "Changes/ProjectAccess.h"
#include "Host/Outcome.h"

namespace Velmora
{
	struct FUndoEnd;
	class FUndoProgress;

	/** The numbers are those of the history trackers. */
	enum class EChangeAction : uint8_t
	{
		Created = 1,
		Modified = 2,
		Deleted = 3
	};

	/** A change that has been made, for those who keep count. */
	struct FPerformedChange
	{
		std::string TransactionId;
		std::string ConversationId;
		std::string Root;
		std::string Path;
		EChangeAction Action = EChangeAction::Modified;
	};

	/** What a file shall become. */
	struct FNewContent
	{
		/** The file goes; the rest does not count. */
		bool bIsDeletion = false;
		std::string Bytes;

		/** Permission bits of a file that is new; zero for those of any new file. */
		uint32_t Mode = 0;

		/** A file that is there gets them, too. */
		bool bSetsMode = false;

		/** It becomes a link to this instead; the bytes do not count. */
		std::string LinkTarget;

		/** An empty folder instead, where nothing stands yet. */
		bool bIsFolder = false;
	};

	/** What shall be undone: a transaction and the later ones of its conversation. */
	struct FUndoRequest
	{
		std::string TransactionId;
		std::string ConversationId;

		/** Called when all files are restored, with the place of the first message undone; when it gives a sentence the files go back. */
		std::function<std::string(int MessageIndex)> Commit;

		/** Gives what a later start knows the messages from a place on by (HashMessageText). May be empty. */
		std::function<std::vector<std::string>(int MessageIndex)> MarkMessages;

		/** May be null. */
		FUndoProgress* Progress = nullptr;
	};

	struct FUndoResult
	{
		bool bSuccess = false;

		/** Why nothing was changed: a whole sentence. */
		std::string Problem;

		/** Sentences on files that somebody else had changed since. */
		std::vector<std::string> Notices;

		/** Those that are undone. */
		std::vector<std::string> TransactionIds;
	};

	/** What became of an undo that was cut short by the end of its process. */
	struct FRecoveredUndo
	{
		std::string ConversationId;
		bool bIsFinished = false;

		/** For the user, the first one on the whole. */
		std::vector<std::string> Sentences;
	};

	/**
	 * All changes of files go through here: each is written down with the former content before it is made, so that
	 * the transaction it belongs to can be undone. Former contents lie in a folder of this journal's own below the
	 * undo folder, private to the user, at most MaxKeptBytes together: beyond, the oldest transactions are let go.
	 * The folder stays while there is something in it to undo, so that a later start can take it over (AdoptDeadJournals);
	 * of a process that died, RecoverDeadJournals first finishes the undo that was under way.
	 *
	 * Any thread. Changes and undo take turns; opening a transaction never waits for the disk.
	 */
	class FChangeJournal
	{
	public:
		/** Behind the temporary name of a record: that of the copy which undo sets aside. */
		static constexpr const char* CopyEnding = ".copy";

		static constexpr uint64_t MaxKeptBytes = 256 * 1024 * 1024;

		/** A file larger than this is not changed, since its content could not be kept. */
		static constexpr uint64_t MaxFileBytes = FKeptContents::MaxFileBytes;

		/** Nothing is written before the first change. */
		explicit FChangeJournal(std::string InUndoFolder, uint64_t InMaxKeptBytes = MaxKeptBytes);
		~FChangeJournal();
		FChangeJournal(const FChangeJournal&) = delete;
		FChangeJournal& operator=(const FChangeJournal&) = delete;

		/**
		 * Opens a transaction that later changes belong to.
		 *
		 * @param MessageIndex  Where the user's message stands in its conversation.
		 * @param MessageMark   What a later start knows the message by (HashMessageText); empty for none.
		 */
		void OpenTransaction(
			const std::string& Id, const std::string& ConversationId, int MessageIndex, const std::string& MessageMark = std::string());

		/** Another message belongs to the transaction: a text that changed its course. */
		void AddMessage(const std::string& TransactionId, int MessageIndex);

		/** Looks at a file and says what it shall become. Gives a clause that says why not, or nothing. */
		using FMakeContent = std::function<std::string(const FEntryInfo& Info, const std::string& Bytes, FNewContent& OutContent)>;

		/**
		 * Changes one file: reads it, asks what it shall become, keeps the former content, then changes it as a whole.
		 *
		 * @param Access  Of the folder Root.
		 * @param GivenPath  As FProjectAccess::Normalise gives it, through whatever links.
		 * @param OutNote    A clause on what of the file could not be kept, or nothing.
		 * @return        A clause that says why nothing was changed, or nothing.
		 */
		std::string Change(const std::string& TransactionId, const FProjectAccess& Access, const std::string& Root,
			const std::string& GivenPath, const FMakeContent& MakeContent, std::string* OutNote = nullptr);

		/** All or nothing. What a plan says is written down first, so that a later start can finish it. */
		FUndoResult Undo(const FUndoRequest& Request);

		struct FKnownMessage
		{
			std::string TransactionId;

			/** Of the message that opened the transaction. */
			int MessageIndex = 0;
		};

		/**
		 * The transaction that the message there belongs to. Nothing when it is not known, or its contents had to make room.
		 *
		 * @param MessageMark  Must be that of the message which opened it, if both are known.
		 */
		std::optional<FKnownMessage> FindTransactionOf(
			const std::string& ConversationId, int MessageIndex, const std::string& MessageMark = std::string()) const;

		bool Has(const std::string& TransactionId) const { return FindTransaction(TransactionId) != nullptr; }

		/** What was done in conversations that are gone is not to be undone any more. May wait for a change under way. */
		void ForgetConversations(const std::function<bool(const std::string& ConversationId)>& IsGone);

		/** The changes since the last call. */
		std::vector<FPerformedChange> TakePerformed();

		/** Bytes of former contents kept now. */
		uint64_t GetKeptBytes() const { return Contents ? Contents->GetBytes() : 0; }

		/**
		 * Cuts the messages of an undo that was under way. Gives a sentence that says why not, or nothing; in OutNotice
		 * what the user should know about them.
		 */
		using FFinishMessages = std::function<std::string(const FLoggedUndo& Undo, std::string& OutNotice)>;

		/**
		 * Goes through what journals of dead processes have left: an undo that was under way is finished, half-written
		 * files and the journals themselves are removed. Takes its time.
		 */
		static std::vector<FRecoveredUndo> RecoverDeadJournals(
			const std::string& UndoFolder, const FFinishMessages& FinishMessages, bool bIsDurable = true);

		/** What earlier runs have left is kept so long, and so many of them; together at most MaxKeptBytes. */
		static constexpr int MaxAdoptedDays = 30;
		static constexpr size_t MaxAdopted = 20;

		/** Takes over the journals of processes that are gone, the latest first, and removes those beyond the limits. Takes its time. */
		static std::vector<std::shared_ptr<FChangeJournal>> AdoptDeadJournals(const std::string& UndoFolder, bool bIsDurable = true);

		/**
		 * Moves what journals of dead processes have left into another undo folder: each whole or not at all, also when this is cut
		 * short. A journal in use stays, and one that cannot be brought, with all that come after it. Takes its time.
		 */
		static FOutcome BringDeadJournals(const std::string& From, const std::string& To);

		/** False: nothing is flushed, for runs in which only the result counts. */
		void SetDurable(bool bInDurable);

	private:
		using FTransactions = std::vector<std::shared_ptr<FChangeTransaction>>;

		/** Makes the folder when it is first needed. */
		std::string OpenFolder();
		bool IsFolderThere() const;

		/** Somebody has removed the folder: forgets what can no longer be undone, the request under way included, and says so. */
		std::string BeginAnew();

		/** Takes over a folder whose lock is held. False when there is nothing to undo in it. */
		bool Adopt(const std::string& InFolder, FFileDescriptor&& InLock);
		bool HasSomethingToUndo() const;

		/** Lines for the log on those that it does not know yet; from now on it is taken to know them. */
		std::string ListMessages(FTransactions& OutListed);

		/** What is to be written down of a change that is about to be made. OutNote gets what of the file cannot be kept. */
		static FChangeRecord MakeRecord(const FProjectAccess& Access, const std::string& Root, const std::string& Path,
			const FEntryInfo& Info, const std::string& Bytes, const FNewContent& Content, std::string& OutNote);

		/** The change failed: what was written down of it is taken back. */
		void Withdraw(const std::vector<FChangeRecord>& Records);

		/** A file with several names is changed under each; deleted, it goes under one. */
		std::vector<FChangeRecord> ListByName(const FChangeRecord& Record, bool bUnderOneName);
		std::string WriteDown(const std::vector<FChangeRecord>& Records, const std::string& Bytes, const FChangeTransaction& Transaction);

		/** The change itself. */
		static std::string Make(const FProjectAccess& Access, std::vector<FChangeRecord>& Records, const FEntryInfo& Info,
			const FNewContent& Content, std::string& InOutNote);
		static std::string MakeNoFile(
			const FProjectAccess& Access, FChangeRecord& Record, const FEntryStamp& Replaced, const FNewContent& Content);

		/** Lets the oldest contents go until there is room. */
		std::string Keep(const std::string& Bytes, const std::string& Hash, const FChangeTransaction& ForTransaction);
		void DropTransaction(FChangeTransaction& Transaction);
		FUndoEnd UndoFiles(const FTransactions& Undone, const FUndoRequest& Request, std::vector<std::string>& OutNotices);
		void Forget(const FTransactions& Undone);
		static void RemoveTemporaries(const FLoggedHistory& History);
		static bool IsWorthKeeping(const FLoggedHistory& History);

		static constexpr const char* LockName = "lock";

		/** A folder on its way to being a journal has this in front of its name until its lock is held. */
		static constexpr const char* NewFolderPrefix = ".new-";
		std::shared_ptr<FChangeTransaction> FindTransaction(const std::string& Id) const;

		/** A transaction and the later ones of its conversation. */
		FTransactions ListFrom(const std::string& TransactionId, const std::string& ConversationId) const;

		const std::string UndoFolder;
		const uint64_t Limit;
		bool bIsDurable = true;

		/** Held during a change and an undo; guards all that follows. */
		std::mutex WorkMutex;
		std::string Folder;
		std::unique_ptr<FKeptContents> Contents;
		FFileDescriptor Lock;
		FChangeLog Log;
		int RecordCount = 0;

		/** A write or an undo has failed, so a half-written file may stand in the project. */
		bool bMayHaveLeftovers = false;

		/** Guards the lists below, for a moment only. */
		mutable std::mutex ListMutex;
		FTransactions Transactions;
		std::vector<FPerformedChange> Performed;
	};
}
