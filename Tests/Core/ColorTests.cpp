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

TEST(Colors, FromHex)
{
	struct FCase
	{
		const TCHAR* Text;
		FColor Expected;
	};
	const FCase Cases[] = {
		{ TEXT("#10B981"), FColor(0x10, 0xb9, 0x81) },
		{ TEXT("10b981"), FColor(0x10, 0xb9, 0x81) },
		{ TEXT("#fA0"), FColor(0xff, 0xaa, 0x00) },
		{ TEXT("#01020304"), FColor(1, 2, 3, 4) },
		{ TEXT("#1234"), FColor(0, 0, 0, 0) },
		{ TEXT("#12345G"), FColor(0, 0, 0, 0) },
		{ TEXT("#"), FColor(0, 0, 0, 0) },
		{ TEXT(""), FColor(0, 0, 0, 0) },
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(FColor::FromHex(Case.Text), Case.Expected) << Utf8(Case.Text);
	}
	EXPECT_EQ(Utf8(FColor(1, 2, 0xab, 4).ToHex()), "0102AB04");
}

TEST(Colors, LinearArithmetic)
{
	const FLinearColor Color(0.2f, 0.4f, 0.6f, 0.8f);
	EXPECT_EQ(Color * 0.5f, FLinearColor(0.1f, 0.2f, 0.3f, 0.4f));
	EXPECT_EQ(Color.CopyWithNewOpacity(0.1f), FLinearColor(0.2f, 0.4f, 0.6f, 0.1f));
	EXPECT_TRUE(Color.Equals(FLinearColor(0.20005f, 0.4f, 0.6f, 0.8f)));
	EXPECT_FALSE(Color.Equals(FLinearColor(0.201f, 0.4f, 0.6f, 0.8f)));
	EXPECT_EQ(FLinearColor::Transparent.A, 0.0f);
}

TEST(Maths, RoundingIsHalfUp)
{
	EXPECT_EQ(FMath::RoundToInt32(2.5f), 3);
	EXPECT_EQ(FMath::RoundToInt32(-2.5f), -2);
	EXPECT_EQ(FMath::RoundToInt32(-2.6), -3);
	EXPECT_EQ(FMath::FloorToInt(-0.5f), -1);
	EXPECT_EQ(FMath::RoundToInt32(1e20), MAX_int32);
	EXPECT_EQ(FMath::RoundToInt32(std::numeric_limits<double>::quiet_NaN()), 0);
	EXPECT_EQ(FMath::Clamp(5, 1, 3), 3);
	EXPECT_EQ(FMath::Max(1.0f, 2.0), 2.0);
	EXPECT_EQ(FVector2D(1, 2) * 2 + FVector2D(0.5, 0.5), FVector2D(2.5, 4.5));
	EXPECT_EQ(FVector2D(FVector2f(1.5f, 2.5f)), FVector2D(1.5, 2.5));
}
