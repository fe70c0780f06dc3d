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

FColor FLinearColor::ToFColor(bool bSRGB) const
{
	return bSRGB ? ToFColorSRGB() : QuantizeRound();
}

FColor FLinearColor::QuantizeRound() const
{
	return FColor(FractionToByte(R), FractionToByte(G), FractionToByte(B), FractionToByte(A));
}

FLinearColor FLinearColor::GetClamped(float InMin, float InMax) const
{
	return FLinearColor(
		FMath::Clamp(R, InMin, InMax), FMath::Clamp(G, InMin, InMax), FMath::Clamp(B, InMin, InMax), FMath::Clamp(A, InMin, InMax));
}

FLinearColor FLinearColor::Desaturate(float Desaturation) const
{
	const float Grey = GetLuminance();
	return FLinearColor(FMath::Lerp(R, Grey, Desaturation), FMath::Lerp(G, Grey, Desaturation), FMath::Lerp(B, Grey, Desaturation), A);
}

FLinearColor FLinearColor::LinearRGBToHSV() const
{
	const float Highest = FMath::Max3(R, G, B);
	const float Range = Highest - FMath::Min3(R, G, B);
	float Hue = 0.0f;
	if (Range > 0.0f)
	{
		if (Highest == R)
		{
			Hue = FMath::Fmod((G - B) / Range * 60.0f + 360.0f, 360.0f);
		}
		else
		{
			Hue = Highest == G ? (B - R) / Range * 60.0f + 120.0f : (R - G) / Range * 60.0f + 240.0f;
		}
	}
	return FLinearColor(Hue, Highest > 0.0f ? Range / Highest : 0.0f, Highest, A);
}

FLinearColor FLinearColor::HSVToLinearRGB() const
{
	const float Sector = R / 60.0f;
	const float Fraction = FMath::Frac(Sector);
	const float P = B * (1.0f - G);
	const float Q = B * (1.0f - Fraction * G);
	const float T = B * (1.0f - (1.0f - Fraction) * G);
	switch (((FMath::FloorToInt32(Sector) % 6) + 6) % 6)
	{
	case 0:
		return FLinearColor(B, T, P, A);
	case 1:
		return FLinearColor(Q, B, P, A);
	case 2:
		return FLinearColor(P, B, T, A);
	case 3:
		return FLinearColor(P, Q, B, A);
	case 4:
		return FLinearColor(T, P, B, A);
	default:
		return FLinearColor(B, P, Q, A);
	}
}

FLinearColor FLinearColor::LerpUsingHSV(const FLinearColor& From, const FLinearColor& To, float Progress)
{
	const FLinearColor Start = From.LinearRGBToHSV();
	const FLinearColor End = To.LinearRGBToHSV();
	float StartHue = Start.R;
	float EndHue = End.R;
	if (FMath::Abs(StartHue - EndHue) > 180.0f)
	{
		(EndHue > StartHue ? StartHue : EndHue) += 360.0f; // The short way round.
	}
	FLinearColor Mixed(FMath::Fmod(FMath::Lerp(StartHue, EndHue, Progress), 360.0f), FMath::Lerp(Start.G, End.G, Progress),
		FMath::Lerp(Start.B, End.B, Progress));
	Mixed = Mixed.HSVToLinearRGB();
	Mixed.A = FMath::Lerp(From.A, To.A, Progress);
	return Mixed;
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
