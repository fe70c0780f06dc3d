#pragma once

#include "Math/UnrealMathUtility.h"

namespace UE::Math
{
	template <typename T>
	struct TVector4
	{
		T X;
		T Y;
		T Z;
		T W;

		constexpr TVector4()
			: X(0)
			, Y(0)
			, Z(0)
			, W(0)
		{
		}
		constexpr TVector4(T InX, T InY, T InZ, T InW = T(1))
			: X(InX)
			, Y(InY)
			, Z(InZ)
			, W(InW)
		{
		}
		constexpr bool operator==(const TVector4&) const = default;
		constexpr TVector4 operator+(const TVector4& V) const { return TVector4(X + V.X, Y + V.Y, Z + V.Z, W + V.W); }
		constexpr TVector4 operator-(const TVector4& V) const { return TVector4(X - V.X, Y - V.Y, Z - V.Z, W - V.W); }
		constexpr TVector4 operator*(T Scale) const { return TVector4(X * Scale, Y * Scale, Z * Scale, W * Scale); }
		bool Equals(const TVector4& V, T Tolerance = (T)UE_KINDA_SMALL_NUMBER) const
		{
			return FMath::Abs(X - V.X) <= Tolerance && FMath::Abs(Y - V.Y) <= Tolerance && FMath::Abs(Z - V.Z) <= Tolerance &&
				FMath::Abs(W - V.W) <= Tolerance;
		}
	};
}

using FVector4 = UE::Math::TVector4<double>;
using FVector4f = UE::Math::TVector4<float>;
using FVector4d = UE::Math::TVector4<double>;
