#include "Changes/PrivateFile.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>

#include "Host/FileDescriptor.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/StoreLocation.h"

namespace Velmora
{
	namespace
	{
		/** Set before there are threads. */
		std::string& GetChosenFolder()
		{
			static std::string Folder;
			return Folder;
		}
	}

	void SetConfigFolder(const FString& Folder)
	{
		GetChosenFolder() = HostFileNameToBytes(Folder);
	}
}

namespace Velmora::PrivateFile
{
	namespace
	{
		constexpr size_t MaxFileBytes = 1024 * 1024;

		/** Somebody else's turn takes milliseconds. */
		constexpr int32 TurnMilliseconds = 1000;
	}

	std::string GetFolder()
	{
		if (!GetChosenFolder().empty())
		{
			return GetChosenFolder();
		}
		const char* const Config = getenv("XDG_CONFIG_HOME");
		if (Config && Config[0] == '/')
		{
			return std::string(Config) + "/velmora-ui";
		}
		const std::string Home = HostFileNameToBytes(GetUserHomeFolder());
		return Home.empty() ? std::string() : Home + "/.config/velmora-ui";
	}

	FFolderLock TakeTurn()
	{
		const std::string Folder = GetFolder();
		if (!Folder.empty())
		{
			(void)MakePrivateFolder(HostFileNameFromBytes(Folder)); // Write says why not.
		}
		return FFolderLock(Folder, TurnMilliseconds);
	}

	bool Read(const std::string& Name, std::string& OutText, std::string& OutProblem)
	{
		OutProblem.clear();
		const std::string Path = GetFolder() + '/' + Name;
		const FFileDescriptor File = FFileDescriptor::Open(Path, O_RDONLY | O_NONBLOCK);
		if (!File.IsOpen())
		{
			OutProblem = errno == ENOENT || errno == ENOTDIR ? std::string() : Path + " cannot be read.";
			return false;
		}
		struct stat Info = {};
		if (fstat(File.Get(), &Info) != 0 || !S_ISREG(Info.st_mode) || (Info.st_mode & 077) != 0)
		{
			OutProblem = Path + " may be read by others. Make it yours alone: chmod 600 \"" + Path + "\".";
			return false;
		}
		OutText.clear();
		if (!File.Read(OutText, MaxFileBytes + 1) || OutText.size() > MaxFileBytes)
		{
			OutText.clear();
			OutProblem = Path + " cannot be read, or is larger than 1 MiB.";
			return false;
		}
		return true;
	}

	std::string Write(const std::string& Name, std::string_view Text)
	{
		const std::string Folder = GetFolder();
		if (Folder.empty())
		{
			return "There is no configuration folder: neither XDG_CONFIG_HOME nor HOME is set, and the user's record names no home.";
		}
		if (const FOutcome Made = MakePrivateFolder(HostFileNameFromBytes(Folder)); !Made)
		{
			return Folder + " could not be made: " + Made.GetWords();
		}
		FString Reason;
		const bool bIsWritten = HostSaveFile(
			HostFileNameFromBytes(Folder + '/' + Name), Text.data(), static_cast<int64>(Text.size()), HostWritePrivate, Reason);
		return bIsWritten ? std::string() : Folder + '/' + Name + " could not be written: " + HostFileNameToBytes(Reason) + '.';
	}
}
