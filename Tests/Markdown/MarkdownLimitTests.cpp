#include "Markdown/MarkdownParser.h"

#include "Markdown/LiteralMarkdownParser.h"
#include "Markdown/TokenDump.h"

#include <gtest/gtest.h>

using namespace Velmora::Markdown;

namespace
{

	FString Letters(int32 Count)
	{
		return FString::ChrN(Count, TEXT('x'));
	}

	TArray<FMarkdownToken> ParseBoth(const FString& Input)
	{
		TArray<FMarkdownToken> Tokens = FMarkdownParser::Parse(Input);
		EXPECT_EQ(CompareTokens(Tokens, ParseLiterally(Input)), "");
		return Tokens;
	}

} // namespace

TEST(MarkdownLimits, LongTextBecomesSeveralTokens)
{
	const TArray<FMarkdownToken> Tokens = ParseBoth(Letters(25000));
	ASSERT_EQ(Tokens.Num(), 3);
	EXPECT_EQ(Tokens[0].Content.Len(), 10000);
	EXPECT_EQ(Tokens[1].Content.Len(), 10000);
	EXPECT_EQ(Tokens[2].Content.Len(), 5000);
	EXPECT_EQ(Tokens[2].EndPos, 25000);
}

// The closer of each construct one character within the search, and at its end.
TEST(MarkdownLimits, ClosersOutOfReachDoNotExist)
{
	struct FCase
	{
		const TCHAR* Opener;
		const TCHAR* Closer;
		ETokenType Type;
	};
	const FCase Cases[] = {
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
	for (const FCase& Case : Cases)
	{
		SCOPED_TRACE(Utf8(Case.Opener));
		EXPECT_TRUE(Holds(ParseBoth(Case.Opener + Letters(49999) + Case.Closer), Case.Type));
		EXPECT_FALSE(Holds(ParseBoth(Case.Opener + Letters(50000) + Case.Closer), Case.Type));
		EXPECT_FALSE(Holds(ParseBoth(Case.Opener + Letters(50001) + Case.Closer), Case.Type));
	}
}

TEST(MarkdownLimits, FootnoteNamesHaveNoLimit)
{
	const TArray<FMarkdownToken> Tokens = ParseBoth(TEXT("a[^") + Letters(120000) + TEXT("]"));
	ASSERT_EQ(Tokens.Num(), 2);
	EXPECT_EQ(Tokens[1].Type, ETokenType::FootnoteReference);
	EXPECT_EQ(Tokens[1].Metadata.Len(), 120000);
}

TEST(MarkdownLimits, CodeBlockWithItsCloserOutOfReachTakesTheRest)
{
	const TArray<FMarkdownToken> Within = ParseBoth(TEXT("```\n") + Letters(49999) + TEXT("```\nafter"));
	ASSERT_EQ(Within.Num(), 2);
	EXPECT_EQ(Within[0].Content.Len(), 49999);
	const TArray<FMarkdownToken> Beyond = ParseBoth(TEXT("```\n") + Letters(50000) + TEXT("```\nafter"));
	ASSERT_EQ(Beyond.Num(), 1);
	EXPECT_EQ(Beyond[0].Content.Len(), 50000 + 9);
}

TEST(MarkdownLimits, OverlongLanguageTagLosesOneCharacter)
{
	const TArray<FMarkdownToken> Tokens = ParseBoth(TEXT("```") + Letters(10000) + TEXT("abc\nd```"));
	ASSERT_EQ(Tokens.Num(), 1);
	EXPECT_EQ(Tokens[0].Metadata.Len(), 10000);
	EXPECT_EQ(Visible(Tokens[0].Content), "bc\\nd");
	// A tag of exactly the limit still gives up its line feed.
	EXPECT_EQ(Visible(ParseBoth(TEXT("```") + Letters(10000) + TEXT("\nabc"))[0].Content), "abc");
}

TEST(MarkdownLimits, TablesBreakAfterAThousandRows)
{
	FString Input(TEXT("|h|\n|-|\n"));
	for (int32 Row = 0; Row < 998; ++Row)
	{
		Input += TEXT("|r|\n");
	}
	EXPECT_EQ(ParseBoth(Input).Num(), 1);
	const TArray<FMarkdownToken> OneMore = ParseBoth(Input + TEXT("|s|"));
	ASSERT_EQ(OneMore.Num(), 2);
	EXPECT_EQ(Utf8(OneMore[1].Content), "|s|");
	EXPECT_EQ(OneMore[1].Type, ETokenType::Text);
	// The rows after the limit are tried as a table of their own.
	const TArray<FMarkdownToken> Second = ParseBoth(Input + TEXT("|h|\n|-|\n"));
	ASSERT_EQ(Second.Num(), 2);
	EXPECT_EQ(Second[1].Type, ETokenType::Table);
}

TEST(MarkdownLimits, OverlongRowsAreReadWhole)
{
	const FString Row = TEXT("|") + Letters(25000) + TEXT("|");
	const TArray<FMarkdownToken> Tokens = ParseBoth(Row + TEXT("\n|-|\n") + Row);
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
	const TArray<FMarkdownToken> Tokens = ParseBoth(Input);
	ASSERT_EQ(Tokens.Num(), 4);
	EXPECT_EQ(Tokens[0].Type, ETokenType::Bold);
	EXPECT_EQ(Tokens[0].Content.Len(), 3);
	EXPECT_EQ(Tokens[1].Content.Len(), 3);
	EXPECT_EQ(Tokens[3].Type, ETokenType::ListItem);
	EXPECT_EQ(Tokens[3].Content.Len(), 2);
}

TEST(MarkdownLimits, PositionsCoverWhatWasConsumed)
{
	struct FCase
	{
		const TCHAR* Input;
		int32 Start;
		int32 End;
	};
	const FCase Cases[] = {
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
	for (const FCase& Case : Cases)
	{
		const FMarkdownToken Token = ParseBoth(Case.Input)[0];
		EXPECT_EQ(Token.StartPos, Case.Start) << Utf8(Case.Input);
		EXPECT_EQ(Token.EndPos, Case.End) << Utf8(Case.Input);
	}
}

TEST(MarkdownContext, ReadsControlCharactersAsBlanks)
{
	FString Input(TEXT("\x01"));
	Input.AppendChar(TEXT('\0'));
	Input += TEXT("\t\r\nab");
	FMarkdownParser::FParseContext Context(Input);
	EXPECT_EQ(Context.Peek(), TEXT(' '));
	EXPECT_EQ(Context.PeekAt(1), TEXT(' '));
	EXPECT_EQ(Context.PeekAt(2), TEXT('\t'));
	EXPECT_EQ(Context.PeekAt(3), TEXT('\r'));
	EXPECT_EQ(Context.PeekAt(7), TEXT('\0'));
	EXPECT_TRUE(Context.IsAtLineStart());
	Context.SkipWhitespace();
	EXPECT_EQ(Context.Position, 5);
	EXPECT_TRUE(Context.IsAtLineStart());
	EXPECT_TRUE(Context.MatchAt(TEXT("ab"), 2));
	EXPECT_FALSE(Context.MatchAt(TEXT("abc"), 3));
	Context.Position = 7;
	EXPECT_EQ(Context.Advance(), TEXT('\0'));
	EXPECT_EQ(Context.Position, 7);
}
