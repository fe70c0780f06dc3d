#include "Markdown/MarkdownParser.h"

#include "Markdown/MarkdownScan.h"

namespace Velmora::Markdown
{

	namespace
	{

		/** Fills everything but the level; the token ends at the read position. */
		void FillBlock(
			const FMarkdownParser::FParseContext& Context, FMarkdownToken& OutToken, ETokenType Type, int32 Start, FString Content)
		{
			OutToken.Type = Type;
			OutToken.Content = MoveTemp(Content);
			OutToken.StartPos = Start;
			OutToken.EndPos = Context.Position;
		}

		/** The rest of the line, trimmed; the read position moves after its line feed. */
		FString ReadTrimmedLine(FMarkdownParser::FParseContext& Context)
		{
			const int32 Start = Context.Position;
			const int32 End = Context.SkipLine();
			return Scan::MakeTrimmed(Context.Text, Start, End);
		}

	} // namespace

	bool FMarkdownParser::TryBlockRulesFor(TCHAR First, bool bIndented, FParseContext& Context)
	{
		// The rules are tried in the order code block, header, horizontal rule, list item, quote, table, section, footnote. The first
		// character tells which of them have a chance at all, and only list items, tables and sections may be indented.
		switch (First)
		{
		case TEXT('`'):
			return !bIndented && TryRule(TryParseCodeBlock, Context);
		case TEXT('#'):
			return !bIndented && TryRule(TryParseHeader, Context);
		case TEXT('-'):
		case TEXT('*'):
			return (!bIndented && TryRule(TryParseHorizontalRule, Context)) || TryRule(TryParseListItem, Context);
		case TEXT('_'):
			return !bIndented && TryRule(TryParseHorizontalRule, Context);
		case TEXT('>'):
			return !bIndented && TryRule(TryParseBlockquote, Context);
		case TEXT('|'):
			return TryRule(TryParseTable, Context);
		case TEXT('<'):
			return TryRule(TryParseCollapsibleSection, Context);
		case TEXT('['):
			return !bIndented && TryRule(TryParseFootnoteDefinition, Context);
		default:
			return (First == TEXT('+') || (First >= TEXT('0') && First <= TEXT('9'))) && TryRule(TryParseListItem, Context);
		}
	}

	bool FMarkdownParser::TryRule(FRule Rule, FParseContext& Context)
	{
		// Made here, since most lines begin with a letter and need none.
		FMarkdownToken Token;
		if (!Rule(Context, Token))
		{
			return false;
		}
		Context.Tokens.Add(MoveTemp(Token));
		return true;
	}

	void FMarkdownParser::ParseBlockElement(FParseContext& Context)
	{
		int32 First = Context.Position;
		while (First < Context.Length && Scan::IsRawBlank(Context.Text[First]))
		{
			++First;
		}
		const TCHAR FirstChar = First < Context.Length ? Context.Text[First] : TEXT('\0');
		if (!TryBlockRulesFor(FirstChar, First > Context.Position, Context))
		{
			// A line that no rule accepts is text, and its leading blanks are part of it.
			ParseInlineElement(Context);
		}
	}

	// "```tag", a body, and the next three backticks wherever they stand. Without them the rest of the text is the body.
	bool FMarkdownParser::TryParseCodeBlock(FParseContext& Context, FMarkdownToken& OutToken)
	{
		const int32 Start = Context.Position;
		if (!Context.MatchAt(TEXT("```"), 3))
		{
			return false;
		}
		// 1. The tag, to the end of its line.
		const int32 TagStart = Start + 3;
		const int32 TagLimit = FMath::Min(Context.Length, TagStart + MAX_LINE_LENGTH);
		const int32 TagEnd = Scan::FindChar(Context.Text, TagStart, TagLimit, TEXT('\n'));
		// One character goes with the tag: its line feed, or the one at which an overlong tag was cut.
		const int32 BodyStart = FMath::Min(TagEnd + 1, Context.Length);

		// 2. The closer, within what a search may walk.
		const int32 SearchEnd = BodyStart + FMath::Min(Context.Length - BodyStart, MAX_SEARCH_LENGTH);
		// A closer that begins inside of the search may reach out of it.
		const int32 Reach = FMath::Min(Context.Length, SearchEnd + 2);
		int32 BodyEnd = Scan::FindLiteral(Context.Text, BodyStart, Reach, TEXT("```"), 3);
		Context.SearchCounter = FMath::Min(BodyEnd, SearchEnd) - BodyStart;
		// 3. Where to go on: after the line of the closer, or at the end when there is none.
		if (BodyEnd < Reach)
		{
			Context.Position = BodyEnd + 3;
			Context.SkipLine(); // What stands after a closer on its line is not shown.
		}
		else
		{
			BodyEnd = Context.Length;
			Context.Position = Context.Length;
		}
		FillBlock(Context, OutToken, ETokenType::CodeBlock, Start, ExtractText(Context, BodyStart, BodyEnd));
		OutToken.Metadata = Scan::MakeTrimmed(Context.Text, TagStart, TagEnd);
		return true;
	}

	// "# text" with one to six marks in the first column. The text may stand on a later line: blank lines are skipped.
	bool FMarkdownParser::TryParseHeader(FParseContext& Context, FMarkdownToken& OutToken)
	{
		Scan::FRewind Rewind(Context.Position);
		const int32 Level = CountLeadingChars(Context, TEXT('#'));
		if (Level < 1 || Level > 6)
		{
			return false;
		}
		Context.Position += Level;
		const TCHAR Behind = Context.Peek();
		if (!Context.IsAtEnd() && !Scan::IsBlankOrTab(Behind) && Behind != TEXT('\n'))
		{
			return false;
		}
		Context.SkipWhitespace();
		FString Content = ReadTrimmedLine(Context);
		FillBlock(Context, OutToken, ETokenType::Header, Rewind.GetStart(), MoveTemp(Content));
		OutToken.Level = Level;
		Rewind.Keep();
		return true;
	}

	// Three or more adjacent "-", "*" or "_" in the first column, and nothing else on the line.
	bool FMarkdownParser::TryParseHorizontalRule(FParseContext& Context, FMarkdownToken& OutToken)
	{
		Scan::FRewind Rewind(Context.Position);
		const TCHAR Char = Context.Peek();
		if (Char != TEXT('-') && Char != TEXT('*') && Char != TEXT('_'))
		{
			return false;
		}
		const int32 Count = CountLeadingChars(Context, Char);
		if (Count < 3)
		{
			return false;
		}
		Context.Position += Count;
		Context.SkipBlanks();
		if (!Context.IsAtEnd() && Context.Peek() != TEXT('\n'))
		{
			return false;
		}
		Context.Advance();
		FillBlock(Context, OutToken, ETokenType::HorizontalRule, Rewind.GetStart(), FString());
		Rewind.Keep();
		return true;
	}

	// "- text", "* text", "+ text" or "1. text", one line each. The indentation becomes the level, the number is not kept.
	bool FMarkdownParser::TryParseListItem(FParseContext& Context, FMarkdownToken& OutToken)
	{
		Scan::FRewind Rewind(Context.Position);
		// 1. The indentation and the marker: a bullet, or digits and a full stop.
		const int32 Indent = Context.SkipBlanks();
		const TCHAR Marker = Context.Peek();
		const bool bBullet = Marker == TEXT('-') || Marker == TEXT('*') || Marker == TEXT('+');
		if (!bBullet)
		{
			const int32 DigitsStart = Context.Position;
			while (FChar::IsDigit(Context.Peek()))
			{
				Context.Advance();
			}
			if (Context.Position == DigitsStart || Context.Peek() != TEXT('.'))
			{
				return false;
			}
		}
		// 2. A blank after it, or it is no marker. The text may stand on a later line.
		Context.Advance();
		if (!Scan::IsBlankOrTab(Context.Peek()))
		{
			return false;
		}
		Context.SkipWhitespace();

		// 3. The box of a task, for bullets only: any one character within brackets, and a blank after them.
		ETokenType Type = ETokenType::ListItem;
		bool bChecked = false;
		const int32 Box = Context.Position;
		if (bBullet && Context.Peek() == TEXT('[') && Context.PeekAt(Box + 2) == TEXT(']') && Scan::IsBlankOrTab(Context.PeekAt(Box + 3)))
		{
			Type = ETokenType::TaskListItem;
			bChecked = Context.PeekAt(Box + 1) == TEXT('x') || Context.PeekAt(Box + 1) == TEXT('X');
			Context.Position = Box + 3;
			Context.SkipWhitespace();
		}
		// 4. The text of one line. Two blanks, or two tabs, of indentation are one level.
		FString Content = ReadTrimmedLine(Context);
		FillBlock(Context, OutToken, Type, Rewind.GetStart(), MoveTemp(Content));
		if (Type == ETokenType::TaskListItem)
		{
			OutToken.Metadata = bChecked ? TEXT("checked") : TEXT("unchecked");
		}
		OutToken.Level = Indent / 2;
		Rewind.Keep();
		return true;
	}

	// "> text" up to the line feed. The text stays raw: ">> x" holds "> x", which the renderer parses again.
	bool FMarkdownParser::TryParseBlockquote(FParseContext& Context, FMarkdownToken& OutToken)
	{
		const int32 Start = Context.Position;
		if (Context.Peek() != TEXT('>'))
		{
			return false;
		}
		Context.Advance();
		if (Scan::IsBlankOrTab(Context.Peek()))
		{
			Context.Advance();
		}
		const int32 ContentStart = Context.Position;
		const int32 ContentEnd = Context.SkipLine();
		FillBlock(Context, OutToken, ETokenType::Blockquote, Start, ExtractText(Context, ContentStart, ContentEnd));
		return true;
	}

	// "<details><summary>S</summary>B</details>" over any number of lines. Sections do not nest: the first closer ends one.
	bool FMarkdownParser::TryParseCollapsibleSection(FParseContext& Context, FMarkdownToken& OutToken)
	{
		Scan::FRewind Rewind(Context.Position);
		constexpr int32 OpenerLength = 9;
		constexpr int32 CloserLength = 10;
		// 1. The opener and its summary, with any empty lines between them.
		Context.SkipBlanks();
		if (!Context.MatchAt(TEXT("<details>"), OpenerLength))
		{
			return false;
		}
		Context.Position += OpenerLength;
		Context.SkipBlanksAndLineFeeds();
		if (!Context.MatchAt(TEXT("<summary>"), OpenerLength))
		{
			return false;
		}
		Context.Position += OpenerLength;
		const int32 SummaryStart = Context.Position;
		const int32 SummaryEnd = Context.FindCloser(ECloser::SummaryTag, SummaryStart);
		if (SummaryEnd == INDEX_NONE || SummaryEnd == SummaryStart)
		{
			return false;
		}
		// 2. The body, to the first closer: sections within one end it.
		const int32 BodyStart = Context.FindSectionBody(SummaryEnd + CloserLength);
		const int32 BodyEnd = Context.FindCloser(ECloser::DetailsTag, BodyStart);
		if (BodyEnd == INDEX_NONE || BodyEnd == BodyStart)
		{
			return false;
		}
		Context.Position = BodyEnd + CloserLength;
		Context.SkipLine(); // What stands after a closer on its line is not shown.
		FillBlock(
			Context, OutToken, ETokenType::CollapsibleSection, Rewind.GetStart(), Scan::MakeTrimmed(Context.Text, BodyStart, BodyEnd));
		OutToken.Metadata = Scan::MakeTrimmed(Context.Text, SummaryStart, SummaryEnd);
		Rewind.Keep();
		return true;
	}

	// "[^name]: text" on one line in the first column. The text may be empty, the name may not.
	bool FMarkdownParser::TryParseFootnoteDefinition(FParseContext& Context, FMarkdownToken& OutToken)
	{
		Scan::FRewind Rewind(Context.Position);
		if (!Context.IsAtLineStart() || !Context.MatchAt(TEXT("[^"), 2))
		{
			return false;
		}
		// 1. The name, on this line and not empty. 2. The text.
		const int32 NameStart = Context.Position + 2;
		const int32 NameEnd = Context.FindStop(ECloser::SquareBracket, NameStart);
		Context.Position = NameEnd;
		if (NameEnd == NameStart || !Context.MatchAt(TEXT("]:"), 2))
		{
			return false;
		}
		Context.Position += 2;
		Context.SkipBlanks();
		FString Content = ReadTrimmedLine(Context);
		FillBlock(Context, OutToken, ETokenType::FootnoteDefinition, Rewind.GetStart(), MoveTemp(Content));
		OutToken.Metadata = Scan::MakeTrimmed(Context.Text, NameStart, NameEnd);
		Rewind.Keep();
		return true;
	}

} // namespace Velmora::Markdown
