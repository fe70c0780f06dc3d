#include "FindText.h"

#include "Misc/Char.h"

namespace
{
	bool IsAt(FStringView Text, int32 Index, const FFindQuery& Query)
	{
		const int32 Length = Query.Words.Len();
		for (int32 Offset = 0; Offset < Length; ++Offset)
		{
			const TCHAR A = Text[Index + Offset];
			const TCHAR B = Query.Words[Offset];
			if (A != B && (Query.bMatchCase || FChar::ToLower(A) != FChar::ToLower(B)))
			{
				return false;
			}
		}
		return true;
	}

	bool IsOfWord(TCHAR Unit)
	{
		return FChar::IsAlnum(Unit) || Unit == TEXT('_');
	}

	/** A word goes on from one unit to the next. */
	bool IsWithinWord(FStringView Text, int32 Index)
	{
		return Index > 0 && Index < Text.Len() && IsOfWord(Text[Index - 1]) && IsOfWord(Text[Index]);
	}
}

TArray<Velmora::FFoundPlace> FindText::FindAll(FStringView Text, const FFindQuery& Query, int32 MaxPlaces)
{
	TArray<Velmora::FFoundPlace> Places;
	const int32 Length = Query.Words.Len();
	if (Length == 0)
	{
		return Places;
	}
	for (int32 Index = 0; Index + Length <= Text.Len() && Places.Num() < MaxPlaces;)
	{
		const bool bIsWhole = !Query.bWholeWords || (!IsWithinWord(Text, Index) && !IsWithinWord(Text, Index + Length));
		if (bIsWhole && IsAt(Text, Index, Query))
		{
			Places.Add({ Index, Length });
			Index += Length;
		}
		else
		{
			++Index;
		}
	}
	return Places;
}
