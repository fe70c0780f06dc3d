#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

namespace Velmora
{
	/** What a project file is for, told by its extension. */
	enum class EProjectFileType : uint8
	{
		Code = 0,
		Asset = 1,
		Config = 2,
		Other = 3
	};

	/** One file or folder of the project. */
	struct FProjectFileCacheEntry
	{
		/** Absolute, with '/' as separator and none at the end. */
		FString Path;
		bool bIsDirectory = false;
		EProjectFileType Type = EProjectFileType::Other;
	};

	class FProjectFileScan;

	/**
	 * Keeps the list of the project's files, filled by a scan in the background. Folders that hold no sources
	 * of the project (version control, build output, saved data) are left out. Any thread.
	 */
	class VELMORATOOLKIT_API FProjectFileCache
	{
	public:
		static FProjectFileCache& Get();

		/** Starts the first scan. Once one has run or is running, nothing happens. */
		void StartIndexing();

		/** Starts a new scan. The old list stays readable until the new one is complete. Asked during a scan, another follows it. */
		void RefreshCache();

		/** A scan has been completed, so the list may be read. */
		bool IsReady() const;

		/** A scan is running. */
		bool IsIndexing() const;

		/** Entries in the list, folders included. */
		int32 GetFileCount() const;

		/** Replaces Out by a copy of the list: names in order, each folder before what is in it. Names that are no text are left out. */
		void GetCachedFiles(TArray<FProjectFileCacheEntry>& Out) const;

	private:
		FProjectFileCache();

		/** Outlives the cache while a scan still runs. */
		TSharedRef<FProjectFileScan> Scan;
	};
}
