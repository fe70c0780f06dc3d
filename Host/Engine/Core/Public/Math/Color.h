#pragma once

#include "Math/UnrealMathUtility.h"
#include "Templates/TypeHash.h"

class FString;
struct FColor;

/** A colour in linear light; alpha is a plain fraction. */
struct CORE_API FLinearColor
{
	float R;
	float G;
	float B;
	float A;

	constexpr FLinearColor()
		: R(0)
		, G(0)
		, B(0)
		, A(0)
	{
	}
	constexpr explicit FLinearColor(EForceInit)
		: R(0)
		, G(0)
		, B(0)
		, A(0)
	{
	}
	constexpr FLinearColor(float InR, float InG, float InB, float InA = 1.0f)
		: R(InR)
		, G(InG)
		, B(InB)
		, A(InA)
	{
	}
	/** The bytes are taken as sRGB. */
	explicit FLinearColor(const FColor& Color);

	/** Linear value of each sRGB byte. */
	static const float sRGBToLinearTable[256];

	/** Bytes along the sRGB curve; alpha is not curved. Clamped. */
	FColor ToFColorSRGB() const;
	constexpr FLinearColor CopyWithNewOpacity(float NewOpacity) const { return FLinearColor(R, G, B, NewOpacity); }

	// Arithmetic is on all four.
	constexpr FLinearColor operator+(const FLinearColor& C) const { return FLinearColor(R + C.R, G + C.G, B + C.B, A + C.A); }
	constexpr FLinearColor operator-(const FLinearColor& C) const { return FLinearColor(R - C.R, G - C.G, B - C.B, A - C.A); }
	constexpr FLinearColor operator*(const FLinearColor& C) const { return FLinearColor(R * C.R, G * C.G, B * C.B, A * C.A); }
	constexpr FLinearColor operator*(float Scale) const { return FLinearColor(R * Scale, G * Scale, B * Scale, A * Scale); }
	constexpr FLinearColor operator/(float Scale) const { return *this * (1.0f / Scale); }
	friend constexpr FLinearColor operator*(float Scale, const FLinearColor& C) { return C * Scale; }
	constexpr FLinearColor& operator+=(const FLinearColor& C) { return *this = *this + C; }
	constexpr FLinearColor& operator-=(const FLinearColor& C) { return *this = *this - C; }
	constexpr FLinearColor& operator*=(const FLinearColor& C) { return *this = *this * C; }
	constexpr FLinearColor& operator*=(float Scale) { return *this = *this * Scale; }
	constexpr FLinearColor& operator/=(float Scale) { return *this = *this / Scale; }
	constexpr bool operator==(const FLinearColor&) const = default;
	bool Equals(const FLinearColor& C, float Tolerance = UE_KINDA_SMALL_NUMBER) const;
	/** "(R=1.000000,G=0.000000,B=0.000000,A=1.000000)" */
	FString ToString() const;
	friend uint32 GetTypeHash(const FLinearColor& C)
	{
		return HashCombine(HashCombine(GetTypeHash(C.R), GetTypeHash(C.G)), HashCombine(GetTypeHash(C.B), GetTypeHash(C.A)));
	}

	static const FLinearColor White;
	static const FLinearColor Gray;
	static const FLinearColor Black;
	static const FLinearColor Transparent;
	static const FLinearColor Red;
	static const FLinearColor Green;
	static const FLinearColor Blue;
	static const FLinearColor Yellow;
};

/** A colour in bytes, usually sRGB. */
struct CORE_API FColor
{
	uint8 B = 0;
	uint8 G = 0;
	uint8 R = 0;
	uint8 A = 0;

	constexpr FColor() = default;
	constexpr explicit FColor(EForceInit) {}
	constexpr FColor(uint8 InR, uint8 InG, uint8 InB, uint8 InA = 255)
		: B(InB)
		, G(InG)
		, R(InR)
		, A(InA)
	{
	}
	/** 0xAARRGGBB. */
	constexpr explicit FColor(uint32 InColor)
		: B((uint8)InColor)
		, G((uint8)(InColor >> 8))
		, R((uint8)(InColor >> 16))
		, A((uint8)(InColor >> 24))
	{
	}

	constexpr bool operator==(const FColor&) const = default;
	/** Three, six or eight hexadecimal digits, "#" in front or not: RGB, RRGGBB, RRGGBBAA. Anything else gives (0,0,0,0). */
	static FColor FromHex(const FString& HexString);
	/** RRGGBBAA. */
	FString ToHex() const;
	/** "(R=1,G=2,B=3,A=4)" */
	FString ToString() const;
	/** 0xAARRGGBB. */
	constexpr uint32 DWColor() const { return (uint32)A << 24 | (uint32)R << 16 | (uint32)G << 8 | (uint32)B; }
	friend uint32 GetTypeHash(const FColor& Color) { return Color.DWColor(); }

	static const FColor White;
	static const FColor Black;
	static const FColor Transparent;
	static const FColor Red;
	static const FColor Green;
	static const FColor Blue;
	static const FColor Yellow;
	static const FColor Cyan;
	static const FColor Magenta;
	static const FColor Orange;
	static const FColor Silver;
};
