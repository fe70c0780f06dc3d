#include "Host/Platform.h"
#include "Support/Base/PinnedFonts.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <fontconfig/fontconfig.h>

TEST(FontCheck, MissingFontsAreNamedWithTheirPackages)
{
	UsePinnedFonts();
	FcInitReinitialize();
	EXPECT_EQ(Utf8(FHostPlatform::FindMissingFonts()), "");
	// A font that draws Chinese without every rare letter of it, so that it does not call itself Chinese, is one all the same.
	EXPECT_EQ(Utf8(FHostPlatform::FindMissingScripts()),
		"There is no font for Korean, Thai, Hindi, Tamil: boxes stand for its letters. Please install fonts-noto-cjk fonts-noto-core.");

	const FTempFolder Folder;
	Folder.Write("fonts.conf",
		"<?xml version=\"1.0\"?><fontconfig><dir>" + Folder.AtBytes("none") + "</dir><cachedir>" + Folder.AtBytes("cache") +
			"</cachedir></fontconfig>");
	setenv("FONTCONFIG_FILE", Folder.AtBytes("fonts.conf").c_str(), 1);
	FcInitReinitialize();
	const TArray<FString> Missing = FHostPlatform::FindMissingFonts();
	const FString Scripts = FHostPlatform::FindMissingScripts();
	UsePinnedFonts();
	FcInitReinitialize();

	ASSERT_EQ(Missing.Num(), 3);
	EXPECT_TRUE(Missing[0].Contains(TEXT("Roboto")) && Missing[0].Contains(TEXT("fonts-roboto-unhinted")));
	EXPECT_TRUE(Missing[1].Contains(TEXT("fonts-noto-mono")));
	EXPECT_TRUE(Missing[2].Contains(TEXT("fonts-noto-color-emoji")));
	EXPECT_EQ(Utf8(Scripts),
		"There is no font for Chinese, Japanese, Korean, Thai, Arabic, Hindi, Tamil: boxes stand for its letters. Please install "
		"fonts-noto-cjk fonts-noto-core.");
}
