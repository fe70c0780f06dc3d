#include "StoreFolders.h"

#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
	/** Of this run; empty when it keeps things where others find them. */
	std::string RunFolder;

	/** What is in it stays for the next run; empty when this one has no need of it. */
	std::string SpareFolder;

	/** The user's own folder in memory, or else the one for what goes with the next start of the machine. */
	std::string GetVolatileFolder()
	{
		for (const char* Name : { "XDG_RUNTIME_DIR", "TMPDIR" })
		{
			const char* const Folder = getenv(Name);
			if (Folder && Folder[0] == '/' && access(Folder, W_OK | X_OK) == 0)
			{
				return Folder;
			}
		}
		return "/tmp";
	}

	/** Empty with a reason in errno. */
	std::string MakeRunFolder()
	{
		std::string Path = GetVolatileFolder() + "/velmora-run-XXXXXX";
		return mkdtemp(Path.data()) ? Path : std::string();
	}

	/** The same one in each run, so that the next one goes on where this one ends. */
	std::string GetSpareFolder()
	{
		return GetVolatileFolder() + "/velmora-" + std::to_string(geteuid());
	}

	/** Others may have made something of that name. */
	bool IsOurs(const std::string& Path)
	{
		struct stat Info = {};
		return lstat(Path.c_str(), &Info) == 0 && S_ISDIR(Info.st_mode) && Info.st_uid == geteuid() && (Info.st_mode & 077) == 0 &&
			access(Path.c_str(), W_OK | X_OK) == 0;
	}

	std::string MakeSpareFolder()
	{
		const std::string Path = GetSpareFolder();
		mkdir(Path.c_str(), 0700);
		return IsOurs(Path) ? Path : MakeRunFolder();
	}
}

FString StoreFolders::SetUp(bool bKeepsNothing, FString& OutNotice)
{
	Velmora::SetStoreFolders(FString(), FString());
	RunFolder.clear();
	SpareFolder.clear();
	const FString Usual = Velmora::GetStoreLocation().Folder;
	if (bKeepsNothing)
	{
		RunFolder = MakeRunFolder();
		Velmora::SetStoreFolders(FString(), HostFileNameFromBytes(RunFolder));
		return RunFolder.empty() ? FString::Printf(TEXT("No folder can be made for this run: %s."), UTF8_TO_TCHAR(strerror(errno)))
								 : FString();
	}
	// Made rather than asked for: rights, mounts and kinds of file systems have too many ways to say no.
	const FOutcome Made = Velmora::MakePrivateFolder(Usual);
	const bool bCanWrite = Made && access(HostFileNameToBytes(Usual).c_str(), W_OK | X_OK) == 0;
	if (bCanWrite)
	{
		return FString();
	}
	const std::string Why = Made ? HostFileNameToBytes(Usual) + " cannot be written: " + strerror(errno) + '.' : Made.GetWords();
	const std::string Spare = MakeSpareFolder();
	if (Spare.empty())
	{
		// What is said stays in memory, and is stored as soon as that works.
		return FString();
	}
	SpareFolder = Spare;
	Velmora::SetStoreFolders(HostFileNameFromBytes(Spare), FString());
	OutNotice = HostFileNameFromBytes(Why + " What is said and typed is kept in " + Spare + " instead, until the computer is turned off.");
	return FString();
}

FString StoreFolders::BringBack()
{
	const std::string Spare = GetSpareFolder();
	const FOutcome Brought = IsOurs(Spare) ? Velmora::BringHome(HostFileNameFromBytes(Spare)) : FOutcome::Done();
	return Brought ? FString()
				   : HostFileNameFromBytes("What was kept in " + Spare + " could not be brought back yet: " + Brought.GetWords() +
						 ". The next start tries again.");
}

std::string StoreFolders::MakeVolatileFolder()
{
	return MakeRunFolder();
}

void StoreFolders::Remove()
{
	if (!RunFolder.empty())
	{
		std::error_code Ignored;
		std::filesystem::remove_all(RunFolder, Ignored);
		RunFolder.clear();
	}
	if (!SpareFolder.empty())
	{
		rmdir(SpareFolder.c_str()); // Only when it is empty.
		SpareFolder.clear();
	}
}
