#include "Companions/TemporaryProject.h"
#include "FileCache/ProjectFileCache.h"
#include "FileSearch/FileIndexService.h"
#include "FileSearch/FileSearchViewModel.h"

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
	WaitForScan();
	Model.SetSearchQuery(TEXT("player"));
	EXPECT_EQ(Model.GetResultCount(), 0) << "the same query is not searched for again";
	Model.SetSearchQuery(TEXT("playe"));
	EXPECT_EQ(Model.GetResultCount(), 1);
	EXPECT_EQ(Calls, 102);
}

TEST(FileIndex, TypesByName)
{
	const std::pair<const char*, EFileType> Cases[] = {
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
	for (const auto& [Path, Type] : Cases)
	{
		EXPECT_EQ(FFileIndexService::ClassifyFile(FString(Path)), Type) << Path;
	}
	EXPECT_TRUE(FFileIndexService::ShouldIgnorePath(TEXT("x/.git/config")));
	EXPECT_FALSE(FFileIndexService::ShouldIgnorePath(TEXT("Source/A.cpp")));
}

TEST(FileSearch, ResultsShowAssetsWithoutTheirExtension)
{
	struct FCase
	{
		const char* Path;
		const char* Shown;
		EFileType Type;
	};
	const FCase Cases[] = {
		{ "d/Content/Maps/Arena.umap", "d/Content/Maps/Arena", EFileType::Asset },
		{ "d/Arena.UMAP", "d/Arena", EFileType::Asset },
		{ "d/a.b/Mesh.v2.uasset", "d/a.b/Mesh.v2", EFileType::Asset },
		{ "d/Arena.uasset.bak", "d/Arena.uasset.bak", EFileType::Other },
		{ "d/Source/Game/Player.cpp", "d/Source/Game/Player.cpp", EFileType::Code },
		{ "d/uasset", "d/uasset", EFileType::Other },
		{ "d/Notumap", "d/Notumap", EFileType::Other },
		{ "d/Game.ini", "d/Game.ini", EFileType::Config },
	};
	FTemporaryProject Project;
	for (const FCase& Case : Cases)
	{
		Project.Write(Case.Path, "x");
	}
	Scan();
	const TArray<FFileSearchResult> Results = FFileIndexService::Get().SearchFiles(TEXT("d/"), 50);
	EXPECT_EQ(Results.Num(), 8);
	for (const FCase& Case : Cases)
	{
		const FFileSearchResult* Found =
			Results.FindByPredicate([&Case](const FFileSearchResult& Result) { return Utf8(Result.Entry.FilePath) == Case.Path; });
		ASSERT_NE(Found, nullptr) << Case.Path;
		EXPECT_EQ(Utf8(Found->Entry.DisplayPath), Case.Shown);
		EXPECT_EQ(Found->Entry.FileType, Case.Type) << Case.Path;
	}
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
}

TEST(FileSearch, LetterCaseDecidesBetweenFilesThatDifferInNothingElse)
{
	FTemporaryProject Project;
	for (const char* const Path : { "d/aB.h", "d/ab.h", "d/Ab.h", "e/ab.h", "D/AB.h", "f/AB.h" })
	{
		Project.Write(Path, "x");
	}
	Scan();
	EXPECT_EQ(Search("ab"), (std::vector<std::string>{ "D/AB.h", "f/AB.h", "d/Ab.h", "d/aB.h", "d/ab.h", "e/ab.h" }));
	EXPECT_EQ(Search("AB", 2), (std::vector<std::string>{ "D/AB.h", "f/AB.h" }));
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
