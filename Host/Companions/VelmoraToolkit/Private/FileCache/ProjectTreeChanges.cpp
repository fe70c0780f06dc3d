#include "FileCache/ProjectTree.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>

namespace Velmora
{
	namespace
	{
		/** File systems keep times this coarsely at worst: a folder read so soon after its last change may have changed again unseen. */
		constexpr int64_t CoarsestTime = 2'000'000'000;
	}

	bool FProjectTree::HasChanged(const FProjectTreeFolder& Folder, const std::string& Path) const
	{
		struct stat Status = {};
		// A folder's own time moves when an entry comes or goes. That a file within it was written does not show here and need not.
		if (fstatat(RootFolder.Get(), Path.empty() ? "." : Path.c_str(), &Status, AT_SYMLINK_NOFOLLOW) != 0 ||
			FDiskStamp::Of(Status) != Folder.Stamp)
		{
			return true;
		}
		if (Folder.bIsPartial || std::llabs(Folder.ReadAt - Folder.Stamp.Modified) < CoarsestTime)
		{
			return true;
		}
		// The ignore file may have been written without any entry coming or going.
		if (Folder.IgnoreStamp == FDiskStamp())
		{
			return false;
		}
		const std::string IgnorePath = Path.empty() ? IgnoreFileName : Path + '/' + IgnoreFileName;
		return fstatat(RootFolder.Get(), IgnorePath.c_str(), &Status, AT_SYMLINK_NOFOLLOW) != 0 ||
			FDiskStamp::Of(Status) != Folder.IgnoreStamp || std::llabs(Folder.ReadAt - Folder.IgnoreStamp.Changed) < CoarsestTime;
	}

	void FProjectTree::QueueChanged()
	{
		bHasUnwatched = false;
		// On a stack, so that a deep tree costs no call depth.
		struct FPlace
		{
			FProjectTreeFolder* Folder;
			std::string Path;
		};
		std::vector<FPlace> Pending;
		if (Root)
		{
			Pending.push_back({ Root.get(), "" });
		}
		while (!Pending.empty() && !bStop)
		{
			const FPlace Place = std::move(Pending.back());
			Pending.pop_back();
			// One that cannot be read has no watch either, but its parent's tells when that changes.
			bHasUnwatched = bHasUnwatched || (Place.Folder->Watch < 0 && Place.Folder->Stamp != FDiskStamp());
			if (Place.Folder->QueueIndex < 0 && HasChanged(*Place.Folder, Place.Path))
			{
				Enqueue(*Place.Folder);
			}
			for (const std::unique_ptr<FProjectTreeFolder>& Child : Place.Folder->Folders)
			{
				Pending.push_back({ Child.get(), Place.Path.empty() ? Child->Name : Place.Path + '/' + Child->Name });
			}
		}
	}

	void FProjectTree::StartOver()
	{
		// Events were lost, so nothing that is known can be trusted: every folder is watched and read again, but keeps its place in the
		// list until then, so that the user's list is never empty meanwhile.
		Watch.reset();
		Watch = std::make_unique<FFolderWatch>(Limits.MaxWatches);
		Watched.clear();
		bMayBeMore = true;
		bHasUnwatched = false;
		std::vector<FProjectTreeFolder*> Pending;
		if (Root)
		{
			Pending.push_back(Root.get());
		}
		while (!Pending.empty())
		{
			FProjectTreeFolder& Folder = *Pending.back();
			Pending.pop_back();
			Folder.Watch = -1;
			Enqueue(Folder);
			for (const std::unique_ptr<FProjectTreeFolder>& Child : Folder.Folders)
			{
				Pending.push_back(Child.get());
			}
		}
	}

	bool FProjectTree::TakeEvents()
	{
		bool bHasAny = false;
		bool bHasOverflown = false;
		Watch->Read(
			[this, &bHasAny, &bHasOverflown](const FFolderChange& Change)
			{
				bHasAny = true;
				bHasOverflown = bHasOverflown || Change.Event == EFolderEvent::Overflow;
				TakeEvent(Change);
			});
		if (bHasOverflown)
		{
			StartOver();
		}
		return bHasAny;
	}

	void FProjectTree::NoteWatchEnd(const FFolderChange& Change)
	{
		const auto Found = Watched.find(Change.Watch);
		FProjectTreeFolder& Folder = *Found->second;
		if (Change.bWatchEnded)
		{
			Folder.Watch = -1;
			Watched.erase(Found);
		}
		if (Folder.Parent == nullptr)
		{
			bRootHasMoved = true;
			return;
		}
		// A folder that was moved is found by its parent; one whose watch has ended must not be taken for its successor.
		Folder.bIsLost = Folder.bIsLost || Change.bWatchEnded;
		Enqueue(*Folder.Parent);
	}

	void FProjectTree::TakeEvent(const FFolderChange& Change)
	{
		// 1. The watch may have ended while this event was on its way.
		const auto Found = Watched.find(Change.Watch);
		if (Found == Watched.end())
		{
			return;
		}
		// 2. The folder itself went.
		if (Change.Event == EFolderEvent::Gone)
		{
			NoteWatchEnd(Change);
			return;
		}
		FProjectTreeFolder& Folder = *Found->second;
		// 3. Its rules or its own attributes changed: it is read again as a whole.
		if (Change.Name == IgnoreFileName || Change.Name.empty())
		{
			Enqueue(Folder);
		}
		if (Change.Name.empty() || (Change.Event == EFolderEvent::Permissions && !Change.bIsFolder))
		{
			return;
		}
		// 4. What nobody sees needs no work: build folders change all the time.
		const std::string Prefix = MakePrefix(Folder);
		if (IsLeftOut(Folder, Prefix, Change.Name, Change.bIsFolder))
		{
			return;
		}
		if (Change.Event == EFolderEvent::Permissions)
		{
			const auto Child = std::find_if(
				Folder.Folders.begin(), Folder.Folders.end(), [&Change](const auto& Each) { return Each->Name == Change.Name; });
			if (Change.bIsFolder && Child != Folder.Folders.end())
			{
				Enqueue(**Child);
			}
			return;
		}
		if (Change.Event == EFolderEvent::Entered || Change.Event == EFolderEvent::Left)
		{
			Enqueue(Folder);
		}
		if (!Change.bIsFolder && Change.Event != EFolderEvent::Left && !bMayBeMore)
		{
			Touched.insert(Prefix + std::string(Change.Name));
			bMayBeMore = Touched.size() > MaxReportedPaths;
		}
	}
}
