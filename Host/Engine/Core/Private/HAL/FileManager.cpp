#include "HAL/FileManager.h"

#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/HostFileSystem.h"
#include "Host/HostSystemErrors.h"
#include "Logging/LogMacros.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// The file operations that the module asks for. Paths are taken apart by the host's rules, names stay bytes on the way
// to the system. Reading a folder follows no links out of it, and a removal takes no more than it was asked for.

DEFINE_LOG_CATEGORY_STATIC(LogFileManager, Log, All);

namespace
{
	struct FFolderEntry
	{
		std::string Name;
		bool bFolder = false;
		bool bLink = false;
	};

	// Names with a null in them come back empty and exist nowhere.
	bool GetInfo(const TCHAR* Path, struct stat& OutInfo)
	{
		const std::string Bytes = HostFileSystem::ToBytes(Path);
		return !Bytes.empty() && stat(Bytes.c_str(), &OutInfo) == 0;
	}

	/** What is in a folder, sorted by bytes. Empty when it cannot be read. */
	std::vector<FFolderEntry> ReadFolder(const std::string& Folder)
	{
		std::vector<FFolderEntry> Entries;
		const auto Stream = HostFileSystem::OpenFolder(Folder.empty() ? "." : Folder);
		if (!Stream)
		{
			return Entries;
		}
		while (const dirent* Read = readdir(Stream.get()))
		{
			FFolderEntry Entry;
			Entry.Name = Read->d_name;
			if (Entry.Name == "." || Entry.Name == "..")
			{
				continue;
			}
			Entry.bFolder = Read->d_type == DT_DIR;
			Entry.bLink = Read->d_type == DT_LNK;
			if (Read->d_type == DT_LNK || Read->d_type == DT_UNKNOWN)
			{
				struct stat Info;
				Entry.bLink = fstatat(dirfd(Stream.get()), Read->d_name, &Info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(Info.st_mode);
				Entry.bFolder = fstatat(dirfd(Stream.get()), Read->d_name, &Info, 0) == 0 && S_ISDIR(Info.st_mode);
			}
			Entries.push_back(std::move(Entry));
		}
		std::sort(Entries.begin(), Entries.end(), [](const FFolderEntry& A, const FFolderEntry& B) { return A.Name < B.Name; });
		return Entries;
	}

	std::string Join(const std::string& Folder, const std::string& Name)
	{
		return Folder.empty() || Folder.back() == '/' ? Folder + Name : Folder + "/" + Name;
	}

	bool IsWanted(const FFolderEntry& Entry, const FString& Name, const FString& Wildcard, bool bFiles, bool bDirectories)
	{
		return (Entry.bFolder ? bDirectories : bFiles) && (Wildcard.IsEmpty() || Name.MatchesWildcard(Wildcard));
	}

	bool RemoveEntry(const std::string& Path)
	{
		return HostRetryInterrupted([&Path] { return unlink(Path.c_str()); }) == 0;
	}

	bool RemoveFolder(const std::string& Path)
	{
		return HostRetryInterrupted([&Path] { return rmdir(Path.c_str()); }) == 0;
	}

	/** Removes what is below a folder and the folder. Deep trees do not use up the stack. */
	bool RemoveTree(const std::string& Folder)
	{
		std::vector<std::string> Open{ Folder };
		std::vector<std::string> Folders;
		bool bAll = true;
		while (!Open.empty())
		{
			const std::string Current = Open.back();
			Open.pop_back();
			Folders.push_back(Current);
			for (const FFolderEntry& Entry : ReadFolder(Current))
			{
				const std::string Path = Join(Current, Entry.Name);
				if (Entry.bFolder && !Entry.bLink)
				{
					Open.push_back(Path);
				}
				else if (!RemoveEntry(Path))
				{
					bAll = false;
				}
			}
		}
		// Each folder stands behind its parent in the list.
		for (std::size_t Index = Folders.size(); Index-- > 0;)
		{
			bAll = RemoveFolder(Folders[Index]) && bAll;
		}
		return bAll;
	}

	class FHostFileManager final : public IFileManager
	{
	public:
		bool FileExists(const TCHAR* Filename) override
		{
			struct stat Info;
			return GetInfo(Filename, Info) && !S_ISDIR(Info.st_mode);
		}

		bool DirectoryExists(const TCHAR* Directory) override
		{
			struct stat Info;
			return GetInfo(Directory, Info) && S_ISDIR(Info.st_mode);
		}

		int64 FileSize(const TCHAR* Filename) override
		{
			struct stat Info;
			return GetInfo(Filename, Info) && !S_ISDIR(Info.st_mode) ? int64(Info.st_size) : -1;
		}

		FDateTime GetTimeStamp(const TCHAR* Filename) override
		{
			struct stat Info;
			if (!GetInfo(Filename, Info))
			{
				return FDateTime::MinValue();
			}
			const int64 Ticks = FDateTime(1970, 1, 1).GetTicks() + int64(Info.st_mtim.tv_sec) * ETimespan::TicksPerSecond +
				int64(Info.st_mtim.tv_nsec) / 100;
			return FDateTime(Ticks);
		}

		bool IsReadOnly(const TCHAR* Filename) override
		{
			struct stat Info;
			return GetInfo(Filename, Info) &&
				(HostFileSystem::IsMarkedReadOnly(Info) || access(HostFileSystem::ToBytes(Filename).c_str(), W_OK) != 0);
		}

		bool MakeDirectory(const TCHAR* Path, bool Tree) override
		{
			const std::string Bytes = HostFileSystem::ToBytes(Path);
			struct stat Info;
			const bool bMade = !Bytes.empty() &&
				(Tree ? HostFileSystem::MakeFolders(Bytes)
					  : HostRetryInterrupted([&Bytes] { return mkdir(Bytes.c_str(), 0777); }) == 0 ||
							(errno == EEXIST && stat(Bytes.c_str(), &Info) == 0 && S_ISDIR(Info.st_mode)));
			UE_CLOG(!bMade, LogFileManager, Warning, TEXT("Cannot make the folder %s: %s"), Path, *HostFileSystem::Describe(errno));
			return bMade;
		}

		// 1. What is not there is deleted already, unless it has to be there. 2. No folders, and nothing that is marked as read only
		// unless that was asked for; a link has no marks of its own. 3. The removal.
		bool Delete(const TCHAR* Filename, bool RequireExists, bool EvenReadOnly, bool Quiet) override
		{
			const std::string Bytes = HostFileSystem::ToBytes(Filename);
			struct stat Info;
			if (Bytes.empty() || lstat(Bytes.c_str(), &Info) != 0)
			{
				UE_CLOG(RequireExists && !Quiet, LogFileManager, Warning, TEXT("Cannot delete %s: it does not exist"), Filename);
				return !RequireExists;
			}
			const bool bAllowed =
				!S_ISDIR(Info.st_mode) && (EvenReadOnly || S_ISLNK(Info.st_mode) || !HostFileSystem::IsMarkedReadOnly(Info));
			errno = S_ISDIR(Info.st_mode) ? EISDIR : EACCES;
			const bool bDeleted = bAllowed && RemoveEntry(Bytes);
			UE_CLOG(!bDeleted && !Quiet, LogFileManager, Warning, TEXT("Cannot delete %s: %s"), Filename, *HostFileSystem::Describe(errno));
			return bDeleted;
		}

		bool DeleteDirectory(const TCHAR* Path, bool RequireExists, bool Tree) override
		{
			std::string Bytes = HostFileSystem::ToBytes(Path);
			while (Bytes.size() > 1 && Bytes.back() == '/')
			{
				Bytes.pop_back(); // Behind a final slash a link would be followed.
			}
			struct stat Info;
			if (Bytes.empty() || lstat(Bytes.c_str(), &Info) != 0)
			{
				return !RequireExists;
			}
			const bool bDeleted = S_ISLNK(Info.st_mode) ? RemoveEntry(Bytes)
				: Tree && S_ISDIR(Info.st_mode)			? RemoveTree(Bytes)
														: RemoveFolder(Bytes);
			UE_CLOG(!bDeleted, LogFileManager, Warning, TEXT("Cannot delete the folder %s: %s"), Path, *HostFileSystem::Describe(errno));
			return bDeleted;
		}

		bool Move(const TCHAR* Dest, const TCHAR* Src, bool Replace, bool EvenIfReadOnly) override
		{
			const bool bMoved = TryMove(Dest, Src, Replace, EvenIfReadOnly);
			UE_CLOG(!bMoved, LogFileManager, Warning, TEXT("Cannot move %s to %s: %s"), Src, Dest, *HostFileSystem::Describe(errno));
			return bMoved;
		}

		void FindFiles(TArray<FString>& OutNames, const TCHAR* Wildcard, bool bFiles, bool bDirectories) override
		{
			OutNames.Reset();
			FString Path(Wildcard);
			FPaths::NormalizeFilename(Path);
			int32 Slash = INDEX_NONE;
			Path.FindLastChar(TEXT('/'), Slash);
			const FString Pattern = Path.RightChop(Slash + 1);
			for (const FFolderEntry& Entry : ReadFolder(HostFileSystem::ToBytes(Path.Left(Slash + 1))))
			{
				FString Name = HostFileNameFromBytes(Entry.Name);
				if (IsWanted(Entry, Name, Pattern, bFiles, bDirectories))
				{
					OutNames.Add(MoveTemp(Name));
				}
			}
		}

		void FindFiles(TArray<FString>& OutNames, const TCHAR* Directory, const TCHAR* Extension) override
		{
			FString Pattern = TEXT("*");
			if (Extension && *Extension)
			{
				Pattern += *Extension == TEXT('.') ? TEXT("") : TEXT(".");
				Pattern += Extension;
			}
			FindFiles(OutNames, *(FString(Directory) / Pattern), true, false);
		}

		// Folders in the order in which a walk by hand would meet them: those of a folder go onto the stack the wrong way round and
		// come off the right one. Links to folders are not entered, so there are no circles.
		void FindFilesRecursive(TArray<FString>& OutPaths, const TCHAR* StartDirectory, const TCHAR* Wildcard, bool bFiles,
			bool bDirectories, bool bClearFirst) override
		{
			if (bClearFirst)
			{
				OutPaths.Reset();
			}
			const FString Pattern(Wildcard);
			std::vector<std::string> Open{ HostFileSystem::ToBytes(StartDirectory) };
			while (!Open.empty())
			{
				const std::string Folder = Open.back();
				Open.pop_back();
				const std::size_t FirstOfFolder = Open.size();
				for (const FFolderEntry& Entry : ReadFolder(Folder))
				{
					const std::string Path = Join(Folder, Entry.Name);
					if (IsWanted(Entry, HostFileNameFromBytes(Entry.Name), Pattern, bFiles, bDirectories))
					{
						OutPaths.Add(HostFileNameFromBytes(Path));
					}
					if (Entry.bFolder && !Entry.bLink)
					{
						Open.push_back(Path);
					}
				}
				std::reverse(Open.begin() + std::ptrdiff_t(FirstOfFolder), Open.end());
			}
		}

	private:
		// 1. Whether both ends allow it. 2. A rename, which is whole or nothing. 3. Across disks a copy, whose own save is whole or
		// nothing, too.
		static bool TryMove(const TCHAR* Dest, const TCHAR* Src, bool Replace, bool EvenIfReadOnly)
		{
			const std::string From = HostFileSystem::ToBytes(Src);
			const std::string To = HostFileSystem::ToBytes(Dest);
			struct stat Info;
			struct stat Existing;
			errno = ENOENT;
			if (From.empty() || To.empty() || lstat(From.c_str(), &Info) != 0)
			{
				return false;
			}
			if (lstat(To.c_str(), &Existing) == 0)
			{
				errno = !Replace ? EEXIST : HostFileSystem::IsMarkedReadOnly(Existing) && !EvenIfReadOnly ? EACCES : 0;
				if (errno != 0)
				{
					return false;
				}
			}
			if (!HostFileSystem::MakeFolders(HostFileSystem::GetParent(To)))
			{
				return false;
			}
			if (HostRetryInterrupted([&From, &To] { return rename(From.c_str(), To.c_str()); }) == 0)
			{
				return true;
			}
			if (errno != EXDEV || !S_ISREG(Info.st_mode))
			{
				return false;
			}
			// To another disk: a copy first, then the old one goes.
			TArray<uint8> Bytes;
			FString Reason;
			return FFileHelper::LoadFileToArray(Bytes, Src) &&
				HostSaveFile(Dest, Bytes.GetData(), Bytes.Num(), FILEWRITE_EvenIfReadOnly, Reason) && RemoveEntry(From);
		}
	};
}

IFileManager& IFileManager::Get()
{
	static FHostFileManager Manager;
	return Manager;
}
