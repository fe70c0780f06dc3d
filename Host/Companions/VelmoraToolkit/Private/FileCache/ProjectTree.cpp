#include "FileCache/ProjectTree.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "Host/HostFileNames.h"
#include "Host/ProjectWalk.h"

// The project's folders as a tree in memory, kept in line with the disk. One thread works on it.
// A folder is a unit: it is read whole, watched whole, and its files are one immutable list, which snapshots share. So a
// change costs its folder, and a snapshot costs a pointer for each folder, however many files there are.
// What is to be read waits in a queue; the kernel's events put folders there, and so does a parent that has new folders.
// What changed is collected for those who follow (TakeChanges) until it is too much; then they are told to compare for
// themselves.

namespace Velmora
{
	namespace
	{
		int64_t ToNanoseconds(const timespec& Time)
		{
			return Time.tv_sec * int64_t(1'000'000'000) + Time.tv_nsec;
		}

		int64_t GetWallClock()
		{
			timespec Now = {};
			clock_gettime(CLOCK_REALTIME, &Now);
			return ToNanoseconds(Now);
		}

		std::u16string ToKey(const FString& Path)
		{
			return std::u16string(*Path, static_cast<size_t>(Path.Len()));
		}

		TArray<FString> ToPaths(const std::set<std::u16string>& Keys)
		{
			TArray<FString> Paths;
			Paths.Reserve(static_cast<int32>(Keys.size()));
			for (const std::u16string& Key : Keys)
			{
				Paths.Emplace(FStringView(Key.data(), static_cast<int32>(Key.size())));
			}
			return Paths;
		}
	}

	FDiskStamp FDiskStamp::Of(const struct stat& Status)
	{
		return { Status.st_dev, Status.st_ino, Status.st_size, ToNanoseconds(Status.st_mtim), ToNanoseconds(Status.st_ctim) };
	}

	FProjectTree::FProjectTree(const FProjectTreeLimits& InLimits, const std::atomic<bool>& bInStop)
		: Limits(InLimits)
		, bStop(bInStop)
		, Watch(std::make_unique<FFolderWatch>(InLimits.MaxWatches))
	{
	}

	FProjectTree::~FProjectTree()
	{
		Reset();
	}

	void FProjectTree::Reset()
	{
		bListChanged = bListChanged || Root != nullptr;
		// Whoever asks what has changed since last time gets "anything" once: a list of all paths would say no more.
		bMayBeMore = bMayBeMore || Root != nullptr;
		// One queue for each tree: closing it ends all its watches at once, before the next one asks for as many.
		Watch.reset();
		Watch = std::make_unique<FFolderWatch>(Limits.MaxWatches);
		Watched.clear();
		Queue.clear();
		Touched.clear();
		Written.clear();
		Removed.clear();
		Root.reset();
		EntryCount = 0;
		bHasUnwatched = false;
		bRootHasMoved = false;
		RootFolder.Close();
	}

	// The root is held open and found again by its inode: a project that was moved away and replaced is another one.
	void FProjectTree::SetRoot(const std::string& Path)
	{
		bRootHasMoved = false;
		// The same folder again, untouched: what is known of it still holds.
		if (Path == RootPath && IsRootInPlace())
		{
			return;
		}
		Reset();
		RootPath = Path;
		RootFolder = Path.empty() ? FFileDescriptor() : FFileDescriptor::Open(Path, O_RDONLY | O_DIRECTORY);
		struct stat Status = {};
		if (!RootFolder.IsOpen() || fstat(RootFolder.Get(), &Status) != 0)
		{
			return;
		}
		RootStamp = FDiskStamp::Of(Status);
		bMayBeMore = true;
		Root = std::make_unique<FProjectTreeFolder>();
		Enqueue(*Root);
	}

	void FProjectTree::Clear()
	{
		if (Root)
		{
			Reset();
		}
	}

	bool FProjectTree::IsRootInPlace() const
	{
		// By device and number, not by name: the folder may have been moved away and another put in its place.
		struct stat Status = {};
		return RootFolder.IsOpen() && stat(RootPath.c_str(), &Status) == 0 && Status.st_dev == RootStamp.Device &&
			Status.st_ino == RootStamp.Inode;
	}

	void FProjectTree::Enqueue(FProjectTreeFolder& Folder)
	{
		// Looked up by the walk; -1 is "does not wait", so that no folder waits twice.
		if (Folder.QueueIndex < 0)
		{
			Folder.QueueIndex = static_cast<int>(Queue.size());
			Queue.push_back(&Folder);
		}
	}

	// Made from the parents when it is needed. Kept in each folder it would cost the most memory of all.
	std::string FProjectTree::MakePrefix(const FProjectTreeFolder& Folder)
	{
		std::vector<const FProjectTreeFolder*> Way;
		for (const FProjectTreeFolder* At = &Folder; At->Parent != nullptr; At = At->Parent)
		{
			Way.push_back(At);
		}
		std::string Prefix;
		for (auto At = Way.rbegin(); At != Way.rend(); ++At)
		{
			Prefix += (*At)->Name;
			Prefix += '/';
		}
		return Prefix;
	}

	// A folder that is gone, with all below it: its watch, its place in the queue, its share of the count, and a word to those
	// who follow for each file.
	void FProjectTree::Drop(FProjectTreeFolder& Folder)
	{
		for (const std::unique_ptr<FProjectTreeFolder>& Child : Folder.Folders)
		{
			Drop(*Child);
		}
		if (Folder.QueueIndex >= 0)
		{
			// Gaps in the queue are cheaper than moving what waits behind.
			Queue[static_cast<size_t>(Folder.QueueIndex)] = nullptr;
		}
		// A folder that was moved within the project may have handed its watch to its new place.
		const auto Owner = Watched.find(Folder.Watch);
		if (Owner != Watched.end() && Owner->second == &Folder)
		{
			Watch->Remove(Folder.Watch);
			Watched.erase(Owner);
		}
		if (Folder.Files)
		{
			EntryCount -= static_cast<size_t>(Folder.Files->Num());
			for (int32 Index = 0; Index < Folder.Files->Num(); ++Index)
			{
				NoteRemoved(Folder.Files->MakePath(Folder.Files->GetName(Index)));
			}
		}
		--EntryCount;
		bListChanged = true;
	}

	bool FProjectTree::IsLeftOut(const FProjectTreeFolder& Folder, const std::string& Prefix, std::string_view Name, bool bIsFolder) const
	{
		// A worktree or submodule has a file where a repository has a folder.
		if (Name == ".git" || (bIsFolder && IsIgnoredFolderName(Name)))
		{
			return true;
		}
		return Folder.Scope && IsIgnored(Folder.Scope.get(), Prefix + std::string(Name), bIsFolder);
	}

	// Rules of an ignore file hold for its folder and all below. The scope stays the same object while the file says the same,
	// so that a touched ignore file does not send the whole tree through the queue.
	bool FProjectTree::Rescope(FProjectTreeFolder& Folder, const std::string& Prefix, bool bHasText, std::string&& Text)
	{
		const std::shared_ptr<const FIgnoreScope> Above = Folder.Parent ? Folder.Parent->Scope : nullptr;
		std::shared_ptr<const FIgnoreScope> Scope = Above;
		if (bHasText)
		{
			// The same text under the same parent is the same rules: folders below need not be read again.
			const FIgnoreScope* const Old = Folder.Scope.get();
			const bool bIsSame = Old && Old->FolderLength == Prefix.size() && Old->Above == Above && Old->File.GetText() == Text;
			Scope = bIsSame ? Folder.Scope
							: std::make_shared<const FIgnoreScope>(FIgnoreScope{ Above, FIgnoreFile(std::move(Text)), Prefix.size() });
		}
		const bool bRescoped = Scope != Folder.Scope;
		Folder.Scope = Scope;
		return bRescoped;
	}

	void FProjectTree::ReadOne(FProjectTreeFolder& Folder)
	{
		const std::string Prefix = MakePrefix(Folder);
		const std::string Path = Prefix.substr(0, Prefix.size() - (Prefix.empty() ? 0 : 1));
		FFileDescriptor Opened = OpenFolderBeneath(RootFolder.Get(), Path.empty() ? "." : Path);
		Folder.bIsLost = false;
		Folder.bIsPartial = !Opened.IsOpen();
		Folder.Stamp = FDiskStamp();
		Folder.IgnoreStamp = FDiskStamp();
		std::string IgnoreText;
		std::vector<FFolderEntry> Entries;
		const bool bHasIgnoreFile = Opened.IsOpen() && ReadOpened(Folder, std::move(Opened), Entries, IgnoreText);
		const bool bRescoped = Rescope(Folder, Prefix, bHasIgnoreFile, std::move(IgnoreText));
		const std::shared_ptr<FFolderFiles> Files = Sort(Folder, Prefix, Entries);
		TakeFiles(Folder, Files);
		TakeFolders(Folder, Entries, bRescoped);
	}

	bool FProjectTree::ReadOpened(
		FProjectTreeFolder& Folder, FFileDescriptor Opened, std::vector<FFolderEntry>& OutEntries, std::string& OutIgnoreText)
	{
		// Watched first and read then, so that nothing falls in between.
		if (Folder.Watch < 0)
		{
			Folder.Watch = Watch->Add(Opened.Get());
			if (Folder.Watch >= 0)
			{
				Watched[Folder.Watch] = &Folder;
			}
			bHasUnwatched = bHasUnwatched || Folder.Watch < 0;
		}
		Folder.ReadAt = GetWallClock();
		struct stat Status = {};
		if (fstat(Opened.Get(), &Status) == 0)
		{
			Folder.Stamp = FDiskStamp::Of(Status);
		}
		bool bHasIgnoreFile = false;
		if (fstatat(Opened.Get(), IgnoreFileName, &Status, AT_SYMLINK_NOFOLLOW) == 0)
		{
			Folder.IgnoreStamp = FDiskStamp::Of(Status);
			bHasIgnoreFile = ReadIgnoreFile(Opened.Get(), OutIgnoreText);
		}
		Folder.bIsPartial = ReadFolderEntries(std::move(Opened), 2 * Limits.MaxEntries, bStop, OutEntries) != EFolderRead::Complete;
		return bHasIgnoreFile;
	}

	std::shared_ptr<FFolderFiles> FProjectTree::Sort(
		FProjectTreeFolder& Folder, const std::string& Prefix, std::vector<FFolderEntry>& Entries) const
	{
		// What the folder held so far makes room for what it holds now.
		const size_t OwnEntries = (Folder.Files ? static_cast<size_t>(Folder.Files->Num()) : 0) + Folder.Folders.size();
		const size_t Room = Limits.MaxEntries - std::min(Limits.MaxEntries, EntryCount - std::min(EntryCount, OwnEntries));
		const std::string Path = Prefix.substr(0, Prefix.size() - (Prefix.empty() ? 0 : 1));
		auto Files = std::make_shared<FFolderFiles>(HostFileNameFromBytes(Path));
		size_t Kept = 0;
		size_t Taken = 0;
		for (size_t Index = 0; Index < Entries.size(); ++Index)
		{
			FFolderEntry& Entry = Entries[Index];
			if (IsLeftOut(Folder, Prefix, Entry.Name, Entry.bIsFolder))
			{
				continue;
			}
			if (Taken >= Room || bStop)
			{
				Folder.bIsPartial = true;
				break;
			}
			++Taken;
			if (!Entry.bIsFolder)
			{
				Files->Add(Entry.Name);
			}
			else if (Kept++ != Index)
			{
				Entries[Kept - 1] = std::move(Entry);
			}
		}
		Entries.resize(Kept);
		return Files;
	}

	// Before the first list was complete there is nothing to compare with, and who follows takes the whole list.
	void FProjectTree::TakeFiles(FProjectTreeFolder& Folder, std::shared_ptr<FFolderFiles> Files)
	{
		const std::shared_ptr<const FFolderFiles> Old = Folder.Files;
		if (Old && Old->HasSameNames(*Files))
		{
			return;
		}
		Files->Finish();
		EntryCount += static_cast<size_t>(Files->Num());
		EntryCount -= Old ? static_cast<size_t>(Old->Num()) : 0;
		Folder.Files = Files;
		bListChanged = true;
		// Until the first whole reading there is nothing that a path could be new against.
		if (bMayBeMore)
		{
			return;
		}
		std::set<std::u16string_view> Before;
		for (int32 Index = 0; Old && Index < Old->Num(); ++Index)
		{
			Before.emplace(Old->GetName(Index).GetData(), static_cast<size_t>(Old->GetName(Index).Len()));
		}
		for (int32 Index = 0; Index < Files->Num(); ++Index)
		{
			const FStringView Name = Files->GetName(Index);
			if (Before.erase(std::u16string_view(Name.GetData(), static_cast<size_t>(Name.Len()))) == 0)
			{
				NoteWritten(Files->MakePath(Name));
			}
		}
		for (const std::u16string_view Name : Before)
		{
			NoteRemoved(Files->MakePath(FStringView(Name.data(), static_cast<int32>(Name.size()))));
		}
	}

	// Both lists are sorted by name, so one walk over both finds what stayed, what is new and what is gone. The same name with
	// another inode is another folder.
	void FProjectTree::TakeFolders(FProjectTreeFolder& Folder, const std::vector<FFolderEntry>& Entries, bool bRescoped)
	{
		std::vector<std::unique_ptr<FProjectTreeFolder>> Old = std::move(Folder.Folders);
		Folder.Folders.clear();
		Folder.Folders.reserve(Entries.size());
		// Both lists are sorted by name and are walked side by side: what only the old one has is gone, what only the new one has is added,
		// and what both have stays as it is, with all that was read below it, unless another folder took the name.
		size_t OldIndex = 0;
		for (const FFolderEntry& Entry : Entries)
		{
			for (; OldIndex < Old.size() && Old[OldIndex]->Name < Entry.Name; ++OldIndex)
			{
				Drop(*Old[OldIndex]);
			}
			if (OldIndex < Old.size() && Old[OldIndex]->Name == Entry.Name)
			{
				std::unique_ptr<FProjectTreeFolder> Same = std::move(Old[OldIndex++]);
				if (Same->Inode == Entry.Inode && !Same->bIsLost)
				{
					// Other rules hold below now, though nothing there has changed.
					if (bRescoped)
					{
						Enqueue(*Same);
					}
					Folder.Folders.push_back(std::move(Same));
					continue;
				}
				Drop(*Same);
			}
			auto Added = std::make_unique<FProjectTreeFolder>();
			Added->Parent = &Folder;
			Added->Name = Entry.Name;
			Added->Inode = Entry.Inode;
			Enqueue(*Added);
			Folder.Folders.push_back(std::move(Added));
			++EntryCount;
			bListChanged = true;
		}
		for (; OldIndex < Old.size(); ++OldIndex)
		{
			Drop(*Old[OldIndex]);
		}
	}

	// 1. The queue, deepest first. 2. Files that were written to and stand in no new list, since a list knows names alone.
	bool FProjectTree::Update()
	{
		if (bRootHasMoved)
		{
			SetRoot(RootPath);
		}
		while (!Queue.empty())
		{
			if (bStop)
			{
				return false;
			}
			FProjectTreeFolder* const Folder = Queue.back();
			Queue.pop_back();
			if (Folder != nullptr)
			{
				Folder->QueueIndex = -1;
				ReadOne(*Folder);
			}
		}
		// What was named by an event is looked at last, when the tree is up to date; a file that is gone again is not told.
		for (const std::string& Path : Touched)
		{
			struct stat Status = {};
			if (fstatat(RootFolder.Get(), Path.c_str(), &Status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(Status.st_mode))
			{
				NoteWritten(HostFileNameFromBytes(Path));
			}
		}
		Touched.clear();
		return !bStop;
	}

	bool FProjectTree::TakeListChanged()
	{
		return std::exchange(bListChanged, false);
	}

	// Folders in order of their paths, without recursion: a tree may be as deep as a path can be long.
	std::shared_ptr<const FProjectFileList> FProjectTree::MakeList() const
	{
		// Parts are shared with the tree and never change, so that a list of a million files costs a pointer for each folder.
		std::vector<std::shared_ptr<const FFolderFiles>> Lists;
		std::vector<const FProjectTreeFolder*> Pending;
		if (Root)
		{
			Pending.push_back(Root.get());
		}
		while (!Pending.empty())
		{
			const FProjectTreeFolder& Folder = *Pending.back();
			Pending.pop_back();
			Lists.push_back(Folder.Files);
			for (auto Child = Folder.Folders.rbegin(); Child != Folder.Folders.rend(); ++Child)
			{
				Pending.push_back(Child->get());
			}
		}
		return std::make_shared<const FProjectFileList>(std::move(Lists));
	}

	void FProjectTree::NoteWritten(FString&& Path)
	{
		if (!bMayBeMore)
		{
			Written.insert(ToKey(Path));
			bMayBeMore = Written.size() > MaxReportedPaths;
		}
	}

	void FProjectTree::NoteRemoved(FString&& Path)
	{
		if (!bMayBeMore)
		{
			Removed.insert(ToKey(Path));
			bMayBeMore = Removed.size() > MaxReportedPaths;
		}
	}

	// A file that went and came again was written.
	FProjectFileChanges FProjectTree::TakeChanges()
	{
		for (const std::u16string& Path : Written)
		{
			Removed.erase(Path);
		}
		FProjectFileChanges Changes;
		Changes.Written = ToPaths(Written);
		Changes.Removed = ToPaths(Removed);
		Changes.bMayBeMore = bMayBeMore;
		Written.clear();
		Removed.clear();
		bMayBeMore = false;
		return Changes;
	}
}
