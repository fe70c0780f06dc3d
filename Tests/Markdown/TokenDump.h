#pragma once

#include "CoreMinimal.h"
#include "Markdown/MarkdownParser.h"
#include "Support/Base/Printers.h"

#include <string>

/** The text with line feed, carriage return and tab made visible. */
inline std::string Visible(const FString& Text)
{
	std::string Result;
	for (const char Char : Utf8(Text))
	{
		switch (Char)
		{
		case '\n':
			Result += "\\n";
			break;
		case '\r':
			Result += "\\r";
			break;
		case '\t':
			Result += "\\t";
			break;
		default:
			Result += Char;
		}
	}
	return Result;
}

/** One line per token: "ListItem 'text' (metadata) level 2", the last two where there is something to show. */
inline std::string DumpTokens(const TArray<Velmora::Markdown::FMarkdownToken>& Tokens)
{
	std::string Result;
	for (const Velmora::Markdown::FMarkdownToken& Token : Tokens)
	{
		Result += Utf8(Token.GetTypeString());
		if (Token.Type != Velmora::Markdown::ETokenType::Newline && Token.Type != Velmora::Markdown::ETokenType::HorizontalRule)
		{
			Result += " '" + Visible(Token.Content) + "'";
		}
		if (!Token.Metadata.IsEmpty())
		{
			Result += " (" + Visible(Token.Metadata) + ")";
		}
		if (Token.Level != 0)
		{
			Result += " level " + std::to_string(Token.Level);
		}
		Result += "\n";
	}
	return Result;
}

/**
 * No construct within a line reaches over its end, so openers in a line before change nothing but places. The first token that is
 * another one all the same, empty if there is none.
 */
inline std::string CompareBehindOpeners(const FString& Text)
{
	const FString Before(TEXT("x *a **b __c _d ~~e `f [g [^h ***i [j](k\n"));
	const TArray<Velmora::Markdown::FMarkdownToken> Alone = Velmora::Markdown::FMarkdownParser::Parse(Text);
	const TArray<Velmora::Markdown::FMarkdownToken> Both = Velmora::Markdown::FMarkdownParser::Parse(Before + Text);
	const int32 First =
		Both.IndexOfByPredicate([&Before](const Velmora::Markdown::FMarkdownToken& Token) { return Token.StartPos >= Before.Len(); });
	const int32 Count = First == INDEX_NONE ? 0 : Both.Num() - First;
	for (int32 Index = 0; Index < Alone.Num() && Index < Count; ++Index)
	{
		const Velmora::Markdown::FMarkdownToken& A = Alone[Index];
		const Velmora::Markdown::FMarkdownToken& B = Both[First + Index];
		if (A.Type != B.Type || !A.Content.Equals(B.Content) || !A.Metadata.Equals(B.Metadata) || A.Level != B.Level ||
			A.StartPos + Before.Len() != B.StartPos || A.EndPos + Before.Len() != B.EndPos)
		{
			return Utf8(B.ToString().Left(200)) + " instead of " + Utf8(A.ToString().Left(200));
		}
	}
	// A text of blanks alone has no tokens, unless something stands before it.
	const bool bBlank = Text.TrimStartAndEnd().IsEmpty();
	return Alone.Num() == Count || bBlank ? std::string() : std::to_string(Count) + " tokens instead of " + std::to_string(Alone.Num());
}
