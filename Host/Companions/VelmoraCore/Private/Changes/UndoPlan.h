#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Changes/ChangeRecord.h"
#include "Changes/KeptContents.h"

namespace Velmora
{
	/** How far an undo is, for those who wait for it on another thread. */
	class FUndoProgress
	{
	public:
		/** A file is gone through this often: looked at, prepared, put in its place. */
		static constexpr size_t StepsPerFile = 3;

		void SetFileCount(size_t Count) { FileCount = Count; }
		void NoteStep() { ++Steps; }

		/** Zero until it is known. */
		size_t GetFileCount() const { return FileCount; }

		/** From 0 to 1. */
		float GetFraction() const
		{
			const size_t All = FileCount * StepsPerFile;
			return All == 0 ? 0.0f : static_cast<float>(Steps) / static_cast<float>(All);
		}

	private:
		std::atomic<size_t> FileCount = 0;
		std::atomic<size_t> Steps = 0;
	};

	/** One file that an undo brings back. */
	struct FUndoTarget
	{
		const FProjectAccess* Access = nullptr;
		std::string Path;

		/** What stood there before the first change, what the last one left, and what stands there now. */
		FEntryState Wanted;
		FEntryState Expected;
		FEntryState Present;

		/** The bytes of Present: in memory, or else kept in the journal under this hash. */
		std::string PresentBytes;
		std::string PresentKept;

		/** By which it is known to be still there. */
		FEntryStamp PresentStamp;
		std::string TemporaryName;

		/** What the user made of it between two changes of the agent, the latest first. The journal keeps the contents. */
		std::vector<FEntryState> HandEdits;

		/** With these it was one file. */
		std::vector<std::string> OtherNames;

		/** What stands there now has other names, too. */
		bool bHasMoreNames = false;

		/** A folder stands there that was made for a later file, and goes with it. */
		bool bIsOurFolder = false;

		bool IsInPlace() const { return Present == Wanted; }

		/** With the slash behind it, empty for the project folder. */
		std::string GetFolder() const { return Path.substr(0, Path.rfind('/') + 1); }
		FProjectAccess::FWriteOptions MakeOptions(const FEntryState& State) const;
	};

	/** A copy that an undo makes of what the user had made of a file. */
	struct FUndoCopy
	{
		/** Place of the file's target. */
		size_t Target = 0;
		std::string Path;
		FEntryState State;

		/** It stands there already. */
		bool bIsThere = false;
	};

	struct FUndoFolder
	{
		const FProjectAccess* Access = nullptr;
		std::string Path;
	};

	/** What an undo is going to do. Making one changes nothing in the project. */
	class FUndoPlan
	{
	public:
		explicit FUndoPlan(FKeptContents& InContents);
		~FUndoPlan();
		FUndoPlan(const FUndoPlan&) = delete;
		FUndoPlan& operator=(const FUndoPlan&) = delete;

		/** Takes the records of a transaction in; the last transaction comes first. */
		void Add(const FChangeTransaction& Transaction);

		/** Finds out whether all can be restored, and how. Gives a sentence that says why not, or nothing. */
		std::string Inspect();

		/** The bytes of a file's state: what stands there now, or what is kept. Gives a clause that says why not, or nothing. */
		std::string ReadBytes(const FUndoTarget& Target, const FEntryState& State, std::string& OutBytes) const;

		std::vector<FUndoTarget> Targets;
		std::vector<FUndoCopy> Copies;

		/** Those that were made for files; they go when they are empty. */
		std::vector<FUndoFolder> MadeFolders;

		/** Sentences on what the user had changed. */
		std::vector<std::string> Notices;

		/** By the project's folder. */
		std::map<std::string, std::unique_ptr<FProjectAccess>> Accesses;

		/** Told of every file that has been gone through; may be null. */
		FUndoProgress* Progress = nullptr;

		void NoteStep() const
		{
			if (Progress)
			{
				Progress->NoteStep();
			}
		}

	private:
		std::string InspectTarget(FUndoTarget& Target);
		std::string PlanCopies(size_t Index);
		std::string PlanCopy(size_t Index, const FEntryState& State, std::string& OutPath);
		bool IsTaken(const FUndoTarget& Target, const std::string& Path) const;

		FKeptContents& Contents;

		/** Place of a target by project folder and path. */
		std::map<std::pair<FFolderIdentity, std::string>, size_t> Indices;

		/** Folders that are others now than those in which the changes were made. */
		std::map<const FProjectAccess*, std::string> ReplacedRoots;
		uint64_t HeldBytes = 0;
	};
}
