#pragma once

#include "CoreMinimal.h"
#include "Fonts/SlateFontInfo.h"

/** A shaped run of glyphs in the platform's own form, ready for its painter. Immutable and shared. */
class SLATECORE_API FGlyphRun
{
public:
	virtual ~FGlyphRun();
};

/** Heights of a font's line in device pixels, rounded as the platform paints them. */
struct FFontLineMetrics
{
	float Ascent = 0.0f;
	float Descent = 0.0f;
	float LineHeight = 0.0f;
	float UnderlineOffset = 0.0f; // From the baseline, downwards.
	float StrikeOffset = 0.0f; // From the baseline, upwards.
	float LineThickness = 1.0f;
};

/** One run of a laid-out line. X is the pen position from the line's left edge, in device pixels. */
struct FParagraphRun
{
	TSharedPtr<const FGlyphRun> Glyphs;
	float X = 0.0f;
	float Width = 0.0f;
};

/** One laid-out line. Indices count UTF-16 units of the paragraph's text; EndIndex excludes a line break and blanks hang at the end. */
struct FParagraphLine
{
	int32 BeginIndex = 0;
	int32 EndIndex = 0;
	float Top = 0.0f;
	float Height = 0.0f;
	float Baseline = 0.0f; // From Top.
	float Width = 0.0f; // Of the ink-bearing text; hanging blanks do not count.
};

/** A stretch of a line between two x positions, device pixels from the line's left edge. */
struct FParagraphSpan
{
	float Left = 0.0f;
	float Right = 0.0f;
};

/**
 * Text of one font, broken into lines: "\n", "\r\n" and "\r" end a line, and lines are wrapped to a width.
 * All lengths are device pixels. Made by ITextShaper; game thread only. An empty text has one empty line.
 */
class SLATECORE_API ITextParagraph
{
public:
	virtual ~ITextParagraph();

	/** Wraps to a width; zero or less means no wrapping. Words are kept whole while they fit, a longer word breaks between clusters. */
	virtual void Wrap(float Width) = 0;
	virtual int32 GetLineCount() const = 0;
	virtual const FParagraphLine& GetLine(int32 Line) const = 0;
	/** The runs of a line in visual order. Valid until the next Wrap. */
	virtual TArrayView<const FParagraphRun> GetRuns(int32 Line) const = 0;
	/** Width of the widest line and height of all lines. */
	virtual FVector2f GetSize() const = 0;
	/** Width of the widest line if nothing were wrapped. */
	virtual float GetUnwrappedWidth() const = 0;

	/** Last line that holds the caret index; an index at a wrap belongs to the following line. */
	virtual int32 GetLineOfIndex(int32 Index) const = 0;
	/** x of the caret before the unit at Index (clamped to the line, snapped to the cluster's start). */
	virtual float GetCaretX(int32 Line, int32 Index) const = 0;
	/** The nearest caret index to x on a line; always a grapheme boundary. */
	virtual int32 GetIndexAt(int32 Line, float X) const = 0;
	/** Appends what a selection from Begin to End covers on a line. Several spans in mixed-direction text. */
	virtual void GetSpans(int32 Line, int32 Begin, int32 End, TArray<FParagraphSpan>& OutSpans) const = 0;

	/** Caret moves. All clamp to the text and step over whole grapheme clusters. */
	virtual int32 GetNextGrapheme(int32 Index) const = 0;
	virtual int32 GetPreviousGrapheme(int32 Index) const = 0;
	/** Start of the next word behind Index, or the text's end; start of the word before Index, or 0. */
	virtual int32 GetNextWord(int32 Index) const = 0;
	virtual int32 GetPreviousWord(int32 Index) const = 0;
	/** The word, run of blanks or single mark around Index, for a double click. */
	virtual void GetWordAt(int32 Index, int32& OutBegin, int32& OutEnd) const = 0;
};

/** Counters of text work, for tests and benchmarks. */
struct FTextShaperCounters
{
	uint64 ParagraphsMade = 0;
	uint64 WordsShaped = 0;
	uint64 Wraps = 0;
};

/** Shapes and measures text; the platform implements it. Game thread only. */
class SLATECORE_API ITextShaper
{
public:
	virtual ~ITextShaper();

	/**
	 * Shapes a text. Lone surrogates and NULs are drawn as a replacement sign and keep their index.
	 * @param Scale  Device pixels per unit; the font is shaped at Size * 96 / 72 * Scale pixels.
	 */
	virtual TSharedRef<ITextParagraph> MakeParagraph(FStringView Text, const FSlateFontInfo& Font, float Scale) = 0;
	virtual FFontLineMetrics GetLineMetrics(const FSlateFontInfo& Font, float Scale) = 0;
	virtual const FTextShaperCounters& GetCounters() const = 0;

	/** The process's shaper. The platform sets it at start; asking before that is a programming error. */
	static ITextShaper& Get();
	static bool IsSet();
	static void Set(TSharedPtr<ITextShaper> Shaper);
};
