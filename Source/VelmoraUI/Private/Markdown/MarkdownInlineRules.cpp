#include "Markdown/MarkdownParser.h"

#include "Markdown/MarkdownScan.h"

namespace Velmora::Markdown
{

	namespace
	{

		bool IsEmphasisChar(TCHAR Char)
		{
			return Char == TEXT('_') || Char == TEXT('*') || Char == TEXT('`') || Char == TEXT('~');
		}

		/** Neither a letter, a digit nor an underscore stands before the index: emphasis may open here. */
		bool IsWordBoundary(const FMarkdownParser::FParseContext& Context, int32 Index)
		{
			return Index == 0 || !Scan::IsWordChar(Context.Text[Index - 1]);
		}

		/** 1 for every character at which a text run may have to stop: line feed, "*", "[", "_", "`", "~". */
		struct FIsRunStop
		{
			uint16 operator()(uint16 Unit) const
			{
				static_assert(TEXT('*') == (TEXT('\n') | 0x20) && TEXT('_') == (TEXT('[') | 0x04));
				const uint16 bLineFeedOrStar = (Unit & 0xFFDF) == TEXT('\n');
				const uint16 bBracketOrUnderscore = (Unit & 0xFFFB) == TEXT('[');
				const uint16 bBacktick = Unit == TEXT('`');
				const uint16 bTilde = Unit == TEXT('~');
				return static_cast<uint16>(bLineFeedOrStar + bBracketOrUnderscore + bBacktick + bTilde);
			}
		};

		/** End of the run of plain text that begins at the read position; the position itself if nothing may begin there. */
		int32 FindRunEnd(const FMarkdownParser::FParseContext& Context)
		{
			const TCHAR* Text = Context.Text;
			const int32 Start = Context.Position;
			const TCHAR First = Text[Start];
			// 1. A block marker that no block rule took does not begin a run: it is dropped, so that the rest of its line shows without it.
			const bool bBlockMarker = First == TEXT('#') || First == TEXT('>') || First == TEXT('-') || First == TEXT('+');
			if (bBlockMarker && Context.IsAtLineStart())
			{
				return Start;
			}
			// 2. On to where something may begin. A delimiter within a word begins nothing and belongs to the run.
			const int32 Limit = FMath::Min(Context.Length - Start, FMarkdownParser::MAX_LINE_LENGTH) + Start;
			for (int32 Index = Start; (Index = Scan::FindFirst(Text, Index, Limit, FIsRunStop())) < Limit; ++Index)
			{
				if (!IsEmphasisChar(Text[Index]) || IsWordBoundary(Context, Index))
				{
					return Index;
				}
			}
			return Limit;
		}

		/** The shared rule of all delimiters: text between an opener and the next valid closer on the line, kept raw. */
		bool ParseDelimited(FMarkdownParser::FParseContext& Context, FMarkdownToken& OutToken, ETokenType Type, int32 DelimiterLength,
			FMarkdownParser::ECloser Closer)
		{
			// 1. The opener stands at the start of a word, and its text begins right after it.
			const int32 Start = Context.Position;
			const int32 ContentStart = Start + DelimiterLength;
			if (!IsWordBoundary(Context, Start) || ContentStart >= Context.Length)
			{
				return false;
			}
			const TCHAR Behind = Context.Text[ContentStart];
			if (Scan::IsRawBlank(Behind) || Behind == TEXT('\n'))
			{
				return false;
			}
			// 2. The closer, on the same line.
			const int32 ContentEnd = Context.FindCloser(Closer, ContentStart);
			if (ContentEnd == INDEX_NONE)
			{
				return false;
			}
			Context.Position = ContentEnd + DelimiterLength;
			OutToken.Type = Type;
			OutToken.Content = FString(FStringView(Context.Text + ContentStart, ContentEnd - ContentStart));
			OutToken.StartPos = Start;
			OutToken.EndPos = Context.Position;
			return true;
		}

	} // namespace

	// The rules are tried in the order bold italic, bold, italic, strikethrough, code, link, footnote. The first character
	// tells which of them have a chance at all.
	bool FMarkdownParser::TryRulesFor(TCHAR First, FParseContext& Context, FMarkdownToken& OutToken)
	{
		switch (First)
		{
		case TEXT('*'):
			return TryParseBoldItalic(Context, OutToken) || TryParseBold(Context, OutToken) || TryParseItalic(Context, OutToken);
		case TEXT('_'):
			return TryParseBold(Context, OutToken) || TryParseItalic(Context, OutToken);
		case TEXT('~'):
			return TryParseStrikethrough(Context, OutToken);
		case TEXT('`'):
			return TryParseInlineCode(Context, OutToken);
		case TEXT('['):
			return TryParseLink(Context, OutToken) || TryParseFootnoteReference(Context, OutToken);
		default:
			return false;
		}
	}

	void FMarkdownParser::ParseInlineElement(FParseContext& Context)
	{
		if (Context.IsAtEnd())
		{
			return;
		}
		const TCHAR First = Context.Text[Context.Position];
		// 1. A line end is a token of its own: lines are not joined.
		if (First == TEXT('\n'))
		{
			FMarkdownToken& Newline = Context.Tokens.Emplace_GetRef();
			Newline.Type = ETokenType::Newline;
			Newline.StartPos = Context.Position;
			Newline.EndPos = ++Context.Position;
			return;
		}
		// 2. What may open something. A character that no rule takes is dropped by the caller when no text begins with it either.
		if (First == TEXT('[') || (IsEmphasisChar(First) && IsWordBoundary(Context, Context.Position)))
		{
			FMarkdownToken Token;
			if (TryRulesFor(First, Context, Token))
			{
				Context.Tokens.Add(MoveTemp(Token));
				return;
			}
		}
		// 3. Text, as far as it goes.
		const int32 Start = Context.Position;
		const int32 End = FindRunEnd(Context);
		if (End > Start)
		{
			Context.Position = End;
			AddTextToken(Context, Start, End);
		}
	}

	bool FMarkdownParser::TryParseBoldItalic(FParseContext& Context, FMarkdownToken& OutToken)
	{
		return Context.MatchAt(TEXT("***"), 3) && ParseDelimited(Context, OutToken, ETokenType::BoldItalic, 3, ECloser::TripleStar);
	}

	bool FMarkdownParser::TryParseBold(FParseContext& Context, FMarkdownToken& OutToken)
	{
		if (Context.MatchAt(TEXT("**"), 2))
		{
			return ParseDelimited(Context, OutToken, ETokenType::Bold, 2, ECloser::DoubleStar);
		}
		return Context.MatchAt(TEXT("__"), 2) && ParseDelimited(Context, OutToken, ETokenType::Bold, 2, ECloser::DoubleUnderscore);
	}

	bool FMarkdownParser::TryParseItalic(FParseContext& Context, FMarkdownToken& OutToken)
	{
		const TCHAR Delimiter = Context.Peek();
		if ((Delimiter != TEXT('*') && Delimiter != TEXT('_')) || Context.PeekAt(Context.Position + 1) == Delimiter)
		{
			return false;
		}
		return ParseDelimited(Context, OutToken, ETokenType::Italic, 1, Delimiter == TEXT('*') ? ECloser::Star : ECloser::Underscore);
	}

	bool FMarkdownParser::TryParseStrikethrough(FParseContext& Context, FMarkdownToken& OutToken)
	{
		return Context.MatchAt(TEXT("~~"), 2) && ParseDelimited(Context, OutToken, ETokenType::Strikethrough, 2, ECloser::DoubleTilde);
	}

	bool FMarkdownParser::TryParseInlineCode(FParseContext& Context, FMarkdownToken& OutToken)
	{
		if (Context.Peek() != TEXT('`') || Context.MatchAt(TEXT("```"), 3))
		{
			return false;
		}
		return ParseDelimited(Context, OutToken, ETokenType::Code, 1, ECloser::Backtick);
	}

	// "[text](target)" on one line. The target ends at the first ")", both parts may be empty.
	bool FMarkdownParser::TryParseLink(FParseContext& Context, FMarkdownToken& OutToken)
	{
		const int32 Start = Context.Position;
		if (Context.Peek() != TEXT('['))
		{
			return false;
		}
		const int32 LabelEnd = Context.FindCloser(ECloser::SquareBracket, Start + 1);
		if (LabelEnd == INDEX_NONE || Context.PeekAt(LabelEnd + 1) != TEXT('('))
		{
			return false;
		}
		const int32 TargetStart = LabelEnd + 2;
		const int32 TargetEnd = Context.FindCloser(ECloser::RoundBracket, TargetStart);
		if (TargetEnd == INDEX_NONE)
		{
			return false;
		}
		Context.Position = TargetEnd + 1;
		OutToken.Type = ETokenType::Link;
		OutToken.Content = ExtractText(Context, Start + 1, LabelEnd);
		OutToken.Metadata = ExtractText(Context, TargetStart, TargetEnd);
		OutToken.StartPos = Start;
		OutToken.EndPos = Context.Position;
		return true;
	}

	// "[^name]" on one line. A name of blanks is a name; only "[^]" has none.
	bool FMarkdownParser::TryParseFootnoteReference(FParseContext& Context, FMarkdownToken& OutToken)
	{
		const int32 Start = Context.Position;
		if (!Context.MatchAt(TEXT("[^"), 2))
		{
			return false;
		}
		const int32 NameStart = Start + 2;
		const int32 NameEnd = Context.FindStop(ECloser::SquareBracket, NameStart);
		if (NameEnd == NameStart || Context.PeekAt(NameEnd) != TEXT(']'))
		{
			return false;
		}
		Context.Position = NameEnd + 1;
		OutToken.Type = ETokenType::FootnoteReference;
		OutToken.Metadata = Scan::MakeTrimmed(Context.Text, NameStart, NameEnd);
		OutToken.Content = TEXT("[") + OutToken.Metadata + TEXT("]");
		OutToken.StartPos = Start;
		OutToken.EndPos = Context.Position;
		return true;
	}

} // namespace Velmora::Markdown
