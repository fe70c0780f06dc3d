#include "Host/HostAtomicFile.h"

#include "HAL/FileManager.h"
#include "Host/FileDescriptor.h"
#include "Host/HostFileSystem.h"
#include "Host/HostSystemErrors.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <string>
#include <unistd.h>

// Saving so that there is always a whole file: the old one or the new one, whatever happens in between.
//
// 1. The new contents go into a file without a name, or a hidden one where the file system knows no nameless ones. 2.
// They are flushed to the disk. 3. The file takes the name in one step of the file system. 4. The folder is flushed.
//
// A sudden end before step 3 leaves the old file; with a nameless file it leaves nothing else. Links are followed, so
// that a link stays a link. What is no plain file (a pipe, a device) is written straight, since nothing can replace it;
// text that is appended is cut back to its old length when it could not be written whole.

namespace
{
	/** The only folder in which something may be saved; empty for everywhere. */
	struct FSaveLimit
	{
		std::mutex Mutex;
		std::string Folder;
	};

	FSaveLimit& GetSaveLimit()
	{
		static FSaveLimit Limit;
		return Limit;
	}

	/** By the names alone: who limits saves gives a folder that nobody else puts links into. */
	bool IsBeyondLimit(const std::string& Path)
	{
		FSaveLimit& Limit = GetSaveLimit();
		const std::lock_guard<std::mutex> Lock(Limit.Mutex);
		return !Limit.Folder.empty() && std::filesystem::path(Path).lexically_normal().native().rfind(Limit.Folder + '/', 0) != 0;
	}

	constexpr const TCHAR* BeyondLimit = TEXT("nothing is saved outside of the folder that this run was given");

	/** The file behind links, also when it does not exist yet. False with errno when the links never end. */
	bool FollowLinks(std::string& Path)
	{
		for (int32 Step = 0; Step < 40; ++Step)
		{
			std::string Target(4096, '\0');
			const ssize_t Length = readlink(Path.c_str(), Target.data(), Target.size());
			if (Length < 0)
			{
				return true;
			}
			Target.resize(std::size_t(Length));
			Path = !Target.empty() && Target[0] == '/' ? Target : HostFileSystem::GetParent(Path) + "/" + Target;
		}
		errno = ELOOP;
		return false;
	}

	/** Makes the folder entry itself last. Not every file system can, and the data are safe by then. */
	void FlushFolder(const std::string& Folder)
	{
		const FFileDescriptor File = FFileDescriptor::Open(Folder, O_RDONLY | O_DIRECTORY);
		(void)(File.IsOpen() && File.Flush());
	}

	bool WriteStraight(const std::string& Path, std::string_view Bytes)
	{
		// Without waiting for a reader at the other end of a pipe.
		FFileDescriptor File = FFileDescriptor::Open(Path, O_WRONLY | O_NONBLOCK);
		return File.IsOpen() && File.Write(Bytes) && File.Close();
	}

	// Replacing the whole of a long log for each line would be worse than the risk, and what is lost is the new end
	// alone.
	bool AppendInPlace(const std::string& Path, std::string_view Bytes, mode_t NewMode)
	{
		FFileDescriptor File = FFileDescriptor::Open(Path, O_WRONLY | O_CREAT | O_APPEND, NewMode);
		struct stat Before;
		if (!File.IsOpen() || fstat(File.Get(), &Before) != 0)
		{
			return false;
		}
		if (File.Write(Bytes) && File.Flush())
		{
			return File.Close();
		}
		const int Error = errno;
		if (HostRetryInterrupted([&File, &Before] { return ftruncate(File.Get(), Before.st_size); }) != 0)
		{
			return false;
		}
		errno = Error;
		return false;
	}

	/**
	 * A file that is being made: without a name where the file system can do that, so that even a sudden end leaves nothing
	 * behind, else under a hidden one. It goes away unless it takes its name.
	 */
	class FUnfinishedFile
	{
	public:
		FUnfinishedFile(const std::string& InFolder, mode_t Mode)
			: Folder(InFolder)
		{
			// A nameless file gets its name through this folder.
			static const bool bCanBeNamed = access("/proc/self/fd", X_OK) == 0;
			File = bCanBeNamed ? FFileDescriptor::Open(Folder, O_WRONLY | O_TMPFILE, Mode) : FFileDescriptor();
			while (!File.IsOpen())
			{
				Temporary = MakeName();
				File = FFileDescriptor::Open(Temporary, O_WRONLY | O_CREAT | O_EXCL, Mode);
				if (!File.IsOpen() && errno != EEXIST)
				{
					Temporary.clear();
					break;
				}
			}
		}
		~FUnfinishedFile()
		{
			if (!Temporary.empty())
			{
				const int Error = errno;
				unlink(Temporary.c_str());
				errno = Error;
			}
		}
		FUnfinishedFile(const FUnfinishedFile&) = delete;
		FUnfinishedFile& operator=(const FUnfinishedFile&) = delete;
		const FFileDescriptor& Get() const { return File; }
		bool TakeName(const std::string& Path, bool bMayReplace)
		{
			// A link cannot replace a file, so a nameless one becomes a hidden one first.
			while (Temporary.empty())
			{
				Temporary = MakeName();
				const std::string Open = "/proc/self/fd/" + std::to_string(File.Get());
				const auto Link = [this, &Open] { return linkat(AT_FDCWD, Open.c_str(), AT_FDCWD, Temporary.c_str(), AT_SYMLINK_FOLLOW); };
				if (HostRetryInterrupted(Link) != 0)
				{
					Temporary.clear();
					if (errno != EEXIST)
					{
						return false;
					}
				}
			}
			const auto Rename = [this, &Path, bMayReplace]
			{ return renameat2(AT_FDCWD, Temporary.c_str(), AT_FDCWD, Path.c_str(), bMayReplace ? 0 : RENAME_NOREPLACE); };
			const bool bNamed = File.Close() && HostRetryInterrupted(Rename) == 0;
			if (bNamed)
			{
				Temporary.clear();
			}
			return bNamed;
		}

	private:
		/**
		 * A short name of its own: the file's name may already be as long as names can be. One that is taken was left by a
		 * process of the same number that came to a sudden end.
		 */
		std::string MakeName() const
		{
			static std::atomic<uint32> Counter{ 0 };
			return Folder + "/.save-" + std::to_string(getpid()) + "-" + std::to_string(Counter.fetch_add(1)) + ".tmp";
		}

		const std::string Folder;
		/** Empty while the file has no name. */
		std::string Temporary;
		FFileDescriptor File;
	};

	/** @param WriteContents  Fills the open file; false with errno on failure. */
	bool ReplaceWhole(
		const std::string& Path, TFunctionRef<bool(const FFileDescriptor&)> WriteContents, const struct stat* Existing, uint32 WriteFlags)
	{
		const std::string Folder = HostFileSystem::GetParent(Path);
		const bool bPrivate = (WriteFlags & HostWritePrivate) != 0;
		// What replaces a file that others may not read must not be readable while it is made.
		FUnfinishedFile File(Folder, Existing || bPrivate ? 0600 : 0666);
		// A file of our own is nobody else's, whatever the mask and whatever it was before.
		const mode_t Mode = !Existing ? 0600 : Existing->st_mode & (bPrivate ? 0700 : 07777);
		const auto TakeMode = [&] { return Existing || bPrivate ? fchmod(File.Get().Get(), Mode) : 0; };
		const bool bDone = File.Get().IsOpen() && WriteContents(File.Get()) && HostRetryInterrupted(TakeMode) == 0 && File.Get().Flush() &&
			File.TakeName(Path, (WriteFlags & FILEWRITE_NoReplaceExisting) == 0);
		if (bDone)
		{
			FlushFolder(Folder);
		}
		return bDone;
	}

	// Refusals first, in the words of the system (errno), before anything is made.
	bool SaveBytes(std::string Path, std::string_view Bytes, uint32 WriteFlags)
	{
		if (!FollowLinks(Path) || !HostFileSystem::MakeFolders(HostFileSystem::GetParent(Path)))
		{
			return false;
		}
		struct stat Info;
		const bool bExists = stat(Path.c_str(), &Info) == 0;
		if (bExists)
		{
			const bool bReadOnly = HostFileSystem::IsMarkedReadOnly(Info) && !(WriteFlags & FILEWRITE_EvenIfReadOnly);
			errno = S_ISDIR(Info.st_mode) ? EISDIR : (WriteFlags & FILEWRITE_NoReplaceExisting) ? EEXIST : bReadOnly ? EACCES : 0;
			if (errno != 0)
			{
				return false;
			}
			if (!S_ISREG(Info.st_mode))
			{
				return WriteStraight(Path, Bytes);
			}
		}
		if (WriteFlags & FILEWRITE_Append)
		{
			return AppendInPlace(Path, Bytes, (WriteFlags & HostWritePrivate) ? 0600 : 0666);
		}
		const auto WriteContents = [Bytes](const FFileDescriptor& File) { return File.Write(Bytes); };
		return ReplaceWhole(Path, WriteContents, bExists ? &Info : nullptr, WriteFlags);
	}

	// In pieces, so that a large copy can be watched and cancelled.
	bool CopyContents(const FFileDescriptor& From, const FFileDescriptor& To, int64 Total, TFunctionRef<bool(int64, int64)> OnProgress)
	{
		constexpr uint64 PieceBytes = 1024 * 1024;
		std::string Piece;
		int64 Done = 0;
		for (;;)
		{
			Piece.clear();
			if (!From.Read(Piece, PieceBytes))
			{
				return false;
			}
			if (Piece.empty())
			{
				// One that became shorter meanwhile is not whole.
				errno = EIO;
				return Done >= Total;
			}
			if (!To.Write(Piece))
			{
				return false;
			}
			Done += static_cast<int64>(Piece.size());
			if (!OnProgress(Done, Total))
			{
				errno = ECANCELED;
				return false;
			}
		}
	}
}

// The size that counts is the one at the beginning: a file that grows meanwhile is copied as far as it then is.
bool HostCopyFile(const FString& Source, const FString& Target, uint32 WriteFlags, TFunctionRef<bool(int64 Done, int64 Total)> OnProgress,
	FString& OutReason)
{
	OutReason.Reset();
	const std::string From = HostFileSystem::ToBytes(Source);
	std::string To = HostFileSystem::ToBytes(Target);
	if (IsBeyondLimit(To))
	{
		OutReason = BeyondLimit;
		return false;
	}
	errno = EINVAL;
	// Without waiting for the other end of a pipe.
	const FFileDescriptor File = From.empty() || To.empty() ? FFileDescriptor() : FFileDescriptor::Open(From, O_RDONLY | O_NONBLOCK);
	struct stat Info;
	if (!File.IsOpen() || fstat(File.Get(), &Info) != 0)
	{
		OutReason = FString::Printf(TEXT("%s: %s"), *Source, *HostFileSystem::Describe(errno));
		return false;
	}
	if (!S_ISREG(Info.st_mode))
	{
		OutReason = FString::Printf(TEXT("%s is no file"), *Source);
		return false;
	}
	struct stat Existing;
	const bool bMade = FollowLinks(To) && HostFileSystem::MakeFolders(HostFileSystem::GetParent(To));
	const bool bExists = bMade && stat(To.c_str(), &Existing) == 0;
	const auto WriteContents = [&File, &Info, &OnProgress](const FFileDescriptor& Opened)
	{ return CopyContents(File, Opened, int64(Info.st_size), OnProgress); };
	if (!bMade || !ReplaceWhole(To, WriteContents, bExists ? &Existing : nullptr, WriteFlags))
	{
		OutReason = HostFileSystem::Describe(errno);
		return false;
	}
	return true;
}

bool HostSaveFile(const FString& Path, const void* Data, int64 Size, uint32 WriteFlags, FString& OutReason)
{
	OutReason.Reset();
	const std::string Bytes = HostFileSystem::ToBytes(Path);
	if (Bytes.empty())
	{
		OutReason = TEXT("not a valid file name");
		return false;
	}
	if (IsBeyondLimit(Bytes))
	{
		OutReason = BeyondLimit;
		return false;
	}
	if (!SaveBytes(Bytes, std::string_view(static_cast<const char*>(Data), static_cast<std::size_t>(Size)), WriteFlags))
	{
		OutReason = HostFileSystem::Describe(errno);
		return false;
	}
	return true;
}

void HostLimitSaves(const FString& Folder)
{
	FSaveLimit& Limit = GetSaveLimit();
	const std::lock_guard<std::mutex> Lock(Limit.Mutex);
	Limit.Folder = std::filesystem::path(HostFileSystem::ToBytes(Folder)).lexically_normal().native();
	while (Limit.Folder.size() > 1 && Limit.Folder.back() == '/')
	{
		Limit.Folder.pop_back();
	}
}

bool HostMaySave(const FString& Path, FString& OutReason)
{
	const bool bMay = !IsBeyondLimit(HostFileSystem::ToBytes(Path));
	OutReason = bMay ? FString() : FString(BeyondLimit);
	return bMay;
}

namespace
{
	/** Of a save that came to a sudden end: its process is gone, or has had more than enough time. */
	bool IsSaveLeftover(const std::string& Path, std::string_view Name)
	{
		constexpr std::time_t LongestSaveSeconds = 3600;
		int Process = 0;
		int Length = 0;
		struct stat Info;
		if (std::sscanf(std::string(Name).c_str(), ".save-%d-%*u.tmp%n", &Process, &Length) != 1 ||
			static_cast<std::size_t>(Length) != Name.size() || lstat(Path.c_str(), &Info) != 0 || !S_ISREG(Info.st_mode))
		{
			return false;
		}
		const bool bIsGone = Process > 0 && kill(Process, 0) != 0 && errno == ESRCH;
		return bIsGone || std::time(nullptr) - Info.st_mtime > LongestSaveSeconds;
	}

	/** Takes everybody else's rights to something of the user's away. */
	void TakeOthersRights(const std::string& Path, bool bFollowLink)
	{
		struct stat Info;
		const int Found = bFollowLink ? stat(Path.c_str(), &Info) : lstat(Path.c_str(), &Info);
		if (Found == 0 && (S_ISREG(Info.st_mode) || S_ISDIR(Info.st_mode)) && (Info.st_mode & 077) != 0 && Info.st_uid == geteuid())
		{
			HostRetryInterrupted([&Path, &Info] { return chmod(Path.c_str(), Info.st_mode & 0700); });
		}
	}

	void TidyBelow(const std::string& Folder, int32 Depth, bool bMakePrivate)
	{
		const auto Stream = HostFileSystem::OpenFolder(Folder);
		while (const dirent* const Entry = Stream ? readdir(Stream.get()) : nullptr)
		{
			const std::string_view Name(Entry->d_name);
			if (Name == "." || Name == "..")
			{
				continue;
			}
			const std::string Path = Folder + "/" + Entry->d_name;
			if (IsSaveLeftover(Path, Name))
			{
				HostRetryInterrupted([&Path] { return unlink(Path.c_str()); });
				continue;
			}
			if (bMakePrivate)
			{
				TakeOthersRights(Path, false);
			}
			if (Entry->d_type == DT_DIR && Depth > 0)
			{
				TidyBelow(Path, Depth - 1, bMakePrivate);
			}
		}
	}
}

void HostTidyFolder(const FString& Folder, int32 Depth, bool bMakePrivate)
{
	const std::string Bytes = HostFileSystem::ToBytes(Folder);
	if (Bytes.empty())
	{
		return;
	}
	if (bMakePrivate)
	{
		TakeOthersRights(Bytes, true); // A folder that the user has put elsewhere is theirs alone there, too.
	}
	TidyBelow(Bytes, Depth, bMakePrivate);
}
