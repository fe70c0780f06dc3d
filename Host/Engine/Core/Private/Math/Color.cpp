#include "Math/Color.h"

#include "Containers/UnrealString.h"

namespace
{
	uint8 FractionToByte(float Fraction)
	{
		// Not-a-number counts as 0.
		return Fraction > 0.0f ? (uint8)(FMath::Min(Fraction, 1.0f) * 255.0f + 0.5f) : 0;
	}

	float EncodeSRGB(float Linear)
	{
		if (!(Linear > 0.0f))
		{
			return 0.0f;
		}
		return Linear <= 0.0031308f ? Linear * 12.92f : 1.055f * std::pow(FMath::Min(Linear, 1.0f), 1.0f / 2.4f) - 0.055f;
	}

	int32 HexValue(TCHAR Char)
	{
		if (!FChar::IsHexDigit(Char))
		{
			return INDEX_NONE;
		}
		return FChar::IsDigit(Char) ? Char - '0' : FChar::ToLower(Char) - 'a' + 10;
	}
}

FLinearColor::FLinearColor(const FColor& Color)
	: R(sRGBToLinearTable[Color.R])
	, G(sRGBToLinearTable[Color.G])
	, B(sRGBToLinearTable[Color.B])
	, A(Color.A / 255.0f)
{
}

FColor FLinearColor::ToFColorSRGB() const
{
	return FColor(FractionToByte(EncodeSRGB(R)), FractionToByte(EncodeSRGB(G)), FractionToByte(EncodeSRGB(B)), FractionToByte(A));
}

bool FLinearColor::Equals(const FLinearColor& C, float Tolerance) const
{
	return FMath::Abs(R - C.R) < Tolerance && FMath::Abs(G - C.G) < Tolerance && FMath::Abs(B - C.B) < Tolerance &&
		FMath::Abs(A - C.A) < Tolerance;
}

FString FLinearColor::ToString() const
{
	return FString::Printf(TEXT("(R=%f,G=%f,B=%f,A=%f)"), R, G, B, A);
}

FColor FColor::FromHex(const FString& HexString)
{
	const int32 Start = HexString.Len() > 0 && HexString[0] == '#' ? 1 : 0;
	const int32 Count = HexString.Len() - Start;
	int32 Digits[8];
	if (Count != 3 && Count != 6 && Count != 8)
	{
		return FColor(0, 0, 0, 0);
	}
	for (int32 Index = 0; Index < Count; ++Index)
	{
		Digits[Index] = HexValue(HexString[Start + Index]);
		if (Digits[Index] == INDEX_NONE)
		{
			return FColor(0, 0, 0, 0);
		}
	}
	if (Count == 3)
	{
		return FColor((uint8)(Digits[0] * 17), (uint8)(Digits[1] * 17), (uint8)(Digits[2] * 17));
	}
	const auto Byte = [&Digits](int32 Index) { return (uint8)(Digits[Index * 2] * 16 + Digits[Index * 2 + 1]); };
	return FColor(Byte(0), Byte(1), Byte(2), Count == 8 ? Byte(3) : (uint8)255);
}

FString FColor::ToHex() const
{
	return FString::Printf(TEXT("%02X%02X%02X%02X"), R, G, B, A);
}

FString FColor::ToString() const
{
	return FString::Printf(TEXT("(R=%i,G=%i,B=%i,A=%i)"), R, G, B, A);
}
