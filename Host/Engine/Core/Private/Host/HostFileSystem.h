#pragma once

#include "Containers/UnrealString.h"

#include <dirent.h>
#include <memory>
#include <string>
#include <sys/stat.h>

/** Small steps on paths in bytes, shared by the file manager and the writer of whole files. */
namespace HostFileSystem
{
	/** Bytes of a path; empty when the path cannot name a file (it is empty or holds a null unit). */
	std::string ToBytes(const FString& Path);
	/** Makes the folder and its parents. errno tells why not. */
	bool MakeFolders(const std::string& Path);
	struct FCloseFolder
	{
		void operator()(DIR* Stream) const { closedir(Stream); }
	};
	/** For reading entries. Null with errno when it cannot be read. */
	std::unique_ptr<DIR, FCloseFolder> OpenFolder(const std::string& Path);
	/** Folder part without final slash; "." and "/" where there is none. */
	std::string GetParent(const std::string& Path);
	/** No one may write by mode, whoever asks. */
	inline bool IsMarkedReadOnly(const struct stat& Info)
	{
		return (Info.st_mode & 0222) == 0;
	}
	/** Sentence for an errno value, the same in every locale. */
	FString Describe(int Error);
}
