#include "Misc/Paths.h"

#include "HAL/FileManager.h"
#include "Host/HostPaths.h"
#include "Support/Base/FolderMode.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

TEST(SystemPaths, PartsOfAPath)
{
	struct FCase
	{
		const TCHAR* Path;
		const char* Extension;
		const char* Clean;
		const char* Base;
		const char* BaseWithFolder;
		const char* Folder;
	};
	const FCase Cases[] = {
		{ TEXT("Source/Game/Player.cpp"), "cpp", "Player.cpp", "Player", "Source/Game/Player", "Source/Game" },
		{ TEXT("C:\\Work\\A.b\\Read.me.txt"), "txt", "Read.me.txt", "Read.me", "C:\\Work\\A.b\\Read.me", "C:\\Work\\A.b" },
		{ TEXT("a.b/file"), "", "file", "file", "a.b/file", "a.b" },
		{ TEXT("/Game/Heroes/BP_Hero.BP_Hero"), "BP_Hero", "BP_Hero.BP_Hero", "BP_Hero", "/Game/Heroes/BP_Hero", "/Game/Heroes" },
		{ TEXT(".gitignore"), "gitignore", ".gitignore", "", "", "" },
		{ TEXT("folder/"), "", "", "", "folder/", "folder" },
		{ TEXT("x."), "", "x.", "x", "x", "" },
		{ TEXT(""), "", "", "", "", "" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Utf8(Case.Path));
		EXPECT_EQ(Utf8(FPaths::GetExtension(Case.Path)), Case.Extension);
		EXPECT_EQ(Utf8(FPaths::GetCleanFilename(Case.Path)), Case.Clean);
		EXPECT_EQ(Utf8(FPaths::GetBaseFilename(Case.Path)), Case.Base);
		EXPECT_EQ(Utf8(FPaths::GetBaseFilename(Case.Path, false)), Case.BaseWithFolder);
		EXPECT_EQ(Utf8(FPaths::GetPath(Case.Path)), Case.Folder);
	}
	EXPECT_EQ(Utf8(FPaths::GetExtension(TEXT("a.H"), true)), ".H");
}

TEST(SystemPaths, Collapse)
{
	struct FCase
	{
		const TCHAR* Path;
		const char* Collapsed; // Null when the path is left alone.
	};
	const FCase Cases[] = {
		{ TEXT("/a/b/../c"), "/a/c" },
		{ TEXT("/a/./b//c/"), "/a/b/c/" },
		{ TEXT("a/b/../../c"), "c" },
		{ TEXT("../../x"), "../../x" },
		{ TEXT("a/../../x"), "../x" },
		{ TEXT("/a/.."), "/" },
		{ TEXT("a/.."), "" },
		{ TEXT("C:/a/../b"), "C:/b" },
		{ TEXT("/a..b/...c"), "/a..b/...c" },
		{ TEXT("/../etc"), nullptr },
		{ TEXT("C:/../x"), nullptr },
		{ TEXT("./P:./x"), "./P:./x" }, // No drive comes to be by what is left out in front of a name.
		{ TEXT("a/../P:/./x"), "./P:/x" },
	};
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Utf8(Case.Path));
		FString Path = Case.Path;
		EXPECT_EQ(FPaths::CollapseRelativeDirectories(Path), Case.Collapsed != nullptr);
		EXPECT_EQ(Utf8(Path), Case.Collapsed ? std::string(Case.Collapsed) : Utf8(Case.Path));
	}
}

TEST(SystemPaths, RelativeTo)
{
	const std::tuple<const TCHAR*, const TCHAR*, const char*> Cases[] = {
		{ TEXT("/p/a/b.txt"), TEXT("/p/"), "a/b.txt" }, { TEXT("/p/a/b.txt"), TEXT("/p/c/d/"), "../../a/b.txt" },
		{ TEXT("/p/a"), TEXT("/p/file"), "a" }, { TEXT("/p/a/"), TEXT("/p/"), "a/" },
		{ TEXT("/x"), TEXT("C:/y/"), "/x" }, // Nothing in common: left alone.
	};
	for (const auto& [Input, To, Result] : Cases)
	{
		FString Path = Input;
		FPaths::MakePathRelativeTo(Path, To);
		EXPECT_EQ(Utf8(Path), Result) << Utf8(Input);
	}
}

TEST(SystemPaths, ProjectFolders)
{
	const FTempFolder Temp;
	FHostPaths::SetProjectDir(Temp.At(TEXT("x/../Game")));
	EXPECT_EQ(Utf8(FPaths::ProjectDir()), Temp.AtBytes("Game/"));
	EXPECT_EQ(Utf8(FPaths::ProjectContentDir()), Temp.AtBytes("Game/Content/"));
	EXPECT_EQ(Utf8(FPaths::ProjectSavedDir()), Temp.AtBytes("Game/Saved/"));
	FHostPaths::SetProjectSavedDir(Temp.At(TEXT("Elsewhere")));
	EXPECT_EQ(Utf8(FPaths::ProjectSavedDir()), Temp.AtBytes("Elsewhere/"));
	FHostPaths::SetProjectDir(Temp.At(TEXT("Other/")));
	EXPECT_EQ(Utf8(FPaths::ProjectSavedDir()), Temp.AtBytes("Other/Saved/")) << "a new project has its own folder";
	FHostPaths::SetBaseDir(Temp.At());
	EXPECT_EQ(Utf8(FPaths::ConvertRelativePathToFull(TEXT("a\\..\\b.txt"))), Temp.AtBytes("b.txt"));
	EXPECT_EQ(Utf8(FPaths::ConvertRelativePathToFull(TEXT("/r"), TEXT("../b"))), "/b");
}

TEST(SystemPaths, FoldersAreRelativeAsInTheEditor)
{
	const FTempFolder Temp;
	Temp.Write("Game/Content/A.uasset", "x");
	FHostPaths::SetProjectDir(Temp.At(TEXT("Game")));
	{
		const FFolderMode Mode(true, Temp.At(TEXT("Engine/Binaries/Win64")));
		EXPECT_EQ(Utf8(FPaths::ProjectDir()), "../../../Game/");
		EXPECT_EQ(Utf8(FPaths::ProjectContentDir()), "../../../Game/Content/");
		EXPECT_EQ(Utf8(FPaths::ProjectSavedDir()), "../../../Game/Saved/");
		EXPECT_EQ(Utf8(FPaths::ConvertRelativePathToFull(FPaths::ProjectDir())), Temp.AtBytes("Game/"));
		EXPECT_TRUE(IFileManager::Get().FileExists(*(FPaths::ProjectContentDir() / TEXT("A.uasset"))));
		EXPECT_TRUE(FPaths::DirectoryExists(FPaths::ProjectDir()));
		FHostPaths::SetBaseDir(Temp.At(TEXT("Game")));
		EXPECT_EQ(Utf8(FPaths::ProjectDir()), "./");
	}
	EXPECT_EQ(Utf8(FPaths::ProjectDir()), Temp.AtBytes("Game/"));
}
