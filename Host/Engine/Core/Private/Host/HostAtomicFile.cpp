#include "Host/HostAtomicFile.h"

#include "HAL/FileManager.h"
#include "Host/HostFileSystem.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{
	/** An open file that is closed at the end. */
	class FDescriptor
	{
	public:
		explicit FDescriptor(int InFile) : File(InFile) {}
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

	bool AppendInPlace(const std::string& Path, const void* Data, int64 Size)
	{
		FDescriptor File(open(Path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
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

	bool ReplaceWhole(const std::string& Path, const void* Data, int64 Size, const struct stat* Existing, bool bMayReplace)
	{
		static std::atomic<uint32> Counter{ 0 };
		const std::string Folder = HostFileSystem::GetParent(Path);
		// A short name of its own: the file's name may already be as long as names can be. One that is taken was left by a
		// process of the same number that came to a sudden end.
		std::string Temporary;
		int Opened = -1;
		do
		{
			Temporary = Folder + "/.save-" + std::to_string(getpid()) + "-" + std::to_string(Counter.fetch_add(1)) + ".tmp";
			Opened = open(Temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
		} while (Opened < 0 && errno == EEXIST);
		FDescriptor File(Opened);
		if (!File.IsOpen())
		{
			return false;
		}
		bool bDone = WriteAll(File.Get(), Data, Size);
		if (bDone && Existing)
		{
			bDone = fchmod(File.Get(), Existing->st_mode & 07777) == 0;
		}
		bDone = bDone && fsync(File.Get()) == 0;
		bDone = bDone && File.Close();
		bDone = bDone
			&& (bMayReplace ? rename(Temporary.c_str(), Path.c_str())
							: renameat2(AT_FDCWD, Temporary.c_str(), AT_FDCWD, Path.c_str(), RENAME_NOREPLACE))
				== 0;
		if (!bDone)
		{
			const int Error = errno;
			unlink(Temporary.c_str());
			errno = Error;
			return false;
		}
		FlushFolder(Folder);
		return true;
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
		if (WriteFlags & FILEWRITE_Append)
		{
			return AppendInPlace(Path, Data, Size);
		}
		return ReplaceWhole(Path, Data, Size, bExists ? &Info : nullptr, !(WriteFlags & FILEWRITE_NoReplaceExisting));
	}
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
