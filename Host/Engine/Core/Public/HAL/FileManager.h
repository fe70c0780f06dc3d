#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Misc/DateTime.h"

enum EFileWrite
{
	FILEWRITE_None = 0x00,
	FILEWRITE_NoFail = 0x01,
	/** Fails when the file exists. */
	FILEWRITE_NoReplaceExisting = 0x02,
	/** Replaces a file that is marked read-only. */
	FILEWRITE_EvenIfReadOnly = 0x04,
	/** Adds to the end instead of replacing; a failure cuts the file back to its old length. */
	FILEWRITE_Append = 0x08,
	FILEWRITE_AllowRead = 0x10,
	FILEWRITE_Silent = 0x20,
};

/** Files and folders of the machine. Any thread. Failures are logged as warnings unless asked to be quiet. */
class CORE_API IFileManager
{
public:
	static IFileManager& Get();
	virtual ~IFileManager() = default;

	virtual bool FileExists(const TCHAR* Filename) = 0;
	virtual bool DirectoryExists(const TCHAR* Directory) = 0;
	/** @return Bytes, or -1 when there is no such file. */
	virtual int64 FileSize(const TCHAR* Filename) = 0;
	/** Last change in UTC, FDateTime::MinValue() when there is no such file. */
	virtual FDateTime GetTimeStamp(const TCHAR* Filename) = 0;
	virtual bool IsReadOnly(const TCHAR* Filename) = 0;

	/** True also when the folder exists already. With Tree the missing parents are made. */
	virtual bool MakeDirectory(const TCHAR* Path, bool Tree = false) = 0;
	/** A file that is not there counts as deleted unless RequireExists. */
	virtual bool Delete(const TCHAR* Filename, bool RequireExists = false, bool EvenReadOnly = false, bool Quiet = false) = 0;
	/** With Tree also what is in it; links are removed, not followed. */
	virtual bool DeleteDirectory(const TCHAR* Path, bool RequireExists = false, bool Tree = false) = 0;
	/** Makes the destination's parent folders. */
	virtual bool Move(const TCHAR* Dest, const TCHAR* Src, bool Replace = true, bool EvenIfReadOnly = false) = 0;

	/** Names without folder, sorted; Wildcard is a folder path whose last part may hold '*' and '?'. */
	virtual void FindFiles(TArray<FString>& OutNames, const TCHAR* Wildcard, bool bFiles, bool bDirectories) = 0;
	/** Names of the files in a folder, sorted; Extension with or without dot, null for all. */
	virtual void FindFiles(TArray<FString>& OutNames, const TCHAR* Directory, const TCHAR* Extension = nullptr) = 0;
	/** Full paths below a folder, sorted within each folder. Linked folders are listed but not entered. */
	virtual void FindFilesRecursive(TArray<FString>& OutPaths, const TCHAR* StartDirectory, const TCHAR* Wildcard, bool bFiles,
		bool bDirectories, bool bClearFirst = true) = 0;
};
