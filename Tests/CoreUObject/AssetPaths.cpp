#include "Host/HostAssets.h"
#include "Host/HostLog.h"
#include "Host/HostPaths.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"
#include "UObject/SoftObjectPath.h"
#include "UObject/UObjectGlobals.h"

#include <filesystem>

namespace
{
	class AssetPaths : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
			FHostPaths::SetProjectDir(Temp.At(TEXT("P")));
			Temp.Write("P/Content/Heroes/BP_Hero.uasset", "x");
			Temp.Write("P/Content/Maps/Start.umap", "x");
			Temp.Write("P/Secret.uasset", "x");
		}
		void TearDown() override { FHostLog::SetStderrVerbosity(ELogVerbosity::Warning); }
		FTempFolder Temp;
	};

	UObject* Load(const TCHAR* Path)
	{
		return StaticLoadObject(UObject::StaticClass(), nullptr, Path);
	}
}

TEST_F(AssetPaths, FilesThatAreThere)
{
	UObject* Hero = Load(TEXT("/Game/Heroes/BP_Hero"));
	ASSERT_NE(Hero, nullptr);
	EXPECT_EQ(Utf8(Hero->GetPathName()), "/Game/Heroes/BP_Hero.BP_Hero");
	EXPECT_EQ(Utf8(Hero->GetPackage()->GetName()), "/Game/Heroes/BP_Hero");
	EXPECT_EQ(Load(TEXT("/Game/Heroes/BP_Hero.BP_Hero")), Hero);
	EXPECT_EQ(Load(TEXT("Blueprint'/Game/Heroes/BP_Hero.BP_Hero'")), Hero);
	EXPECT_EQ(StaticLoadObject(UClass::StaticClass(), nullptr, TEXT("/Game/Heroes/BP_Hero")), nullptr) << "not of that class";
	EXPECT_NE(Load(TEXT("/Game/Maps/Start")), nullptr);
	EXPECT_EQ(Utf8(FHostAssets::FindAssetFile(TEXT("/Game/Maps/Start.Start"))), Temp.AtBytes("P/Content/Maps/Start.umap"));

	std::filesystem::remove(Temp.AtBytes("P/Content/Heroes/BP_Hero.uasset"));
	EXPECT_EQ(Load(TEXT("/Game/Heroes/BP_Hero")), nullptr) << "the file went";
}

TEST_F(AssetPaths, RefusedPaths)
{
	FHostLog::ResetCounts();
	const TCHAR* const Bad[] = { TEXT(""), TEXT("/"), TEXT("/Game"), TEXT("/Game/"), TEXT("/Game/../Secret"),
		TEXT("/Game/Heroes/../../Secret"), TEXT("/Game/./Heroes/BP_Hero"), TEXT("/Game//Heroes/BP_Hero"), TEXT("/Game/Heroes\\BP_Hero"),
		TEXT("/Game/Heroes/"), TEXT("Heroes/BP_Hero"), TEXT("/Engine/Heroes/BP_Hero"), TEXT("/Game/Heroes/BP_Hero.Other"),
		TEXT("/Game/Heroes/BP_Hero."), TEXT("/Game/Nothing"), TEXT("'"), TEXT("''") };
	for (const TCHAR* Path : Bad)
	{
		EXPECT_EQ(Load(Path), nullptr) << Utf8(Path);
	}
	EXPECT_EQ(FHostLog::GetCount(ELogVerbosity::Warning), int32(std::size(Bad)));
	EXPECT_EQ(StaticLoadObject(UObject::StaticClass(), nullptr, TEXT("/Game/Nothing"), FStringView(), LOAD_Quiet), nullptr);
	EXPECT_EQ(FHostLog::GetCount(ELogVerbosity::Warning), int32(std::size(Bad))) << "quietly";
}
