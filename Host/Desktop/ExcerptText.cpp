#include "ExcerptText.h"

#include "Misc/Char.h"

namespace
{
	constexpr TCHAR Ellipsis = TEXT('\u2026');
	constexpr int32 MaxHeadingMarks = 6;

	bool IsBlankOrCut(TCHAR Unit)
	{
		return Unit == TEXT(' ') || Unit == Ellipsis;
	}

	/** Decides of each unit of a line whether it is shown. */
	class FMarkCutter
	{
	public:
		FMarkCutter(FStringView InText, const TArray<Velmora::FFoundPlace>& InPlaces)
			: Text(InText)
			, Places(InPlaces)
		{
			IsCut.Init(false, Text.Len());
		}

		const TArray<bool>& Run()
		{
			for (int32 Index = 0; Index < Text.Len();)
			{
				const int32 Taken = TakeFence(Index);
				Index += Taken > 0 ? Taken : bIsInCode ? 1 : FMath::Max(TakeMark(Index), 1);
			}
			return IsCut;
		}

	private:
		TCHAR At(int32 Index) const { return Index >= 0 && Index < Text.Len() ? Text[Index] : TEXT(' '); }

		int32 CountRun(int32 Index) const
		{
			int32 Count = 1;
			while (Index + Count < Text.Len() && Text[Index + Count] == Text[Index])
			{
				++Count;
			}
			return Count;
		}

		bool HoldsPlace(int32 Begin, int32 End) const
		{
			return Places.ContainsByPredicate(
				[Begin, End](const Velmora::FFoundPlace& Place) { return Place.Begin < End && Place.Begin + Place.Length > Begin; });
		}

		void Cut(int32 Begin, int32 End)
		{
			for (int32 Index = Begin; Index < End && !HoldsPlace(Begin, End); ++Index)
			{
				IsCut[Index] = true;
			}
		}

		/**
		 * Three or more marks of code begin a block; what stands right behind them is its language. As many of the same end it, whatever
		 * others stand in it.
		 */
		int32 TakeFence(int32 Index)
		{
			const TCHAR Mark = Text[Index];
			const int32 Count = Mark == TEXT('`') || Mark == TEXT('~') ? CountRun(Index) : 0;
			if (Count < 3)
			{
				return 0;
			}
			int32 End = Index + Count;
			while (End < Text.Len() && !IsBlankOrCut(Text[End]))
			{
				++End;
			}
			const bool bHasLanguage = End > Index + Count;
			if (bIsInCode && (Mark != FenceMark || Count < FenceCount || bHasLanguage))
			{
				return Count;
			}
			Cut(Index, Index + Count);
			Cut(Index + Count, End);
			// Where the line begins in the middle, the first fence may be the end of a block.
			const bool bEndsCutBlock = FenceCount == 0 && At(0) == Ellipsis && !bHasLanguage;
			bIsInCode = !bIsInCode && !bEndsCutBlock;
			FenceMark = Mark;
			FenceCount = Count;
			return End - Index;
		}

		/** What stands there outside of code; how many units are done with. */
		int32 TakeMark(int32 Index)
		{
			switch (Text[Index])
			{
			case TEXT('`'):
				return TakePair(Index, true);
			case TEXT('*'):
			case TEXT('~'):
				return TakePair(Index, false);
			case TEXT('#'):
				return TakeHeading(Index);
			case TEXT('!'):
			case TEXT('['):
				return TakeLink(Index);
			case TEXT('|'):
			case TEXT(':'):
			case TEXT('-'):
				return TakeTableRule(Index);
			default:
				return 0;
			}
		}

		/** Marks around words, which stand close to them. Between marks of code everything stays. */
		int32 TakePair(int32 Index, bool bIsCode)
		{
			const int32 Count = CountRun(Index);
			const bool bOpens = bIsCode || (!FChar::IsAlnum(At(Index - 1)) && At(Index + Count) != TEXT(' '));
			for (int32 End = Index + Count; bOpens && Count < 4 && End < Text.Len(); End += Text[End] == Text[Index] ? CountRun(End) : 1)
			{
				const bool bIsClose = Text[End] == Text[Index] && CountRun(End) == Count;
				if (bIsClose && (bIsCode || (At(End - 1) != TEXT(' ') && !FChar::IsAlnum(At(End + Count)))))
				{
					Cut(Index, Index + Count);
					Cut(End, End + Count);
					return bIsCode ? End + Count - Index : Count;
				}
			}
			return Count;
		}

		int32 TakeHeading(int32 Index)
		{
			const int32 Count = CountRun(Index);
			if (Count <= MaxHeadingMarks && IsBlankOrCut(At(Index - 1)) && At(Index + Count) == TEXT(' ') && Index + Count < Text.Len())
			{
				Cut(Index, Index + Count + 1);
			}
			return Count;
		}

		/** "[words](target)": the words stay. What is cut off in the target ends there. */
		int32 TakeLink(int32 Index)
		{
			const int32 Open = Text[Index] == TEXT('!') ? Index + 1 : Index;
			int32 Middle = Open;
			while (Middle < Text.Len() && Text[Middle] != TEXT(']'))
			{
				++Middle;
			}
			if (At(Open) != TEXT('[') || At(Middle + 1) != TEXT('('))
			{
				return Open - Index + 1;
			}
			int32 End = Middle + 2;
			while (End < Text.Len() && Text[End] != TEXT(')') && !IsBlankOrCut(Text[End]))
			{
				++End;
			}
			const bool bIsWhole = At(End) == TEXT(')');
			if ((bIsWhole || At(End) == Ellipsis) && !HoldsPlace(Middle, End))
			{
				Cut(Index, Open + 1);
				Cut(Middle, bIsWhole ? End + 1 : End);
			}
			return Open - Index + 1;
		}

		/** Where a cell "---", " :--:" of such a rule ends; Index when there is none. */
		int32 FindRuleCellEnd(int32 Index) const
		{
			int32 End = Index + (At(Index) == TEXT(' ') ? 1 : 0);
			End += At(End) == TEXT(':') ? 1 : 0;
			const int32 Dashes = At(End) == TEXT('-') ? CountRun(End) : 0;
			End += Dashes;
			End += At(End) == TEXT(':') ? 1 : 0;
			return Dashes > 0 ? End : Index;
		}

		/** "|---|:--|" below the head of a table, or a rule "---". */
		int32 TakeTableRule(int32 Index)
		{
			int32 End = Index + (Text[Index] == TEXT('|') ? 1 : 0);
			int32 Dashes = 0;
			for (int32 Next = FindRuleCellEnd(End); Next > End; Next = FindRuleCellEnd(End))
			{
				for (; End < Next; ++End)
				{
					Dashes += Text[End] == TEXT('-') ? 1 : 0;
				}
				const int32 Pipe = At(End) == TEXT(' ') ? End + 1 : End;
				if (At(Pipe) != TEXT('|'))
				{
					break;
				}
				End = Pipe + 1;
			}
			const bool bIsRule = Dashes >= 3 && IsBlankOrCut(At(Index - 1)) && IsBlankOrCut(At(End));
			if (bIsRule || IsEdgeOfRow(Index))
			{
				Cut(Index, bIsRule ? End : Index + 1);
			}
			return bIsRule ? End - Index : 1;
		}

		/** A pipe with which the excerpt begins or ends: of the row of a table there is nothing at its other side. */
		bool IsEdgeOfRow(int32 Index) const
		{
			const bool bBegins = Index == 0 || Text.Left(Index) == TEXT("\u2026") || Text.Left(Index) == TEXT("\u2026 ");
			const FStringView Rest = Text.RightChop(Index + 1);
			const bool bEnds = Rest.IsEmpty() || Rest == TEXT("\u2026") || Rest == TEXT(" \u2026");
			return Text[Index] == TEXT('|') && ((bBegins && At(Index + 1) == TEXT(' ')) || (bEnds && At(Index - 1) == TEXT(' ')));
		}

		FStringView Text;
		const TArray<Velmora::FFoundPlace>& Places;
		TArray<bool> IsCut;
		bool bIsInCode = false;
		/** Of the last fence; zero before there was one. */
		TCHAR FenceMark = TEXT('\0');
		int32 FenceCount = 0;
	};
}

FString ExcerptText::MakePlain(FStringView Excerpt, TArray<Velmora::FFoundPlace>& InOutPlaces)
{
	FMarkCutter Cutter(Excerpt, InOutPlaces);
	const TArray<bool>& IsCut = Cutter.Run();
	FString Plain;
	/** Of each unit, where it stands now, or what comes behind it. */
	TArray<int32> NewIndex;
	for (int32 Index = 0; Index < Excerpt.Len(); ++Index)
	{
		NewIndex.Add(Plain.Len());
		const bool bIsDoubleBlank = Excerpt[Index] == TEXT(' ') && (Plain.IsEmpty() || IsBlankOrCut(Plain[Plain.Len() - 1]));
		if (!IsCut[Index] && !bIsDoubleBlank)
		{
			Plain.AppendChar(Excerpt[Index]);
		}
	}
	NewIndex.Add(Plain.Len());
	for (Velmora::FFoundPlace& Place : InOutPlaces)
	{
		const int32 End = NewIndex[FMath::Clamp(Place.Begin + Place.Length, 0, Excerpt.Len())];
		Place.Begin = NewIndex[FMath::Clamp(Place.Begin, 0, Excerpt.Len())];
		Place.Length = End - Place.Begin;
	}
	return Plain;
}
