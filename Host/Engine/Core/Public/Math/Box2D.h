#pragma once

#include "Math/Vector2D.h"

namespace UE::Math
{
	/** An axis-aligned rectangle; invalid until it holds a point. */
	template <typename T>
	struct TBox2
	{
		TVector2<T> Min;
		TVector2<T> Max;
		bool bIsValid = false;

		constexpr TBox2() = default;
		explicit TBox2(EForceInit) {}
		constexpr TBox2(const TVector2<T>& InMin, const TVector2<T>& InMax)
			: Min(InMin)
			, Max(InMax)
			, bIsValid(true)
		{
		}
		constexpr bool operator==(const TBox2&) const = default;
		TVector2<T> GetSize() const { return Max - Min; }
		TVector2<T> GetCenter() const { return (Min + Max) * T(0.5); }
		bool IsInside(const TVector2<T>& P) const { return P.X > Min.X && P.X < Max.X && P.Y > Min.Y && P.Y < Max.Y; }
		bool Intersect(const TBox2& Other) const
		{
			return !(Min.X > Other.Max.X || Other.Min.X > Max.X || Min.Y > Other.Max.Y || Other.Min.Y > Max.Y);
		}
		TBox2& operator+=(const TVector2<T>& P)
		{
			*this = bIsValid ? TBox2(TVector2<T>::Min(Min, P), TVector2<T>::Max(Max, P)) : TBox2(P, P);
			return *this;
		}
	};
}

using FBox2D = UE::Math::TBox2<double>;
using FBox2f = UE::Math::TBox2<float>;
