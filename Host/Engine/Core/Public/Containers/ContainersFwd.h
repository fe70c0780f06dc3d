#pragma once

#include "HAL/Platform.h"

struct FDefaultAllocator;
struct FDefaultSetAllocator;

template <typename T, typename Allocator = FDefaultAllocator>
class TArray;
template <typename T>
class TArrayView;
template <typename T>
using TConstArrayView = TArrayView<const T>;

template <typename KeyType, typename ValueType>
struct TDefaultMapHashableKeyFuncs;
template <typename ElementType>
struct DefaultKeyFuncs;
template <typename KeyType, typename ValueType, typename Allocator = FDefaultSetAllocator,
	typename KeyFuncs = TDefaultMapHashableKeyFuncs<KeyType, ValueType>>
class TMap;
template <typename ElementType, typename KeyFuncs = DefaultKeyFuncs<ElementType>, typename Allocator = FDefaultSetAllocator>
class TSet;

class FString;
template <typename CharType>
class TStringView;
using FStringView = TStringView<TCHAR>;
using FAnsiStringView = TStringView<ANSICHAR>;
using FUtf8StringView = TStringView<char8_t>;

namespace ESearchCase
{
	enum Type
	{
		CaseSensitive,
		IgnoreCase
	};
}

namespace ESearchDir
{
	enum Type
	{
		FromStart,
		FromEnd
	};
}

enum class EAllowShrinking : uint8
{
	No,
	Yes,
	Default = Yes
};

// Allocators are named for the spelling; storage is the standard library's.
struct FDefaultAllocator
{
};
struct FDefaultSetAllocator
{
};
template <uint32 NumInlineElements, typename SecondaryAllocator = FDefaultAllocator>
struct TInlineAllocator
{
};
