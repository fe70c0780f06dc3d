#include "Host/StoreLocation.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "Host/HostFileNames.h"
#include "Host/ProjectFolder.h"
#include "Misc/Paths.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxReadableName = 40;

		/** Empty where the usual place holds. */
		struct FOtherFolders
		{
			std::mutex Mutex;
			FString Folder;
			FString ConversationFolder;
		};

		FOtherFolders& GetOtherFolders()
		{
			static FOtherFolders Folders;
			return Folders;
		}

		/** FNV-1a, 64 bits: http://www.isthe.com/chongo/tech/comp/fnv/ */
		uint64_t HashBytes(const std::string& Bytes)
		{
			uint64_t Hash = 14695981039346656037ull;
			for (const unsigned char Byte : Bytes)
			{
				Hash = (Hash ^ Byte) * 1099511628211ull;
			}
			return Hash;
		}

		/** Two ways to one folder are one project. */
		std::string GetRealPath(const std::string& Path)
		{
			char Resolved[PATH_MAX];
			return realpath(Path.c_str(), Resolved) ? std::string(Resolved) : Path;
		}
	}

	void SetStoreFolders(const FString& Folder, const FString& ConversationFolder)
	{
		FOtherFolders& Others = GetOtherFolders();
		const std::scoped_lock Lock(Others.Mutex);
		Others.Folder = Folder;
		Others.ConversationFolder = ConversationFolder;
	}

	FString GetUserHomeFolder()
	{
		const char* const Home = getenv("HOME");
		if (Home && Home[0] == '/')
		{
			return HostFileNameFromBytes(Home);
		}
		passwd Entry = {};
		passwd* Found = nullptr;
		std::vector<char> Buffer(16 * 1024);
		const bool bIsKnown = getpwuid_r(geteuid(), &Entry, Buffer.data(), Buffer.size(), &Found) == 0 && Found;
		return bIsKnown && Found->pw_dir && Found->pw_dir[0] == '/' ? HostFileNameFromBytes(Found->pw_dir) : FString();
	}

	FStoreLocation GetStoreLocation()
	{
		FStoreLocation Location;
		{
			FOtherFolders& Others = GetOtherFolders();
			const std::scoped_lock Lock(Others.Mutex);
			Location.Folder = Others.Folder;
			Location.ConversationFolder = Others.ConversationFolder;
		}
		if (Location.Folder.IsEmpty())
		{
			Location.Folder = FPaths::ConvertRelativePathToFull(FPaths::EngineSavedDir() / TEXT("Velmora"));
		}
		if (Location.ConversationFolder.IsEmpty())
		{
			Location.ConversationFolder = Location.Folder;
		}
		const FString Project = GetProjectFolder();
		if (Project.IsEmpty())
		{
			Location.ProjectName = TEXT("none");
			return Location;
		}
		const std::string Real = GetRealPath(HostFileNameToBytes(Project));
		std::string Name;
		for (const char Letter : Real.substr(Real.rfind('/') + 1).substr(0, MaxReadableName))
		{
			const bool bIsPlain = (Letter >= 'a' && Letter <= 'z') || (Letter >= 'A' && Letter <= 'Z') ||
				(Letter >= '0' && Letter <= '9') || Letter == '-' || Letter == '_';
			Name += bIsPlain ? Letter : '_';
		}
		char Hash[17];
		snprintf(Hash, sizeof(Hash), "%016llx", static_cast<unsigned long long>(HashBytes(Real)));
		Location.ProjectName = HostFileNameFromBytes(Name + '-' + Hash);
		return Location;
	}

	FOutcome MakePrivateFolder(const FString& Folder)
	{
		const std::string Path = HostFileNameToBytes(Folder);
		for (size_t End = Path.find('/', 1);; End = Path.find('/', End + 1))
		{
			const std::string Part = Path.substr(0, End);
			struct stat Status = {};
			if (stat(Part.c_str(), &Status) != 0)
			{
				const bool bIsMade = HostRetryInterrupted([&Part] { return mkdir(Part.c_str(), 0700); }) == 0;
				// The mask may have taken bits away that the user needs.
				if (bIsMade ? HostRetryInterrupted([&Part] { return chmod(Part.c_str(), 0700); }) != 0 : errno != EEXIST)
				{
					return FOutcome::FromSystem(errno, Part).Explain("The folder " + Part + " cannot be made");
				}
			}
			else if (!S_ISDIR(Status.st_mode))
			{
				return FOutcome(EOutcome::Exists, Part + " is a file, not a folder.", Part);
			}
			if (End == std::string::npos)
			{
				// Found wider, from an earlier version or a copy: it is ours alone from now on. Somebody else's stays as it is.
				if ((Status.st_mode & 077) != 0 && S_ISDIR(Status.st_mode) && Status.st_uid == geteuid())
				{
					HostRetryInterrupted([&Part, &Status] { return chmod(Part.c_str(), Status.st_mode & 0700); });
				}
				return FOutcome::Done();
			}
		}
	}
}
