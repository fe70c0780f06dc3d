#pragma once

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include <sys/stat.h>

#include "FileCache/FolderReader.h"
#include "FileCache/FolderWatch.h"
#include "FileCache/IgnoreRules.h"
#include "FileCache/ProjectFileList.h"
#include "Host/ProjectFileChanges.h"

namespace Velmora
{
	/** What the file system says of a file or folder, to tell whether it is as it was. */
	struct FDiskStamp
	{
		uint64_t Device = 0;
		uint64_t Inode = 0;
		int64_t Size = 0;

		/** In nanoseconds. */
		int64_t Modified = 0;
		int64_t Changed = 0;

		bool operator==(const FDiskStamp&) const = default;
		static FDiskStamp Of(const struct stat& Status);
	};

	/** A folder of the project with what was found in it. */
	struct FProjectTreeFolder
	{
		FProjectTreeFolder* Parent = nullptr;
		std::string Name;
		uint64_t Inode = 0;

		/** In the order of their names. */
		std::vector<std::unique_ptr<FProjectTreeFolder>> Folders;

		/** Null until the folder was read for the first time. */
		std::shared_ptr<const FFolderFiles> Files;

		/** The ignore files that hold in here. */
		std::shared_ptr<const FIgnoreScope> Scope;
		FDiskStamp Stamp;
		FDiskStamp IgnoreStamp;

		/** When it was read, in nanoseconds of the wall clock. */
		int64_t ReadAt = 0;
		int Watch = -1;

		/** Place in the queue of folders to read, -1 when it is not in there. */
		int QueueIndex = -1;

		/** Its watch has ended by itself: whatever bears the name now is another folder. */
		bool bIsLost = false;

		/** Something was left out. */
		bool bIsPartial = false;
	};

	struct FProjectTreeLimits
	{
		size_t MaxEntries = FProjectFileCache::MaxEntries;
		size_t MaxWatches = SIZE_MAX;
	};

	/**
	 * A project folder as a tree that is kept true: folders that may have changed are queued, by the watch or by a comparison
	 * with the disk, and read again. One thread.
	 */
	class FProjectTree
	{
	public:
		/** bInStop ends an update early. */
		FProjectTree(const FProjectTreeLimits& InLimits, const std::atomic<bool>& bInStop);
		~FProjectTree();

		FProjectTree(const FProjectTree&) = delete;
		FProjectTree& operator=(const FProjectTree&) = delete;

		/** Starts anew when the path is another one or another folder stands there now; empty for no project. */
		void SetRoot(const std::string& Path);

		/** Forgets what was found; the root's path stays for a later SetRoot. */
		void Clear();
		const std::string& GetRoot() const { return RootPath; }

		/** The folder of the last SetRoot is where it was. */
		bool IsRootInPlace() const;

		/** Queues every folder that the disk says has changed since it was read. */
		void QueueChanged();

		/** Takes what the watch has found and queues the folders it is about. False when there was nothing. */
		bool TakeEvents();

		/** The next report of changes says that there may be more. */
		void NoteGaps() { bMayBeMore = true; }

		/** The events taken so far call for an update. */
		bool HasWork() const { return !Queue.empty() || !Touched.empty() || bRootHasMoved; }

		/** Reads the queued folders and those found in them. False when it was stopped; what is left stays queued. */
		bool Update();

		/** Whether Update has changed the list since the last call. */
		bool TakeListChanged();
		std::shared_ptr<const FProjectFileList> MakeList() const;

		/** What has changed since the last call. Call after Update. */
		FProjectFileChanges TakeChanges();

		/** Some folders are not watched, so only a comparison with the disk tells what happens there. */
		bool HasUnwatchedFolders() const { return bHasUnwatched; }
		int GetWatchDescriptor() const { return Watch->GetDescriptor(); }

	private:
		/** Paths in one report of changes; more of them are reported as "may be more". */
		static constexpr size_t MaxReportedPaths = 20000;

		void Reset();
		void StartOver();
		void Enqueue(FProjectTreeFolder& Folder);
		void Drop(FProjectTreeFolder& Folder);
		void ReadOne(FProjectTreeFolder& Folder);

		/** Reads an open folder's stamps, ignore file and entries. False when it has no ignore file that can be read. */
		bool ReadOpened(
			FProjectTreeFolder& Folder, FFileDescriptor Opened, std::vector<FFolderEntry>& OutEntries, std::string& OutIgnoreText);

		/** Leaves the folders that count in Entries and gives the files that do. A folder with more than there is room for becomes partial.
		 */
		std::shared_ptr<FFolderFiles> Sort(FProjectTreeFolder& Folder, const std::string& Prefix, std::vector<FFolderEntry>& Entries) const;
		bool Rescope(FProjectTreeFolder& Folder, const std::string& Prefix, bool bHasText, std::string&& Text);
		bool IsLeftOut(const FProjectTreeFolder& Folder, const std::string& Prefix, std::string_view Name, bool bIsFolder) const;
		void TakeFolders(FProjectTreeFolder& Folder, const std::vector<FFolderEntry>& Entries, bool bRescoped);
		void TakeFiles(FProjectTreeFolder& Folder, std::shared_ptr<FFolderFiles> Files);
		void TakeEvent(const FFolderChange& Change);
		void NoteWatchEnd(const FFolderChange& Change);
		void NoteWritten(FString&& Path);
		void NoteRemoved(FString&& Path);
		bool HasChanged(const FProjectTreeFolder& Folder, const std::string& Path) const;

		/** The path below the project, with a '/' at the end unless it is the project itself. */
		static std::string MakePrefix(const FProjectTreeFolder& Folder);

		const FProjectTreeLimits Limits;
		const std::atomic<bool>& bStop;
		std::string RootPath;
		FFileDescriptor RootFolder;
		FDiskStamp RootStamp;
		std::unique_ptr<FProjectTreeFolder> Root;
		std::unique_ptr<FFolderWatch> Watch;
		std::unordered_map<int, FProjectTreeFolder*> Watched;

		/** Null where a folder has gone meanwhile. */
		std::vector<FProjectTreeFolder*> Queue;

		/** Paths below the project of files that were made or written, as bytes. */
		std::set<std::string> Touched;
		std::set<std::u16string> Written;
		std::set<std::u16string> Removed;
		size_t EntryCount = 0;
		bool bMayBeMore = false;
		bool bListChanged = false;
		bool bHasUnwatched = false;
		bool bRootHasMoved = false;
	};
}
