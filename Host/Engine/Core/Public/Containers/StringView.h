#pragma once

#include "Containers/ContainersFwd.h"
#include "Misc/AssertionMacros.h"
#include "Misc/CString.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace UE::String
{
	// Rules shared by FString, FStringView and FCString. Ignoring case compares FChar::ToLower unit by unit.
	CORE_API bool EqualsIgnoreCase(const TCHAR* A, int32 LenA, const TCHAR* B, int32 LenB);
	/** Negative, zero or positive. */
	CORE_API int32 Compare(const TCHAR* A, int32 LenA, const TCHAR* B, int32 LenB, ESearchCase::Type SearchCase);
	/** First match at or behind Start, INDEX_NONE without one. An empty Sub is found at Start. */
	CORE_API int32 FindFirst(const TCHAR* String, int32 Len, const TCHAR* Sub, int32 SubLen, ESearchCase::Type SearchCase, int32 Start);
	/** Last match that begins at or before Start. */
	CORE_API int32 FindLast(const TCHAR* String, int32 Len, const TCHAR* Sub, int32 SubLen, ESearchCase::Type SearchCase, int32 Start);
	/** Equal for texts that are equal ignoring case. */
	CORE_API uint32 HashIgnoreCase(const TCHAR* String, int32 Len);
}

/** Refers to text that must outlive the view and need not end with a null. */
template <typename CharType>
class TStringView
{
public:
	using ElementType = CharType;
	using ViewType = TStringView;

	constexpr TStringView() = default;
	constexpr TStringView(const CharType* InData)
		: Data(InData)
		, Size(InData ? (int32)std::char_traits<CharType>::length(InData) : 0)
	{
	}
	constexpr TStringView(const CharType* InData, int32 InSize)
		: Data(InData)
		, Size(InSize)
	{
	}
	constexpr TStringView(std::nullptr_t) {}
	template <typename StringType>
	requires(std::is_same_v<StringType, FString>&& std::is_same_v<CharType, TCHAR>) TStringView(const StringType& String)
		: Data(*String)
		, Size(String.Len())
	{
	}

	constexpr const CharType* GetData() const { return Data; }
	constexpr int32 Len() const { return Size; }
	constexpr bool IsEmpty() const { return Size == 0; }
	constexpr bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Size; }
	constexpr const CharType& operator[](int32 Index) const
	{
		check(IsValidIndex(Index));
		return Data[Index];
	}
	constexpr void Reset() { *this = TStringView(); }
	constexpr const CharType* begin() const { return Data; }
	constexpr const CharType* end() const { return Data + Size; }

	// Slices clamp.
	constexpr TStringView Left(int32 Count) const { return TStringView(Data, Clamped(Count)); }
	constexpr TStringView LeftChop(int32 Count) const { return TStringView(Data, Size - Clamped(Count)); }
	constexpr TStringView Right(int32 Count) const { return TStringView(Data + (Size - Clamped(Count)), Clamped(Count)); }
	constexpr TStringView RightChop(int32 Count) const { return TStringView(Data + Clamped(Count), Size - Clamped(Count)); }
	constexpr TStringView Mid(int32 Position, int32 Count = MAX_int32Value) const { return RightChop(Position).Left(Count); }
	constexpr void LeftInline(int32 Count) { *this = Left(Count); }
	constexpr void LeftChopInline(int32 Count) { *this = LeftChop(Count); }
	constexpr void RightChopInline(int32 Count) { *this = RightChop(Count); }
	constexpr void MidInline(int32 Position, int32 Count = MAX_int32Value) { *this = Mid(Position, Count); }
	TStringView TrimStart() const
	{
		int32 Start = 0;
		while (Start < Size && FChar::IsWhitespace((TCHAR)Data[Start]))
		{
			++Start;
		}
		return RightChop(Start);
	}
	TStringView TrimEnd() const
	{
		int32 End = Size;
		while (End > 0 && FChar::IsWhitespace((TCHAR)Data[End - 1]))
		{
			--End;
		}
		return Left(End);
	}
	TStringView TrimStartAndEnd() const { return TrimStart().TrimEnd(); }
	void TrimStartInline() { *this = TrimStart(); }
	void TrimEndInline() { *this = TrimEnd(); }

	// Comparing. Operators ignore case, as FString's do.
	bool Equals(TStringView Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const
	{
		return SearchCase == ESearchCase::CaseSensitive ? AsStd() == Other.AsStd()
														: UE::String::EqualsIgnoreCase(Data, Size, Other.Data, Other.Size);
	}
	int32 Compare(TStringView Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const
	{
		return UE::String::Compare(Data, Size, Other.Data, Other.Size, SearchCase);
	}
	bool StartsWith(TStringView Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Prefix.Size <= Size && Left(Prefix.Size).Equals(Prefix, SearchCase);
	}
	bool StartsWith(CharType Prefix) const { return Size > 0 && Data[0] == Prefix; }
	bool EndsWith(TStringView Suffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Suffix.Size <= Size && Right(Suffix.Size).Equals(Suffix, SearchCase);
	}
	bool EndsWith(CharType Suffix) const { return Size > 0 && Data[Size - 1] == Suffix; }

	// Searching.
	int32 Find(TStringView Search, int32 StartPosition = 0, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const
	{
		return UE::String::FindFirst(Data, Size, Search.Data, Search.Size, SearchCase, StartPosition);
	}
	bool Contains(TStringView Search, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return UE::String::FindFirst(Data, Size, Search.Data, Search.Size, SearchCase, 0) != INDEX_NONE;
	}
	bool FindChar(CharType Char, int32& OutIndex) const
	{
		const std::size_t Found = AsStd().find(Char);
		OutIndex = Found == std::string_view::npos ? INDEX_NONE : (int32)Found;
		return OutIndex != INDEX_NONE;
	}
	bool FindLastChar(CharType Char, int32& OutIndex) const
	{
		const std::size_t Found = AsStd().rfind(Char);
		OutIndex = Found == std::string_view::npos ? INDEX_NONE : (int32)Found;
		return OutIndex != INDEX_NONE;
	}

	friend bool operator==(TStringView A, TStringView B) { return A.Equals(B, ESearchCase::IgnoreCase); }
	friend bool operator<(TStringView A, TStringView B) { return A.Compare(B, ESearchCase::IgnoreCase) < 0; }
	friend uint32 GetTypeHash(TStringView View) { return UE::String::HashIgnoreCase(View.Data, View.Size); }

private:
	static constexpr int32 MAX_int32Value = 0x7fffffff;
	constexpr int32 Clamped(int32 Count) const { return Count < 0 ? 0 : (Count > Size ? Size : Count); }
	constexpr std::basic_string_view<CharType> AsStd() const { return std::basic_string_view<CharType>(Data, (std::size_t)Size); }
	const CharType* Data = nullptr;
	int32 Size = 0;
};

/** A view of a literal, with its length known to the compiler. */
#define TEXTVIEW(String) FStringView(TEXT(String), (int32)(sizeof(TEXT(String)) / sizeof(TCHAR)) - 1)
