#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "Changes/ChangeJournal.h"
#include "Host/HostFileNames.h"
#include "Host/HostSystemErrors.h"
#include "Host/StoreLocation.h"

namespace Velmora
{
	namespace
	{
		FOutcome Explain(const std::error_code& Error, const std::string& Path)
		{
			return Error ? FOutcome::FromSystem(Error.value(), Path) : FOutcome::Done();
		}

		/** A new name lasts only when its folder has been written. Some file systems cannot, and do it by themselves. */
		void FlushNames(const std::string& Folder)
		{
			const FFileDescriptor Opened = FFileDescriptor::Open(Folder, O_RDONLY | O_DIRECTORY);
			(void)(Opened.IsOpen() && Opened.Flush());
		}

		/** Makes the files and folders in it last, and the folder itself. */
		FOutcome FlushAll(const std::string& Folder)
		{
			std::error_code Error;
			for (std::filesystem::recursive_directory_iterator It(Folder, Error), End; !Error && It != End; It.increment(Error))
			{
				const FFileDescriptor File = FFileDescriptor::Open(It->path().native(), O_RDONLY | O_NOFOLLOW);
				if (!File.IsOpen() || !File.Flush())
				{
					return FOutcome::FromSystem(errno, It->path().native());
				}
			}
			FlushNames(Folder);
			return Explain(Error, Folder);
		}

		/** A copy with nothing left out. How old a journal is says its log. */
		FOutcome CopyJournal(const std::string& From, const std::string& To)
		{
			namespace fs = std::filesystem;
			std::error_code Error;
			fs::remove_all(To, Error);
			fs::copy(From, To, fs::copy_options::recursive | fs::copy_options::copy_symlinks, Error);
			const std::string Log = std::string("/") + FChangeLog::FileName;
			if (!Error)
			{
				fs::last_write_time(To + Log, fs::last_write_time(From + Log, Error), Error);
			}
			const FOutcome Copied = Explain(Error, To);
			return Copied ? FlushAll(To) : Copied;
		}

		/** Without its log nobody takes what is left for a journal. */
		void RemoveJournal(const std::string& Folder)
		{
			std::error_code Ignored;
			std::filesystem::remove(Folder + '/' + FChangeLog::FileName, Ignored);
			std::filesystem::remove_all(Folder, Ignored);
		}

		FFileDescriptor TakeLock(const std::string& Path)
		{
			FFileDescriptor Lock = FFileDescriptor::Open(Path, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
			const bool bIsHeld = Lock.IsOpen() && flock(Lock.Get(), LOCK_EX | LOCK_NB) == 0;
			return bIsHeld ? std::move(Lock) : FFileDescriptor();
		}
	}

	FOutcome FChangeJournal::BringDeadJournals(const std::string& From, const std::string& To)
	{
		std::error_code Error;
		FOutcome Brought;
		for (std::filesystem::directory_iterator It(From, Error), End; !Error && It != End && Brought; It.increment(Error))
		{
			const std::string Name = It->path().filename().native();
			const std::string Path = It->path().native();
			// 1. One that is used, or just made, stays. Where a process that brought it was killed, it is half removed.
			const FFileDescriptor TheirLock = TakeLock(Path + '/' + LockName);
			if (!TheirLock.IsOpen() || Name.rfind(NewFolderPrefix, 0) == 0)
			{
				continue;
			}
			const bool bIsWhole = access((Path + '/' + FChangeLog::FileName).c_str(), F_OK) == 0;
			// 2. Whole under a name that is none of a journal, then under its own; used by nobody before it is gone there.
			const std::string Final = To + '/' + Name;
			FFileDescriptor OurLock;
			if (bIsWhole && access(Final.c_str(), F_OK) != 0)
			{
				const std::string Fresh = To + '/' + NewFolderPrefix + Name;
				Brought = MakePrivateFolder(HostFileNameFromBytes(To));
				Brought = Brought ? CopyJournal(Path, Fresh) : Brought;
				OurLock = TakeLock(Fresh + '/' + LockName);
				if (Brought && HostRetryInterrupted([&] { return rename(Fresh.c_str(), Final.c_str()); }) != 0)
				{
					Brought = FOutcome::FromSystem(errno, Fresh);
				}
				if (!Brought)
				{
					std::error_code Ignored;
					std::filesystem::remove_all(Fresh, Ignored);
					continue;
				}
				FlushNames(To);
			}
			// 3. Only now. Cut off before, the next start finds it in both places, and goes on here.
			RemoveJournal(Path);
		}
		std::filesystem::remove(From, Error); // Only when it is empty.
		return Brought;
	}
}
