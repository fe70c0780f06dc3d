#pragma once

#include "HAL/Platform.h"

#include <cfloat>
#include <limits>

#define MIN_uint8 ((uint8)0)
#define MIN_uint16 ((uint16)0)
#define MIN_uint32 ((uint32)0)
#define MIN_uint64 ((uint64)0)
#define MIN_int8 ((int8)-128)
#define MIN_int16 ((int16)-32768)
#define MIN_int32 ((int32)0x80000000)
#define MIN_int64 ((int64)0x8000000000000000)
#define MAX_uint8 ((uint8)0xff)
#define MAX_uint16 ((uint16)0xffff)
#define MAX_uint32 ((uint32)0xffffffff)
#define MAX_uint64 ((uint64)0xffffffffffffffff)
#define MAX_int8 ((int8)0x7f)
#define MAX_int16 ((int16)0x7fff)
#define MAX_int32 ((int32)0x7fffffff)
#define MAX_int64 ((int64)0x7fffffffffffffff)
#define MIN_flt FLT_MIN
#define MAX_flt FLT_MAX
#define MIN_dbl DBL_MIN
#define MAX_dbl DBL_MAX

template <typename NumericType>
struct TNumericLimits
{
	/** Smallest value; for floating point the smallest positive one. */
	static constexpr NumericType Min() { return std::numeric_limits<NumericType>::min(); }
	static constexpr NumericType Max() { return std::numeric_limits<NumericType>::max(); }
	static constexpr NumericType Lowest() { return std::numeric_limits<NumericType>::lowest(); }
};
