#include "Misc/Char.h"

// Classes of characters from tables made out of Unicode, so that they do not follow the locale of the process. Units below
// 128 are answered in the header and never come here. Ranges stand in order and are searched; many letters alternate between
// capital and small, which is what the step of a range is for.

namespace
{
	/** Every Step-th unit from First to Last. */
	struct FCharRange
	{
		uint16 First;
		uint16 Last;
		uint16 Step;
	};
	struct FCaseRun
	{
		uint16 First;
		uint16 Last;
		uint16 Step;
		int32 Offset;
	};

#include "CharTables.inl"

	/** The row whose range holds Char, or null. Rows are in order. */
	template <typename RowType, SIZE_T N>
	const RowType* FindRow(const RowType (&Rows)[N], TCHAR Char)
	{
		SIZE_T Low = 0;
		SIZE_T High = N;
		while (Low < High)
		{
			const SIZE_T Middle = (Low + High) / 2;
			if (Rows[Middle].Last < Char)
			{
				Low = Middle + 1;
			}
			else
			{
				High = Middle;
			}
		}
		return Low < N && Rows[Low].First <= Char && (Char - Rows[Low].First) % Rows[Low].Step == 0 ? &Rows[Low] : nullptr;
	}

	/** The common CJK ideographs are all letters without case: no need to search. */
	bool IsCommonIdeograph(TCHAR Char)
	{
		return Char >= 0x4e00 && Char <= 0x9fff;
	}
}

bool FChar::IsAlphaSlow(TCHAR Char)
{
	return IsCommonIdeograph(Char) || FindRow(AlphaRanges, Char);
}

bool FChar::IsAlnumSlow(TCHAR Char)
{
	return IsAlphaSlow(Char) || FindRow(DecimalRanges, Char);
}

bool FChar::IsUpperSlow(TCHAR Char)
{
	return FindRow(UpperRanges, Char) != nullptr;
}

bool FChar::IsLowerSlow(TCHAR Char)
{
	return FindRow(LowerRanges, Char) != nullptr;
}

bool FChar::IsWhitespaceSlow(TCHAR Char)
{
	switch (Char)
	{
	case 0x85:
	case 0xa0:
	case 0x1680:
	case 0x2028:
	case 0x2029:
	case 0x202f:
	case 0x205f:
	case 0x3000:
		return true;
	default:
		return Char >= 0x2000 && Char <= 0x200a;
	}
}

TCHAR FChar::ToLowerSlow(TCHAR Char)
{
	if (IsCommonIdeograph(Char))
	{
		return Char;
	}
	const FCaseRun* Run = FindRow(ToLowerRuns, Char);
	return Run ? (TCHAR)(Char + Run->Offset) : Char;
}

TCHAR FChar::ToUpperSlow(TCHAR Char)
{
	if (IsCommonIdeograph(Char))
	{
		return Char;
	}
	const FCaseRun* Run = FindRow(ToUpperRuns, Char);
	return Run ? (TCHAR)(Char + Run->Offset) : Char;
}
