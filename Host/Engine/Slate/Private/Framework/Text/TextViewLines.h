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

/**
 * The lines of a document as they are laid out for a width. Heights of lines that were never in view are estimated; tops are
 * sums of heights, made as far as they are asked for.
 *
 * A line of more than MaxSegment units is laid out in pieces, each starting a row of its own, so that a key in a line of
 * ten million units costs what it costs in a short one. All lengths are device pixels.
 */
class FTextViewLines
{
public:
	/** A key shapes the segment that it changes and those in view after it: in joined emoji, about nine rows each. */
	static constexpr int32 MaxSegment = 2048;

	explicit FTextViewLines(const FTextDocument& InDocument);

	void SetFont(const FSlateFontInfo& InFont, float InScale);
	/** Zero or less wraps nothing. */
	void SetWrapWidth(float Width);
	/** Shows a text at a place as if it were part of the line. An empty text ends it. */
	void SetPreedit(const FTextLocation& Place, FStringView Text);
	bool HasPreedit() const { return !PreeditText.IsEmpty(); }
	const FTextLocation& GetPreeditPlace() const { return PreeditPlace; }
	int32 GetPreeditLength() const { return PreeditText.Len(); }

	const FFontLineMetrics& GetMetrics() const { return Metrics; }
	/** Of the widest row shaped so far. */
	float GetContentWidth() const { return WidestRow; }
	/** Of the widest line shaped so far, were nothing wrapped. */
	float GetUnwrappedWidth() const;
	/** Offset in the line as shown, an open preedit before it included. */
	int32 ToShown(const FTextLocation& Location) const;
	/** Lines that hold a laid-out paragraph now, for tests. */
	int32 CountShapedLines() const;

protected:
	struct FSegment
	{
		int32 Begin = 0;
		int32 End = 0;
		float Height = 0.0f;
		bool bMeasured = false;
		TSharedPtr<ITextParagraph> Paragraph;
		/** What the paragraph was made of, where the line has more than one. */
		FString Text;
	};

	int32 GetLineCount() const { return Entries.Num(); }
	/** The document has other lines now: Added ones in place of Removed ones from First on. */
	void ChangeLines(int32 First, int32 Removed, int32 Added);
	FTextLocation FromShown(int32 Line, int32 Shown) const;
	TArray<FSegment>& GetSegments(int32 Line);
	/** The segment with its paragraph wrapped and measured. */
	FSegment& Shape(const FTextViewBlock& Block);
	/** Makes the sums of heights right up to a line and gives the line's top. */
	double GetTop(int32 Line);
	bool StepBlock(FTextViewBlock& Block, int32 Direction);
	/** Once there are many paragraphs, lets go of those outside of these lines. */
	void ForgetFarParagraphs(int32 FirstLine, int32 LastLine);

	const FTextDocument& Document;
	float WrapWidth = 0.0f;
	float WidestRow = 0.0f;
	FTextLocation PreeditPlace;
	FString PreeditText;

private:
	struct FLineEntry
	{
		float Height = 0.0f;
		/** Null while the line has never been in view. */
		TUniquePtr<TArray<FSegment>> Segments;
	};

	/** A paragraph of a long line that was changed: most of those in view come again. */
	struct FKeptParagraph
	{
		FString Text;
		TSharedPtr<ITextParagraph> Paragraph;
	};

	/** A paragraph of this text, one that was kept or a new one. */
	TSharedRef<ITextParagraph> FindOrMakeParagraph(const FString& Text) const;
	int32 GetShownLength(int32 Line) const;
	FString MakeShownText(int32 Line, int32 Begin, int32 End) const;
	float EstimateHeight(int32 Units) const;
	void ForEachParagraph(TFunctionRef<void(const ITextParagraph&)> Visit) const;
	void ResetLine(int32 Line);
	void ResetAll();
	void ForgetTops(int32 FromLine) { ValidTops = FMath::Min(ValidTops, FromLine); }

	TArray<FLineEntry> Entries;
	/** Tops[N] is the sum of the heights of the first N lines, right for N below ValidTops. */
	TArray<double> Tops;
	int32 ValidTops = 0;
	FSlateFontInfo Font;
	float Scale = 0.0f;
	FFontLineMetrics Metrics;
	/** Of an average unit; zero until an estimate needs it. */
	mutable float UnitWidth = 0.0f;
	int32 ShapedSegments = 0;
	/** Of the long line that was changed last; all in this font. */
	TArray<FKeptParagraph> Kept;
};
