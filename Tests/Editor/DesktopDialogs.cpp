#include "DesktopPlatformModule.h"
#include "Host/HostFileDialogs.h"
#include "Support/Base/Printers.h"

#include <gtest/gtest.h>

TEST(DesktopDialogs, SaveFileDialogHandsOverTheAnswer)
{
	IDesktopPlatform* const Desktop = FDesktopPlatformModule::Get();
	ASSERT_NE(Desktop, nullptr);
	TArray<FString> Files = { TEXT("from before") };
	const auto Ask = [&]()
	{
		return Desktop->SaveFileDialog(
			nullptr, TEXT("Export"), TEXT("/folder"), TEXT("talk"), TEXT("Text (*.txt)|*.txt"), EFileDialogFlags::None, Files);
	};
	FHostFileDialogs::QueueAnswer(TEXT("name without ending"));
	EXPECT_TRUE(Ask());
	ASSERT_EQ(Files.Num(), 1);
	EXPECT_EQ(Utf8(Files[0]), "/folder/name without ending");
	testing::internal::CaptureStderr();
	EXPECT_FALSE(Ask()) << "nobody to ask";
	EXPECT_NE(testing::internal::GetCapturedStderr().find("taking \"Cancel\": Export"), std::string::npos);
	EXPECT_EQ(Files.Num(), 0);
}
