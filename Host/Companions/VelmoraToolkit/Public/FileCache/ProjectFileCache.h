#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

namespace Velmora
{
	/** What a project file is for, told by its name. */
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
		/**
		 * Below the project folder, with '/' as separator, none at the start or end. A byte of the name that is not UTF-8 is the
		 * lone unit U+DC00 plus the byte.
		 */
		FString Path;
		bool bIsDirectory = false;
		EProjectFileType Type = EProjectFileType::Other;
	};

	class FProjectFileMonitor;

	/**
	 * Keeps the list of the project's files, filled by a scan in the background and kept true by watching the folders that it
	 * lists. Folders that hold no sources of the project (version control, build output, saved data, fetched packages) and what
	 * the project's ignore files name are left out. Symbolic links are left out, too: what they point to stands in the list in its
	 * own place or lies outside of the project. Any thread; no call waits for the disk.
	 */
	class VELMORATOOLKIT_API FProjectFileCache
	{
	public:
		/** More entries than this are not kept: the scan leaves out what comes later. */
		static constexpr int32 MaxEntries = 2000000;

		static FProjectFileCache& Get();

		/** Starts the first scan. Once one has run or is running, nothing happens. */
		void StartIndexing();

		/**
		 * Compares the list with the disk, the whole of it. The old list stays readable until the new one is complete. Asked
		 * during a scan, another follows it.
		 */
		void RefreshCache();

		/** A scan has been completed, so the list may be read. */
		bool IsReady() const;

		/** A scan is running. What watching finds is taken up without one. */
		bool IsIndexing() const;

		/** Entries in the list, folders included. */
		int32 GetFileCount() const;

		/** Replaces Out by a copy of the list: names in order, each folder before what is in it. Memory that Out holds is used again. */
		void GetCachedFiles(TArray<FProjectFileCacheEntry>& Out) const;

	private:
		friend class FProjectFileCacheControl;

		FProjectFileCache();
		~FProjectFileCache();

		/** Outlives the cache while its thread does. */
		TSharedRef<FProjectFileMonitor> Monitor;
	};
}
