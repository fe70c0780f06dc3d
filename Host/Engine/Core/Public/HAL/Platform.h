#pragma once

#include <cstddef>

using int8 = signed char;
using int16 = short;
using int32 = int;
using int64 = long long;
using uint8 = unsigned char;
using uint16 = unsigned short;
using uint32 = unsigned int;
using uint64 = unsigned long long;
using SIZE_T = std::size_t;
using SSIZE_T = std::ptrdiff_t;
using PTRINT = std::ptrdiff_t;
using UPTRINT = std::size_t;

using ANSICHAR = char;
/** One UTF-16 unit. Characters above U+FFFF take two. */
using TCHAR = char16_t;

#define TEXT_PASTE(X) u##X
#define TEXT(X) TEXT_PASTE(X)

#define UE_NODISCARD [[nodiscard]]
#define UE_NORETURN [[noreturn]]
#define FORCEINLINE inline
#define FORCENOINLINE [[gnu::noinline]]
#define LIKELY(X) __builtin_expect(!!(X), 1)
#define UNLIKELY(X) __builtin_expect(!!(X), 0)
#define UE_ARRAY_COUNT(Array) (sizeof(Array) / sizeof((Array)[0]))
#define PREPROCESSOR_JOIN_INNER(A, B) A##B
#define PREPROCESSOR_JOIN(A, B) PREPROCESSOR_JOIN_INNER(A, B)
#define LINE_TERMINATOR TEXT("\n")

inline constexpr int32 INDEX_NONE = -1;

enum EForceInit
{
	ForceInit,
	ForceInitToZero
};

enum ENoInit
{
	NoInit
};
