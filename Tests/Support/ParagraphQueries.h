#pragma once

#include "Host/TextShaper.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

/**
 * Every question that a caret, a click or a selection can put to a paragraph. Both answer the first complaint in words;
 * empty when all answers lie within the text.
 */
inline std::string AskEveryPixel(const ITextParagraph& Paragraph, int32 Length)
{
	constexpr float Infinite = std::numeric_limits<float>::infinity();
	for (int32 Line = -1; Line <= Paragraph.GetLineCount(); ++Line)
	{
		const std::string Place = "line " + std::to_string(Line) + ": ";
		const FParagraphLine& Entry = Paragraph.GetLine(Line);
		if (Entry.BeginIndex < 0 || Entry.BeginIndex > Entry.EndIndex || Entry.EndIndex > Length)
		{
			return Place + "from " + std::to_string(Entry.BeginIndex) + " to " + std::to_string(Entry.EndIndex);
		}
		if (!std::isfinite(Entry.Width) || Entry.Width < 0.0f)
		{
			return Place + "width " + std::to_string(Entry.Width);
		}
		const auto IsInLine = [&Entry](int32 Index) { return Entry.BeginIndex <= Index && Index <= Entry.EndIndex; };
		for (float X = -60.0f; X <= Entry.Width + 60.0f; X += 1.0f)
		{
			const int32 Index = Paragraph.GetIndexAt(Line, X);
			if (!IsInLine(Index) || !std::isfinite(Paragraph.GetCaretX(Line, Index)))
			{
				return Place + "x " + std::to_string(X) + " gives index " + std::to_string(Index) + " and caret " +
					std::to_string(Paragraph.GetCaretX(Line, Index));
			}
		}
		if (Paragraph.GetIndexAt(Line, -1e6f) != Paragraph.GetIndexAt(Line, -Infinite) ||
			Paragraph.GetIndexAt(Line, 1e6f) != Paragraph.GetIndexAt(Line, Infinite))
		{
			return Place + "far away is not at the end";
		}
		for (const float X : { std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f })
		{
			if (!IsInLine(Paragraph.GetIndexAt(Line, X)))
			{
				return Place + "x " + std::to_string(X) + " gives index " + std::to_string(Paragraph.GetIndexAt(Line, X));
			}
		}
		for (const FParagraphRun& Run : Paragraph.GetRuns(Line))
		{
			if (!std::isfinite(Run.X) || !std::isfinite(Run.Width))
			{
				return Place + "a run has no place";
			}
		}
	}
	return std::string();
}

inline std::string AskEveryOffset(const ITextParagraph& Paragraph, int32 Length)
{
	for (int32 Index = -2; Index <= Length + 2; ++Index)
	{
		const std::string Place = "offset " + std::to_string(Index) + ": ";
		const int32 Line = Paragraph.GetLineOfIndex(Index);
		if (Line < 0 || Line >= Paragraph.GetLineCount() || !std::isfinite(Paragraph.GetCaretX(Line, Index)))
		{
			return Place + "line " + std::to_string(Line) + ", caret " + std::to_string(Paragraph.GetCaretX(Line, Index));
		}
		const int32 Next = Paragraph.GetNextGrapheme(Index);
		const int32 Previous = Paragraph.GetPreviousGrapheme(Index);
		if (Index >= Length ? Next != Length : Next <= Index || Next > Length)
		{
			return Place + "next " + std::to_string(Next);
		}
		if (Index <= 0 ? Previous != 0 : Previous >= std::min(Index, Length + 1) || Previous < 0)
		{
			return Place + "previous " + std::to_string(Previous);
		}
		const int32 NextWord = Paragraph.GetNextWord(Index);
		const int32 PreviousWord = Paragraph.GetPreviousWord(Index);
		if (NextWord > Length || (Index < Length && NextWord <= Index) || PreviousWord < 0 || (Index > 0 && PreviousWord >= Index))
		{
			return Place + "words " + std::to_string(PreviousWord) + " and " + std::to_string(NextWord);
		}
		int32 Begin = -1;
		int32 End = -1;
		Paragraph.GetWordAt(Index, Begin, End);
		if (Begin < 0 || Begin > End || End > Length)
		{
			return Place + "word " + std::to_string(Begin) + " to " + std::to_string(End);
		}
		for (const int32 Other : { -5, 0, Index / 2, Index, Length, Length + 5 })
		{
			for (int32 SpanLine = 0; SpanLine < Paragraph.GetLineCount(); ++SpanLine)
			{
				TArray<FParagraphSpan> Spans;
				Paragraph.GetSpans(SpanLine, std::min(Index, Other), std::max(Index, Other), Spans);
				for (const FParagraphSpan& Span : Spans)
				{
					if (!std::isfinite(Span.Left) || !std::isfinite(Span.Right) || Span.Left > Span.Right)
					{
						return Place + "span " + std::to_string(Span.Left) + " to " + std::to_string(Span.Right);
					}
				}
			}
		}
	}
	return std::string();
}
