#include "Host/HostFileSystem.h"

#include "Host/FileDescriptor.h"
#include "Host/HostFileNames.h"
#include "Host/HostPaths.h"
#include "Host/HostSystemErrors.h"
#include "Misc/Paths.h"

#include <cerrno>
#include <fcntl.h>

std::string HostFileSystem::ToBytes(const FString& Path)
{
	const bool bFromBase = FHostPaths::AreFoldersRelative() && !Path.IsEmpty() && FPaths::IsRelative(Path);
	std::string Bytes = HostFileNameToBytes(bFromBase ? FPaths::ConvertRelativePathToFull(Path) : Path);
	if (Bytes.find('\0') != std::string::npos)
	{
		Bytes.clear();
	}
	return Bytes;
}

bool HostFileSystem::MakeFolders(const std::string& Path)
{
	struct stat Info;
	if (Path.empty() || stat(Path.c_str(), &Info) == 0)
	{
		const bool bFolder = !Path.empty() && S_ISDIR(Info.st_mode);
		errno = bFolder ? 0 : ENOTDIR;
		return bFolder;
	}
	// Parents first, without recursion: the path may have thousands of parts.
	for (std::size_t Slash = Path.find('/', 1);; Slash = Path.find('/', Slash + 1))
	{
		const std::string Part = Path.substr(0, Slash);
		const auto Make = [&Part] { return mkdir(Part.c_str(), 0777); };
		if (Part.back() != '/' && HostRetryInterrupted(Make) != 0 && errno != EEXIST)
		{
			const int Error = errno;
			// A parent on a read-only or foreign file system answers with another error although it is there.
			if (stat(Part.c_str(), &Info) != 0 || !S_ISDIR(Info.st_mode))
			{
				errno = Error;
				return false;
			}
		}
		if (Slash == std::string::npos)
		{
			break;
		}
	}
	if (stat(Path.c_str(), &Info) != 0)
	{
		return false;
	}
	errno = ENOTDIR;
	return S_ISDIR(Info.st_mode);
}

std::unique_ptr<DIR, HostFileSystem::FCloseFolder> HostFileSystem::OpenFolder(const std::string& Path)
{
	FFileDescriptor Folder = FFileDescriptor::Open(Path, O_RDONLY | O_DIRECTORY);
	std::unique_ptr<DIR, FCloseFolder> Stream(Folder.IsOpen() ? fdopendir(Folder.Get()) : nullptr);
	if (Stream)
	{
		(void)Folder.Release(); // It is the stream's now.
	}
	return Stream;
}

std::string HostFileSystem::GetParent(const std::string& Path)
{
	const std::size_t Slash = Path.rfind('/');
	return Slash == std::string::npos ? std::string(".") : Slash == 0 ? std::string("/") : Path.substr(0, Slash);
}

FString HostFileSystem::Describe(int Error)
{
	return HostFileNameFromBytes(HostDescribeSystemError(Error));
}
