#include "FileCache/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Host/HostSystemErrors.h"

namespace Velmora
{
	namespace
	{
		constexpr int FolderOpenFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

		unsigned char GetEntryKind(int Folder, const dirent& Entry)
		{
			// Some file systems do not tell with the name.
			if (Entry.d_type != DT_UNKNOWN)
			{
				return Entry.d_type;
			}
			struct stat Status = {};
			if (fstatat(Folder, Entry.d_name, &Status, AT_SYMLINK_NOFOLLOW) != 0)
			{
				return DT_UNKNOWN;
			}
			return S_ISDIR(Status.st_mode) ? DT_DIR : S_ISREG(Status.st_mode) ? DT_REG : DT_LNK;
		}
	}

	EFolderRead ReadFolderEntries(FFileDescriptor Folder, size_t MaxEntries, const std::atomic<bool>& bStop, std::vector<FFolderEntry>& Out)
	{
		struct FClose
		{
			void operator()(DIR* Stream) const { closedir(Stream); }
		};
		const std::unique_ptr<DIR, FClose> Stream(fdopendir(Folder.Get()));
		if (!Stream)
		{
			return EFolderRead::Failed;
		}
		(void)Folder.Release(); // It is the stream's now.
		EFolderRead Result = EFolderRead::Complete;
		for (;;)
		{
			// The end of the folder and a failure look alike but for this.
			errno = 0;
			const dirent* const Entry = readdir(Stream.get());
			if (Entry == nullptr)
			{
				Result = errno == 0 ? Result : EFolderRead::Partly;
				break;
			}
			if (std::strcmp(Entry->d_name, ".") == 0 || std::strcmp(Entry->d_name, "..") == 0)
			{
				continue;
			}
			const unsigned char Kind = GetEntryKind(dirfd(Stream.get()), *Entry);
			// Links could lead out of the project or around in circles, and devices never end.
			if (Kind != DT_DIR && Kind != DT_REG)
			{
				continue;
			}
			if (Out.size() >= MaxEntries || bStop)
			{
				Result = EFolderRead::Partly;
				break;
			}
			Out.push_back({ Entry->d_name, Entry->d_ino, Kind == DT_DIR });
		}
		// Sorted here, once: lists are compared and merged by name.
		std::sort(Out.begin(), Out.end(), [](const FFolderEntry& A, const FFolderEntry& B) { return A.Name < B.Name; });
		return Result;
	}

	FFileDescriptor OpenFolderBeneath(int Root, const std::string& Path)
	{
		// The kernel itself sees to it that no part of the path leaves the folder, even while somebody swaps folders for links.
		open_how How = {};
		How.flags = FolderOpenFlags;
		How.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
		FFileDescriptor Folder(static_cast<int>(
			HostRetryInterrupted([Root, &Path, &How] { return syscall(SYS_openat2, Root, Path.c_str(), &How, sizeof(How)); })));
		// Older kernels do not know the call, and some sandboxes forbid it.
		if (Folder.IsOpen() || (errno != ENOSYS && errno != EPERM))
		{
			return Folder;
		}
		return OpenFolderStepByStep(Root, Path);
	}

	FFileDescriptor OpenFolderStepByStep(int Root, const std::string& Path)
	{
		// Each step opens one name below an open folder and follows no link: slower, and as safe.
		FFileDescriptor Folder;
		for (size_t Start = 0; Start <= Path.size();)
		{
			const size_t End = std::min(Path.find('/', Start), Path.size());
			Folder = FFileDescriptor::OpenAt(Folder.IsOpen() ? Folder.Get() : Root, Path.substr(Start, End - Start), FolderOpenFlags);
			if (!Folder.IsOpen())
			{
				return Folder;
			}
			Start = End + 1;
		}
		return Folder;
	}
}
