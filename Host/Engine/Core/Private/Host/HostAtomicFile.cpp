#include "Host/HostAtomicFile.h"

#include "HAL/FileManager.h"
#include "Host/HostFileSystem.h"
#include "Templates/UniquePtr.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace
{
	/** An open file that is closed at the end. */
	class FDescriptor
	{
	public:
		explicit FDescriptor(int InFile)
			: File(InFile)
		{
		}
		~FDescriptor() { Close(); }
		FDescriptor(const FDescriptor&) = delete;
		FDescriptor& operator=(const FDescriptor&) = delete;
		bool IsOpen() const { return File >= 0; }
		int Get() const { return File; }
		/** Some file systems report a full disk only here. */
		bool Close()
		{
			const int Closing = File;
			File = -1;
			return Closing < 0 || close(Closing) == 0;
		}

	private:
		int File;
	};

	bool WriteAll(int File, const void* Data, int64 Size)
	{
		const char* Position = static_cast<const char*>(Data);
		while (Size > 0)
		{
			const ssize_t Written = write(File, Position, std::size_t(Size));
			if (Written < 0 && errno != EINTR)
			{
				return false;
			}
			if (Written > 0)
			{
				Position += Written;
				Size -= Written;
			}
		}
		return true;
	}

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
		const FDescriptor File(open(Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
		if (File.IsOpen())
		{
			fsync(File.Get());
		}
	}

	bool WriteStraight(const std::string& Path, const void* Data, int64 Size)
	{
		// Without waiting for a reader at the other end of a pipe.
		FDescriptor File(open(Path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK));
		return File.IsOpen() && WriteAll(File.Get(), Data, Size) && File.Close();
	}

	bool AppendInPlace(const std::string& Path, const void* Data, int64 Size, mode_t NewMode)
	{
		FDescriptor File(open(Path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, NewMode));
		struct stat Before;
		if (!File.IsOpen() || fstat(File.Get(), &Before) != 0)
		{
			return false;
		}
		if (WriteAll(File.Get(), Data, Size) && fsync(File.Get()) == 0)
		{
			return File.Close();
		}
		const int Error = errno;
		if (ftruncate(File.Get(), Before.st_size) != 0)
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
			int Opened = bCanBeNamed ? open(Folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, Mode) : -1;
			while (Opened < 0)
			{
				Temporary = MakeName();
				Opened = open(Temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, Mode);
				if (Opened < 0 && errno != EEXIST)
				{
					Temporary.clear();
					break;
				}
			}
			File = MakeUnique<FDescriptor>(Opened);
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
		bool IsOpen() const { return File->IsOpen(); }
		int Get() const { return File->Get(); }
		bool TakeName(const std::string& Path, bool bMayReplace)
		{
			// A link cannot replace a file, so a nameless one becomes a hidden one first.
			while (Temporary.empty())
			{
				Temporary = MakeName();
				const std::string Open = "/proc/self/fd/" + std::to_string(Get());
				if (linkat(AT_FDCWD, Open.c_str(), AT_FDCWD, Temporary.c_str(), AT_SYMLINK_FOLLOW) != 0)
				{
					Temporary.clear();
					if (errno != EEXIST)
					{
						return false;
					}
				}
			}
			const bool bNamed = File->Close() &&
				(bMayReplace ? rename(Temporary.c_str(), Path.c_str())
							 : renameat2(AT_FDCWD, Temporary.c_str(), AT_FDCWD, Path.c_str(), RENAME_NOREPLACE)) == 0;
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
		TUniquePtr<FDescriptor> File;
	};

	/** @param WriteContents  Fills the open file; false with errno on failure. */
	bool ReplaceWhole(
		const std::string& Path, TFunctionRef<bool(int)> WriteContents, const struct stat* Existing, mode_t NewMode, bool bMayReplace)
	{
		const std::string Folder = HostFileSystem::GetParent(Path);
		// What replaces a file that others may not read must not be readable while it is made.
		FUnfinishedFile File(Folder, Existing ? 0600 : NewMode);
		const bool bDone = File.IsOpen() && WriteContents(File.Get()) &&
			(!Existing || fchmod(File.Get(), Existing->st_mode & 07777) == 0) && fsync(File.Get()) == 0 && File.TakeName(Path, bMayReplace);
		if (bDone)
		{
			FlushFolder(Folder);
		}
		return bDone;
	}

	bool SaveBytes(std::string Path, const void* Data, int64 Size, uint32 WriteFlags)
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
				return WriteStraight(Path, Data, Size);
			}
		}
		const mode_t NewMode = (WriteFlags & HostWritePrivate) ? 0600 : 0666;
		if (WriteFlags & FILEWRITE_Append)
		{
			return AppendInPlace(Path, Data, Size, NewMode);
		}
		const auto WriteContents = [Data, Size](int File) { return WriteAll(File, Data, Size); };
		return ReplaceWhole(Path, WriteContents, bExists ? &Info : nullptr, NewMode, !(WriteFlags & FILEWRITE_NoReplaceExisting));
	}

	bool CopyContents(int From, int To, int64 Total, TFunctionRef<bool(int64, int64)> OnProgress)
	{
		std::vector<char> Buffer(1024 * 1024);
		int64 Done = 0;
		for (;;)
		{
			const ssize_t Count = read(From, Buffer.data(), Buffer.size());
			if (Count < 0 && errno == EINTR)
			{
				continue;
			}
			if (Count <= 0)
			{
				// One that became shorter meanwhile is not whole.
				errno = Count < 0 ? errno : EIO;
				return Count == 0 && Done >= Total;
			}
			if (!WriteAll(To, Buffer.data(), Count))
			{
				return false;
			}
			Done += Count;
			if (!OnProgress(Done, Total))
			{
				errno = ECANCELED;
				return false;
			}
		}
	}
}

bool HostCopyFile(const FString& Source, const FString& Target, uint32 WriteFlags, TFunctionRef<bool(int64 Done, int64 Total)> OnProgress,
	FString& OutReason)
{
	OutReason.Reset();
	const std::string From = HostFileSystem::ToBytes(Source);
	std::string To = HostFileSystem::ToBytes(Target);
	errno = EINVAL;
	// Without waiting for the other end of a pipe.
	const FDescriptor File(From.empty() || To.empty() ? -1 : open(From.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
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
	const auto WriteContents = [&File, &Info, &OnProgress](int Opened)
	{ return CopyContents(File.Get(), Opened, int64(Info.st_size), OnProgress); };
	const mode_t NewMode = (WriteFlags & HostWritePrivate) ? 0600 : 0666;
	if (!bMade || !ReplaceWhole(To, WriteContents, bExists ? &Existing : nullptr, NewMode, !(WriteFlags & FILEWRITE_NoReplaceExisting)))
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
	if (!SaveBytes(Bytes, Data, Size, WriteFlags))
	{
		OutReason = HostFileSystem::Describe(errno);
		return false;
	}
	return true;
}
