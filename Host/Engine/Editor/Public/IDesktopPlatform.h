#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

/** Flags of file dialogs. */
namespace EFileDialogFlags
{
	enum Type
	{
		None = 0x00,
		Multiple = 0x01,
	};
}

/** Dialogs of the desktop. Game thread. */
class EDITOR_API IDesktopPlatform
{
public:
	virtual ~IDesktopPlatform() = default;

	/**
	 * Asks where to save and waits for the answer.
	 *
	 * @param ParentWindowHandle  Null for the program's window.
	 * @param FileTypes           Pairs of a label and patterns: "Text (*.txt)|*.txt|Pictures (*.png;*.jpg)|*.png;*.jpg".
	 * @param Flags               EFileDialogFlags; a save dialog knows none.
	 * @param OutFilenames        The name as the user typed it, absolute; no extension is added. Empty when cancelled.
	 * @return False when cancelled.
	 */
	virtual bool SaveFileDialog(const void* ParentWindowHandle, const FString& DialogTitle, const FString& DefaultPath,
		const FString& DefaultFile, const FString& FileTypes, uint32 Flags, TArray<FString>& OutFilenames) = 0;

	/**
	 * Asks for a folder that is there and waits for the answer.
	 *
	 * @param ParentWindowHandle  Null for the program's window.
	 * @param DefaultPath         Where the dialog begins; one that is not there stands for the nearest one above it.
	 * @param OutFolderName       Absolute. Empty when cancelled.
	 * @return False when cancelled.
	 */
	virtual bool OpenDirectoryDialog(
		const void* ParentWindowHandle, const FString& DialogTitle, const FString& DefaultPath, FString& OutFolderName) = 0;
};
