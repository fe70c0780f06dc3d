#include "Widgets/PromptLines.h"

#include "Math/UnrealMathUtility.h"

namespace
{

	/** Few enough that 16 bits hold the count, many enough that the rest, walked one by one, does not matter. */
	constexpr int32 LineScanBlock = 256;

	/** Without a branch for each character: a compiler compares eight or more of them at once. */
	int32 CountLineFeedsOfBlock(const TCHAR* Block)
	{
		// As wide as the characters: with a wider sum each of them would have to be widened first.
		uint16 LineFeeds = 0;
		for (int32 Offset = 0; Offset < LineScanBlock; ++Offset)
		{
			LineFeeds += static_cast<uint16>(Block[Offset] == TEXT('\n'));
		}
		return LineFeeds;
	}

	/** Where a line begins; the text's length when there are not so many lines. */
	int32 FindLineBegin(const TCHAR* Text, int32 Length, int32 TargetLine)
	{
		int32 Line = 0;
		int32 Index = 0;
		// 1. Whole blocks, up to the one in which the line begins.
		for (; Length - Index >= LineScanBlock; Index += LineScanBlock)
		{
			const int32 LineFeeds = CountLineFeedsOfBlock(Text + Index);
			if (Line + LineFeeds >= TargetLine)
			{
				break;
			}
			Line += LineFeeds;
		}
		// 2. Within it one by one, and what is left over at the end of the text.
		for (; Line < TargetLine && Index < Length; ++Index)
		{
			Line += Text[Index] == TEXT('\n') ? 1 : 0;
		}
		return Index;
	}

	/** Boxes join their lines in one way, so the first line end tells of all. */
	bool HasCarriageReturns(const FString& Text)
	{
		const int32 SecondLine = FindLineBegin(*Text, Text.Len(), 1);
		return SecondLine >= 2 && SecondLine <= Text.Len() && (*Text)[SecondLine - 1] == TEXT('\n') &&
			(*Text)[SecondLine - 2] == TEXT('\r');
	}

	bool HasLineFeedBetween(const TCHAR* Text, int32 Begin, int32 End)
	{
		int32 Index = Begin;
		while (End - Index >= LineScanBlock && CountLineFeedsOfBlock(Text + Index) == 0)
		{
			Index += LineScanBlock;
		}
		while (Index < End && Text[Index] != TEXT('\n'))
		{
			++Index;
		}
		return Index < End;
	}

} // namespace

int32 FPromptLines::ToLinearIndex(const FString& Text, const FTextLocation& Location)
{
	// 1. Negative places are those of the first line and column.
	const int32 TargetLine = FMath::Max(Location.GetLineIndex(), 0);
	const int32 TargetOffset = FMath::Max(Location.GetOffset(), 0);
	// 2. The line; a line that is not there begins at the end of the text.
	const TCHAR* const Begin = *Text;
	const int32 Length = Text.Len();
	const int32 LineBegin = FindLineBegin(Begin, Length, TargetLine);
	// 3. A column beyond its line is a place that does not exist.
	const bool bExists = TargetOffset < Length - LineBegin && !HasLineFeedBetween(Begin, LineBegin, LineBegin + TargetOffset);
	return bExists ? LineBegin + TargetOffset : Length;
}

FTextLocation FPromptLines::ToTextLocation(const FString& Text, int32 Index)
{
	const TCHAR* const Begin = *Text;
	const int32 End = FMath::Clamp(Index, 0, Text.Len());
	int32 Line = 0;
	int32 LineBegin = 0;
	for (int32 Position = 0; Position < End; ++Position)
	{
		if (Begin[Position] == TEXT('\n'))
		{
			++Line;
			LineBegin = Position + 1;
		}
	}
	return FTextLocation(Line, End - LineBegin);
}

FText FPromptLines::WithLineFeeds(const FText& Text)
{
	// A box may join its lines with carriage returns, while it counts a line end as one place.
	return HasCarriageReturns(Text.ToString())
		? FText::FromString(Text.ToString().Replace(TEXT("\r\n"), TEXT("\n"), ESearchCase::CaseSensitive))
		: Text;
}
