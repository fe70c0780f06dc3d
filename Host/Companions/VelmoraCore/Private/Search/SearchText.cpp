#include "Search/SearchText.h"

#include "Text/Utf8Text.h"

namespace Velmora::SearchText
{
	namespace
	{
		/** Longer texts are data rather than something said; who looks for them knows their beginning. */
		constexpr int32 MaxIndexedUnits = 256 * 1024;

		/** What is beyond tells no two words apart. */
		constexpr int32 MaxWordUnits = 64;
		constexpr size_t MaxQueryWords = 16;
		constexpr int32 ExcerptUnits = 160;
		constexpr int32 ExcerptLead = 48;
		constexpr TCHAR Ellipsis = 0x2026;

		/** Characters that are words one by one: kana and the unified ideographs of the basic plane. */
		bool IsIdeograph(TCHAR Unit)
		{
			return (Unit >= 0x3040 && Unit <= 0x30FF) || (Unit >= 0x3400 && Unit <= 0x9FFF) || (Unit >= 0xF900 && Unit <= 0xFAFF);
		}

		bool IsWordUnit(TCHAR Unit)
		{
			return FChar::IsAlnum(Unit) || IsIdeograph(Unit);
		}

		/** A word of a name begins here: "Table" in "ParseTable", and "Http" but not "TTP" in "FHTTPHttp". */
		bool IsHump(FStringView Text, int32 Index, int32 End)
		{
			return FChar::IsUpper(Text[Index]) &&
				(!FChar::IsUpper(Text[Index - 1]) || (Index + 1 < End && FChar::IsLower(Text[Index + 1])));
		}

		/** Calls Visit with begin and end of every whole word, and of the words that begin within it when those are wanted. */
		template <typename FVisit>
		void ForEachWord(FStringView Text, bool bWithInner, FVisit Visit)
		{
			for (int32 Begin = 0; Begin < Text.Len();)
			{
				if (!IsWordUnit(Text[Begin]))
				{
					++Begin;
					continue;
				}
				int32 End = Begin + 1;
				while (!IsIdeograph(Text[Begin]) && End < Text.Len() && FChar::IsAlnum(Text[End]) && !IsIdeograph(Text[End]))
				{
					++End;
				}
				Visit(Begin, End);
				for (int32 Index = Begin + 1; bWithInner && Index < End; ++Index)
				{
					if (IsHump(Text, Index, End))
					{
						Visit(Index, End);
					}
				}
				Begin = End;
			}
		}

		FString FoldWord(FStringView Word)
		{
			FString Folded;
			for (const TCHAR Unit : Word.Left(MaxWordUnits))
			{
				Folded.AppendChar(FChar::ToLower(Unit));
			}
			return Folded;
		}

		/** How much of the word [Begin, End) one of the words looked for is; 0 for none. */
		int32 MatchWord(FStringView Text, int32 Begin, int32 End, const std::vector<FString>& Words)
		{
			int32 Longest = 0;
			for (const FString& Word : Words)
			{
				int32 Length = 0;
				while (Length < Word.Len() && Begin + Length < End && FChar::ToLower(Text[Begin + Length]) == Word[Length])
				{
					++Length;
				}
				Longest = Length == Word.Len() ? FMath::Max(Longest, Length) : Longest;
			}
			return Longest;
		}

		TArray<FFoundPlace> FindPlaces(FStringView Text, const std::vector<FString>& Words, int32 MaxPlaces)
		{
			TArray<FFoundPlace> Places;
			ForEachWord(Text, true,
				[&](int32 Begin, int32 End)
				{
					const int32 Length = Places.Num() < MaxPlaces ? MatchWord(Text, Begin, End, Words) : 0;
					// A word within one that is found already is the same place.
					if (Length > 0 && (Places.IsEmpty() || Begin >= Places.Last().Begin + Places.Last().Length))
					{
						Places.Add({ Begin, Length });
					}
				});
			return Places;
		}

		bool IsSecondHalf(TCHAR Unit)
		{
			return Unit >= 0xDC00 && Unit < 0xE000;
		}
	}

	std::string ToIndexed(FStringView Text)
	{
		const FStringView Beginning = Text.Left(MaxIndexedUnits);
		FString Words;
		Words.Reserve(Beginning.Len() + Beginning.Len() / 4);
		ForEachWord(Beginning, true,
			[&](int32 Begin, int32 End)
			{
				for (int32 Index = Begin; Index < FMath::Min(End, Begin + MaxWordUnits); ++Index)
				{
					Words.AppendChar(FChar::ToLower(Beginning[Index]));
				}
				Words.AppendChar(TEXT(' '));
			});
		return Utf8Text::FromString(Words);
	}

	std::vector<FString> ReadQuery(FStringView Query)
	{
		std::vector<FString> Words;
		ForEachWord(Query.Left(MaxIndexedUnits), false,
			[&](int32 Begin, int32 End)
			{
				if (Words.size() < MaxQueryWords)
				{
					Words.push_back(FoldWord(Query.Mid(Begin, End - Begin)));
				}
			});
		return Words;
	}

	std::string ToExpression(const std::vector<FString>& Words)
	{
		std::string Expression;
		for (const FString& Word : Words)
		{
			Expression += (Expression.empty() ? "\"" : " \"") + Utf8Text::FromString(Word) + "\"*";
		}
		return Expression;
	}

	FString MakeExcerpt(FStringView Text, const std::vector<FString>& Words, TArray<FFoundPlace>& OutPlaces)
	{
		// 1. Where it begins: a little before the first place, at the beginning of a word, never within a character.
		const TArray<FFoundPlace> First = FindPlaces(Text, Words, 1);
		int32 Begin = First.IsEmpty() ? 0 : FMath::Max(0, First[0].Begin - ExcerptLead);
		while (Begin > 0 && Begin < Text.Len() && !FChar::IsWhitespace(Text[Begin - 1]) && (First.IsEmpty() || Begin < First[0].Begin))
		{
			++Begin;
		}
		// 2. One line: every run of white space is one blank.
		FString Excerpt;
		int32 Index = Begin;
		for (; Index < Text.Len() && (Excerpt.Len() < ExcerptUnits || IsSecondHalf(Text[Index])); ++Index)
		{
			const bool bIsBlank = FChar::IsWhitespace(Text[Index]);
			if (!bIsBlank)
			{
				Excerpt.AppendChar(Text[Index]);
			}
			else if (!Excerpt.IsEmpty() && Excerpt[Excerpt.Len() - 1] != TEXT(' '))
			{
				Excerpt.AppendChar(TEXT(' '));
			}
		}
		Excerpt.TrimEndInline();
		// 3. What was left out.
		if (Begin > 0)
		{
			Excerpt.InsertAt(0, Ellipsis);
		}
		if (!FStringView(Text).Mid(Index).TrimStart().IsEmpty())
		{
			Excerpt.AppendChar(Ellipsis);
		}
		OutPlaces = FindPlaces(Excerpt, Words, ExcerptUnits);
		return Excerpt;
	}
}
