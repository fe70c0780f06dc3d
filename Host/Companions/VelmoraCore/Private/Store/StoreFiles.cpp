#include "Store/StoreFiles.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CoreMinimal.h"
#include "Host/FileDescriptor.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"
#include "Text/Utf8Text.h"

// The store's files on disk: a database and up to three companions that belong to it and to no other. A companion beside a
// wrong database would be played into it, so they move and go together, and none is ever overwritten.

namespace Velmora::StoreFiles
{
	namespace
	{
		constexpr const char* Companions[] = { "-wal", "-shm", "-journal" };
	}

	void FlushFolder(const std::string& Path)
	{
		// A new name is safe only when the folder itself has been written. Some file systems cannot, and do it by themselves.
		const FFileDescriptor Folder = FFileDescriptor::Open(Path, O_RDONLY | O_DIRECTORY);
		(void)(Folder.IsOpen() && Folder.Flush());
	}

	std::string GetFolder(const std::string& Path)
	{
		const size_t Slash = Path.rfind('/');
		return Slash == std::string::npos ? std::string(".") : Path.substr(0, Slash);
	}

	std::string GetName(const std::string& Path)
	{
		return Path.substr(Path.rfind('/') + 1);
	}

	// Made before the library opens it, which would take the mode from the umask.
	FOutcome CreateEmpty(const std::string& Path)
	{
		FFileDescriptor File = FFileDescriptor::Open(Path, O_RDWR | O_CREAT | O_EXCL, 0600);
		// The mode that open gets goes through the umask, which may take away the user's own rights.
		const bool bIsMade = File.IsOpen() && HostRetryInterrupted([&File] { return fchmod(File.Get(), 0600); }) == 0 && File.Close();
		return bIsMade ? FOutcome::Done() : FOutcome::FromSystem(errno, Path);
	}

	void MakePrivate(const std::string& Path)
	{
		(void)MakePrivateFolder(HostFileNameFromBytes(GetFolder(Path))); // It is there; only its mode may change.
		// An older version may have made them readable for others; what is already narrower stays so.
		for (const char* Ending : { "", "-wal", "-shm" })
		{
			const std::string Name = Path + Ending;
			struct stat Status;
			if (stat(Name.c_str(), &Status) == 0 && S_ISREG(Status.st_mode) && (Status.st_mode & 077) != 0)
			{
				HostRetryInterrupted([&Name, &Status] { return chmod(Name.c_str(), Status.st_mode & 0600); });
			}
		}
	}

	FOutcome Move(const std::string& From, const std::string& To)
	{
		const int Moved = HostRetryInterrupted([&From, &To] { return rename(From.c_str(), To.c_str()); });
		return Moved == 0 ? FOutcome::Done() : FOutcome::FromSystem(errno, From);
	}

	FOutcome Rename(const std::string& From, const std::string& To)
	{
		FOutcome Moved = Move(From, To);
		if (Moved)
		{
			RenameCompanions(From, To);
		}
		return Moved;
	}

	void RenameCompanions(const std::string& From, const std::string& To)
	{
		for (const char* Companion : Companions)
		{
			std::string Target = To + Companion;
			// What stands there already may be the only copy of something.
			while (access(Target.c_str(), F_OK) == 0)
			{
				Target += '_';
			}
			(void)Move(From + Companion, Target); // There may be none.
		}
	}

	void Remove(const std::string& Path)
	{
		// The file first: companions without their file do no harm, a file without its log has lost what stood in it.
		HostRetryInterrupted([&Path] { return unlink(Path.c_str()); });
		RemoveCompanions(Path);
	}

	void RemoveCompanions(const std::string& Path)
	{
		for (const char* Companion : Companions)
		{
			const std::string Name = Path + Companion;
			HostRetryInterrupted([&Name] { return unlink(Name.c_str()); });
		}
	}

	std::string MakeAsideName(const std::string& Path, const char* Word)
	{
		// To the second, so that two faults in one second need a number.
		const std::string Stem = Path + '.' + Word + '-' + Utf8Text::FromString(FDateTime::Now().ToString(TEXT("%Y%m%d-%H%M%S")));
		std::string Name = Stem;
		for (int Number = 2; access(Name.c_str(), F_OK) == 0; ++Number)
		{
			Name = Stem + '-' + std::to_string(Number);
		}
		return Name;
	}

	std::string MakeSideName(const std::string& Path, int64 Version)
	{
		constexpr std::string_view Ending = ".db";
		const bool bHasEnding = Path.size() > Ending.size() && Path.compare(Path.size() - Ending.size(), Ending.size(), Ending) == 0;
		return Path.substr(0, Path.size() - (bHasEnding ? Ending.size() : 0)) + ".v" + std::to_string(Version) + std::string(Ending);
	}

	std::vector<std::string> ListSideStores(const std::string& Path, int64 LastVersion)
	{
		std::vector<std::string> Found;
		for (int64 Version = 1; Version <= LastVersion; ++Version)
		{
			const std::string Name = MakeSideName(Path, Version);
			if (access(Name.c_str(), F_OK) == 0)
			{
				Found.push_back(Name);
			}
		}
		return Found;
	}

	// By its inode one sees that a path leads to another file than before.
	uint64 GetFileNumber(const std::string& Path)
	{
		struct stat Status;
		return stat(Path.c_str(), &Status) == 0 ? static_cast<uint64>(Status.st_ino) : 0;
	}
}
