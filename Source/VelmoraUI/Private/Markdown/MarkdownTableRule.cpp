#include "Markdown/MarkdownParser.h"

#include "Markdown/MarkdownScan.h"

namespace Velmora::Markdown
{

	namespace
	{

		/** One row of a table, trimmed: a range of the parsed text. */
		struct FTableRow
		{
			int32 Start;
			int32 End;
		};

		/** Reads a line that begins with a pipe, blanks before it aside. At any other line the read position stays. */
		bool ReadTableRow(FMarkdownParser::FParseContext& Context, FTableRow& OutRow)
		{
			Scan::FRewind Rewind(Context.Position);
			Context.SkipBlanks();
			if (Context.Peek() != TEXT('|'))
			{
				return false;
			}
			OutRow.Start = Context.Position;
			OutRow.End = Context.SkipLine();
			Scan::TrimRange(Context.Text, OutRow.Start, OutRow.End);
			Rewind.Keep();
			return true;
		}

		/** The alignments of a separator row, joined by commas. Empty if the row is none: each cell needs a hyphen. */
		FString ReadAlignments(const TCHAR* Text, const FTableRow& Row)
		{
			FString Alignments;
			int32 CellStart = Row.Start;
			while (CellStart < Row.End)
			{
				int32 Start = CellStart;
				int32 End = Scan::FindChar(Text, Start, Row.End, TEXT('|'));
				CellStart = End + 1;
				Scan::TrimRange(Text, Start, End);
				if (Start == End)
				{
					continue;
				}
				if (Scan::FindChar(Text, Start, End, TEXT('-')) == End)
				{
					return FString();
				}
				const bool bColonBefore = Text[Start] == TEXT(':');
				const bool bColonBehind = Text[End - 1] == TEXT(':');
				if (!Alignments.IsEmpty())
				{
					Alignments += TEXT(",");
				}
				Alignments += bColonBehind ? (bColonBefore ? TEXT("center") : TEXT("right")) : TEXT("left");
			}
			return Alignments;
		}

	} // namespace

	// Lines that begin with a pipe, the second of them a separator. The rows are kept as text, the renderer splits them.
	bool FMarkdownParser::TryParseTable(FParseContext& Context, FMarkdownToken& OutToken)
	{
		Scan::FRewind Rewind(Context.Position);
		FTableRow Row;
		FTableRow Separator;
		// The separator decides, so it is looked at before any further row: a thousand lines of pipes without one would
		// otherwise be gathered again from each of them.
		if (!ReadTableRow(Context, Row) || !ReadTableRow(Context, Separator))
		{
			return false;
		}
		FString Alignments = ReadAlignments(Context.Text, Separator);
		if (Alignments.IsEmpty())
		{
			return false;
		}
		// The rows as they stand, each on a line. More than the most of them are tried as a table of their own.
		FString Content;
		Content.AppendChars(Context.Text + Row.Start, Row.End - Row.Start);
		Content += TEXT("\n");
		Content.AppendChars(Context.Text + Separator.Start, Separator.End - Separator.Start);
		for (int32 RowCount = 2; RowCount < MAX_TABLE_ROWS && ReadTableRow(Context, Row); ++RowCount)
		{
			Content += TEXT("\n");
			Content.AppendChars(Context.Text + Row.Start, Row.End - Row.Start);
		}
		OutToken.Type = ETokenType::Table;
		OutToken.Content = MoveTemp(Content);
		OutToken.Metadata = MoveTemp(Alignments);
		OutToken.StartPos = Rewind.GetStart();
		OutToken.EndPos = Context.Position;
		Rewind.Keep();
		return true;
	}

} // namespace Velmora::Markdown
