#include "Host/HostFileSystem.h"

#include "Host/HostFileNames.h"

#include <cerrno>

std::string HostFileSystem::ToBytes(const FString& Path)
{
	std::string Bytes = HostFileNameToBytes(Path);
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
		if (Part.back() != '/' && mkdir(Part.c_str(), 0777) != 0 && errno != EEXIST)
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

std::string HostFileSystem::GetParent(const std::string& Path)
{
	const std::size_t Slash = Path.rfind('/');
	return Slash == std::string::npos ? std::string(".") : Slash == 0 ? std::string("/") : Path.substr(0, Slash);
}

FString HostFileSystem::Describe(int Error)
{
	switch (Error)
	{
	case EACCES:
	case EPERM:
		return TEXT("no permission");
	case ENOENT:
		return TEXT("no such file or folder");
	case EEXIST:
		return TEXT("the file exists");
	case ENOTDIR:
		return TEXT("a part of the path is no folder");
	case EISDIR:
		return TEXT("the path is a folder");
	case ESPIPE:
		return TEXT("the path is a pipe or a device");
	case ENOTEMPTY:
		return TEXT("the folder is not empty");
	case ENOSPC:
		return TEXT("no space left on the disk");
	case EDQUOT:
		return TEXT("the disk quota is used up");
	case EFBIG:
		return TEXT("the file would become too large");
	case EROFS:
		return TEXT("the file system is read-only");
	case ENAMETOOLONG:
		return TEXT("the name is too long");
	case ELOOP:
		return TEXT("the links go round in a circle");
	case EMFILE:
	case ENFILE:
		return TEXT("too many open files");
	case EIO:
		return TEXT("the disk reports an error");
	case ECANCELED:
		return TEXT("it was stopped");
	case ENXIO:
		return TEXT("nobody reads from it");
	default:
		return FString::Printf(TEXT("system error %d"), Error);
	}
}
