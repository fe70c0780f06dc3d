#include "Containers/StringView.h"

namespace
{
	bool EqualUnits(const TCHAR* A, const TCHAR* B, int32 Len, ESearchCase::Type SearchCase)
	{
		if (SearchCase == ESearchCase::CaseSensitive)
		{
			return std::char_traits<TCHAR>::compare(A, B, (std::size_t)Len) == 0;
		}
		for (int32 Index = 0; Index < Len; ++Index)
		{
			if (A[Index] != B[Index] && FChar::ToLower(A[Index]) != FChar::ToLower(B[Index]))
			{
				return false;
			}
		}
		return true;
	}
}

bool UE::String::EqualsIgnoreCase(const TCHAR* A, int32 LenA, const TCHAR* B, int32 LenB)
{
	return LenA == LenB && EqualUnits(A, B, LenA, ESearchCase::IgnoreCase);
}

int32 UE::String::Compare(const TCHAR* A, int32 LenA, const TCHAR* B, int32 LenB, ESearchCase::Type SearchCase)
{
	const int32 Common = LenA < LenB ? LenA : LenB;
	for (int32 Index = 0; Index < Common; ++Index)
	{
		TCHAR X = A[Index];
		TCHAR Y = B[Index];
		if (X != Y && SearchCase == ESearchCase::IgnoreCase)
		{
			X = FChar::ToLower(X);
			Y = FChar::ToLower(Y);
		}
		if (X != Y)
		{
			return X < Y ? -1 : 1;
		}
	}
	return LenA == LenB ? 0 : (LenA < LenB ? -1 : 1);
}

int32 UE::String::FindFirst(const TCHAR* String, int32 Len, const TCHAR* Sub, int32 SubLen, ESearchCase::Type SearchCase, int32 Start)
{
	Start = Start < 0 ? 0 : Start;
	if (Start > Len)
	{
		return INDEX_NONE;
	}
	if (SearchCase == ESearchCase::CaseSensitive)
	{
		const std::size_t Found =
			std::u16string_view(String, (std::size_t)Len).find(std::u16string_view(Sub, (std::size_t)SubLen), (std::size_t)Start);
		return Found == std::u16string_view::npos ? INDEX_NONE : (int32)Found;
	}
	if (SubLen == 0)
	{
		return Start;
	}
	const TCHAR First = FChar::ToLower(Sub[0]);
	for (int32 Index = Start; Index <= Len - SubLen; ++Index)
	{
		if (FChar::ToLower(String[Index]) == First && EqualUnits(String + Index + 1, Sub + 1, SubLen - 1, SearchCase))
		{
			return Index;
		}
	}
	return INDEX_NONE;
}

int32 UE::String::FindLast(const TCHAR* String, int32 Len, const TCHAR* Sub, int32 SubLen, ESearchCase::Type SearchCase, int32 Start)
{
	for (int32 Index = Start < Len - SubLen ? Start : Len - SubLen; Index >= 0; --Index)
	{
		if (EqualUnits(String + Index, Sub, SubLen, SearchCase))
		{
			return Index;
		}
	}
	return INDEX_NONE;
}

uint32 UE::String::HashIgnoreCase(const TCHAR* String, int32 Len)
{
	uint32 Hash = 2166136261u;
	for (int32 Index = 0; Index < Len; ++Index)
	{
		Hash = (Hash ^ FChar::ToLower(String[Index])) * 16777619u;
	}
	return Hash ^ Hash >> 15;
}
