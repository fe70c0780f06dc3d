#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

/** Something in a folder; links count as what they lead to. */
struct FHostFolderEntry
{
	FString Name;
	bool bIsFolder = false;
};

/** What a path leads to. */
enum class EHostPathKind : uint8
{
	Missing,
	File,
	Folder,
	/** A device, a pipe, a socket. */
	Other,
};

// Folders as a file dialog sees them. Any thread; the file system is asked at once.

/**
 * Lists folders, then files, each in the order of their names without letter case.
 * @return False with a reason ("no permission") and no entries when the folder cannot be read.
 */
CORE_API bool HostListFolder(const FString& Folder, TArray<FHostFolderEntry>& OutEntries, FString& OutReason);
CORE_API EHostPathKind HostGetPathKind(const FString& Path);
/**
 * Tells beforehand what would keep a file from being saved there: the folder or its rights, the file's own mark, its name.
 * The disk may still be full. @return False with a reason.
 */
CORE_API bool HostCanSaveFile(const FString& Path, FString& OutReason);
/** Makes a folder and the missing ones above it. @return False with a reason. */
CORE_API bool HostMakeFolder(const FString& Path, FString& OutReason);
