#pragma once

#include "CoreTypes.h"

#include <cmath>
#include <type_traits>

#define UE_PI (3.1415926535897932f)
#define UE_DOUBLE_PI (3.141592653589793238462643383279502884197169399)
#define UE_SMALL_NUMBER (1.e-8f)
#define UE_KINDA_SMALL_NUMBER (1.e-4f)
#define UE_DOUBLE_SMALL_NUMBER (1.e-8)
#define UE_DOUBLE_KINDA_SMALL_NUMBER (1.e-4)
#define PI UE_PI
#define SMALL_NUMBER UE_SMALL_NUMBER
#define KINDA_SMALL_NUMBER UE_KINDA_SMALL_NUMBER

struct FMath
{
	template <typename T>
	static constexpr T Abs(T A)
	{
		return A < T(0) ? T(-A) : A;
	}
	template <typename T>
	static constexpr T Sign(T A)
	{
		return A > T(0) ? T(1) : (A < T(0) ? T(-1) : T(0));
	}
	template <typename T>
	static constexpr T Max(T A, T B)
	{
		return B < A ? A : B;
	}
	template <typename T>
	static constexpr T Min(T A, T B)
	{
		return A < B ? A : B;
	}
	// float beside double, as in mixed maths.
	template <typename A, typename B>
	requires(!std::is_same_v<A, B> && std::is_floating_point_v<A> && std::is_floating_point_v<B>) static constexpr double Max(A X, B Y)
	{
		return Max<double>(X, Y);
	}
	template <typename A, typename B>
	requires(!std::is_same_v<A, B> && std::is_floating_point_v<A> && std::is_floating_point_v<B>) static constexpr double Min(A X, B Y)
	{
		return Min<double>(X, Y);
	}
	template <typename T>
	static constexpr T Clamp(T X, std::type_identity_t<T> MinValue, std::type_identity_t<T> MaxValue)
	{
		return Max(Min(X, MaxValue), MinValue);
	}
	template <typename T>
	static constexpr bool IsWithin(T Value, std::type_identity_t<T> MinValue, std::type_identity_t<T> MaxValue)
	{
		return Value >= MinValue && Value < MaxValue;
	}

	// Half rounds up: 2.5 gives 3, -2.5 gives -2. Values that do not fit are clamped, not-a-number gives 0.
	static int32 RoundToInt32(double F) { return (int32)ToInteger(std::floor(F + 0.5), MIN_int32, MAX_int32); }
	static int64 RoundToInt64(double F) { return ToInteger(std::floor(F + 0.5), MIN_int64, MAX_int64); }
	static int32 FloorToInt32(double F) { return (int32)ToInteger(std::floor(F), MIN_int32, MAX_int32); }
	static int64 FloorToInt64(double F) { return ToInteger(std::floor(F), MIN_int64, MAX_int64); }
	static int32 FloorToInt(float F) { return FloorToInt32(F); }
	static int64 FloorToInt(double F) { return FloorToInt64(F); }
	template <typename T>
	static T RoundToFloat(T F)
	{
		return std::floor(F + T(0.5));
	}
	template <typename T>
	static T CeilToFloat(T F)
	{
		return std::ceil(F);
	}
	template <typename T>
	static T Fmod(T X, T Y)
	{
		return std::fmod(X, Y);
	}
	template <typename T>
	static T Sqrt(T X)
	{
		return std::sqrt(X);
	}
	template <typename T>
	static bool IsFinite(T X)
	{
		return std::isfinite(X);
	}

private:
	static int64 ToInteger(double Whole, int64 Lowest, int64 Highest)
	{
		if (!(Whole > (double)Lowest))
		{
			return Whole == Whole ? Lowest : 0;
		}
		return Whole >= (double)Highest ? Highest : (int64)Whole;
	}
};
