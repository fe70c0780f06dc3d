#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Changes/ChangeJournal.h"
#include "Changes/ProjectAccess.h"

namespace Velmora
{
	/** What became of a change. */
	struct FChangeOutcome
	{
		bool bSuccess = false;

		/** For a tool's row, with the path: "Created notes.md, 3 lines", "Not changed: it is read-only". */
		std::string Sentence;

		/** The clause behind "Not changed: ". */
		std::string Problem;

		/** The file's relative path, empty when it is refused as a path. */
		std::string Path;
		EChangeAction Action = EChangeAction::Modified;

		/** Of a passage that was replaced: its first line, from 1, and the whole lines that it touches, before and after. 0 otherwise. */
		int FirstLine = 0;
		std::string OldLines;
		std::string NewLines;
	};

	/**
	 * The agent's tools that change files of the project, each within one undo transaction. Any path and content may
	 * come in; what cannot be done is refused in words and leaves everything as it was. One thread at a time.
	 */
	class FChangeTools
	{
	public:
		/** No tool writes a larger file. In bytes. */
		static constexpr size_t MaxWrittenBytes = 4 * 1024 * 1024;

		FChangeTools(const std::string& InRoot, FChangeJournal& InJournal, std::string InTransactionId,
			EAccessMethod Method = EAccessMethod::Automatic);

		/** While it is true nothing is changed any more; asked right before each change. */
		void SetCancelCheck(std::function<bool()> InIsCancelled) { IsCancelled = std::move(InIsCancelled); }

		/**
		 * Looks at a change that is about to be made, with the file as it is then. A clause refuses it, and nothing is changed.
		 * Path is below the project, links resolved by the system not taken into account.
		 */
		using FGuard =
			std::function<std::string(const std::string& Path, const FEntryInfo&, const std::string& OldBytes, const FNewContent&)>;
		void SetGuard(FGuard InGuard) { Guard = std::move(InGuard); }

		/**
		 * Looks at the path of a file before a change that tells something of its content: whether a passage stands in it, or all of it
		 * under another name. A clause refuses the change.
		 */
		using FReadGuard = std::function<std::string(const std::string& Path)>;
		void SetReadGuard(FReadGuard InGuard) { ReadGuard = std::move(InGuard); }

		/** A file that is not there yet. Missing folders are made. */
		FChangeOutcome CreateFile(std::string_view Path, std::string_view Bytes);

		/** The whole content; of a text that is there already mark, encoding, line ends and mode stay. */
		FChangeOutcome WriteFile(std::string_view Path, std::string_view Bytes);

		/** Replaces a passage that stands in the file once. */
		FChangeOutcome EditFile(std::string_view Path, std::string_view Old, std::string_view New);

		/** Adds lines at the end. A file that is not there is made. */
		FChangeOutcome AppendToFile(std::string_view Path, std::string_view Text);

		/** A file, or a link itself. */
		FChangeOutcome DeleteFile(std::string_view Path);

		/** To a path where nothing stands; what was named keeps its bytes and permissions. Two changes for undo, or none. */
		FChangeOutcome MoveFile(std::string_view From, std::string_view To);

		const FProjectAccess& GetAccess() const { return Access; }
		void SetDurable(bool bIsDurable) { Access.SetDurable(bIsDurable); }

	private:
		/**
		 * @param bNeedsFile  Refuses what is not there.
		 * @param MaxBytes    No larger content is written.
		 */
		FChangeOutcome Change(std::string_view Path, bool bNeedsFile,
			const std::function<std::string(const FEntryInfo&, const std::string&, FNewContent&)>& MakeContent,
			uint64_t MaxBytes = MaxWrittenBytes);

		std::string RefuseReading(std::string_view Path) const;

		const std::string Root;
		FProjectAccess Access;
		FChangeJournal& Journal;
		const std::string TransactionId;
		std::function<bool()> IsCancelled;
		FGuard Guard;
		FReadGuard ReadGuard;
	};
}
