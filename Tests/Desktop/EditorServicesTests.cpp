#include "EditorServices.h"
#include "Editor.h"
#include "Host/HostPaths.h"
#include "Host/HostServices.h"
#include "Misc/Paths.h"
#include "SourceCodeNavigation.h"
#include "Subsystems/AssetEditorSubsystem.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"
#include "UObject/UObjectGlobals.h"

#include <filesystem>
#include <gtest/gtest.h>

class FEditorServicesTest : public ::testing::Test
{
protected:
	void SetUp() override
	{
		ProjectDirBefore = FPaths::ProjectDir();
		FHostPaths::SetProjectDir(Project.At(TEXT("P")));
		Project.Write("P/Content/Maps/Start.umap", "");
		Project.Write("P/Source/A.cpp", "");
		Project.Write("Outside.uasset", "");
		std::filesystem::create_symlink(Project.AtBytes("Outside.uasset"), Project.AtBytes("P/Content/Link.uasset"));
		std::filesystem::create_symlink(Project.AtBytes("P/Content/Maps"), Project.AtBytes("P/Content/Inner"));
		FHostServices::SetLaunchHook(
			[this](const FHostLaunchRequest& Request, FString&)
			{
				Opened += (Request.Kind == FHostLaunchRequest::EKind::Source ? "source " : "file ") + Utf8(Request.Target);
				return true;
			});
		FEditorServices::Install();
	}

	void TearDown() override
	{
		FEditorServices::Uninstall();
		FHostServices::SetLaunchHook(nullptr);
		FHostPaths::SetProjectDir(ProjectDirBefore);
	}

	FTempFolder Project;
	FString ProjectDirBefore;
	std::string Opened;
};

TEST_F(FEditorServicesTest, AssetsOpenFromTheContentFolderAlone)
{
	const std::pair<const TCHAR*, std::string> Cases[] = {
		{ TEXT("/Game/Maps/Start"), "file " + Project.AtBytes("P/Content/Maps/Start.umap") },
		{ TEXT("/Game/Inner/Start"), "file " + Project.AtBytes("P/Content/Maps/Start.umap") },
		{ TEXT("/Game/Link"), "" },
	};
	for (const auto& [Name, Expected] : Cases)
	{
		Opened.clear();
		UObject* Asset = StaticLoadObject(UObject::StaticClass(), nullptr, Name);
		ASSERT_NE(Asset, nullptr);
		EXPECT_EQ(GEditor->GetEditorSubsystem<UAssetEditorSubsystem>()->OpenEditorForAsset(Asset), !Expected.empty());
		EXPECT_EQ(Opened, Expected);
	}
}

TEST_F(FEditorServicesTest, SourcesOpenInTheEditor)
{
	EXPECT_TRUE(FSourceCodeNavigation::OpenSourceFile(Project.At(TEXT("P/Source/A.cpp"))));
	EXPECT_EQ(Opened, "source " + Project.AtBytes("P/Source/A.cpp"));
}
