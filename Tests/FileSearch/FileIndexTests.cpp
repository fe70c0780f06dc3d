#include "Companions/TemporaryProject.h"
#include "FileCache/ProjectFileCache.h"
#include "FileSearch/FileIndexService.h"
#include "FileSearch/FileSearchViewModel.h"
#include "FileSearch/LiteralFuzzyScore.h"
#include "Velmora.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace Velmora::UI;
using Velmora::FProjectFileCache;

namespace
{
	/** Waits for scans that are under way. */
	void WaitForScan()
	{
		for (int32 Wait = 0; Wait < 10000 && FFileIndexService::Get().IsIndexing(); ++Wait)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(1));
		}
		ASSERT_FALSE(FFileIndexService::Get().IsIndexing());
		ASSERT_TRUE(FFileIndexService::Get().IsReady());
	}

	void Scan()
	{
		FFileIndexService::Get().RefreshIndex();
		WaitForScan();
	}

	std::vector<std::string> GetPaths(const TArray<FFileSearchResult>& Results)
	{
		std::vector<std::string> Paths;
		for (const FFileSearchResult& Result : Results)
		{
			Paths.push_back(Utf8(Result.Entry.FilePath));
		}
		return Paths;
	}

	std::vector<std::string> Search(const std::string& Query, int32 MaxResults = 50)
	{
		return GetPaths(FFileIndexService::Get().SearchFiles(Text(Query), MaxResults));
	}
}

// First in the file, so that it comes before the scans of the others also when all run in one process.
TEST(FileSearchBeforeTheFirstScan, FindsNothing)
{
	if (FFileIndexService::Get().IsReady())
	{
		GTEST_SKIP() << "another test has scanned already";
	}
	FTemporaryProject Project;
	Project.Write("Player.cpp", "x");
	EXPECT_TRUE(Search("player").empty());
	FFileSearchViewModel Model;
	int32 Calls = 0;
	Model.OnResultsChanged().AddLambda([&Calls](const TArray<FFileSearchResult>& Results) { Calls += 1 + 100 * Results.Num(); });
	Model.SetSearchQuery(TEXT("player"));
	EXPECT_EQ(Calls, 1) << "listeners hear that there is nothing";

	FFileIndexService::Get().StartIndexing();
	EXPECT_EQ(FFileIndexService::Get().bIsReady.load() || FFileIndexService::Get().bIsIndexing.load(), true);
	WaitForScan();
	Model.SetSearchQuery(TEXT("player"));
	EXPECT_EQ(Model.GetResultCount(), 0) << "the same query is not searched for again";
	Model.SetSearchQuery(TEXT("playe"));
	EXPECT_EQ(Model.GetResultCount(), 1);
	EXPECT_EQ(Calls, 102);
}

TEST(FileIndex, TypesByName)
{
	struct FCase
	{
		const char* Path;
		EFileType Type;
	};
	const FCase Cases[] = {
		{ "Source/Mod/Mod.Build.cs", EFileType::Config },
		{ "Mod.TARGET.CS", EFileType::Config },
		{ "Tool.cs", EFileType::Code },
		{ "a/B.H", EFileType::Code },
		{ "a.hpp", EFileType::Code },
		{ "a.hh", EFileType::Code },
		{ "a.cpp", EFileType::Code },
		{ "a.cc", EFileType::Code },
		{ "a.cxx", EFileType::Code },
		{ "a.c", EFileType::Code },
		{ "Mesh.UASSET", EFileType::Asset },
		{ "a.umap", EFileType::Asset },
		{ "a.umat", EFileType::Asset },
		{ "a.uanim", EFileType::Asset },
		{ "a.ufont", EFileType::Asset },
		{ "a.umaterial", EFileType::Asset },
		{ "a.uparticlesystem", EFileType::Asset },
		{ "a.usoundcue", EFileType::Asset },
		{ "a.ini", EFileType::Config },
		{ "a.uplugin", EFileType::Config },
		{ "a.UProject", EFileType::Config },
		{ "a.txt", EFileType::Other },
		{ "Readme", EFileType::Other },
		{ "a.h/Readme", EFileType::Other },
		{ "", EFileType::Other },
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(FFileIndexService::ClassifyFile(FString(Case.Path)), Case.Type) << Case.Path;
	}
	const EFileType Converted[] = { EFileType::Code, EFileType::Asset, EFileType::Config, EFileType::Other, EFileType::Other };
	for (int32 Value = 0; Value < 5; ++Value)
	{
		EXPECT_EQ(FFileIndexService::ConvertFileType(static_cast<Velmora::EProjectFileType>(Value)), Converted[Value]) << Value;
	}
	EXPECT_EQ(FFileIndexService::ConvertFileType(static_cast<Velmora::EProjectFileType>(255)), EFileType::Other);
	EXPECT_TRUE(FFileIndexService::ShouldIgnorePath(TEXT("x/.git/config")));
	EXPECT_FALSE(FFileIndexService::ShouldIgnorePath(TEXT("Source/A.cpp")));
}

TEST(FileIndex, DisplayPathsOfAssetsLoseTheExtension)
{
	const char* const Cases[][2] = {
		{ "Content/Maps/Arena.umap", "Content/Maps/Arena" },
		{ "Arena.UMAP", "Arena" },
		{ "a.b/Mesh.v2.uasset", "a.b/Mesh.v2" },
		{ "Arena.uasset.bak", "Arena.uasset.bak" },
		{ "Source/Game/Player.cpp", "Source/Game/Player.cpp" },
		{ "uasset", "uasset" },
		{ "Notumap", "Notumap" },
		{ ".umap", "" },
		{ "", "" },
	};
	for (const auto& Case : Cases)
	{
		EXPECT_EQ(Utf8(FFileIndexService::CreateDisplayPath(FString(Case[0]))), Case[1]);
	}
}

TEST(FileIndex, AFinishedScanReplacesTheStoreUnlessItFailed)
{
	FFileIndexService& Service = FFileIndexService::Get();
	const auto MakeResult = [](const TCHAR* Path)
	{
		FFileIndexEntry Entry;
		Entry.FilePath = Path;
		return TOptional<TArray<FFileIndexEntry>>(TArray<FFileIndexEntry>{ Entry });
	};
	Service.bIsReady = false;
	Service.bIsIndexing = true;
	Service.OnIndexingComplete(MakeResult(TEXT("a")), 1.0, FString());
	EXPECT_TRUE(Service.bIsReady);
	EXPECT_FALSE(Service.bIsIndexing);
	ASSERT_EQ(Service.Entries.Num(), 1);

	Service.bIsReady = false;
	Service.bIsIndexing = true;
	Service.OnIndexingComplete(MakeResult(TEXT("b")), 1.0, TEXT("the disk is gone"));
	EXPECT_FALSE(Service.bIsIndexing);
	Service.bIsIndexing = true;
	Service.OnIndexingComplete(TOptional<TArray<FFileIndexEntry>>(), 1.0, FString());
	EXPECT_FALSE(Service.bIsIndexing);
	EXPECT_FALSE(Service.bIsReady);
	ASSERT_EQ(Service.Entries.Num(), 1);
	EXPECT_EQ(Utf8(Service.Entries[0].FilePath), "a");

	TArray<FFileIndexEntry> Untouched = Service.Entries;
	Service.ScanDirectory(TEXT("/"), Untouched);
	EXPECT_EQ(Untouched.Num(), 1);

	const bool bWasReady = Service.IsReady();
	Service.Shutdown();
	Service.Shutdown();
	EXPECT_EQ(Service.Entries.Num(), 0);
	EXPECT_TRUE(Service.bShutdownRequested);
	EXPECT_EQ(Service.IsReady(), bWasReady) << "the cache goes on";
}

TEST(FileSearch, RanksFilesAndTellsEqualsApart)
{
	FTemporaryProject Project;
	const std::string Name = Project.MakeName();
	for (const std::string& Path : { "Src/" + Name + ".cpp", Name + "/notes.txt", "Src/Old" + Name + ".h", "Src/" + Name + ".h",
			 "A/bb" + Name + ".h", "A/aa" + Name + ".h", "B/aa" + Name + ".h", "Content/" + Name + ".uasset", "Content/" + Name + ".umap",
			 std::string("Content/Other.uasset") })
	{
		Project.Write(Path, "x");
	}
	Scan();
	const std::vector<std::string> Expected = {
		"Src/" + Name + ".h",
		"Content/" + Name + ".uasset",
		"Content/" + Name + ".umap",
		"Src/" + Name + ".cpp",
		"A/aa" + Name + ".h",
		"B/aa" + Name + ".h",
		"A/bb" + Name + ".h",
		"Src/Old" + Name + ".h",
		Name + "/notes.txt",
	};
	EXPECT_EQ(Search(Name), Expected);
	EXPECT_EQ(Search(Name, 3), std::vector<std::string>(Expected.begin(), Expected.begin() + 3));
	EXPECT_TRUE(Search(Name, 0).empty());
	EXPECT_TRUE(Search(Name, -1).empty());
	EXPECT_TRUE(Search("").empty());
	EXPECT_TRUE(Search("notes.txt/" + Name).empty());

	const TArray<FFileSearchResult> Assets = FFileIndexService::Get().SearchFiles(Text("Content/" + Name), 1);
	ASSERT_EQ(Assets.Num(), 1);
	EXPECT_EQ(Assets[0].Score, 150);
	EXPECT_EQ(Utf8(Assets[0].Entry.DisplayPath), "Content/" + Name);
	EXPECT_EQ(Assets[0].Entry.FileType, EFileType::Asset);
	EXPECT_EQ(Assets[0].Entry.ModifiedTime.GetTicks(), 0);
	EXPECT_TRUE(Search(Name + ".uasset").empty()) << "an asset's extension takes no part";

	const TArray<FFileIndexEntry> All = FFileIndexService::Get().ScanFilesystem();
	EXPECT_EQ(All.Num(), FFileIndexService::Get().GetFileCount());
	EXPECT_TRUE(std::any_of(All.begin(), All.end(), [](const FFileIndexEntry& Entry) { return Entry.bIsDirectory; }));
}

TEST(FileSearch, FindsTheSameAsScoringAndSortingAll)
{
	FTemporaryProject Project;
	const std::string Letters = "abAB-";
	for (int32 File = 0; File < 400; ++File)
	{
		std::string Path = File % 3 ? "" : "b/";
		for (int32 Char = Project.MakeNumber(1, 4); Char > 0; --Char)
		{
			Path += Letters[static_cast<size_t>(Project.MakeNumber(0, 4))];
		}
		Project.Write(Path + (File % 5 ? ".x" : ".umap"), "");
	}
	Scan();
	TArray<FFileIndexEntry> Files = FFileIndexService::Get().ScanFilesystem();
	Files.RemoveAll([](const FFileIndexEntry& Entry) { return Entry.bIsDirectory; });
	ASSERT_GT(Files.Num(), 100);

	const auto NameOf = [](const FString& Path)
	{ return Path.RightChop(Path.Find(TEXT("/"), ESearchCase::IgnoreCase, ESearchDir::FromEnd) + 1); };
	for (const std::string Query : { "a", "ab", "ba", "B/a", "-", "aab", "bb-", "x", "bx", "a.x", "zz" })
	{
		TArray<FFileSearchResult> All;
		for (const FFileIndexEntry& Entry : Files)
		{
			const int32 Score = ScoreLiterally(Entry.DisplayPath, Text(Query));
			if (Score > 0)
			{
				All.Emplace(Entry, Score);
			}
		}
		All.Sort(
			[&NameOf](const FFileSearchResult& A, const FFileSearchResult& B)
			{
				if (A < B || B < A)
				{
					return A < B;
				}
				const FString& PathA = A.Entry.DisplayPath;
				const FString& PathB = B.Entry.DisplayPath;
				if (PathA.Len() != PathB.Len())
				{
					return PathA.Len() < PathB.Len();
				}
				for (const auto& [First, Second] :
					{ std::pair(NameOf(PathA), NameOf(PathB)), std::pair(A.Entry.FilePath, B.Entry.FilePath) })
				{
					for (const ESearchCase::Type Case : { ESearchCase::IgnoreCase, ESearchCase::CaseSensitive })
					{
						if (const int32 Order = First.Compare(Second, Case))
						{
							return Order < 0;
						}
					}
				}
				return false;
			});
		const std::vector<std::string> Expected = GetPaths(All);
		for (const size_t Limit : { size_t(1), size_t(7), size_t(50), size_t(100000), size_t(2147483647) })
		{
			SCOPED_TRACE(testing::Message() << Query << ", at most " << Limit);
			const std::vector<std::string> Cut(Expected.begin(), Expected.begin() + static_cast<long>(std::min(Limit, Expected.size())));
			EXPECT_EQ(Search(Query, static_cast<int32>(Limit)), Cut);
		}
	}
}

TEST(FileSearchModel, SearchesOnceForEachNewQueryAndTellsOfEveryChange)
{
	FTemporaryProject Project;
	const std::string Name = Project.MakeName();
	for (int32 File = 0; File < 60; ++File)
	{
		Project.Write(Name + std::to_string(File) + ".cpp", "");
	}
	Scan();
	FFileSearchViewModel Model;
	std::vector<int32> Calls;
	Model.OnResultsChanged().AddLambda([&Calls](const TArray<FFileSearchResult>& Results) { Calls.push_back(Results.Num()); });
	Model.SetSearchQuery(FString());
	EXPECT_TRUE(Calls.empty()) << "a fresh one has the empty query already";
	Model.SetSearchQuery(Text(Name));
	Model.SetSearchQuery(Text(Name));
	EXPECT_EQ(Calls, (std::vector<int32>{ 50 }));
	Model.SetSearchQuery(Text(Name).ToLower());
	EXPECT_EQ(Calls, (std::vector<int32>{ 50, 50 })) << "letter case makes a new query";
	EXPECT_EQ(Utf8(Model.GetSearchQuery()), Utf8(Text(Name).ToLower()));
	Model.SetSearchQuery(FString());
	EXPECT_EQ(Calls, (std::vector<int32>{ 50, 50, 0 }));
	Model.SetSearchQuery(Text(Name + "59"));
	EXPECT_EQ(Model.GetResultCount(), 1);
	Model.ClearSearch();
	Model.ClearSearch();
	EXPECT_EQ(Calls, (std::vector<int32>{ 50, 50, 0, 1, 0, 0 }));
	EXPECT_TRUE(Model.GetSearchQuery().IsEmpty());
	EXPECT_EQ(Model.GetIndexedFileCount(), 60);
	EXPECT_TRUE(Model.IsReady());
	EXPECT_FALSE(Model.IsIndexing());
}

TEST(FileIndexRefresh, ComesEveryThirtySeconds)
{
	FVelmoraModule Module;
	FTemporaryProject Former;
	Former.Write("One.txt", "");
	Scan();
	EXPECT_EQ(FFileIndexService::Get().GetFileCount(), 1);
	{
		FTemporaryProject Other;
		Other.Write("One.txt", "");
		Other.Write("Two.txt", "");
		for (int32 Second = 1; Second < 30; ++Second)
		{
			EXPECT_TRUE(Module.Poll(1.0f));
		}
		EXPECT_FLOAT_EQ(Module.RefreshElapsed, 29.0f);
		WaitForScan();
		EXPECT_EQ(FFileIndexService::Get().GetFileCount(), 1) << "nothing was scanned yet";
		EXPECT_TRUE(Module.Poll(1.0f));
		EXPECT_FLOAT_EQ(Module.RefreshElapsed, 0.0f);
		WaitForScan();
		EXPECT_EQ(FFileIndexService::Get().GetFileCount(), 2);
	}
	Scan();
}
