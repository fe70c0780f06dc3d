#include "Markdown/MarkdownParser.h"

#include "Markdown/TokenDump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

using namespace Velmora::Markdown;

namespace
{
	FString Repeat(const TCHAR* Piece, int32 Count)
	{
		const FString Text(Piece);
		FString Result;
		Result.Reserve(Text.Len() * Count);
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Result += Text;
		}
		return Result;
	}

	/** Texts whose openers never find what they look for, or whose lines are looked at again and again. */
	struct FHostileShape
	{
		const char* Name;
		const TCHAR* Head;
		const TCHAR* Piece;
		const TCHAR* Tail;
	};

	const FHostileShape HostileShapes[] = {
		{ "bold openers", TEXT(""), TEXT("**a "), TEXT("") },
		{ "all delimiters open", TEXT("x "), TEXT("***a **b __c *d _e ~~f `g "), TEXT("") },
		{ "closers before letters", TEXT("x *a"), TEXT("*a"), TEXT("") },
		{ "asterisks", TEXT("x "), TEXT("*"), TEXT(" a") },
		{ "backticks", TEXT("x "), TEXT("`"), TEXT("a") },
		{ "tildes and blanks", TEXT("x "), TEXT(" ~~"), TEXT("") },
		{ "brackets", TEXT(""), TEXT("[x"), TEXT("") },
		{ "brackets with one closer", TEXT("a"), TEXT("["), TEXT("]") },
		{ "link targets open", TEXT("a"), TEXT("[x]("), TEXT("") },
		{ "footnotes open", TEXT("a"), TEXT("[^"), TEXT("") },
		{ "pipes without a separator", TEXT(""), TEXT("| a | b |\n"), TEXT("") },
		{ "indented pipes without a separator", TEXT(""), TEXT("   |\n"), TEXT("") },
		{ "sections open", TEXT(""), TEXT("<details>\n<summary>\n"), TEXT("") },
		{ "sections without an end", TEXT(""), TEXT("<details><summary>a\n"), TEXT("</summary>\n\n\n b") },
		{ "sections before many empty lines", TEXT(""), TEXT("<details><summary>a\n<details>\n\n"), TEXT("</summary>") },
		{ "one closed summary after many", TEXT(""), TEXT("<details><summary>S</summary>\n\n"), TEXT("") },
		{ "fences", TEXT(""), TEXT("```\n"), TEXT("") },
		{ "quotes", TEXT(""), TEXT(">"), TEXT("") },
		{ "digits", TEXT(""), TEXT("1"), TEXT("") },
		{ "header marks", TEXT(""), TEXT("#"), TEXT("") },
		{ "blank lines after a bullet", TEXT("- "), TEXT("\n"), TEXT("a") },
		{ "indented lines", TEXT(""), TEXT("          \n"), TEXT("a") },
		{ "rules with a text", TEXT(""), TEXT("------------ x\n"), TEXT("") },
		{ "words", TEXT(""), TEXT("word_word*word "), TEXT("") },
	};

	FString MakeHostileText(const FHostileShape& Shape, int32 Length)
	{
		const int32 PieceLength = FString(Shape.Piece).Len();
		return Shape.Head + Repeat(Shape.Piece, Length / PieceLength) + Shape.Tail;
	}

	double MeasureParse(const FString& Input)
	{
		const std::clock_t Begin = std::clock();
		const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Input);
		return static_cast<double>(std::clock() - Begin) / CLOCKS_PER_SEC;
	}

} // namespace

// Twice the text takes about twice the time; were an opener's search repeated, it would be four times.
TEST(MarkdownHostileTexts, AreReadWhereverTheyStandInTimeThatGrowsWithThem)
{
	for (const FHostileShape& Shape : HostileShapes)
	{
		EXPECT_EQ(CompareBehindOpeners(MakeHostileText(Shape, 97)), "") << Shape.Name;
		const FString Half = MakeHostileText(Shape, 20000);
		const FString Whole = MakeHostileText(Shape, 40000);
		double Ratio = 0.0;
		for (int32 Attempt = 0; Attempt < 5; ++Attempt)
		{
			const double HalfTime = std::min(MeasureParse(Half), MeasureParse(Half));
			const double WholeTime = std::min(MeasureParse(Whole), MeasureParse(Whole));
			Ratio = WholeTime / std::max(HalfTime, 0.002);
			if (Ratio < 3.0)
			{
				break;
			}
		}
		EXPECT_LT(Ratio, 3.0) << Shape.Name;
	}
}
