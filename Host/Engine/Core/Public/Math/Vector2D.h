#pragma once

#include "Math/UnrealMathUtility.h"
#include "Templates/TypeHash.h"

#include <concepts>

class FString;

namespace UE::Math
{
	template <typename T>
	struct TVector2
	{
		using FReal = T;
		T X;
		T Y;

		constexpr TVector2()
			: X(0)
			, Y(0)
		{
		}
		constexpr explicit TVector2(T InF)
			: X(InF)
			, Y(InF)
		{
		}
		constexpr TVector2(T InX, T InY)
			: X(InX)
			, Y(InY)
		{
		}
		explicit TVector2(EForceInit)
			: X(0)
			, Y(0)
		{
		}
		template <typename U>
		requires(!std::same_as<T, U>) constexpr explicit TVector2(const TVector2<U>& Other)
			: X((T)Other.X)
			, Y((T)Other.Y)
		{
		}

		constexpr TVector2 operator+(const TVector2& V) const { return TVector2(X + V.X, Y + V.Y); }
		constexpr TVector2 operator-(const TVector2& V) const { return TVector2(X - V.X, Y - V.Y); }
		constexpr TVector2 operator*(const TVector2& V) const { return TVector2(X * V.X, Y * V.Y); }
		constexpr TVector2 operator/(const TVector2& V) const { return TVector2(X / V.X, Y / V.Y); }
		template <typename N>
		requires std::is_arithmetic_v<N>
		constexpr TVector2 operator*(N Scale) const { return TVector2(X * (T)Scale, Y * (T)Scale); }
		template <typename N>
		requires std::is_arithmetic_v<N>
		constexpr TVector2 operator/(N Scale) const { return TVector2(X / (T)Scale, Y / (T)Scale); }
		template <typename N>
		requires std::is_arithmetic_v<N>
		friend constexpr TVector2 operator*(N Scale, const TVector2& V) { return V * Scale; }
		constexpr TVector2 operator+(T A) const { return TVector2(X + A, Y + A); }
		constexpr TVector2 operator-(T A) const { return TVector2(X - A, Y - A); }
		constexpr TVector2 operator-() const { return TVector2(-X, -Y); }
		constexpr TVector2& operator+=(const TVector2& V) { return *this = *this + V; }
		constexpr TVector2& operator-=(const TVector2& V) { return *this = *this - V; }
		constexpr TVector2& operator*=(const TVector2& V) { return *this = *this * V; }
		constexpr TVector2& operator/=(const TVector2& V) { return *this = *this / V; }
		template <typename N>
		requires std::is_arithmetic_v<N>
		constexpr TVector2& operator*=(N Scale) { return *this = *this * Scale; }
		template <typename N>
		requires std::is_arithmetic_v<N>
		constexpr TVector2& operator/=(N Scale) { return *this = *this / Scale; }
		constexpr bool operator==(const TVector2&) const = default;
		T& operator[](int32 Index) { return Index == 0 ? X : Y; }
		T operator[](int32 Index) const { return Index == 0 ? X : Y; }

		bool Equals(const TVector2& V, T Tolerance = (T)UE_KINDA_SMALL_NUMBER) const
		{
			return FMath::Abs(X - V.X) <= Tolerance && FMath::Abs(Y - V.Y) <= Tolerance;
		}
		T Size() const { return FMath::Sqrt(SizeSquared()); }
		T Length() const { return Size(); }
		T SizeSquared() const { return X * X + Y * Y; }
		void Set(T InX, T InY)
		{
			X = InX;
			Y = InY;
		}
		static T Distance(const TVector2& A, const TVector2& B) { return (A - B).Size(); }
		static TVector2 Max(const TVector2& A, const TVector2& B) { return TVector2(FMath::Max(A.X, B.X), FMath::Max(A.Y, B.Y)); }
		static TVector2 Min(const TVector2& A, const TVector2& B) { return TVector2(FMath::Min(A.X, B.X), FMath::Min(A.Y, B.Y)); }
		/** "X=1.000 Y=2.000" */
		CORE_API FString ToString() const;

		static const TVector2 ZeroVector;
		static const TVector2 UnitVector;
		static constexpr TVector2 Zero() { return TVector2(0, 0); }
		static constexpr TVector2 One() { return TVector2(1, 1); }
		friend uint32 GetTypeHash(const TVector2& V) { return HashCombine(GetTypeHash(V.X), GetTypeHash(V.Y)); }
	};
	template <typename T>
	inline constexpr TVector2<T> TVector2<T>::ZeroVector{ 0, 0 };
	template <typename T>
	inline constexpr TVector2<T> TVector2<T>::UnitVector{ 1, 1 };
}

using FVector2D = UE::Math::TVector2<double>;
using FVector2f = UE::Math::TVector2<float>;
using FVector2d = UE::Math::TVector2<double>;
