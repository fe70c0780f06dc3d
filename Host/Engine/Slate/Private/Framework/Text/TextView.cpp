#include "Framework/Text/TextView.h"

// The scroll position and everything that depends on it. It is kept as a block and a distance into it, and each step
// over blocks lays the next one out; so scrolling costs what comes into view, in a text of any length.
//
// A place at a wrap belongs to two rows, the end of the upper and the begin of the lower one. Which is meant goes along
// as bRowEnd wherever carets are placed or moved.

namespace
{
	/** A text up to these is laid out whole for its size; a longer one is far taller than any box. */
	constexpr int32 SmallTextLines = 200;
	constexpr int64 SmallTextUnits = 20000;
}

FTextView::FTextView(const FTextDocument& InDocument)
	: FTextViewLines(InDocument)
{
}

void FTextView::NoteLinesChanged(int32 First, int32 Removed, int32 Added)
{
	// 1. The scroll position stays with the line that it is in, and goes to what took its place when that line is gone.
	const bool bAllNew = First == 0 && Removed == GetLineCount();
	if (bAllNew)
	{
		ScrollBlock = { FMath::Min(ScrollBlock.Line, Added - 1), 0 };
	}
	else if (ScrollBlock.Line >= First + Removed)
	{
		ScrollBlock.Line += Added - Removed;
	}
	else if (ScrollBlock.Line >= First + Added)
	{
		ScrollBlock = { First + Added - 1, 0 };
		ScrollDistance = 0.0f;
	}
	// 2. The lines themselves.
	ChangeLines(First, Removed, Added);
}

void FTextView::SetViewSize(float Width, float Height)
{
	ViewWidth = Width;
	ViewHeight = Height;
}

double FTextView::GetContentHeight()
{
	return GetTop(GetLineCount());
}

// A box that grows with its text has to know its height, and estimates would make it jump.
void FTextView::MeasureIfSmall()
{
	if (GetLineCount() > SmallTextLines || Document.GetLength() > SmallTextUnits)
	{
		return;
	}
	FTextViewBlock Block;
	do
	{
		Shape(Block);
	} while (StepBlock(Block, 1));
}

// Sum of what lies above, partly estimated: good for a scroll bar and nothing else.
double FTextView::GetScrollOffset()
{
	double Offset = GetTop(ScrollBlock.Line) + ScrollDistance;
	const TArray<FSegment>& Segments = GetSegments(ScrollBlock.Line);
	for (int32 Index = 0; Index < ScrollBlock.Segment; ++Index)
	{
		Offset += Segments[Index].Height;
	}
	return Offset;
}

void FTextView::SetScrollOffset(double Offset)
{
	Offset = FMath::Clamp(Offset, 0.0, FMath::Max(GetContentHeight() - ViewHeight, 0.0));
	// The last line whose top is not behind the offset.
	int32 Low = 0;
	int32 High = GetLineCount() - 1;
	while (Low < High)
	{
		const int32 Middle = (Low + High + 1) / 2;
		if (GetTop(Middle) <= Offset)
		{
			Low = Middle;
		}
		else
		{
			High = Middle - 1;
		}
	}
	ScrollBlock = { Low, 0 };
	ScrollDistance = static_cast<float>(Offset - GetTop(Low));
	const TArray<FSegment>& Segments = GetSegments(Low);
	while (ScrollBlock.Segment + 1 < Segments.Num() && ScrollDistance >= Segments[ScrollBlock.Segment].Height)
	{
		ScrollDistance -= Segments[ScrollBlock.Segment++].Height;
	}
	ScrollDistance = FMath::Min(ScrollDistance, Shape(ScrollBlock).Height);
	ClampScroll();
}

void FTextView::ScrollBy(float Distance)
{
	ScrollDistance += Distance;
	NormalizeScroll();
	ClampScroll();
}

void FTextView::SetScrollX(float X)
{
	ScrollX = FMath::Max(X, 0.0f);
}

// 1. As little as it takes to bring the row into view. 2. Sideways likewise, where lines are not wrapped.
void FTextView::ScrollToShow(const FTextCaretPlace& Place, float CaretWidth)
{
	float Top = 0.0f;
	const bool bInView = FindTop(Place.Block, Top);
	const bool bAbove = bInView ? Top + Place.Top < 0.0f : Place.Block < ScrollBlock;
	const bool bBelow = bInView ? Top + Place.Top + Place.Height > ViewHeight : ScrollBlock < Place.Block;
	if (bAbove || (bBelow && Place.Height >= ViewHeight))
	{
		ScrollBlock = Place.Block;
		ScrollDistance = Place.Top;
	}
	else if (bBelow)
	{
		ScrollBlock = Place.Block;
		ScrollDistance = Place.Top + Place.Height - ViewHeight;
		NormalizeScroll();
	}
	ClampScroll();
	if (WrapWidth > 0.0f)
	{
		ScrollX = 0.0f;
		return;
	}
	// No room stays unused at the right while text is hidden at the left.
	ScrollX = FMath::Clamp(ScrollX, 0.0f, FMath::Max(WidestRow + CaretWidth - ViewWidth, 0.0f));
	ScrollX = FMath::Max(ScrollX, Place.X + CaretWidth - ViewWidth);
	ScrollX = FMath::Max(FMath::Min(ScrollX, Place.X), 0.0f);
}

void FTextView::ScrollToLine(int32 Line)
{
	ScrollBlock = { FMath::Clamp(Line, 0, GetLineCount() - 1), 0 };
	ScrollDistance = 0.0f;
	ClampScroll();
}

// No room stays empty below the end while something is hidden above.
void FTextView::ClampScroll()
{
	ScrollBlock.Line = FMath::Clamp(ScrollBlock.Line, 0, GetLineCount() - 1);
	ScrollBlock.Segment = FMath::Clamp(ScrollBlock.Segment, 0, GetSegments(ScrollBlock.Line).Num() - 1);
	ScrollDistance = FMath::Clamp(ScrollDistance, 0.0f, Shape(ScrollBlock).Height);
	float Filled = -ScrollDistance;
	FTextViewBlock Block = ScrollBlock;
	do
	{
		Filled += Shape(Block).Height;
	} while (Filled < ViewHeight && StepBlock(Block, 1));
	if (Filled < ViewHeight)
	{
		ScrollDistance -= ViewHeight - Filled;
		NormalizeScroll();
	}
}

void FTextView::NormalizeScroll()
{
	while (ScrollDistance < 0.0f)
	{
		if (!StepBlock(ScrollBlock, -1))
		{
			ScrollDistance = 0.0f;
			return;
		}
		ScrollDistance += Shape(ScrollBlock).Height;
	}
	for (float Height = Shape(ScrollBlock).Height; ScrollDistance >= Height; Height = Shape(ScrollBlock).Height)
	{
		if (!StepBlock(ScrollBlock, 1))
		{
			ScrollDistance = Height;
			return;
		}
		ScrollDistance -= Height;
	}
}

FTextCaretPlace FTextView::PlaceOf(const FTextLocation& Location, bool bRowEnd)
{
	return PlaceOfShown(Location.GetLineIndex(), ToShown(Location), bRowEnd);
}

FTextCaretPlace FTextView::PlaceInPreedit(int32 Cursor)
{
	return PlaceOfShown(PreeditPlace.GetLineIndex(), PreeditPlace.GetOffset() + FMath::Clamp(Cursor, 0, PreeditText.Len()), false);
}

// 1. The segment. 2. Its row. 3. The place in it; at a wrap the earlier one where bRowEnd says so.
FTextCaretPlace FTextView::PlaceOfShown(int32 Line, int32 Shown, bool bRowEnd)
{
	const TArray<FSegment>& Segments = GetSegments(Line);
	FTextCaretPlace Place;
	Place.Block.Line = Line;
	while (Place.Block.Segment + 1 < Segments.Num() && Segments[Place.Block.Segment + 1].Begin <= Shown)
	{
		++Place.Block.Segment;
	}
	if (bRowEnd && Place.Block.Segment > 0 && Segments[Place.Block.Segment].Begin == Shown)
	{
		--Place.Block.Segment;
	}
	const FSegment& Segment = Shape(Place.Block);
	const int32 Index = FMath::Clamp(Shown - Segment.Begin, 0, Segment.End - Segment.Begin);
	Place.Row = Segment.Paragraph->GetLineOfIndex(Index);
	if (bRowEnd && Place.Row > 0 && Segment.Paragraph->GetLine(Place.Row).BeginIndex == Index)
	{
		--Place.Row;
	}
	Place.X = Segment.Paragraph->GetCaretX(Place.Row, Index);
	Place.Top = Segment.Paragraph->GetLine(Place.Row).Top;
	Place.Height = Segment.Paragraph->GetLine(Place.Row).Height;
	return Place;
}

bool FTextView::FindTop(const FTextViewBlock& Wanted, float& OutTop)
{
	if (Wanted < ScrollBlock)
	{
		return false;
	}
	float Top = -ScrollDistance;
	FTextViewBlock Block = ScrollBlock;
	do
	{
		if (Block == Wanted)
		{
			OutTop = Top;
			return true;
		}
		Top += Shape(Block).Height;
	} while (Top < ViewHeight && StepBlock(Block, 1));
	return false;
}

// 1. The block, up or down from the first in view. 2. The row. 3. The letter.
FTextLocation FTextView::Hit(const FVector2f& Point, bool& bOutRowEnd)
{
	float Top = -ScrollDistance;
	FTextViewBlock Block = ScrollBlock;
	// A point above the view belongs to what lies there.
	while (Point.Y < Top && StepBlock(Block, -1))
	{
		Top -= Shape(Block).Height;
	}
	while (Point.Y >= Top + Shape(Block).Height)
	{
		const float Height = Shape(Block).Height;
		if (!StepBlock(Block, 1))
		{
			break;
		}
		Top += Height;
	}
	const FSegment& Segment = Shape(Block);
	int32 Row = 0;
	while (Row + 1 < Segment.Paragraph->GetLineCount() && Point.Y >= Top + Segment.Paragraph->GetLine(Row + 1).Top)
	{
		++Row;
	}
	return LocationAt(Block, Row, Point.X, bOutRowEnd);
}

FTextLocation FTextView::MoveRows(const FTextLocation& From, bool bRowEnd, int32 Rows, float X, bool& bOutRowEnd)
{
	const FTextCaretPlace Start = PlaceOf(From, bRowEnd);
	FTextViewBlock Block = Start.Block;
	int32 Row = Start.Row;
	for (; Rows > 0; --Rows)
	{
		if (Row + 1 < Shape(Block).Paragraph->GetLineCount())
		{
			++Row;
		}
		else if (StepBlock(Block, 1))
		{
			Row = 0;
		}
		else
		{
			bOutRowEnd = false;
			return Document.GetEnd();
		}
	}
	for (; Rows < 0; ++Rows)
	{
		if (Row > 0)
		{
			--Row;
		}
		else if (StepBlock(Block, -1))
		{
			Row = Shape(Block).Paragraph->GetLineCount() - 1;
		}
		else
		{
			bOutRowEnd = false;
			return FTextLocation();
		}
	}
	return LocationAt(Block, Row, X, bOutRowEnd);
}

FTextLocation FTextView::GetRowBegin(const FTextLocation& Location, bool bRowEnd)
{
	const FTextCaretPlace Place = PlaceOf(Location, bRowEnd);
	const FSegment& Segment = Shape(Place.Block);
	return FromShown(Place.Block.Line, Segment.Begin + Segment.Paragraph->GetLine(Place.Row).BeginIndex);
}

FTextLocation FTextView::GetRowEnd(const FTextLocation& Location, bool bRowEnd, bool& bOutRowEnd)
{
	const FTextCaretPlace Place = PlaceOf(Location, bRowEnd);
	const FSegment& Segment = Shape(Place.Block);
	const bool bLastRow = Place.Row + 1 == Segment.Paragraph->GetLineCount();
	const int32 Index = Segment.Begin + (bLastRow ? Segment.End - Segment.Begin : Segment.Paragraph->GetLine(Place.Row).EndIndex);
	bOutRowEnd = !(bLastRow && Place.Block.Segment + 1 == GetSegments(Place.Block.Line).Num());
	return FromShown(Place.Block.Line, Index);
}

// From the first block in view down; rows above and below the view are passed over.
void FTextView::ForEachRow(TFunctionRef<void(const FTextRow&)> Visit)
{
	float Top = -ScrollDistance;
	FTextRow Row;
	Row.Block = ScrollBlock;
	do
	{
		const FSegment& Segment = Shape(Row.Block);
		Row.Paragraph = Segment.Paragraph.Get();
		Row.SegmentBegin = Segment.Begin;
		const bool bLastSegment = Row.Block.Segment + 1 == GetSegments(Row.Block.Line).Num();
		const int32 RowCount = Row.Paragraph->GetLineCount();
		for (Row.Row = 0; Row.Row < RowCount; ++Row.Row)
		{
			const FParagraphLine& Line = Row.Paragraph->GetLine(Row.Row);
			Row.Top = Top + Line.Top;
			if (Row.Top >= ViewHeight)
			{
				break;
			}
			if (Row.Top + Line.Height <= 0.0f)
			{
				continue;
			}
			Row.Begin = Segment.Begin + Line.BeginIndex;
			Row.End = Segment.Begin + (Row.Row + 1 < RowCount ? Line.EndIndex : Segment.End - Segment.Begin);
			Row.bEndsLine = bLastSegment && Row.Row + 1 == RowCount && Row.Block.Line + 1 < GetLineCount();
			Visit(Row);
		}
		Top += Segment.Height;
	} while (Top < ViewHeight && StepBlock(Row.Block, 1));
	ForgetFarParagraphs(ScrollBlock.Line, Row.Block.Line);
}

// A hit after the last letter of a wrapped row is the end of that row.
FTextLocation FTextView::LocationAt(const FTextViewBlock& Block, int32 Row, float X, bool& bOutRowEnd)
{
	const FSegment& Segment = Shape(Block);
	const int32 Index = Segment.Paragraph->GetIndexAt(Row, X);
	const bool bLastRow = Row + 1 == Segment.Paragraph->GetLineCount();
	const bool bLastSegment = Block.Segment + 1 == GetSegments(Block.Line).Num();
	bOutRowEnd = (!bLastRow && Index >= Segment.Paragraph->GetLine(Row).EndIndex) ||
		(bLastRow && !bLastSegment && Index >= Segment.End - Segment.Begin);
	return FromShown(Block.Line, Segment.Begin + Index);
}
