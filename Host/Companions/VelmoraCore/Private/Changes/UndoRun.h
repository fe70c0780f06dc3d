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
}
