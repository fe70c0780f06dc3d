#include "Support/Base/PinnedFonts.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace
{
	struct FPinnedFont
	{
		const char* File;
		const char* Package;
	};
	constexpr FPinnedFont PinnedFonts[] = {
		{ "/usr/share/fonts/truetype/roboto/unhinted/RobotoTTF/Roboto-Regular.ttf", "fonts-roboto-unhinted" },
		{ "/usr/share/fonts/truetype/noto/NotoSansMono-Regular.ttf", "fonts-noto-mono" },
		{ "/usr/share/fonts/truetype/noto/NotoColorEmoji.ttf", "fonts-noto-color-emoji" },
		{ "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "fonts-dejavu-core" },
		{ "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf", "fonts-droid-fallback" },
		{ "/usr/share/fontconfig/conf.avail/10-scale-bitmap-fonts.conf", "fontconfig-config" },
		{ "/usr/share/fontconfig/conf.avail/45-generic.conf", "fontconfig-config" },
	};
}

void UsePinnedFonts()
{
	bool bComplete = true;
	for (const FPinnedFont& Font : PinnedFonts)
	{
		std::error_code Error;
		if (!std::filesystem::exists(Font.File, Error))
		{
			std::fprintf(stderr, "Tests with text need the Debian package %s (%s is missing).\n", Font.Package, Font.File);
			bComplete = false;
		}
	}
	if (!bComplete)
	{
		std::exit(1);
	}
	setenv("FONTCONFIG_FILE", VELMORA_TEST_FONTS, 1);
}
