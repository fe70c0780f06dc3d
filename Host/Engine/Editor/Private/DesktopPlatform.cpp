#include "DesktopPlatformModule.h"

#include "Host/HostFileDialogs.h"

namespace
{
	class FHostDesktopPlatform final : public IDesktopPlatform
	{
	public:
		virtual bool SaveFileDialog(const void* ParentWindowHandle, const FString& DialogTitle, const FString& DefaultPath,
			const FString& DefaultFile, const FString& FileTypes, uint32 Flags, TArray<FString>& OutFilenames) override
		{
			OutFilenames.Reset();
			FHostSaveDialog Dialog;
			Dialog.Title = DialogTitle;
			Dialog.Folder = DefaultPath;
			Dialog.File = DefaultFile;
			Dialog.FileTypes = FileTypes;
			FString File;
			if (!FHostFileDialogs::AskForSaveFile(Dialog, File))
			{
				return false;
			}
			OutFilenames.Add(MoveTemp(File));
			return true;
		}

		virtual bool OpenDirectoryDialog(
			const void* ParentWindowHandle, const FString& DialogTitle, const FString& DefaultPath, FString& OutFolderName) override
		{
			return FHostFileDialogs::AskForFolder(DialogTitle, DefaultPath, OutFolderName);
		}
	};
}

IDesktopPlatform* FDesktopPlatformModule::Get()
{
	static FHostDesktopPlatform Instance;
	return &Instance;
}
