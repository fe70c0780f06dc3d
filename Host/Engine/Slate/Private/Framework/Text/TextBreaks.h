#pragma once

#include "CoreMinimal.h"

/** Where a caret may stand inside one line. Offsets count UTF-16 units; all answers lie within the line. */
class ITextBreaks
{
public:
	virtual ~ITextBreaks() = default;
	virtual int32 GetNextGrapheme(FStringView Line, int32 Offset) const = 0;
	virtual int32 GetPreviousGrapheme(FStringView Line, int32 Offset) const = 0;
	/** Start of the next word, or the line's end. */
	virtual int32 GetNextWord(FStringView Line, int32 Offset) const = 0;
	/** Start of the word before, or 0. */
	virtual int32 GetPreviousWord(FStringView Line, int32 Offset) const = 0;
	/** The word, run of blanks or single mark around Offset. */
	virtual void GetWordAt(FStringView Line, int32 Offset, int32& OutBegin, int32& OutEnd) const = 0;
};

/**
 * Breaks as the platform's text shaper finds them. Of a long line only the surroundings are looked at, so a step costs
 * the same in a line of ten million units; a single word longer than that is crossed in several steps.
 */
class FShapedTextBreaks : public ITextBreaks
{
public:
	virtual int32 GetNextGrapheme(FStringView Line, int32 Offset) const override;
	virtual int32 GetPreviousGrapheme(FStringView Line, int32 Offset) const override;
	virtual int32 GetNextWord(FStringView Line, int32 Offset) const override;
	virtual int32 GetPreviousWord(FStringView Line, int32 Offset) const override;
	virtual void GetWordAt(FStringView Line, int32 Offset, int32& OutBegin, int32& OutEnd) const override;
};

namespace TextUnits
{
	inline bool IsLeadSurrogate(TCHAR Unit)
	{
		return (Unit & 0xFC00) == 0xD800;
	}
	inline bool IsTrailSurrogate(TCHAR Unit)
	{
		return (Unit & 0xFC00) == 0xDC00;
	}
	/** True when a cut before Offset would part the two halves of one character. */
	inline bool IsInsidePair(FStringView Line, int32 Offset)
	{
		return Offset > 0 && Offset < Line.Len() && IsTrailSurrogate(Line[Offset]) && IsLeadSurrogate(Line[Offset - 1]);
	}
	/** The text as it can be shaped: a lone carriage return would end a line there, so a blank stands in for it. */
	FString MakeShapeable(FStringView Text);
}
