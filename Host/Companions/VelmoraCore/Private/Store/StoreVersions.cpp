#include "Store/ConversationStore.h"

#include "Host/FolderLock.h"
#include "Host/Sqlite.h"
#include "Store/StoreFiles.h"
#include "Store/StoreNotices.h"
#include "Store/StoreSchema.h"

// Versions that do not know each other's stores work side by side. The earlier one writes beside the later one's store, under a
// name that both know. The later one takes it over at its next start, in steps that may be cut off anywhere:
//   1. The file is noted as to be recovered, under the name that it is to get.
//   2. It gets that name while nobody else may write to it. Whoever has it open notices that it is gone, and makes another.
//   3. Its conversations go into the store, like those of a damaged one.
//   4. It is removed, if all of its rows could be read, and then the note.

namespace Velmora
{
	void FConversationStore::GoBeside()
	{
		bIsBeside = true;
		StoreNotices::Add("The conversation store " + BasePath +
			" was written by a later version of this program and stays as it is. This version keeps its conversations in " + SidePath +
			" until a later one takes them over.");
	}

	void FConversationStore::TakeOverSideStores()
	{
		for (const std::string& Path : StoreFiles::ListSideStores(BasePath, StoreSchema::Version))
		{
			if (const FOutcome Claimed = ClaimSideStore(Path); !Claimed && !Claimed.Is(EOutcome::Busy))
			{
				StoreNotices::Add("What an earlier version of this program has written in " + Path +
					" could not be taken over yet: " + Claimed.GetWords() + " This is tried again at the next start.");
			}
		}
	}

	FOutcome FConversationStore::ClaimSideStore(const std::string& Path)
	{
		const FFolderLock Lock(StoreFiles::GetFolder(Path), FrameTimeoutMilliseconds);
		if (!Lock.GetOutcome())
		{
			return Lock.GetOutcome();
		}
		// As long as we could write, nobody else does; what is damaged nobody can write to.
		FSqliteConnection Guard;
		FOutcome Begun = StoreSchema::Open(Guard, Path, ESqliteAccess::Write, WorkerTimeoutMilliseconds);
		Begun = Begun ? Guard.Execute("BEGIN IMMEDIATE") : Begun;
		if (Begun.Is(EOutcome::Busy))
		{
			return Begun;
		}
		const std::string ClaimedPath = StoreFiles::MakeAsideName(Path, "merged");
		FOutcome Step = Run(EAccess::Write, WorkerTimeoutMilliseconds,
			[Name = StoreFiles::GetName(ClaimedPath)](FSqliteConnection& Database)
			{
				return Database.Query("INSERT OR REPLACE INTO recoveries(file, damage) VALUES(?, ?)")
					.BindText(Name)
					.Bind(static_cast<int64>(EDamage::Beside))
					.Finish();
			});
		Step = Step ? StoreFiles::Rename(Path, ClaimedPath) : Step;
		return Step ? Lock.Flush() : Step;
	}

	bool FConversationStore::RemoveSideStore(const std::string& Path)
	{
		if (StoreFiles::GetFileNumber(Path) != 0)
		{
			FSqliteConnection Database;
			if (!StoreSchema::Open(Database, Path, ESqliteAccess::Read, WorkerTimeoutMilliseconds) || !StoreSchema::VerifyRows(Database))
			{
				return false;
			}
		}
		StoreFiles::Remove(Path);
		return true;
	}
}
