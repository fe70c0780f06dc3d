#include "Markdown/MarkdownParser.h"

#include "Markdown/MarkdownLog.h"
#include "Markdown/MarkdownScan.h"

DEFINE_LOG_CATEGORY(LogMarkdownParser);

namespace Velmora::Markdown
{

	namespace
	{

		/**
		 * First index at or after From where a closer of Count equal characters stands or the line ends. A closer follows no
		 * blank or tab and precedes no word character; where bAlone is set it precedes no further delimiter either.
		 */
		int32 FindDelimiterStop(const TCHAR* Text, int32 From, int32 Length, TCHAR Delimiter, int32 Count, bool bAlone)
		{
			// The next delimiter or the line end, whichever comes first. Whether it closes depends on its two neighbours alone.
			int32 Index = From;
			while (true)
			{
				Index = Scan::FindEither(Text, Index, Length, Delimiter, TEXT('\n'));
				if (Index == Length || Text[Index] == TEXT('\n'))
				{
					return Index;
				}
				int32 Matched = 1;
				while (Matched < Count && Index + Matched < Length && Text[Index + Matched] == Delimiter)
				{
					++Matched;
				}
				const TCHAR Behind = Index + Count < Length ? Text[Index + Count] : TEXT('\0');
				if (Matched == Count && !Scan::IsRawBlank(Text[Index - 1]) && !Scan::IsWordChar(Behind) && !(bAlone && Behind == Delimiter))
				{
					return Index;
				}
				++Index;
			}
		}

		bool IsWhitespaceOnly(const FString& Input)
		{
			const TCHAR* Text = *Input;
			const int32 Length = Input.Len();
			for (int32 Index = 0; Index < Length; ++Index)
			{
				if (!FChar::IsWhitespace(Text[Index]))
				{
					return false;
				}
			}
			return true;
		}

	} // namespace

	FMarkdownParser::FParseContext::FParseContext(const FString& Input)
		: Text(*Input)
		, Length(Input.Len())
	{
	}

	TCHAR FMarkdownParser::FParseContext::Advance()
	{
		if (IsAtEnd())
		{
			return TEXT('\0');
		}
		return FilterControl(Text[Position++]);
	}

	void FMarkdownParser::FParseContext::SkipWhitespace()
	{
		while (Position < Length && FChar::IsWhitespace(FilterControl(Text[Position])))
		{
			++Position;
		}
	}

	int32 FMarkdownParser::FParseContext::SkipBlanks()
	{
		const int32 Start = Position;
		while (Position < Length && Scan::IsRawBlank(Text[Position]))
		{
			++Position;
		}
		return Position - Start;
	}

	void FMarkdownParser::FParseContext::SkipBlanksAndLineFeeds()
	{
		while (Position < Length && (Scan::IsRawBlank(Text[Position]) || Text[Position] == TEXT('\n')))
		{
			++Position;
		}
	}

	int32 FMarkdownParser::FParseContext::SkipLine()
	{
		const int32 LineEnd = Scan::FindChar(Text, Position, Length, TEXT('\n'));
		Position = LineEnd < Length ? LineEnd + 1 : LineEnd;
		return LineEnd;
	}

	int32 FMarkdownParser::FParseContext::FindStop(ECloser Closer, int32 From)
	{
		// 1. A search from within the range of the last one stops where that one did.
		FSearchMemo& Memo = Memos[static_cast<int32>(Closer)];
		if (From >= Memo.From && From <= Memo.Stop)
		{
			return Memo.Stop;
		}
		// 2. Otherwise a walk.
		int32 Stop = Length;
		switch (Closer)
		{
		case ECloser::TripleStar:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('*'), 3, false);
			break;
		case ECloser::DoubleStar:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('*'), 2, false);
			break;
		case ECloser::DoubleUnderscore:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('_'), 2, false);
			break;
		case ECloser::Star:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('*'), 1, true);
			break;
		case ECloser::Underscore:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('_'), 1, true);
			break;
		case ECloser::DoubleTilde:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('~'), 2, false);
			break;
		case ECloser::Backtick:
			Stop = FindDelimiterStop(Text, From, Length, TEXT('`'), 1, false);
			break;
		case ECloser::SquareBracket:
			Stop = Scan::FindEither(Text, From, Length, TEXT(']'), TEXT('\n'));
			break;
		case ECloser::RoundBracket:
			Stop = Scan::FindEither(Text, From, Length, TEXT(')'), TEXT('\n'));
			break;
		case ECloser::SummaryTag:
			Stop = Scan::FindLiteral(Text, From, Length, TEXT("</summary>"), 10);
			break;
		case ECloser::DetailsTag:
			Stop = Scan::FindLiteral(Text, From, Length, TEXT("</details>"), 10);
			break;
		case ECloser::Count:
			break;
		}
		// 3. Kept for the openers that come before the stop.
		Memo.From = From;
		Memo.Stop = Stop;
		return Stop;
	}

	int32 FMarkdownParser::FParseContext::FindCloser(ECloser Closer, int32 From)
	{
		// A walk of MAX_SEARCH_LENGTH steps never reaches MAX_LOOP_ITERATIONS.
		static_assert(MAX_SEARCH_LENGTH < MAX_LOOP_ITERATIONS);
		// The stop is found without a bound, so that it can be shared. The bound is applied to each search by itself.
		const int32 Stop = FindStop(Closer, From);
		const int32 SearchLength = FMath::Min(Length - From, MAX_SEARCH_LENGTH);
		SearchCounter = FMath::Min(Stop - From, SearchLength);
		if (Stop - From >= SearchLength || Text[Stop] == TEXT('\n'))
		{
			return INDEX_NONE;
		}
		return Stop;
	}

	int32 FMarkdownParser::FParseContext::FindSectionBody(int32 SummaryTagEnd)
	{
		// Kept like a search: many sections without an end would walk over the same empty lines again and again.
		if (SectionBodyMemo.From != SummaryTagEnd || SectionBodyMemo.Stop == INDEX_NONE)
		{
			Scan::FRewind Rewind(Position);
			Position = SummaryTagEnd;
			SkipBlanksAndLineFeeds();
			SectionBodyMemo.From = SummaryTagEnd;
			SectionBodyMemo.Stop = Position;
		}
		return SectionBodyMemo.Stop;
	}

	TArray<FMarkdownToken> FMarkdownParser::Parse(const FString& Input)
	{
		// 1. Blanks alone are no document; the block that shows them does so as text.
		if (IsWhitespaceOnly(Input))
		{
			return TArray<FMarkdownToken>();
		}
		// 2. Room for a token in each fifty characters; a text with more of them grows it.
		FParseContext Context(Input);
		Context.Tokens.Reserve(FMath::Max(10, Context.Length / 50));
		// Every turn moves on by one character at least, so the limit only guards against a rule that does not.
		const int64 MaxTurns = 2 * static_cast<int64>(Context.Length);
		for (int64 Turn = 0; !Context.IsAtEnd() && Turn < MaxTurns; ++Turn)
		{
			// 3. Blocks begin at the start of a line; anything else, also what a block left over, is inline.
			const int32 Before = Context.Position;
			if (Context.IsAtLineStart())
			{
				ParseBlockElement(Context);
			}
			else
			{
				ParseInlineElement(Context);
			}
			if (Context.Position == Before)
			{
				Context.Advance(); // A delimiter that opens nothing does not show.
			}
		}
		return MoveTemp(Context.Tokens);
	}

	void FMarkdownParser::AddTextToken(FParseContext& Context, int32 Start, int32 End)
	{
		FMarkdownToken& Token = Context.Tokens.Emplace_GetRef();
		Token.Content = ExtractText(Context, Start, End);
		Token.StartPos = Start;
		Token.EndPos = End;
	}

	int32 FMarkdownParser::CountLeadingChars(const FParseContext& Context, TCHAR Char)
	{
		int32 End = Context.Position;
		while (End < Context.Length && Context.Text[End] == Char)
		{
			++End;
		}
		return End - Context.Position;
	}

	FString FMarkdownParser::ExtractText(const FParseContext& Context, int32 Start, int32 End)
	{
		if (Start >= End || Start >= Context.Length)
		{
			return FString();
		}
		return FString(FStringView(Context.Text + Start, FMath::Min(End, Context.Length) - Start));
	}

} // namespace Velmora::Markdown
