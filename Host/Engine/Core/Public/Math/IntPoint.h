#pragma once

#include "Math/Vector2D.h"

struct FIntPoint
{
	int32 X = 0;
	int32 Y = 0;

	constexpr FIntPoint() = default;
	constexpr FIntPoint(int32 InX, int32 InY)
		: X(InX)
		, Y(InY)
	{
	}
	constexpr explicit FIntPoint(int32 InXY)
		: X(InXY)
		, Y(InXY)
	{
	}
	constexpr bool operator==(const FIntPoint&) const = default;
	constexpr FIntPoint operator+(const FIntPoint& P) const { return FIntPoint(X + P.X, Y + P.Y); }
	constexpr FIntPoint operator-(const FIntPoint& P) const { return FIntPoint(X - P.X, Y - P.Y); }
	constexpr FIntPoint operator*(int32 Scale) const { return FIntPoint(X * Scale, Y * Scale); }
	constexpr FIntPoint operator/(int32 Divisor) const { return FIntPoint(X / Divisor, Y / Divisor); }
	constexpr FIntPoint& operator+=(const FIntPoint& P) { return *this = *this + P; }
	constexpr FIntPoint& operator-=(const FIntPoint& P) { return *this = *this - P; }
	friend uint32 GetTypeHash(const FIntPoint& P) { return HashCombine(GetTypeHash(P.X), GetTypeHash(P.Y)); }

	static const FIntPoint ZeroValue;
};
inline constexpr FIntPoint FIntPoint::ZeroValue{ 0, 0 };
