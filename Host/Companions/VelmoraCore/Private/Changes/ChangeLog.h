#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Changes/ChangeRecord.h"
#include "Host/FileDescriptor.h"

namespace Velmora
{
	/** An undo as it is written down before it changes anything. */
	struct FLoggedUndo
	{
		std::string ConversationId;
		int MessageIndex = 0;

		/** Hashes of the messages that go with it, in order (HashMessageText). */
		std::vector<std::string> MessageMarks;

		/** The earliest first. */
		std::vector<std::string> TransactionIds;

		/** What there is to say about it when it is done. */
		std::vector<std::string> Notices;

		/** How often a later start has tried to finish it, and could not. */
		int Tries = 0;
	};

	/** What the log of a process that died says. */
	struct FLoggedHistory
	{
		/** In the order in which they were opened; those that were undone are no longer among them. */
		std::vector<FChangeTransaction> Transactions;

		/** Those that were written down and not made, or were undone. */
		std::vector<FChangeRecord> FailedRecords;

		/** The undo under way. */
		std::optional<FLoggedUndo> OpenUndo;
	};

	/** Known by this in a log. */
	std::string HashMessageText(std::string_view Text);

	/**
	 * The list of changes in a journal's folder: a line each, written down before the change is made. An undo stands in
	 * it with all that it takes to finish it.
	 */
	class FChangeLog
	{
	public:
		static constexpr const char* FileName = "changes.log";

		/** In a folder that has none yet, or has one. False with errno. */
		bool Create(const std::string& Folder);
		bool OpenAgain(const std::string& Folder);
		bool IsOpen() const { return File.IsOpen(); }

		/** Lines that say which message each of them belongs to. */
		static std::string ListMessages(const std::vector<std::shared_ptr<FChangeTransaction>>& Transactions);

		// Each gives a clause that says why not, or nothing. Half a line is never left.

		/** @param MessageLines  As ListMessages gives them, written together with the changes. */
		std::string AppendChanges(
			const std::vector<FChangeRecord>& Records, const std::string& TransactionId, const std::string& MessageLines = {});
		std::string AppendMessages(const std::string& MessageLines);

		/** The changes that were written down last, so many, have failed. */
		std::string AppendFailure(size_t Count);
		std::string AppendUndo(const FLoggedUndo& Undo);
		std::string AppendNotices(const std::vector<std::string>& Notices);

		std::string AppendTry();

		/** The undo that was written down last is over; without transactions that it has undone it was taken back. */
		std::string AppendEndOfUndo(const std::vector<std::string>& UndoneIds = {});

		/** These are not to be undone any more. */
		std::string AppendForgotten(const std::vector<std::string>& TransactionIds);

		void SetDurable(bool bInDurable) { bIsDurable = bInDurable; }

		/** A log that cannot be read is an empty one. */
		static FLoggedHistory Read(const std::string& Folder);

	private:
		std::string Append(const std::string& Line);

		/** Takes the last lines away again. */
		std::string CutTo(off_t Size);

		FFileDescriptor File;
		bool bIsDurable = true;

		/** Where the change or undo that was written down last begins. */
		off_t LastStart = 0;
	};
}
