#include "Markdown/MarkdownParser.h"

#include "Markdown/LiteralMarkdownParser.h"
#include "Markdown/TokenDump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <random>
#include <vector>

using namespace Velmora::Markdown;

namespace
{

	/** Texts glued together from pieces that mean something to the rules. */
	class FPieceText
	{
	public:
		FPieceText(uint32 Seed, std::vector<FString> InPieces)
			: Random(Seed)
			, Pieces(std::move(InPieces))
		{
		}

		FString Next(int32 MaxPieces)
		{
			FString Text;
			const int32 Count = static_cast<int32>(Random() % static_cast<uint32>(MaxPieces + 1));
			for (int32 Index = 0; Index < Count; ++Index)
			{
				Text += Pieces[Random() % Pieces.size()];
			}
			return Text;
		}

	private:
		std::mt19937 Random;
		std::vector<FString> Pieces;
	};

	std::vector<FString> SplitCharacters(const TCHAR* Characters)
	{
		std::vector<FString> Pieces;
		for (; *Characters != 0; ++Characters)
		{
			Pieces.push_back(FString::ChrN(1, *Characters));
		}
		return Pieces;
	}

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

	void ExpectAgreement(const FString& Input)
	{
		const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Input);
		ASSERT_EQ(CompareTokens(Tokens, ParseLiterally(Input)), "") << Visible(Input.Left(400));
		int32 LastEnd = 0;
		for (const FMarkdownToken& Token : Tokens)
		{
			ASSERT_LE(LastEnd, Token.StartPos) << Visible(Input.Left(400));
			ASSERT_LT(Token.StartPos, Token.EndPos) << Visible(Input.Left(400));
			LastEnd = Token.EndPos;
		}
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

TEST(MarkdownAgreement, OnRandomTexts)
{
	FString Nul;
	Nul.AppendChar(TEXT('\0'));
	FPieceText Texts(1,
		{ TEXT("*"), TEXT("**"), TEXT("***"), TEXT("_"), TEXT("__"), TEXT("~~"), TEXT("~"), TEXT("`"), TEXT("```"), TEXT("["), TEXT("]"),
			TEXT("]("), TEXT(")"), TEXT("[^"), TEXT("]:"), TEXT("[x] "), TEXT("#"), TEXT("# "), TEXT("- "), TEXT("-"), TEXT("+ "),
			TEXT("1. "), TEXT("9"), TEXT("."), TEXT("> "), TEXT(">"), TEXT("|"), TEXT("|-|"), TEXT(":-:"), TEXT("\n"), TEXT("\n"),
			TEXT("\n"), TEXT("\n\n"), TEXT(" "), TEXT(" "), TEXT("\t"), TEXT("\r"), TEXT("\x01"), Nul, TEXT("a"), TEXT("b"), TEXT("word"),
			TEXT("\u00e9"), TEXT("\u00a0"), TEXT("\u2003"), TEXT("\u0661"), TEXT("\U0001F600"), TEXT("\\"), TEXT("<details>"),
			TEXT("<summary>"), TEXT("</summary>"), TEXT("</details>"), TEXT("<"), TEXT("---"), TEXT("***\n") });
	for (int32 Trial = 0; Trial < 20000; ++Trial)
	{
		ASSERT_NO_FATAL_FAILURE(ExpectAgreement(Texts.Next(Trial % 2 == 0 ? 8 : 40)));
	}
}

TEST(MarkdownAgreement, OnSections)
{
	FPieceText Texts(2,
		{ TEXT("<details>"), TEXT("<summary>"), TEXT("</summary>"), TEXT("</details>"), TEXT("\n"), TEXT(" "), TEXT("a"),
			TEXT("\n<details><summary>") });
	for (int32 Trial = 0; Trial < 5000; ++Trial)
	{
		ASSERT_NO_FATAL_FAILURE(ExpectAgreement(TEXT("<details><summary>") + Texts.Next(14)));
	}
}

// Every text of up to five characters over small alphabets, after a head that puts it where a rule looks.
TEST(MarkdownAgreement, OnAllShortTexts)
{
	struct FCase
	{
		const TCHAR* Head;
		const TCHAR* Alphabet;
	};
	const FCase Cases[] = {
		{ TEXT(""), TEXT("*_ a\n`~") },
		{ TEXT("x *"), TEXT("*_ a\n") },
		{ TEXT("x `"), TEXT("`~* a\n") },
		{ TEXT(""), TEXT("[]()^:a") },
		{ TEXT("[^"), TEXT("]:[(a \n") },
		{ TEXT("|\n"), TEXT("|-: a\n") },
		{ TEXT("|a|\n"), TEXT("|-:\t\n") },
		{ TEXT(""), TEXT("#-+1. \n") },
		{ TEXT("- "), TEXT("[]x \n\x01") },
		{ TEXT("```"), TEXT("`a \n") },
	};
	for (const FCase& Case : Cases)
	{
		const std::vector<FString> Letters = SplitCharacters(Case.Alphabet);
		std::vector<FString> Texts = { FString(Case.Head) };
		for (int32 Length = 1; Length <= 5; ++Length)
		{
			std::vector<FString> Longer;
			for (const FString& Text : Texts)
			{
				for (const FString& Letter : Letters)
				{
					Longer.push_back(Text + Letter);
					ASSERT_NO_FATAL_FAILURE(ExpectAgreement(Longer.back()));
				}
			}
			Texts = std::move(Longer);
		}
	}
}

TEST(MarkdownAgreement, OnHostileTexts)
{
	for (const FHostileShape& Shape : HostileShapes)
	{
		SCOPED_TRACE(Shape.Name);
		for (const int32 Length : { 97, 1999 })
		{
			ASSERT_NO_FATAL_FAILURE(ExpectAgreement(MakeHostileText(Shape, Length)));
		}
	}
}

// Twice the text takes about twice the time; were an opener's search repeated, it would be four times.
TEST(MarkdownHostileTexts, TakeTimeInProportionToTheirLength)
{
	for (const FHostileShape& Shape : HostileShapes)
	{
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
