#include "Support/Base/Printers.h"

TEST(Colors, EveryByteSurvivesTheCurve)
{
	for (int32 Byte = 0; Byte < 256; ++Byte)
	{
		const FColor Color((uint8)Byte, (uint8)(255 - Byte), 7, (uint8)Byte);
		EXPECT_EQ(FLinearColor(Color).ToFColorSRGB(), Color);
		const double X = Byte / 255.0;
		EXPECT_FLOAT_EQ(FLinearColor::sRGBToLinearTable[Byte], (float)(X <= 0.04045 ? X / 12.92 : std::pow((X + 0.055) / 1.055, 2.4)));
	}
	EXPECT_EQ(FLinearColor(-1.0f, 2.0f, std::numeric_limits<float>::quiet_NaN(), 3.0f).ToFColorSRGB(), FColor(0, 255, 0, 255));
}
