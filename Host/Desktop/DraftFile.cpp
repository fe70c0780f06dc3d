#include "DraftFile.h"

#include "Host/HostFileNames.h"
#include "Host/HostFolders.h"
#include "Host/HostSystemErrors.h"
#include "Host/StoreLocation.h"
#include "Misc/Paths.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{
	/** More on one project share the first one's file. */
	constexpr int32 MaxPrograms = 9;

	/** "p.draft", "p.2.draft" */
	FString MakeDraftPath(const FString& Path, int32 Number)
	{
		return Number == 1 ? Path
						   : FPaths::GetBaseFilename(Path, false) + FString::Printf(TEXT(".%d."), Number) + FPaths::GetExtension(Path);
	}

	/** A descriptor that holds the lock of that draft; -1 when another program holds it. */
	int TryLock(const FString& Path, bool& bOutIsPossible)
	{
		const std::string Name = HostFileNameToBytes(Path + TEXT(".lock"));
		const int Handle =
			HostRetryInterrupted([&Name] { return open(Name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600); });
		// The lock file stays: to delete one that another program is about to lock would give both the same draft.
		bOutIsPossible = Handle >= 0;
		if (Handle >= 0 && flock(Handle, LOCK_EX | LOCK_NB) != 0)
		{
			close(Handle);
			return -1;
		}
		return Handle;
	}
}

FDraftFile::FDraftFile(const FString& Path)
	: Own(Path)
{
	bool bIsPossible = Velmora::MakePrivateFolder(FPaths::GetPath(Path)).IsDone();
	// 1. The first file that no other program holds.
	for (int32 Number = 1; Number <= MaxPrograms && bIsPossible && Lock < 0; ++Number)
	{
		Own = MakeDraftPath(Path, Number);
		Lock = TryLock(Own, bIsPossible);
	}
	// 2. Where no lock can be had, all share the first one: better than no draft.
	if (Lock < 0)
	{
		Own = Path;
		return;
	}
	// 3. A draft that a program left which is no more is taken over, if there is none of our own.
	for (int32 Number = 1; Number <= MaxPrograms && HostGetPathKind(Own) == EHostPathKind::Missing; ++Number)
	{
		const FString Other = MakeDraftPath(Path, Number);
		if (HostGetPathKind(Other) == EHostPathKind::File)
		{
			const int Left = TryLock(Other, bIsPossible);
			if (Left >= 0)
			{
				std::rename(HostFileNameToBytes(Other).c_str(), HostFileNameToBytes(Own).c_str());
				close(Left);
			}
		}
	}
}

FDraftFile::~FDraftFile()
{
	if (Lock >= 0)
	{
		close(Lock);
	}
}
