#include "Markdown/LiteralMarkdownParser.h"

#include "Misc/Char.h"

using Velmora::Markdown::ETokenType;
using Velmora::Markdown::FMarkdownToken;

namespace
{

	constexpr int32 LongestLine = 10000;
	constexpr int32 MostSteps = 100000;
	constexpr int32 MostTableRows = 1000;
	constexpr int32 LongestSearch = 50000;

	/** One parse, from the first character to the last. Every Try… gives up with the read position where it began. */
	class FLiteralParse
	{
	public:
		explicit FLiteralParse(const FString& Input)
			: Text(Input)
			, Length(Input.Len())
		{
		}

		TArray<FMarkdownToken> Run();

	private:
		// Reading.
		TCHAR PeekAt(int32 Index) const;
		TCHAR Peek() const { return PeekAt(Position); }
		TCHAR Advance();
		bool IsAtEnd() const { return Position >= Length; }
		bool IsAtLineStart() const { return Position == 0 || Text[Position - 1] == TEXT('\n'); }
		bool MatchAt(const TCHAR* Literal) const;
		void SkipWhitespace();
		int32 SkipBlanksAndTabs();
		void SkipBlanksTabsAndLineFeeds();
		int32 CountLeadingChars(TCHAR Char) const;
		FString Extract(int32 Start, int32 End) const { return Start < End ? Text.Mid(Start, End - Start) : FString(); }
		FString ReadToLineEnd();
		/** Index of the literal within the search limits from Position, or -1. */
		int32 FindWithinLimits(const TCHAR* Literal);

		static bool IsBlankOrTab(TCHAR Char) { return Char == TEXT(' ') || Char == TEXT('\t'); }
		static bool IsWord(TCHAR Char) { return FChar::IsAlnum(Char) || Char == TEXT('_'); }
		static bool IsDelimiter(TCHAR Char);

		bool Fail(int32 Start);
		bool Succeed(FMarkdownToken Token, int32 Start);

		// Rules.
		bool TryCodeBlock();
		bool TryHeader();
		bool TryHorizontalRule();
		bool TryListItem();
		bool TryBlockquote();
		bool TryTable();
		bool TryCollapsibleSection();
		bool TryFootnoteDefinition();
		bool TryDelimited(ETokenType Type, const TCHAR* Delimiter);
		bool TryLink();
		bool TryFootnoteReference();
		void Inline();
		void Block();

		const FString& Text;
		int32 Length;
		int32 Position = 0;
		TArray<FMarkdownToken> Tokens;
	};

	TCHAR FLiteralParse::PeekAt(int32 Index) const
	{
		if (Index < 0 || Index >= Length)
		{
			return 0;
		}
		const TCHAR Char = Text[Index];
		const bool bControl = Char < 32 && Char != TEXT('\n') && Char != TEXT('\r') && Char != TEXT('\t');
		return bControl ? TEXT(' ') : Char;
	}

	TCHAR FLiteralParse::Advance()
	{
		const TCHAR Char = Peek();
		if (!IsAtEnd())
		{
			++Position;
		}
		return Char;
	}

	bool FLiteralParse::MatchAt(const TCHAR* Literal) const
	{
		for (int32 Index = 0; Literal[Index] != 0; ++Index)
		{
			if (Position + Index >= Length || Text[Position + Index] != Literal[Index])
			{
				return false;
			}
		}
		return true;
	}

	void FLiteralParse::SkipWhitespace()
	{
		while (!IsAtEnd() && FChar::IsWhitespace(Peek()))
		{
			Advance();
		}
	}

	int32 FLiteralParse::SkipBlanksAndTabs()
	{
		int32 Count = 0;
		while (IsBlankOrTab(Peek()))
		{
			Advance();
			++Count;
		}
		return Count;
	}

	void FLiteralParse::SkipBlanksTabsAndLineFeeds()
	{
		while (IsBlankOrTab(Peek()) || Peek() == TEXT('\n'))
		{
			Advance();
		}
	}

	int32 FLiteralParse::CountLeadingChars(TCHAR Char) const
	{
		int32 Count = 0;
		while (Position + Count < Length && Text[Position + Count] == Char)
		{
			++Count;
		}
		return Count;
	}

	FString FLiteralParse::ReadToLineEnd()
	{
		const int32 Start = Position;
		while (!IsAtEnd() && Peek() != TEXT('\n'))
		{
			Advance();
		}
		const int32 End = Position;
		Advance();
		return Extract(Start, End);
	}

	int32 FLiteralParse::FindWithinLimits(const TCHAR* Literal)
	{
		const int32 Start = Position;
		const int32 SearchLength = FMath::Min(Length - Position, LongestSearch);
		int32 Steps = 0;
		int32 Found = INDEX_NONE;
		while (!IsAtEnd() && Position - Start < SearchLength)
		{
			if (++Steps >= MostSteps)
			{
				break;
			}
			if (MatchAt(Literal))
			{
				Found = Position;
				break;
			}
			Advance();
		}
		Position = Start;
		return Found;
	}

	bool FLiteralParse::IsDelimiter(TCHAR Char)
	{
		return Char == TEXT('_') || Char == TEXT('*') || Char == TEXT('`') || Char == TEXT('~');
	}

	bool FLiteralParse::Fail(int32 Start)
	{
		Position = Start;
		return false;
	}

	bool FLiteralParse::Succeed(FMarkdownToken Token, int32 Start)
	{
		Token.StartPos = Start;
		Token.EndPos = Position;
		Tokens.Add(Token);
		return true;
	}

	bool FLiteralParse::TryCodeBlock()
	{
		const int32 Start = Position;
		if (!MatchAt(TEXT("```")))
		{
			return false;
		}
		Position += 3;
		const int32 TagStart = Position;
		while (!IsAtEnd() && Peek() != TEXT('\n') && Position - TagStart < LongestLine)
		{
			Advance();
		}
		const FString Tag = Extract(TagStart, Position).TrimStartAndEnd();
		Advance();
		const int32 BodyStart = Position;
		const int32 Closer = FindWithinLimits(TEXT("```"));
		if (Closer == INDEX_NONE)
		{
			Position = Length;
			return Succeed(FMarkdownToken(ETokenType::CodeBlock, Extract(BodyStart, Length), Tag, 0), Start);
		}
		Position = Closer + 3;
		ReadToLineEnd();
		return Succeed(FMarkdownToken(ETokenType::CodeBlock, Extract(BodyStart, Closer), Tag, 0), Start);
	}

	bool FLiteralParse::TryHeader()
	{
		const int32 Start = Position;
		const int32 Level = CountLeadingChars(TEXT('#'));
		if (Level < 1 || Level > 6)
		{
			return false;
		}
		Position += Level;
		if (!IsAtEnd() && !IsBlankOrTab(Peek()) && Peek() != TEXT('\n'))
		{
			return Fail(Start);
		}
		SkipWhitespace();
		const FString Title = ReadToLineEnd().TrimStartAndEnd();
		return Succeed(FMarkdownToken(ETokenType::Header, Title, FString(), Level), Start);
	}

	bool FLiteralParse::TryHorizontalRule()
	{
		const int32 Start = Position;
		const TCHAR Char = Peek();
		if (Char != TEXT('-') && Char != TEXT('*') && Char != TEXT('_'))
		{
			return false;
		}
		const int32 Count = CountLeadingChars(Char);
		if (Count < 3)
		{
			return false;
		}
		Position += Count;
		SkipBlanksAndTabs();
		if (!IsAtEnd() && Peek() != TEXT('\n'))
		{
			return Fail(Start);
		}
		Advance();
		return Succeed(FMarkdownToken(ETokenType::HorizontalRule, FString()), Start);
	}

	bool FLiteralParse::TryListItem()
	{
		const int32 Start = Position;
		const int32 Indent = SkipBlanksAndTabs();
		const bool bBullet = Peek() == TEXT('-') || Peek() == TEXT('*') || Peek() == TEXT('+');
		if (bBullet)
		{
			Advance();
			if (IsAtEnd())
			{
				return Fail(Start);
			}
		}
		else
		{
			if (!FChar::IsDigit(Peek()))
			{
				return Fail(Start);
			}
			while (FChar::IsDigit(Peek()))
			{
				Advance();
			}
			if (Peek() != TEXT('.'))
			{
				return Fail(Start);
			}
			Advance();
		}
		if (!IsBlankOrTab(Peek()))
		{
			return Fail(Start);
		}
		SkipWhitespace();
		ETokenType Type = ETokenType::ListItem;
		FString Metadata;
		if (bBullet && Peek() == TEXT('['))
		{
			const int32 BoxStart = Position;
			Advance();
			const TCHAR Mark = Advance();
			const bool bClosed = Peek() == TEXT(']');
			Advance();
			if (bClosed && IsBlankOrTab(Peek()))
			{
				Type = ETokenType::TaskListItem;
				Metadata = Mark == TEXT('x') || Mark == TEXT('X') ? TEXT("checked") : TEXT("unchecked");
				SkipWhitespace();
			}
			else
			{
				Position = BoxStart;
			}
		}
		const FString Content = ReadToLineEnd().TrimStartAndEnd();
		return Succeed(FMarkdownToken(Type, Content, Metadata, Indent / 2), Start);
	}

	bool FLiteralParse::TryBlockquote()
	{
		const int32 Start = Position;
		if (Peek() != TEXT('>'))
		{
			return false;
		}
		Advance();
		if (IsBlankOrTab(Peek()))
		{
			Advance();
		}
		const FString Content = ReadToLineEnd();
		return Succeed(FMarkdownToken(ETokenType::Blockquote, Content), Start);
	}

	bool FLiteralParse::TryTable()
	{
		const int32 Start = Position;
		TArray<FString> Rows;
		while (!IsAtEnd() && Rows.Num() < MostTableRows)
		{
			const int32 LineStart = Position;
			SkipBlanksAndTabs();
			if (Peek() != TEXT('|'))
			{
				Position = LineStart;
				break;
			}
			Rows.Add(ReadToLineEnd().TrimStartAndEnd());
		}
		if (Rows.Num() < 2)
		{
			return Fail(Start);
		}
		TArray<FString> Cells;
		Rows[1].ParseIntoArray(Cells, TEXT("|"), true);
		TArray<FString> Alignments;
		for (const FString& Cell : Cells)
		{
			const FString Trimmed = Cell.TrimStartAndEnd();
			if (Trimmed.IsEmpty())
			{
				continue;
			}
			if (!Trimmed.Contains(TEXT("-")))
			{
				return Fail(Start);
			}
			const bool bColonBefore = Trimmed[0] == TEXT(':');
			const bool bColonBehind = Trimmed[Trimmed.Len() - 1] == TEXT(':');
			Alignments.Add(bColonBefore && bColonBehind ? TEXT("center") : bColonBehind ? TEXT("right") : TEXT("left"));
		}
		if (Alignments.Num() == 0)
		{
			return Fail(Start);
		}
		return Succeed(FMarkdownToken(ETokenType::Table, FString::Join(Rows, TEXT("\n")), FString::Join(Alignments, TEXT(",")), 0), Start);
	}

	bool FLiteralParse::TryCollapsibleSection()
	{
		const int32 Start = Position;
		SkipBlanksAndTabs();
		if (!MatchAt(TEXT("<details>")))
		{
			return Fail(Start);
		}
		Position += 9;
		SkipBlanksTabsAndLineFeeds();
		if (!MatchAt(TEXT("<summary>")))
		{
			return Fail(Start);
		}
		Position += 9;
		const int32 SummaryStart = Position;
		const int32 SummaryEnd = FindWithinLimits(TEXT("</summary>"));
		if (SummaryEnd == INDEX_NONE || SummaryEnd == SummaryStart)
		{
			return Fail(Start);
		}
		Position = SummaryEnd + 10;
		SkipBlanksTabsAndLineFeeds();
		const int32 BodyStart = Position;
		const int32 BodyEnd = FindWithinLimits(TEXT("</details>"));
		if (BodyEnd == INDEX_NONE || BodyEnd == BodyStart)
		{
			return Fail(Start);
		}
		Position = BodyEnd + 10;
		ReadToLineEnd();
		const FString Body = Extract(BodyStart, BodyEnd).TrimStartAndEnd();
		const FString Summary = Extract(SummaryStart, SummaryEnd).TrimStartAndEnd();
		return Succeed(FMarkdownToken(ETokenType::CollapsibleSection, Body, Summary, 0), Start);
	}

	bool FLiteralParse::TryFootnoteDefinition()
	{
		const int32 Start = Position;
		if (!IsAtLineStart() || !MatchAt(TEXT("[^")))
		{
			return false;
		}
		Position += 2;
		const int32 NameStart = Position;
		while (!IsAtEnd() && Peek() != TEXT(']') && Peek() != TEXT('\n'))
		{
			Advance();
		}
		const FString Name = Extract(NameStart, Position);
		if (!MatchAt(TEXT("]:")) || Name.IsEmpty())
		{
			return Fail(Start);
		}
		Position += 2;
		SkipBlanksAndTabs();
		const FString Content = ReadToLineEnd().TrimStartAndEnd();
		return Succeed(FMarkdownToken(ETokenType::FootnoteDefinition, Content, Name.TrimStartAndEnd(), 0), Start);
	}

	bool FLiteralParse::TryDelimited(ETokenType Type, const TCHAR* Delimiter)
	{
		const int32 Start = Position;
		const int32 DelimiterLength = FString(Delimiter).Len();
		if (!MatchAt(Delimiter))
		{
			return false;
		}
		if (Type == ETokenType::Italic && PeekAt(Start + 1) == Delimiter[0])
		{
			return false;
		}
		if (Type == ETokenType::Code && MatchAt(TEXT("```")))
		{
			return false;
		}
		if (Start > 0 && IsWord(PeekAt(Start - 1)))
		{
			return false;
		}
		const TCHAR Behind = PeekAt(Start + DelimiterLength);
		if (Start + DelimiterLength >= Length || IsBlankOrTab(Behind) || Behind == TEXT('\n'))
		{
			return false;
		}
		Position += DelimiterLength;
		const int32 ContentStart = Position;
		const int32 SearchLength = FMath::Min(Length - Position, LongestSearch);
		int32 Steps = 0;
		while (!IsAtEnd() && Position - ContentStart < SearchLength)
		{
			if (++Steps >= MostSteps)
			{
				break;
			}
			const TCHAR AfterCandidate = PeekAt(Position + DelimiterLength);
			if (!MatchAt(Delimiter))
			{
				if (Peek() == TEXT('\n'))
				{
					break;
				}
				Advance();
			}
			else if (IsBlankOrTab(PeekAt(Position - 1)) || IsWord(AfterCandidate) ||
				(Type == ETokenType::Italic && AfterCandidate == Delimiter[0]))
			{
				Advance();
			}
			else
			{
				const FString Content = Extract(ContentStart, Position);
				Position += DelimiterLength;
				return Succeed(FMarkdownToken(Type, Content), Start);
			}
		}
		return Fail(Start);
	}

	bool FLiteralParse::TryLink()
	{
		const int32 Start = Position;
		if (Peek() != TEXT('['))
		{
			return false;
		}
		Advance();
		int32 Ends[2];
		int32 Starts[2];
		for (int32 Part = 0; Part < 2; ++Part)
		{
			const TCHAR Closer = Part == 0 ? TEXT(']') : TEXT(')');
			Starts[Part] = Position;
			const int32 SearchLength = FMath::Min(Length - Position, LongestSearch);
			int32 Steps = 0;
			while (!IsAtEnd() && Position - Starts[Part] < SearchLength && Peek() != Closer)
			{
				if (Peek() == TEXT('\n') || ++Steps >= MostSteps)
				{
					return Fail(Start);
				}
				Advance();
			}
			if (Position - Starts[Part] >= SearchLength)
			{
				return Fail(Start);
			}
			Ends[Part] = Position;
			Advance();
			if (Part == 0 && Advance() != TEXT('('))
			{
				return Fail(Start);
			}
		}
		return Succeed(FMarkdownToken(ETokenType::Link, Extract(Starts[0], Ends[0]), Extract(Starts[1], Ends[1]), 0), Start);
	}

	bool FLiteralParse::TryFootnoteReference()
	{
		const int32 Start = Position;
		if (!MatchAt(TEXT("[^")))
		{
			return false;
		}
		Position += 2;
		const int32 NameStart = Position;
		while (!IsAtEnd() && Peek() != TEXT(']') && Peek() != TEXT('\n'))
		{
			Advance();
		}
		const FString Name = Extract(NameStart, Position);
		if (Peek() != TEXT(']') || Name.IsEmpty())
		{
			return Fail(Start);
		}
		Advance();
		const FString Trimmed = Name.TrimStartAndEnd();
		return Succeed(FMarkdownToken(ETokenType::FootnoteReference, TEXT("[") + Trimmed + TEXT("]"), Trimmed, 0), Start);
	}

	void FLiteralParse::Inline()
	{
		const int32 Start = Position;
		if (Peek() == TEXT('\n'))
		{
			Advance();
			Succeed(FMarkdownToken(ETokenType::Newline, FString()), Start);
			return;
		}
		if (TryDelimited(ETokenType::BoldItalic, TEXT("***")) || TryDelimited(ETokenType::Bold, TEXT("**")) ||
			TryDelimited(ETokenType::Bold, TEXT("__")) || TryDelimited(ETokenType::Italic, TEXT("*")) ||
			TryDelimited(ETokenType::Italic, TEXT("_")) || TryDelimited(ETokenType::Strikethrough, TEXT("~~")) ||
			TryDelimited(ETokenType::Code, TEXT("`")) || TryLink() || TryFootnoteReference())
		{
			return;
		}
		int32 RunLength = 0;
		while (!IsAtEnd())
		{
			const TCHAR Char = Peek();
			if (Char == TEXT('[') || Char == TEXT('\n'))
			{
				break;
			}
			if (IsDelimiter(Char) && (Position == 0 || !IsWord(PeekAt(Position - 1))))
			{
				break;
			}
			if (IsAtLineStart() && (Char == TEXT('#') || Char == TEXT('>') || Char == TEXT('-') || Char == TEXT('+')))
			{
				break;
			}
			if (++RunLength > LongestLine)
			{
				break;
			}
			Advance();
		}
		if (Position > Start)
		{
			Succeed(FMarkdownToken(ETokenType::Text, Extract(Start, Position)), Start);
		}
	}

	void FLiteralParse::Block()
	{
		if (TryCodeBlock() || TryHeader() || TryHorizontalRule() || TryListItem() || TryBlockquote() || TryTable() ||
			TryCollapsibleSection() || TryFootnoteDefinition())
		{
			return;
		}
		Inline();
	}

	TArray<FMarkdownToken> FLiteralParse::Run()
	{
		if (Text.TrimStartAndEnd().IsEmpty())
		{
			return Tokens;
		}
		while (!IsAtEnd())
		{
			const int32 Before = Position;
			if (IsAtLineStart())
			{
				Block();
			}
			else
			{
				Inline();
			}
			if (Position == Before)
			{
				Advance(); // The character that no rule accepts is dropped.
			}
		}
		return Tokens;
	}

} // namespace

TArray<FMarkdownToken> ParseLiterally(const FString& Input)
{
	return FLiteralParse(Input).Run();
}
