#include "Host/HostFolders.h"

#include "Host/HostAtomicFile.h"
#include "Host/HostFileNames.h"
#include "Host/HostFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace
{
	/** With the lower case made once for each name: folders may hold very many. */
	void SortEntries(TArray<FHostFolderEntry>& Entries)
	{
		using FView = std::basic_string_view<TCHAR>;
		struct FRow
		{
			FString Lower;
			FHostFolderEntry Entry;
		};
		const auto View = [](const FString& Text) { return FView(*Text, static_cast<std::size_t>(Text.Len())); };
		std::vector<FRow> Rows;
		Rows.reserve(static_cast<std::size_t>(Entries.Num()));
		for (FHostFolderEntry& Entry : Entries)
		{
			Rows.push_back(FRow{ Entry.Name.ToLower(), MoveTemp(Entry) });
		}
		std::sort(Rows.begin(), Rows.end(),
			[&View](const FRow& A, const FRow& B)
			{
				if (A.Entry.bIsFolder != B.Entry.bIsFolder)
				{
					return A.Entry.bIsFolder;
				}
				const int Order = View(A.Lower).compare(View(B.Lower));
				return Order != 0 ? Order < 0 : View(A.Entry.Name) < View(B.Entry.Name);
			});
		Entries.Reset();
		for (FRow& Row : Rows)
		{
			Entries.Add(MoveTemp(Row.Entry));
		}
	}
}

bool HostListFolder(const FString& Folder, TArray<FHostFolderEntry>& OutEntries, FString& OutReason)
{
	OutEntries.Reset();
	const std::string Bytes = HostFileSystem::ToBytes(Folder);
	const auto Stream = HostFileSystem::OpenFolder(Bytes);
	if (!Stream)
	{
		OutReason = HostFileSystem::Describe(errno);
		return false;
	}
	while (const dirent* Read = readdir(Stream.get()))
	{
		const std::string_view Name(Read->d_name);
		if (Name == "." || Name == "..")
		{
			continue;
		}
		bool bIsFolder = Read->d_type == DT_DIR;
		if (Read->d_type == DT_LNK || Read->d_type == DT_UNKNOWN)
		{
			struct stat Info;
			bIsFolder = fstatat(dirfd(Stream.get()), Read->d_name, &Info, 0) == 0 && S_ISDIR(Info.st_mode);
		}
		OutEntries.Add(FHostFolderEntry{ HostFileNameFromBytes(Name), bIsFolder });
	}
	SortEntries(OutEntries);
	return true;
}

EHostPathKind HostGetPathKind(const FString& Path)
{
	const std::string Bytes = HostFileSystem::ToBytes(Path);
	struct stat Info;
	if (Bytes.empty() || stat(Bytes.c_str(), &Info) != 0)
	{
		return EHostPathKind::Missing;
	}
	return S_ISDIR(Info.st_mode) ? EHostPathKind::Folder : S_ISREG(Info.st_mode) ? EHostPathKind::File : EHostPathKind::Other;
}

bool HostCanSaveFile(const FString& Path, FString& OutReason)
{
	const std::string Bytes = HostFileSystem::ToBytes(Path);
	if (Bytes.empty())
	{
		OutReason = TEXT("not a valid file name");
		return false;
	}
	// The file is replaced as a whole, so the rights of its folder count, and of the file only a mark that all respect.
	const std::string Folder = HostFileSystem::GetParent(Bytes);
	struct stat Info;
	int Error = 0;
	if (stat(Folder.c_str(), &Info) != 0)
	{
		Error = errno;
	}
	else if (!S_ISDIR(Info.st_mode))
	{
		Error = ENOTDIR;
	}
	else if (faccessat(AT_FDCWD, Folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
	{
		Error = errno;
	}
	else if (stat(Bytes.c_str(), &Info) != 0)
	{
		Error = errno == ENOENT ? 0 : errno;
	}
	else if (S_ISDIR(Info.st_mode))
	{
		Error = EISDIR;
	}
	else if (HostFileSystem::IsMarkedReadOnly(Info))
	{
		OutReason = TEXT("the file is marked read-only");
		return false;
	}
	OutReason = Error != 0 ? HostFileSystem::Describe(Error) : FString();
	return Error == 0;
}

bool HostMakeFolder(const FString& Path, FString& OutReason)
{
	if (!HostMaySave(Path, OutReason))
	{
		return false;
	}
	const std::string Bytes = HostFileSystem::ToBytes(Path);
	errno = EINVAL;
	if (Bytes.empty() || !HostFileSystem::MakeFolders(Bytes))
	{
		OutReason = Bytes.empty() ? FString(TEXT("not a valid name")) : HostFileSystem::Describe(errno);
		return false;
	}
	return true;
}
