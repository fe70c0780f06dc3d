#pragma once

#include "Containers/UnrealString.h"
#include "Templates/Function.h"

/**
 * Beside EFileWrite: the file is for the user alone (mode 0600), whatever the umask, and becomes so when it was not. For
 * what the program keeps for itself; what the user asked to be saved follows the umask.
 */
constexpr uint32 HostWritePrivate = 0x10000;

/**
 * Replaces a file as a whole: the bytes go into a new file beside it, are flushed to the disk, and take the old name
 * in one step. Missing parent folders are made. A link is followed, the mode of an existing file is kept. When
 * anything fails the old file is as it was and nothing is left beside it. Devices are written straight.
 * Any thread; two writers of one name do not mix, the later one stays.
 *
 * @param WriteFlags  EFileWrite values of HAL/FileManager.h, and HostWritePrivate.
 * @param OutReason   Filled with a sentence on failure.
 */
CORE_API bool HostSaveFile(const FString& Path, const void* Data, int64 Size, uint32 WriteFlags, FString& OutReason);

/**
 * From now on nothing is saved or copied but below this folder: other saves fail with a reason. For programs that are driven by
 * somebody else's hand. Absolute; empty for everywhere. Any thread.
 */
CORE_API void HostLimitSaves(const FString& Folder);
/** @return False with a reason where HostLimitSaves lets nothing be made. */
CORE_API bool HostMaySave(const FString& Path, FString& OutReason);

/**
 * Removes what saves that came to a sudden end have left in a folder and Depth levels below it. Saves of other programs that are
 * under way stay. For the start; any thread.
 *
 * @param bMakePrivate  The folder and all that is found there become the user's alone, as far as they are the user's.
 */
CORE_API void HostTidyFolder(const FString& Folder, int32 Depth, bool bMakePrivate);

/**
 * Copies a file of any size in the same way: the new one takes its name only when it is whole.
 *
 * @param OnProgress  Told how many bytes of how many are copied, on the same thread; false stops the copy.
 */
CORE_API bool HostCopyFile(const FString& Source, const FString& Target, uint32 WriteFlags,
	TFunctionRef<bool(int64 Done, int64 Total)> OnProgress, FString& OutReason);
