#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Changes/UndoPlan.h"

namespace Velmora
{
	/** Does what a plan says, and can go back. Each step gives a sentence that says why not, or nothing. */
	class FUndoRun
	{
	public:
		/** @param bInIsDurable  What is done is on the disk before it is taken for done. */
		FUndoRun(FUndoPlan& InPlan, bool bInIsDurable);
		~FUndoRun();
		FUndoRun(const FUndoRun&) = delete;
		FUndoRun& operator=(const FUndoRun&) = delete;

		/** Writes the files to be restored beside their places: most of the work, and nothing is lost if it fails. */
		std::string PrepareFiles();

		/** First the copies, then all that the plan says. */
		std::string Apply();

		/** Waits until all that was done is on the disk. */
		void Flush() const;

		/** Gives sentences on what could not be brought back, or nothing. */
		std::string GoBack();

	private:
		std::string MakeCopy(const FUndoCopy& Copy);
		std::string RestoreAll(bool bRemoves);
		std::string Restore(size_t Index);
		/** Names of one file become so again, where what they stand for is the same. */
		void LinkNames(bool bTells);
		std::string MakeParents(const FUndoTarget& Target, const std::string& Path);

		/** Makes a name hold what a state says. */
		std::string Put(const FUndoTarget& Target, const std::string& Path, const FEntryState& State,
			const FProjectAccess::FWriteOptions& Options) const;
		void FlushAll() const;
		bool IsManyFlushes() const;

		FUndoPlan& Plan;
		const bool bIsDurable;

		/** By target: the wanted content stands under the temporary name, or is on the disk. */
		std::vector<bool> bIsWrittenBeside;
		std::vector<bool> bIsFlushed;

		/** What takes each change back, in the order of the changes. */
		std::vector<std::function<std::string()>> Steps;
	};

	/** How an undo ended. */
	struct FUndoEnd
	{
		/** Empty when all is undone; otherwise sentences that say why nothing is. */
		std::string Problem;

		/** Nothing but for this: sentences on what could not be brought back. */
		std::string Lost;
	};

	/**
	 * Does all that a plan says, or nothing.
	 *
	 * @param WriteDown  Called when all is ready and nothing is changed yet; what it has done makes sure that a later
	 *                   start can finish it.
	 * @param Commit     Called when all files are restored.
	 */
	FUndoEnd PerformUndo(
		FUndoPlan& Plan, bool bIsDurable, const std::function<std::string()>& WriteDown, const std::function<std::string()>& Commit);
}
