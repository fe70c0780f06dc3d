#pragma once

#include "Containers/UnrealString.h"

/**
 * Replaces a file as a whole: the bytes go into a new file beside it, are flushed to the disk, and take the old name
 * in one step. Missing parent folders are made. A link is followed, the mode of an existing file is kept. When
 * anything fails the old file is as it was and nothing is left beside it. Devices are written straight.
 * Any thread; two writers of one name do not mix, the later one stays.
 *
 * @param WriteFlags  EFileWrite values of HAL/FileManager.h.
 * @param OutReason   Filled with a sentence on failure.
 */
CORE_API bool HostSaveFile(const FString& Path, const void* Data, int64 Size, uint32 WriteFlags, FString& OutReason);
