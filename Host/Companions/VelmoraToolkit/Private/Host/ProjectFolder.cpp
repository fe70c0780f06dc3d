#include "Host/ProjectFolder.h"

#include <memory>
#include <mutex>

#include "Misc/Paths.h"

namespace Velmora
{
	namespace
	{
		std::mutex ProjectFolderMutex;

		FString& ChosenProjectFolder()
		{
			// Never destroyed: a scan that was left behind may still ask while the process goes down.
			static FString* const Folder = std::make_unique<FString>().release();
			return *Folder;
		}
	}

	FString GetProjectFolderPath()
	{
		FString Folder;
		{
			const std::scoped_lock Lock(ProjectFolderMutex);
			Folder = ChosenProjectFolder();
		}
		if (Folder.IsEmpty())
		{
			Folder = FPaths::ProjectDir();
		}
		if (Folder.IsEmpty())
		{
			return FString();
		}
		Folder = FPaths::ConvertRelativePathToFull(Folder);
		FPaths::NormalizeFilename(Folder);
		while (Folder.Len() > 1 && Folder[Folder.Len() - 1] == TEXT('/'))
		{
			Folder = Folder.LeftChop(1);
		}
		return Folder;
	}

	FString GetProjectFolder()
	{
		const FString Folder = GetProjectFolderPath();
		return FPaths::DirectoryExists(Folder) ? Folder : FString();
	}

	void SetProjectFolder(const FString& Folder)
	{
		const std::scoped_lock Lock(ProjectFolderMutex);
		ChosenProjectFolder() = Folder;
	}
}
