#pragma once

#include "CoreMinimal.h"
#include "Markdown/MarkdownToken.h"
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

/** The first difference between two token lists in any field, empty if there is none. */
inline std::string CompareTokens(
	const TArray<Velmora::Markdown::FMarkdownToken>& Actual, const TArray<Velmora::Markdown::FMarkdownToken>& Expected)
{
	const int32 Common = Actual.Num() < Expected.Num() ? Actual.Num() : Expected.Num();
	for (int32 Index = 0; Index < Common; ++Index)
	{
		const Velmora::Markdown::FMarkdownToken& A = Actual[Index];
		const Velmora::Markdown::FMarkdownToken& B = Expected[Index];
		if (A.Type != B.Type || !A.Content.Equals(B.Content) || !A.Metadata.Equals(B.Metadata) || A.Level != B.Level ||
			A.StartPos != B.StartPos || A.EndPos != B.EndPos)
		{
			return "token " + std::to_string(Index) + " at " + std::to_string(A.StartPos) + "-" + std::to_string(A.EndPos) + " " +
				Utf8(A.ToString().Left(200)) + " instead of " + std::to_string(B.StartPos) + "-" + std::to_string(B.EndPos) + " " +
				Utf8(B.ToString().Left(200));
		}
	}
	if (Actual.Num() != Expected.Num())
	{
		return std::to_string(Actual.Num()) + " tokens instead of " + std::to_string(Expected.Num());
	}
	return std::string();
}
