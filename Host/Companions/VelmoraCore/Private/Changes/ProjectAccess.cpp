#include "Changes/ProjectAccess.h"

#include "Changes/FileTraits.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>

#include "Host/HostSystemErrors.h"

namespace Velmora
{
	namespace
	{
		/** A folder above the path was renamed while it was resolved; the next try usually settles it. */
		constexpr int MaxResolveTries = 32;

		/** As many as the system follows in one path. */
		constexpr int MaxLinks = 40;
		constexpr int FolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

		/** The system has no openat2, or a filter refuses it: known after the first try. */
		std::atomic<bool> bIsResolveBeneathDenied = false;

		std::string DescribeError(int Error)
		{
			switch (Error)
			{
			case ENOENT:
				return "it cannot be found";
			case ENOTDIR:
				return "a part of its path is not a folder";
			case EISDIR:
				return "it is a folder";
			case EEXIST:
				return "something stands there already";
			case ENOTEMPTY:
				return "the folder is not empty";
			case EACCES:
			case EPERM:
				return "there is no permission";
			case EROFS:
				return "the disk is read-only";
			case ENOSPC:
				return "the disk is full";
			case EFBIG:
				return "the file would become too large";
			case EXDEV:
				return "it leads out of the project";
			case ELOOP:
				return "a link stands in its path";
			case ENAMETOOLONG:
				return "its name is too long";
			case EMFILE:
			case ENFILE:
				return "too many files are open";
			case EIO:
				return "the disk reports an error";
			default:
				return HostDescribeSystemError(Error);
			}
		}

		std::string DescribeLastError()
		{
			return DescribeError(errno);
		}

		FEntryInfo ToEntryInfo(const struct stat& Status)
		{
			FEntryInfo Info;
			Info.Kind = S_ISREG(Status.st_mode) ? EEntryKind::File
				: S_ISDIR(Status.st_mode)		? EEntryKind::Folder
				: S_ISLNK(Status.st_mode)		? EEntryKind::Link
												: EEntryKind::Other;
			Info.Mode = Status.st_mode & 07777;
			Info.Size = static_cast<uint64_t>(Status.st_size);
			Info.ModifiedAt = Status.st_mtim.tv_sec * 1'000'000'000 + Status.st_mtim.tv_nsec;
			Info.Device = Status.st_dev;
			Info.Number = Status.st_ino;
			Info.NameCount = Status.st_nlink;
			return Info;
		}

		bool IsBelow(std::string_view Path, std::string_view Folder)
		{
			return Path.substr(0, Folder.size()) == Folder && (Path.size() == Folder.size() || Path[Folder.size()] == '/' || Folder == "/");
		}

		/** One step of a walk: never through a link. */
		FFileDescriptor OpenStep(const FFileDescriptor& Folder, const std::string& Name, int Flags)
		{
			const auto Open = [&] { return openat(Folder.Get(), Name.c_str(), Flags | O_NOFOLLOW | O_CLOEXEC); };
			FFileDescriptor Opened(HostRetryInterrupted(Open));
			if (!Opened.IsOpen() && errno == ENOTDIR)
			{
				// A link is no folder either; which of the two it is deserves another word.
				struct stat Status;
				const bool bIsLink = fstatat(Folder.Get(), Name.c_str(), &Status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(Status.st_mode);
				errno = bIsLink ? ELOOP : ENOTDIR;
			}
			return Opened;
		}

		/** Why a name does not stand for what it did when it was looked at, or nothing. */
		std::string RefuseOther(const FFileDescriptor& Folder, const std::string& Name, const FEntryStamp& Known)
		{
			struct stat Status;
			const bool bIsThere = fstatat(Folder.Get(), Name.c_str(), &Status, AT_SYMLINK_NOFOLLOW) == 0;
			if (!bIsThere && errno != ENOENT)
			{
				return DescribeLastError();
			}
			const FEntryStamp Now = bIsThere ? ToEntryInfo(Status).GetStamp() : FEntryStamp();
			return Now == Known ? std::string() : "it was changed by somebody else at that moment";
		}
	}

	FProjectAccess::FProjectAccess(const std::string& InRoot, EAccessMethod InMethod)
		: Root(InRoot)
		, RootFolder(FFileDescriptor::Open(InRoot, FolderFlags))
		, OpenError(RootFolder.IsOpen() ? 0 : errno)
		, Method(InMethod)
	{
		char Resolved[PATH_MAX];
		RealRoot = realpath(Root.c_str(), Resolved) ? Resolved : Root;
		struct statx Status = {};
		if (statx(RootFolder.Get(), "", AT_EMPTY_PATH, STATX_INO | STATX_BTIME, &Status) == 0)
		{
			Identity.Device = makedev(Status.stx_dev_major, Status.stx_dev_minor);
			Identity.Number = Status.stx_ino;
			Identity.BornAt = (Status.stx_mask & STATX_BTIME) != 0 ? Status.stx_btime.tv_sec * 1'000'000'000 + Status.stx_btime.tv_nsec : 0;
		}
	}

	std::string FProjectAccess::DescribeRefusal() const
	{
		return IsOpen() ? std::string() : "the folder " + Root + " cannot be opened: " + DescribeError(OpenError);
	}

	std::string FProjectAccess::Normalise(std::string_view Path, std::string& OutRelative) const
	{
		OutRelative.clear();
		if (Path.find('\0') != std::string_view::npos)
		{
			return "it is no file name";
		}
		std::string_view Rest = Path;
		if (!Rest.empty() && Rest.front() == '/')
		{
			const std::string& Above = IsBelow(Rest, Root) ? Root : RealRoot;
			if (!IsBelow(Rest, Above))
			{
				return "it lies outside the project";
			}
			Rest.remove_prefix(Above.size());
		}
		if (!Rest.empty() && Rest.back() == '/')
		{
			return "it names a folder";
		}
		while (!Rest.empty())
		{
			const size_t Slash = Rest.find('/');
			const std::string_view Part = Rest.substr(0, Slash);
			Rest = Slash == std::string_view::npos ? std::string_view() : Rest.substr(Slash + 1);
			if (Part == "..")
			{
				return "its path holds \"..\", which may lead out of the project";
			}
			if (!Part.empty() && Part != ".")
			{
				OutRelative += (OutRelative.empty() ? "" : "/") + std::string(Part);
			}
		}
		return OutRelative.empty() ? "it names no file" : std::string();
	}

	std::string FProjectAccess::ResolveFolders(const std::string& Path) const
	{
		// What the system follows, or would if a folder at the end were made, can be followed by its text.
		std::string Name;
		if (!OpenParent(Path, Name).IsOpen() && errno != ENOENT)
		{
			return Path;
		}
		std::string Rest = Path.substr(0, Path.size() - Name.size());
		std::string Folder; // With the slash behind it; no link is in it.
		size_t GivenLength = Rest.size(); // What is in front of this many characters comes from a link.
		for (int Links = 0; !Rest.empty();)
		{
			const bool bIsGiven = Rest.size() <= GivenLength;
			const size_t Slash = Rest.find('/');
			const std::string Part = Rest.substr(0, Slash);
			Rest.erase(0, Slash + 1);
			if (Part.empty() || Part == ".")
			{
				continue;
			}
			if (Part == "..")
			{
				if (Folder.empty())
				{
					return Path;
				}
				Folder.erase(Folder.rfind('/', Folder.size() - 2) + 1);
				continue;
			}
			char Target[PATH_MAX];
			const ssize_t Length = readlinkat(RootFolder.Get(), (Folder + Part).c_str(), Target, sizeof(Target));
			if (Length < 0)
			{
				// A link to what is not there makes no folder.
				if (errno == ENOENT && !bIsGiven)
				{
					return Path;
				}
				Folder += Part + '/';
				continue;
			}
			if (Length == 0 || Target[0] == '/' || ++Links > MaxLinks)
			{
				return Path;
			}
			GivenLength = bIsGiven ? Rest.size() : GivenLength;
			Rest.insert(0, std::string(Target, static_cast<size_t>(Length)) + '/');
		}
		return Folder + Name;
	}

	FFileDescriptor FProjectAccess::OpenBeneath(const std::string& Path, int Flags) const
	{
		if (Path.empty())
		{
			return FFileDescriptor(fcntl(RootFolder.Get(), F_DUPFD_CLOEXEC, 0));
		}
		for (int Try = 0; Method == EAccessMethod::Automatic && !bIsResolveBeneathDenied && Try < MaxResolveTries; ++Try)
		{
			struct open_how How = {};
			How.flags = static_cast<uint64_t>(Flags | O_CLOEXEC);
			How.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
			const long Handle = syscall(SYS_openat2, RootFolder.Get(), Path.c_str(), &How, sizeof(How));
			if (Handle >= 0)
			{
				return FFileDescriptor(static_cast<int>(Handle));
			}
			if (errno == ENOSYS)
			{
				bIsResolveBeneathDenied = true;
			}
			else if (errno == EPERM)
			{
				// A filter answers like a file that may not be opened; the walk finds out which it is.
				break;
			}
			else if (errno != EAGAIN && errno != EINTR)
			{
				return FFileDescriptor();
			}
		}
		return OpenByWalk(Path, Flags);
	}

	FFileDescriptor FProjectAccess::OpenByWalk(const std::string& Path, int Flags) const
	{
		FFileDescriptor Folder(fcntl(RootFolder.Get(), F_DUPFD_CLOEXEC, 0));
		size_t Start = 0;
		for (size_t Slash = Path.find('/'); Slash != std::string::npos && Folder.IsOpen(); Slash = Path.find('/', Start))
		{
			Folder = OpenStep(Folder, Path.substr(Start, Slash - Start), FolderFlags);
			Start = Slash + 1;
		}
		if (!Folder.IsOpen())
		{
			return FFileDescriptor();
		}
		return OpenStep(Folder, Path.substr(Start), Flags);
	}

	FFileDescriptor FProjectAccess::OpenParent(const std::string& Path, std::string& OutName) const
	{
		const size_t Slash = Path.rfind('/');
		OutName = Slash == std::string::npos ? Path : Path.substr(Slash + 1);
		return OpenBeneath(Slash == std::string::npos ? std::string() : Path.substr(0, Slash), FolderFlags);
	}

	std::string FProjectAccess::Look(const std::string& Path, FEntryInfo& OutInfo) const
	{
		OutInfo = FEntryInfo();
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		struct stat Status;
		if (!Folder.IsOpen() || fstatat(Folder.Get(), Name.c_str(), &Status, AT_SYMLINK_NOFOLLOW) != 0)
		{
			return errno == ENOENT || errno == ENOTDIR ? std::string() : DescribeLastError();
		}
		OutInfo = ToEntryInfo(Status);
		if (OutInfo.Kind == EEntryKind::Link)
		{
			char Target[PATH_MAX];
			const ssize_t Length = readlinkat(Folder.Get(), Name.c_str(), Target, sizeof(Target));
			if (Length < 0)
			{
				return DescribeLastError();
			}
			OutInfo.LinkTarget.assign(Target, static_cast<size_t>(Length));
		}
		return std::string();
	}

	std::string FProjectAccess::Read(const std::string& Path, uint64_t MaxBytes, std::string& OutBytes, FEntryInfo& OutInfo) const
	{
		OutBytes.clear();
		OutInfo = FEntryInfo();
		const FFileDescriptor File = OpenBeneath(Path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
		struct stat Status;
		if (!File.IsOpen() || fstat(File.Get(), &Status) != 0)
		{
			// A socket cannot be opened at all.
			return errno == ENXIO ? "it is no regular file" : DescribeLastError();
		}
		OutInfo = ToEntryInfo(Status);
		if (OutInfo.Kind != EEntryKind::File)
		{
			return OutInfo.Kind == EEntryKind::Folder ? "it is a folder" : "it is no regular file";
		}
		OutInfo.Traits = FileTraits::Read(File.Get());
		// A file may grow while it is read; the bound holds all the same.
		if (OutInfo.Size <= MaxBytes)
		{
			if (!File.Read(OutBytes, MaxBytes + 1))
			{
				const std::string Problem = DescribeLastError();
				OutBytes.clear();
				return Problem;
			}
			if (OutBytes.size() <= MaxBytes)
			{
				return std::string();
			}
			OutBytes.clear();
		}
		return "it is larger than " + std::to_string(MaxBytes / (1024 * 1024)) + " MB";
	}

	std::string FProjectAccess::RefuseWriting(const std::string& Path) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		struct stat Status;
		if (!Folder.IsOpen() || fstatat(Folder.Get(), Name.c_str(), &Status, AT_SYMLINK_NOFOLLOW) != 0)
		{
			return DescribeLastError();
		}
		if (S_ISLNK(Status.st_mode))
		{
			return std::string();
		}
		// To the superuser everything is writable; a file marked as read-only is meant to stay all the same.
		const bool bIsMarked = (Status.st_mode & 0222) == 0;
		if (!bIsMarked && faccessat(Folder.Get(), Name.c_str(), W_OK, AT_EACCESS | AT_SYMLINK_NOFOLLOW) == 0)
		{
			return std::string();
		}
		return bIsMarked || errno == EACCES ? "it is read-only" : DescribeLastError();
	}

	std::string FProjectAccess::Write(const std::string& Path, std::string_view Bytes, const FWriteOptions& Options) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		if (!Folder.IsOpen())
		{
			return DescribeLastError();
		}
		const std::string Problem = WriteBeside(Folder, Name, Bytes, Options, bIsDurable ? EFlush::Wait : EFlush::None);
		return Problem.empty() ? PutInPlace(Folder, Name, Options) : Problem;
	}

	std::string FProjectAccess::WriteBeside(const std::string& Path, std::string_view Bytes, const FWriteOptions& Options) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		return Folder.IsOpen() ? WriteBeside(Folder, Name, Bytes, Options, EFlush::Begin) : DescribeLastError();
	}

	std::string FProjectAccess::WriteBeside(
		const FFileDescriptor& Folder, const std::string& Name, std::string_view Bytes, const FWriteOptions& Options, EFlush Flushing) const
	{
		struct stat Old = {};
		const bool bHasOld = fstatat(Folder.Get(), Name.c_str(), &Old, AT_SYMLINK_NOFOLLOW) == 0;
		if (bHasOld && S_ISDIR(Old.st_mode))
		{
			return DescribeError(EISDIR);
		}
		const char* const Temporary = Options.TemporaryName.c_str();
		const mode_t FirstMode = Options.bObeysMask ? Options.Mode : 0600;
		constexpr int NewFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
		const auto Make = [&] { return openat(Folder.Get(), Temporary, NewFileFlags, FirstMode); };
		FFileDescriptor File(HostRetryInterrupted(Make));
		if (!File.IsOpen() && errno == EEXIST && unlinkat(Folder.Get(), Temporary, 0) == 0)
		{
			// What an earlier failure could not clear away: nobody else has this name.
			File = FFileDescriptor(HostRetryInterrupted(Make));
		}
		if (!File.IsOpen())
		{
			return DescribeLastError();
		}
		bool bDone = File.Write(Bytes);
		if (bDone && !Options.bObeysMask)
		{
			const std::string Lost = Options.Traits ? FileTraits::Apply(File.Get(), *Options.Traits) : std::string();
			if (Options.OutLost)
			{
				*Options.OutLost = Lost;
			}
			bDone = fchmod(File.Get(), Options.Mode & 07777) == 0;
		}
		if (bDone && Flushing == EFlush::Begin)
		{
			sync_file_range(File.Get(), 0, 0, SYNC_FILE_RANGE_WRITE);
		}
		bDone = bDone && (Flushing != EFlush::Wait || File.Flush()) && File.Close();
		if (!bDone)
		{
			const int Error = errno;
			unlinkat(Folder.Get(), Temporary, 0);
			return DescribeError(Error);
		}
		return std::string();
	}

	std::string FProjectAccess::PutInPlace(const std::string& Path, const FWriteOptions& Options) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		return Folder.IsOpen() ? PutInPlace(Folder, Name, Options) : DescribeLastError();
	}

	std::string FProjectAccess::FlushFile(const std::string& Path) const
	{
		const FFileDescriptor File = OpenBeneath(Path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
		return File.IsOpen() && File.Flush() ? std::string() : DescribeLastError();
	}

	void FProjectAccess::FlushFolderOf(const std::string& Path) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		(void)Folder.Flush();
	}

	void FProjectAccess::FlushAll() const
	{
		syncfs(RootFolder.Get());
	}

	std::string FProjectAccess::MakeLink(const std::string& Path, const std::string& Target, const FWriteOptions& Options) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		const char* const Temporary = Options.TemporaryName.c_str();
		const auto Make = [&] { return Folder.IsOpen() && symlinkat(Target.c_str(), Folder.Get(), Temporary) == 0; };
		if (!Make() && (errno != EEXIST || unlinkat(Folder.Get(), Temporary, 0) != 0 || !Make()))
		{
			return DescribeLastError();
		}
		return PutInPlace(Folder, Name, Options);
	}

	std::string FProjectAccess::PutInPlace(const FFileDescriptor& Folder, const std::string& Name, const FWriteOptions& Options) const
	{
		const char* const Temporary = Options.TemporaryName.c_str();
		const std::string Refusal = Options.Replaced ? RefuseOther(Folder, Name, *Options.Replaced) : std::string();
		if (!Refusal.empty())
		{
			unlinkat(Folder.Get(), Temporary, 0);
			return Refusal;
		}
		int Result = renameat2(Folder.Get(), Temporary, Folder.Get(), Name.c_str(), Options.bMayReplace ? 0 : RENAME_NOREPLACE);
		if (Result != 0 && errno == EINVAL && !Options.bMayReplace)
		{
			// A file system without that promise; a link gives the same where there are links.
			Result = linkat(Folder.Get(), Temporary, Folder.Get(), Name.c_str(), 0);
			if (Result == 0)
			{
				unlinkat(Folder.Get(), Temporary, 0);
			}
		}
		if (Result != 0)
		{
			const int Error = errno;
			unlinkat(Folder.Get(), Temporary, 0);
			return DescribeError(Error);
		}
		Flush(Folder);
		return std::string();
	}

	std::string FProjectAccess::LinkTo(const std::string& Path, const std::string& OtherName, const std::string& TemporaryName) const
	{
		std::string Name;
		std::string Other;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		const FFileDescriptor OtherFolder = Folder.IsOpen() ? OpenParent(OtherName, Other) : FFileDescriptor();
		const auto Link = [&] { return linkat(Folder.Get(), Name.c_str(), OtherFolder.Get(), TemporaryName.c_str(), 0) == 0; };
		if (!OtherFolder.IsOpen() ||
			(!Link() && (errno != EEXIST || unlinkat(OtherFolder.Get(), TemporaryName.c_str(), 0) != 0 || !Link())))
		{
			return DescribeLastError();
		}
		FWriteOptions Options;
		Options.TemporaryName = TemporaryName;
		return PutInPlace(OtherFolder, Other, Options);
	}

	std::string FProjectAccess::Remove(const std::string& Path, const FEntryStamp* Removed) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		const std::string Refusal = Folder.IsOpen() && Removed ? RefuseOther(Folder, Name, *Removed) : std::string();
		if (!Refusal.empty())
		{
			return Refusal;
		}
		if (!Folder.IsOpen() || unlinkat(Folder.Get(), Name.c_str(), 0) != 0)
		{
			return DescribeLastError();
		}
		Flush(Folder);
		return std::string();
	}

	std::vector<std::string> FProjectAccess::ListMissingParents(const std::string& Path) const
	{
		std::vector<std::string> Missing;
		for (size_t Slash = Path.rfind('/'); Slash != std::string::npos && Slash > 0; Slash = Path.rfind('/', Slash - 1))
		{
			const std::string Folder = Path.substr(0, Slash);
			FEntryInfo Info;
			if (!Look(Folder, Info).empty() || Info.Kind != EEntryKind::Absent)
			{
				break;
			}
			Missing.insert(Missing.begin(), Folder);
		}
		return Missing;
	}

	std::string FProjectAccess::MakeParents(const std::string& Path, std::vector<std::string>& OutMade) const
	{
		for (const std::string& Missing : ListMissingParents(Path))
		{
			std::string Name;
			const FFileDescriptor Folder = OpenParent(Missing, Name);
			if (!Folder.IsOpen() || mkdirat(Folder.Get(), Name.c_str(), 0777) != 0)
			{
				return DescribeLastError();
			}
			OutMade.push_back(Missing);
			Flush(Folder);
		}
		return std::string();
	}

	std::string FProjectAccess::RemoveFolder(const std::string& Path) const
	{
		std::string Name;
		const FFileDescriptor Folder = OpenParent(Path, Name);
		if (!Folder.IsOpen() || unlinkat(Folder.Get(), Name.c_str(), AT_REMOVEDIR) != 0)
		{
			return DescribeLastError();
		}
		Flush(Folder);
		return std::string();
	}

	void FProjectAccess::Flush(const FFileDescriptor& Folder) const
	{
		if (bIsDurable)
		{
			// Not every file system can; the bytes are safe by then.
			(void)Folder.Flush();
		}
	}
}
