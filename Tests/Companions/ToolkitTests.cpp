#include "CodeIntel/CodeIntelIndexManager.h"
#include "CodeIntel/IgnorePatterns.h"
#include "FileCache/ProjectFileCache.h"
#include "Host/HostFileNames.h"
#include "Host/HostTasks.h"
#include "TemporaryProject.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using Velmora::EProjectFileType;
using Velmora::FProjectFileCache;

namespace
{
	/** A process has one cache; it is brought to rest on the project of the test. */
	std::vector<std::string> ScanAndList()
	{
		FProjectFileCache::Get().RefreshCache();
		EXPECT_TRUE(FHostTasks::WaitForBackground(10.0));
		EXPECT_TRUE(FProjectFileCache::Get().IsReady());
		EXPECT_FALSE(FProjectFileCache::Get().IsIndexing());
		TArray<Velmora::FProjectFileCacheEntry> Entries;
		Entries.SetNum(3);
		FProjectFileCache::Get().GetCachedFiles(Entries);
		EXPECT_EQ(FProjectFileCache::Get().GetFileCount(), Entries.Num());
		constexpr const char* Types[] = { "code", "asset", "config", "other" };
		std::vector<std::string> Lines;
		for (const Velmora::FProjectFileCacheEntry& Entry : Entries)
		{
			Lines.push_back(
				HostFileNameToBytes(Entry.Path) + (Entry.bIsDirectory ? "/" : std::string(" ") + Types[static_cast<int>(Entry.Type)]));
		}
		return Lines;
	}
}

TEST(ProjectFileCacheTests, ListsWhatBelongsToTheProject)
{
	FTemporaryProject Project;
	Project.Write("Source/Game/Player.cpp", "x");
	Project.Write("Source/Game/Player.H", "x");
	Project.Write("Source/Game/Game.Build.cs", "x");
	Project.Write("Content/Hero.uasset", "x");
	Project.Write("Config/Game.ini", "x");
	Project.Write("notes", "x");
	Project.Write("Saved/Log.txt", "x");
	Project.Write(".git/config", "x");
	Project.Write("Source/Intermediate/x.cpp", "x");
	Project.Write("Source/na\xFFme.cpp", "x");
	std::filesystem::create_directory_symlink(Project.Root, Project.Root / "Source" / "loop");
	const std::vector<std::string> Expected = {
		"notes other",
		"Config/",
		"Config/Game.ini config",
		"Content/",
		"Content/Hero.uasset asset",
		"Source/",
		"Source/na\xFFme.cpp code",
		"Source/Game/",
		"Source/Game/Game.Build.cs config",
		"Source/Game/Player.H code",
		"Source/Game/Player.cpp code",
	};
	EXPECT_EQ(ScanAndList(), Expected);

	Project.Write("Source/New.py", "x");
	std::filesystem::remove(Project.Root / "notes");
	std::vector<std::string> Changed(Expected.begin() + 1, Expected.end());
	Changed.insert(Changed.begin() + 5, "Source/New.py code");
	EXPECT_EQ(ScanAndList(), Changed);
}

TEST(ProjectFileCacheTests, AMissingFolderIsAnEmptyList)
{
	FTemporaryProject Project;
	std::filesystem::remove_all(Project.Root);
	EXPECT_EQ(ScanAndList(), std::vector<std::string>());
}

TEST(ProjectFileCacheTests, RequestsFromManyThreadsEndInOneCompleteList)
{
	FTemporaryProject Project;
	for (int Index = 0; Index < 50; ++Index)
	{
		Project.Write("Source/File" + std::to_string(Index) + ".cpp", "x");
	}
	std::vector<std::thread> Threads;
	for (int Index = 0; Index < 4; ++Index)
	{
		Threads.emplace_back(
			[]
			{
				for (int Round = 0; Round < 50; ++Round)
				{
					FProjectFileCache::Get().RefreshCache();
					TArray<Velmora::FProjectFileCacheEntry> Entries;
					FProjectFileCache::Get().GetCachedFiles(Entries);
				}
			});
	}
	for (std::thread& Thread : Threads)
	{
		Thread.join();
	}
	EXPECT_EQ(ScanAndList().size(), 51u);
}

TEST(IgnorePatternTests, BuiltInAndOwnRules)
{
	FTemporaryProject Project;
	const std::tuple<const char*, std::string, std::vector<std::string>, bool> Cases[] = {
		{ "a source file", "Source/A.cpp", {}, false },
		{ "version control", "x/.git/config", {}, true },
		{ "letter case counts for nothing", "SAVED/Log.txt", {}, true },
		{ "backslashes", "C:\\Game\\Binaries\\Win64\\x.dll", {}, true },
		{ "part of a name is not the name", "Source/Builder/Saved.cpp", {}, false },
		{ "a file of the project, wherever that lies", Project.PathOf("Source/A.cpp"), {}, false },
		{ "wildcard on a name", "Source/A.tmp", { "*.tmp" }, true },
		{ "wildcard on a folder's name", "Third/Party/x.cpp", { "Part?" }, true },
		{ "letter case of a pattern counts", "Third/Party/x.cpp", { "part?" }, false },
		{ "the last pattern decides", "Source/A.tmp", { "*.tmp", "!A.tmp" }, false },
		{ "but nothing comes back from below an ignored folder", "Source/Gen/x.cpp", { "Gen/", "!x.cpp" }, true },
		{ "a fetched package in the project", Project.PathOf("node_modules/x.js"), {}, true },
		{ "a folder told by its slash", "Out/", { "Out/" }, true },
		{ "a file of that name", "Out", { "Out/" }, false },
		{ "pattern with a slash takes the whole path", "Source/Gen/x.cpp", { "Source/Gen/*" }, true },
		{ "and only the whole", "Plugins/Source/Gen/x.cpp", { "Source/Gen/*" }, false },
		{ "an empty pattern matches nothing", "Source/A.cpp", { "" }, false },
		{ "an empty path is not ignored", "", { "*.cpp" }, false },
	};
	for (const auto& [Why, Path, Globs, bIgnored] : Cases)
	{
		SCOPED_TRACE(Why);
		TArray<FString> Patterns;
		for (const std::string& Pattern : Globs)
		{
			Patterns.Add(Text(Pattern));
		}
		EXPECT_EQ(Velmora::CodeIntel::ShouldIgnorePath(Text(Path), Patterns), bIgnored);
	}
}

TEST(IndexManagerTests, WithoutAnIndexEveryCommandComesBackAndSaysSo)
{
	Velmora::CodeIntel::FCodeIntelIndexManager& Manager = Velmora::CodeIntel::FCodeIntelIndexManager::Get();
	Manager.RebuildIndex(true);
	Manager.CompactIndex();
	Manager.InitializeEngineIndex();
	EXPECT_FALSE(Manager.IsInitialized());
	EXPECT_FALSE(Manager.IsIndexReady());
	EXPECT_FALSE(Manager.IsEngineIndexInitialized());
	EXPECT_FALSE(Manager.GetIndexStats().bIsReady);

	int Answers = 0;
	const auto Done = [&Answers](int32 Deleted, int32 New)
	{
		EXPECT_TRUE(IsInGameThread());
		EXPECT_EQ(Deleted, 0);
		EXPECT_EQ(New, 0);
		++Answers;
	};
	Manager.ReconcileFileChangesAsync(Done);
	Manager.ReconcileEngineFileChangesAsync(Done);
	FHostTasks::RunGameThreadTasks();
	EXPECT_EQ(Answers, 2);
}
