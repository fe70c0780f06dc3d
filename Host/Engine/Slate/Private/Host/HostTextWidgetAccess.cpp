#include "Host/HostAccess.h"
#include "Host/HostTextState.h"
#include "Host/HostTextWidget.h"

// The text as those see it who know no lines: one string with line feeds, and places counted from its start.

namespace
{
	int32 GetEndLength(ETextLineEnd End)
	{
		return End == ETextLineEnd::None ? 0 : (End == ETextLineEnd::LineFeed ? 1 : 2);
	}

	/** Calls with the index, the start and the length without its end of each line, until that says false. */
	void VisitLines(const FTextDocument& Document, TFunctionRef<bool(int32 Line, int32 Begin, int32 Length)> Visit)
	{
		int32 Begin = 0;
		for (int32 Line = 0; Line < Document.GetLineCount(); ++Line)
		{
			const int32 Length = Document.GetLineLength(Line);
			if (!Visit(Line, Begin, Length))
			{
				return;
			}
			Begin += Length + GetEndLength(Document.GetLineEnd(Line));
		}
	}

	int32 ToOffset(const FTextDocument& Document, const FTextLocation& Location)
	{
		int32 Offset = 0;
		VisitLines(Document,
			[&](int32 Line, int32 Begin, int32 Length)
			{
				Offset = Begin + FMath::Min(Location.GetOffset(), Length);
				return Line < Location.GetLineIndex();
			});
		return Offset;
	}

	FTextLocation ToLocation(const FTextDocument& Document, int32 Offset)
	{
		FTextLocation Location;
		VisitLines(Document,
			[&](int32 Line, int32 Begin, int32 Length)
			{
				// A place within the end of a line is the end of the line.
				if (Line > 0 && Offset < Begin)
				{
					return false;
				}
				Location = FTextLocation(Line, FMath::Clamp(Offset - Begin, 0, Length));
				return true;
			});
		return Location;
	}
}

int32 SHostTextWidget::GetCaretOffset() const
{
	return ToOffset(GetEditor().GetDocument(), GetEditor().GetCaret());
}

void SHostTextWidget::GetSelectionOffsets(int32& OutBegin, int32& OutEnd) const
{
	OutBegin = ToOffset(GetEditor().GetDocument(), GetEditor().GetSelectionBegin());
	OutEnd = ToOffset(GetEditor().GetDocument(), GetEditor().GetSelectionEnd());
}

void SHostTextWidget::SelectOffsets(int32 Begin, int32 End)
{
	EndPreedit();
	const FTextDocument& Document = GetEditor().GetDocument();
	GetEditor().Select(ToLocation(Document, Begin), ToLocation(Document, End));
	FinishEdit(false);
}

void SHostTextWidget::DescribeAccess(FHostAccess& Out) const
{
	Out.Role = EHostRole::TextBox;
	Out.States |= IsMultiLine() ? EHostAccessState::MultiLine : EHostAccessState::None;
	Out.States |= CanEdit() ? EHostAccessState::Editable : EHostAccessState::ReadOnly;
}
