#include "Editor.h"
#include "Host/HostEditor.h"
#include "Host/HostLog.h"
#include "Host/HostPaths.h"
#include "SourceCodeNavigation.h"
#include "Subsystems/AssetEditorSubsystem.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"
#include "WorkspaceMenuStructure.h"
#include "WorkspaceMenuStructureModule.h"

#include <gtest/gtest.h>

namespace
{
	class EditorServices : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
			FHostPaths::SetProjectDir(Temp.At(TEXT("P")));
			Temp.Write("P/Content/A.uasset", "");
			Temp.Write("P/Source/A.cpp", "");
			FHostEditor::StartUp();
		}
		void TearDown() override
		{
			FHostEditor::ShutDown();
			FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		}
		FTempFolder Temp;
	};
}

TEST_F(EditorServices, OpensAssets)
{
	ASSERT_NE(GEditor, nullptr);
	UAssetEditorSubsystem* Assets = GEditor->GetEditorSubsystem<UAssetEditorSubsystem>();
	ASSERT_NE(Assets, nullptr);
	EXPECT_EQ(GEditor->GetEditorSubsystem<UAssetEditorSubsystem>(), Assets);
	UObject* Asset = StaticLoadObject(UObject::StaticClass(), nullptr, TEXT("/Game/A"));
	EXPECT_TRUE(Assets->OpenEditorForAsset(Asset));
	EXPECT_FALSE(Assets->OpenEditorForAsset(static_cast<UObject*>(nullptr)));
	Assets->OpenEditorForAsset(TEXT("/Game/A.A"));
	Assets->OpenEditorForAsset(TEXT("/Game/Missing"));
	FHostEditor::SetOpenAssetHook([](UObject*) { return false; });
	EXPECT_FALSE(Assets->OpenEditorForAsset(Asset));
	EXPECT_EQ(Utf8(FString::Join(FHostEditor::GetOpenedAssets(), TEXT(" "))), "/Game/A.A /Game/A.A /Game/A.A");
}

TEST_F(EditorServices, OpensSourceFiles)
{
	FString Missing;
	FHostEditor::SetMissingSourceHook([&Missing](const FString& Path) { Missing = Path; });
	EXPECT_FALSE(FSourceCodeNavigation::OpenSourceFile(Temp.At(TEXT("P/Source/Missing.cpp"))));
	EXPECT_EQ(Utf8(Missing), Temp.AtBytes("P/Source/Missing.cpp"));
	FHostOpenedSource Opened;
	FHostEditor::SetOpenSourceHook(
		[&Opened](const FHostOpenedSource& Source)
		{
			Opened = Source;
			return true;
		});
	EXPECT_TRUE(FSourceCodeNavigation::OpenSourceFile(Temp.At(TEXT("P/Source/A.cpp")), 12, 3));
	EXPECT_EQ(Utf8(Opened.Path), Temp.AtBytes("P/Source/A.cpp"));
	EXPECT_EQ(Opened.Line, 12);
	EXPECT_EQ(Opened.Column, 3);
	EXPECT_EQ(FHostEditor::GetOpenedSources().Num(), 1);
}

TEST_F(EditorServices, MenuGroupsStandBelowOneRoot)
{
	const IWorkspaceMenuStructure& Menu = WorkspaceMenu::GetMenuStructure();
	EXPECT_EQ(&Menu, &WorkspaceMenu::GetMenuStructure());
	const TSharedRef<FWorkspaceItem> Root = Menu.GetStructureRoot();
	TSharedPtr<FWorkspaceItem> Item = Menu.GetToolsCategory();
	EXPECT_FALSE(Item->GetDisplayName().IsEmpty());
	while (Item->GetParent().IsValid())
	{
		Item = Item->GetParent();
	}
	EXPECT_EQ(Item, Root);
}
