#pragma once

#include "Fonts/SlateFontInfo.h"
#include "TextDocument.h"
#include "Host/TextShaper.h"

/** A piece of a line that is laid out at once. Nearly every line is one block. */
struct FTextViewBlock
{
	int32 Line = 0;
	int32 Segment = 0;
	bool operator==(const FTextViewBlock& Other) const { return Line == Other.Line && Segment == Other.Segment; }
	bool operator<(const FTextViewBlock& Other) const { return Line != Other.Line ? Line < Other.Line : Segment < Other.Segment; }
};

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
 * Lays out those lines of a document that are in view. Heights of the others are estimated until they come into view; the
 * scroll position is a block and a distance into it, so that nothing jumps when an estimate becomes a measure.
 *
 * A line of more than MaxSegment units is laid out in pieces, each starting a row of its own, so that a key in a line of
 * ten million units costs what it costs in a short one. All lengths are device pixels.
 */
class FTextView
{
public:
	static constexpr int32 MaxSegment = 4096;

	/** @param InDocument  Outlives the view, which must be told of every change by NoteLinesChanged. */
	explicit FTextView(const FTextDocument& InDocument);

	void NoteLinesChanged(int32 First, int32 Removed, int32 Added);
	void SetFont(const FSlateFontInfo& InFont, float InScale);
	/** Zero or less wraps nothing. */
	void SetWrapWidth(float Width);
	void SetViewSize(float Width, float Height);
	/** Shows a text at a place as if it were part of the line. An empty text ends it. */
	void SetPreedit(const FTextLocation& Place, FStringView Text);
	bool HasPreedit() const { return !PreeditText.IsEmpty(); }
	const FTextLocation& GetPreeditPlace() const { return PreeditPlace; }
	int32 GetPreeditLength() const { return PreeditText.Len(); }

	const FFontLineMetrics& GetMetrics() const { return Metrics; }
	/** Of all lines; the more have been in view, the truer. */
	double GetContentHeight();
	/** Of the widest row shaped so far. */
	float GetContentWidth() const { return WidestRow; }
	/** Of the widest line shaped so far, were nothing wrapped. */
	float GetUnwrappedWidth();
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
	/** Offset in the line as shown, behind an open preedit included. */
	int32 ToShown(const FTextLocation& Location) const;
	/** Lines that hold a laid-out paragraph now, for tests. */
	int32 CountShapedLines() const;

private:
	struct FSegment
	{
		int32 Begin = 0;
		int32 End = 0;
		float Height = 0.0f;
		bool bMeasured = false;
		TSharedPtr<ITextParagraph> Paragraph;
	};
	struct FLineEntry
	{
		float Height = 0.0f;
		/** Null while the line has never been in view. */
		TUniquePtr<TArray<FSegment>> Segments;
	};

	int32 GetShownLength(int32 Line) const;
	FString MakeShownText(int32 Line, int32 Begin, int32 End) const;
	FTextLocation FromShown(int32 Line, int32 Shown) const;
	float EstimateHeight(int32 Units) const;
	TArray<FSegment>& GetSegments(int32 Line);
	/** The segment with its paragraph wrapped and measured. */
	FSegment& Shape(const FTextViewBlock& Block);
	void ResetLine(int32 Line);
	void ResetAll();
	/** Makes the sums of heights right up to a line and gives the line's top. */
	double GetTop(int32 Line);
	void ForgetTops(int32 FromLine) { ValidTops = FMath::Min(ValidTops, FromLine); }
	bool StepBlock(FTextViewBlock& Block, int32 Direction);
	/** Brings the distance of the scroll position into its block. */
	void NormalizeScroll();
	void ForgetFarParagraphs(int32 FirstLine, int32 LastLine);
	FTextLocation LocationAt(const FTextViewBlock& Block, int32 Row, float X, bool& bOutRowEnd);
	FTextCaretPlace PlaceOfShown(int32 Line, int32 Shown, bool bRowEnd);

	const FTextDocument& Document;
	TArray<FLineEntry> Entries;
	/** Tops[N] is the sum of the heights of the first N lines, right for N below ValidTops. */
	TArray<double> Tops;
	int32 ValidTops = 0;
	FSlateFontInfo Font;
	float Scale = 0.0f;
	FFontLineMetrics Metrics;
	/** Of an average unit; zero until an estimate needs it. */
	mutable float UnitWidth = 0.0f;
	float WrapWidth = 0.0f;
	float ViewWidth = 0.0f;
	float ViewHeight = 0.0f;
	float WidestRow = 0.0f;
	float ScrollX = 0.0f;
	FTextViewBlock ScrollBlock;
	float ScrollDistance = 0.0f;
	FTextLocation PreeditPlace;
	FString PreeditText;
	int32 ShapedSegments = 0;
};
