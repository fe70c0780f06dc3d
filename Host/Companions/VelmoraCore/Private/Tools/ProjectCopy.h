#pragma once

#include "Changes/ChangeJournal.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace Velmora
{
	/** How the files of a project are seen by a command. Paths are relative bytes. */
	struct FProjectPlan
	{
		/** What steers other tools, version control among it: a command may read it. */
		std::vector<std::string> Steering;

		/** By their names they may hold secrets: a command does not see what is in them. */
		std::vector<std::string> Secrets;

		/** What this program keeps in the project. */
		std::vector<std::string> OwnFolders;

		uint64_t Bytes = 0;
		size_t Entries = 0;

		/** There is more than is copied. */
		bool bIsTooLarge = false;

		/** Looks through all of the project: what steers and what is secret must be known of one that is too large, too. */
		static FProjectPlan Make(const std::string& Root);
	};

	/** What a command has done to a copy, and what has come of it in the project. */
	struct FCopyChanges
	{
		/** Relative paths; made, changed and deleted. */
		std::vector<std::string> Applied;

		/** Whole sentences on what was not taken over. */
		std::vector<std::string> Notes;
	};

	/** A private copy of the project in a folder of its own, which goes with it. One thread at a time. */
	class FProjectCopy
	{
	public:
		static constexpr uint64_t MaxBytes = uint64_t(256) << 20;
		static constexpr size_t MaxEntries = 50000;

		/** More than this is not taken over: it could not all be undone. */
		static constexpr uint64_t MaxAppliedBytes = uint64_t(128) << 20;
		static constexpr size_t MaxAppliedFiles = 5000;

		FProjectCopy(const std::string& InRoot, const FProjectPlan& InPlan);
		~FProjectCopy();
		FProjectCopy(const FProjectCopy&) = delete;
		FProjectCopy& operator=(const FProjectCopy&) = delete;

		/** Gives a clause that says why not, or nothing. */
		std::string Make(const std::function<bool()>& IsCancelled);

		const std::string& GetFolder() const { return Folder; }

		/** Carries the differences over to the project, each as a change of the journal. What has changed there meanwhile stays. */
		FCopyChanges Apply(FChangeJournal& Journal, const std::string& TransactionId) const;

	private:
		/** A file or link as it was copied. */
		struct FCopied
		{
			bool bIsLink = false;
			std::string LinkTarget;
			uint32_t Mode = 0;

			// Of the original, so that a change by somebody else is noticed.
			uint64_t OriginalSize = 0;
			int64_t OriginalTime = 0;

			// Of the copy: whoever writes to it moves the last of them.
			uint64_t Inode = 0;
			uint64_t Size = 0;
			int64_t ChangeTime = 0;
		};

		/** What the command has made of a file. */
		struct FDifference
		{
			std::string Path;
			FNewContent Content;
		};

		std::string CopyFile(const std::string& Path);
		std::string CopyLink(const std::string& Path);
		bool IsLeftOut(const std::string& Path) const;

		/** What of an entry of the copy is to be taken over, or why it is not. */
		bool CompareFile(const std::string& Path, const struct stat& Info, FDifference& OutDifference, std::string& OutNote) const;
		bool CompareLink(const std::string& Path, FDifference& OutDifference, std::string& OutNote) const;
		bool CompareFolder(const std::string& Path, const struct stat& Info, FDifference& OutDifference, std::string& OutNote) const;

		/** Why a link is not made; nothing for one that stays among the ordinary files of the project. */
		static std::string RefuseLink(const std::string& Path, const std::string& Target);

		/** False with a note when there is too much of it. */
		bool FindDifferences(std::vector<FDifference>& OutDifferences, std::vector<std::string>& OutNotes) const;
		bool HasOriginalChanged(const std::string& Path) const;

		const std::string Root;
		const FProjectPlan Plan;
		std::string Folder;
		std::map<std::string, FCopied> Copied;

		/** Modes of the copy's folders as they were made. */
		std::map<std::string, uint32_t> CopiedFolders;
	};
}
