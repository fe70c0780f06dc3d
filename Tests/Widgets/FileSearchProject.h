#pragma once

#include "FileCache/ProjectFileCache.h"
#include "Host/HostPaths.h"
#include "Host/ProjectFolder.h"
#include "Misc/Paths.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

/** A project of its own, listed by the file cache. */
class FFileSearchProject
{
public:
	explicit FFileSearchProject(const std::vector<std::string>& Files)
		: ProjectDirBefore(FPaths::ProjectDir())
	{
		for (const std::string& File : Files)
		{
			Folder.Write(File, "");
		}
		FHostPaths::SetProjectDir(Folder.At());
		Velmora::SetProjectFolder(Folder.At());
		Rescan();
	}

	~FFileSearchProject()
	{
		FHostPaths::SetProjectDir(ProjectDirBefore);
		Velmora::SetProjectFolder(FString());
	}

	FFileSearchProject(const FFileSearchProject&) = delete;
	FFileSearchProject& operator=(const FFileSearchProject&) = delete;

	void Rescan() const
	{
		Velmora::FProjectFileCache& Cache = Velmora::FProjectFileCache::Get();
		Cache.RefreshCache();
		const auto End = std::chrono::steady_clock::now() + std::chrono::seconds(20);
		while ((Cache.IsIndexing() || !Cache.IsReady()) && std::chrono::steady_clock::now() < End)
		{
			std::this_thread::yield();
		}
		EXPECT_TRUE(Cache.IsReady());
	}

	/** The path as the cache gives it. */
	std::string PathOf(const std::string& File) const
	{
		TArray<Velmora::FProjectFileCacheEntry> Entries;
		Velmora::FProjectFileCache::Get().GetCachedFiles(Entries);
		for (const Velmora::FProjectFileCacheEntry& Entry : Entries)
		{
			const std::string Path = Utf8(Entry.Path);
			if (Path == File || Path.ends_with("/" + File))
			{
				return Path;
			}
		}
		ADD_FAILURE() << File << " is not listed";
		return File;
	}

	FTempFolder Folder;

private:
	FString ProjectDirBefore;
};
