#include "Markdown/MarkdownParser.h"

#include "Markdown/TokenDump.h"

#include <gtest/gtest.h>

using namespace Velmora::Markdown;

namespace
{

	FString Letters(int32 Count)
	{
		return FString::ChrN(Count, TEXT('x'));
	}

} // namespace

TEST(MarkdownLimits, LongTextBecomesSeveralTokens)
{
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Letters(25000));
	ASSERT_EQ(Tokens.Num(), 3);
	EXPECT_EQ(Tokens[0].Content.Len(), 10000);
	EXPECT_EQ(Tokens[1].Content.Len(), 10000);
	EXPECT_EQ(Tokens[2].Content.Len(), 5000);
	EXPECT_EQ(Tokens[2].EndPos, 25000);
}

// The closer of each construct one character within the search, and at its end.
TEST(MarkdownLimits, ClosersOutOfReachDoNotExist)
{
	const std::tuple<const TCHAR*, const TCHAR*, ETokenType> Cases[] = {
		{ TEXT("a ***"), TEXT("***"), ETokenType::BoldItalic },
		{ TEXT("a **"), TEXT("**"), ETokenType::Bold },
		{ TEXT("a __"), TEXT("__"), ETokenType::Bold },
		{ TEXT("a *"), TEXT("*"), ETokenType::Italic },
		{ TEXT("a _"), TEXT("_"), ETokenType::Italic },
		{ TEXT("a ~~"), TEXT("~~"), ETokenType::Strikethrough },
		{ TEXT("a `"), TEXT("`"), ETokenType::Code },
		{ TEXT("a ["), TEXT("](b)"), ETokenType::Link },
		{ TEXT("a [b]("), TEXT(")"), ETokenType::Link },
		{ TEXT("<details><summary>"), TEXT("</summary>B</details>"), ETokenType::CollapsibleSection },
		{ TEXT("<details><summary>S</summary>"), TEXT("</details>"), ETokenType::CollapsibleSection },
	};
	const auto Holds = [](const TArray<FMarkdownToken>& Tokens, ETokenType Type)
	{ return Tokens.ContainsByPredicate([Type](const FMarkdownToken& Token) { return Token.Type == Type; }); };
	for (const auto& [Opener, Closer, Type] : Cases)
	{
		SCOPED_TRACE(Utf8(Opener));
		EXPECT_TRUE(Holds(FMarkdownParser::Parse(Opener + Letters(49999) + Closer), Type));
		EXPECT_FALSE(Holds(FMarkdownParser::Parse(Opener + Letters(50000) + Closer), Type));
		EXPECT_FALSE(Holds(FMarkdownParser::Parse(Opener + Letters(50001) + Closer), Type));
	}
}

TEST(MarkdownLimits, FootnoteNamesHaveNoLimit)
{
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(TEXT("a[^") + Letters(120000) + TEXT("]"));
	ASSERT_EQ(Tokens.Num(), 2);
	EXPECT_EQ(Tokens[1].Type, ETokenType::FootnoteReference);
	EXPECT_EQ(Tokens[1].Metadata.Len(), 120000);
}

TEST(MarkdownLimits, CodeBlockWithItsCloserOutOfReachTakesTheRest)
{
	const TArray<FMarkdownToken> Within = FMarkdownParser::Parse(TEXT("```\n") + Letters(49999) + TEXT("```\nafter"));
	ASSERT_EQ(Within.Num(), 2);
	EXPECT_EQ(Within[0].Content.Len(), 49999);
	const TArray<FMarkdownToken> Beyond = FMarkdownParser::Parse(TEXT("```\n") + Letters(50000) + TEXT("```\nafter"));
	ASSERT_EQ(Beyond.Num(), 1);
	EXPECT_EQ(Beyond[0].Content.Len(), 50000 + 9);
}

TEST(MarkdownLimits, OverlongLanguageTagLosesOneCharacter)
{
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(TEXT("```") + Letters(10000) + TEXT("abc\nd```"));
	ASSERT_EQ(Tokens.Num(), 1);
	EXPECT_EQ(Tokens[0].Metadata.Len(), 10000);
	EXPECT_EQ(Visible(Tokens[0].Content), "bc\\nd");
	// A tag of exactly the limit still gives up its line feed.
	EXPECT_EQ(Visible(FMarkdownParser::Parse(TEXT("```") + Letters(10000) + TEXT("\nabc"))[0].Content), "abc");
}

TEST(MarkdownLimits, TablesBreakAfterAThousandRows)
{
	FString Input(TEXT("|h|\n|-|\n"));
	for (int32 Row = 0; Row < 998; ++Row)
	{
		Input += TEXT("|r|\n");
	}
	EXPECT_EQ(FMarkdownParser::Parse(Input).Num(), 1);
	const TArray<FMarkdownToken> OneMore = FMarkdownParser::Parse(Input + TEXT("|s|"));
	ASSERT_EQ(OneMore.Num(), 2);
	EXPECT_EQ(Utf8(OneMore[1].Content), "|s|");
	EXPECT_EQ(OneMore[1].Type, ETokenType::Text);
	// The rows after the limit are tried as a table of their own.
	const TArray<FMarkdownToken> Second = FMarkdownParser::Parse(Input + TEXT("|h|\n|-|\n"));
	ASSERT_EQ(Second.Num(), 2);
	EXPECT_EQ(Second[1].Type, ETokenType::Table);
}

TEST(MarkdownLimits, OverlongRowsAreReadWhole)
{
	const FString Row = TEXT("|") + Letters(25000) + TEXT("|");
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Row + TEXT("\n|-|\n") + Row);
	ASSERT_EQ(Tokens.Num(), 1);
	EXPECT_EQ(Tokens[0].Content.Len(), 2 * Row.Len() + 5);
}

TEST(MarkdownLimits, OddCharactersAreKept)
{
	FString Input(TEXT("**a"));
	Input.AppendChar(TEXT('\0'));
	Input += TEXT("b** c");
	Input.AppendChar(static_cast<TCHAR>(0xD800)); // A surrogate without its other half.
	Input += TEXT("\n- d");
	Input.AppendChar(TEXT('\0'));
	const TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Input);
	ASSERT_EQ(Tokens.Num(), 4);
	EXPECT_EQ(Tokens[0].Type, ETokenType::Bold);
	EXPECT_EQ(Tokens[0].Content.Len(), 3);
	EXPECT_EQ(Tokens[1].Content.Len(), 3);
	EXPECT_EQ(Tokens[3].Type, ETokenType::ListItem);
	EXPECT_EQ(Tokens[3].Content.Len(), 2);
}

TEST(MarkdownLimits, PositionsCoverWhatWasConsumed)
{
	const std::tuple<const TCHAR*, int32, int32> Cases[] = {
		{ TEXT("# a\nb"), 0, 4 },
		{ TEXT("  - a\nb"), 0, 6 },
		{ TEXT("---\nb"), 0, 4 },
		{ TEXT("> a\nb"), 0, 4 },
		{ TEXT("  |a|\n|-|\nb"), 0, 10 },
		{ TEXT("  <details><summary>S</summary>B</details>x\nb"), 0, 44 },
		{ TEXT("[^a]: b\nc"), 0, 8 },
		{ TEXT("```\na```b\nc"), 0, 10 },
		{ TEXT("***a*** b"), 0, 7 },
		{ TEXT("[a](b) c"), 0, 6 },
		{ TEXT("[^a] c"), 0, 4 },
		{ TEXT("`a` c"), 0, 3 },
		{ TEXT("\na"), 0, 1 },
		{ TEXT("*ab"), 1, 3 },
	};
	for (const auto& [Input, Start, End] : Cases)
	{
		const FMarkdownToken Token = FMarkdownParser::Parse(Input)[0];
		EXPECT_EQ(Token.StartPos, Start) << Utf8(Input);
		EXPECT_EQ(Token.EndPos, End) << Utf8(Input);
	}
}
