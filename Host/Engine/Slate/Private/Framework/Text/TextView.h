#pragma once

#include "TextViewLines.h"

/** Where a caret stands. Top and Height are those of its row; all are device pixels from the block's upper left corner. */
struct FTextCaretPlace
{
	FTextViewBlock Block;
	int32 Row = 0;
	float X = 0.0f;
	float Top = 0.0f;
	float Height = 0.0f;
};

/** One row on screen; Top counts from the upper edge of the view. Begin and End are offsets in the shown line. */
struct FTextRow
{
	const ITextParagraph* Paragraph = nullptr;
	FTextViewBlock Block;
	int32 Row = 0;
	float Top = 0.0f;
	int32 SegmentBegin = 0;
	int32 Begin = 0;
	int32 End = 0;
	/** A line break follows, not just a wrap. */
	bool bEndsLine = false;
};

/**
 * What of a document is in view. Only lines in view are laid out; the scroll position is a block and a distance into it, so
 * that nothing jumps when an estimated height becomes a measured one. All lengths are device pixels.
 */
class FTextView : public FTextViewLines
{
public:
	/** @param InDocument  Outlives the view, which must be told of every change by NoteLinesChanged. */
	explicit FTextView(const FTextDocument& InDocument);

	void NoteLinesChanged(int32 First, int32 Removed, int32 Added);
	void SetViewSize(float Width, float Height);
	/** Of all lines; the more have been in view, the truer. */
	double GetContentHeight();
	/** Lays out a small text whole, so that its size is exact. */
	void MeasureIfSmall();

	// Scrolling.
	double GetScrollOffset();
	void SetScrollOffset(double Offset);
	void ScrollBy(float Distance);
	float GetScrollX() const { return ScrollX; }
	void SetScrollX(float X);
	/** Scrolls as little as possible. @param CaretWidth  Room that stays free at the right. */
	void ScrollToShow(const FTextCaretPlace& Place, float CaretWidth);
	/** Puts a line at the top of the view. */
	void ScrollToLine(int32 Line);
	/** After changes of text or size: no room is left below the last line while something is above the view. */
	void ClampScroll();

	// Places. bRowEnd tells which side of a wrap a caret at the wrap belongs to: true is the end of the upper row.
	FTextCaretPlace PlaceOf(const FTextLocation& Location, bool bRowEnd);
	/** A place inside the text of an input method, Cursor units from its start. */
	FTextCaretPlace PlaceInPreedit(int32 Cursor);
	/** Distance of a block from the view's upper edge; false when it is not in view. */
	bool FindTop(const FTextViewBlock& Block, float& OutTop);
	/** The nearest caret place to a point, which counts from the view's upper left corner without horizontal scrolling. */
	FTextLocation Hit(const FVector2f& Point, bool& bOutRowEnd);
	/** Moves whole rows up (negative) or down; behind the first and the last row come the text's ends. */
	FTextLocation MoveRows(const FTextLocation& From, bool bRowEnd, int32 Rows, float X, bool& bOutRowEnd);
	FTextLocation GetRowBegin(const FTextLocation& Location, bool bRowEnd);
	FTextLocation GetRowEnd(const FTextLocation& Location, bool bRowEnd, bool& bOutRowEnd);

	/** Shapes and visits the rows in view, from the top. */
	void ForEachRow(TFunctionRef<void(const FTextRow&)> Visit);

private:
	/** Brings the distance of the scroll position into its block. */
	void NormalizeScroll();
	FTextLocation LocationAt(const FTextViewBlock& Block, int32 Row, float X, bool& bOutRowEnd);
	FTextCaretPlace PlaceOfShown(int32 Line, int32 Shown, bool bRowEnd);

	float ViewWidth = 0.0f;
	float ViewHeight = 0.0f;
	float ScrollX = 0.0f;
	FTextViewBlock ScrollBlock;
	float ScrollDistance = 0.0f;
};
