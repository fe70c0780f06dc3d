#include "Misc/ConfigCacheIni.h"
#include "Settings/VelmoraSettings.h"
#include "Support/Base/Printers.h"
#include "UObject/UObjectGlobals.h"

#include <string>
#include <vector>

TEST(SettingsTests, ValuesSurviveSavingAndLoading)
{
	UVelmoraSettings* Settings = GetMutableDefault<UVelmoraSettings>();
	ASSERT_NE(Settings, nullptr);
	EXPECT_EQ(Settings->DefaultConversationMode, 3);
	EXPECT_FALSE(Settings->bIncludeEngineSource);
	Settings->DefaultConversationMode = 1;
	Settings->bIncludeEngineSource = true;
	Settings->ProjectDescription = TEXT("one \"quoted\"\nline; and = more");
	Settings->CurrentAreaOfFocus = TEXT("two");
	Settings->GuidelinesAndTips = TEXT("three");
	Settings->Constraints = TEXT("four");
	Settings->EngineSourceFolder = TEXT("/opt/engine source");
	Settings->SaveConfig();
	Settings->Constraints = TEXT(""); // Emptied on purpose: that is a value too.
	Settings->SaveConfig();
	Settings->DefaultConversationMode = 2;
	Settings->bIncludeEngineSource = false;
	for (FString* Field : { &Settings->ProjectDescription, &Settings->CurrentAreaOfFocus, &Settings->GuidelinesAndTips,
			 &Settings->Constraints, &Settings->EngineSourceFolder })
	{
		*Field = TEXT("changed");
	}
	Settings->LoadConfig();
	EXPECT_EQ(Settings->DefaultConversationMode, 1);
	EXPECT_TRUE(Settings->bIncludeEngineSource);
	EXPECT_EQ(Utf8(Settings->ProjectDescription), "one \"quoted\"\nline; and = more");
	EXPECT_EQ(Utf8(Settings->CurrentAreaOfFocus), "two");
	EXPECT_EQ(Utf8(Settings->GuidelinesAndTips), "three");
	EXPECT_EQ(Utf8(Settings->Constraints), "");
	EXPECT_EQ(Utf8(Settings->EngineSourceFolder), "/opt/engine source");
}

TEST(SettingsTests, AnUnknownModeMeansGeneral)
{
	UVelmoraSettings* Settings = GetMutableDefault<UVelmoraSettings>();
	const FString Section = Settings->GetClass()->GetPathName();
	for (const TCHAR* Stored : { TEXT("-1"), TEXT("4"), TEXT("256") })
	{
		SCOPED_TRACE(Utf8(Stored));
		Settings->DefaultConversationMode = 1;
		GConfig->SetString(*Section, TEXT("DefaultConversationMode"), Stored, Settings->GetDefaultConfigFilename());
		Settings->LoadConfig();
		EXPECT_EQ(Settings->DefaultConversationMode, 3);
	}
}
