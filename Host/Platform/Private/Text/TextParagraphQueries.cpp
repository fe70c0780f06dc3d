#include "Text/TextParagraph.h"

#include <algorithm>
#include <cmath>

// Where things are in a laid-out text: carets, hits, spans, letters and words. All by search in sorted lists, since a
// paragraph may hold a whole file. Indices are clamped, never checked: they come from carets that may be a frame late
// the text.

using namespace TextUnits;

int32 FTextParagraph::ClampLine(int32 Line) const
{
	return std::clamp(Line, 0, static_cast<int32>(Lines.size()) - 1);
}

const FTextParagraph::FTextLine& FTextParagraph::GetTextLineOfIndex(int32 Index) const
{
	const auto Above =
		std::upper_bound(TextLines.begin(), TextLines.end(), Index, [](int32 Value, const FTextLine& Line) { return Value < Line.Begin; });
	return Above == TextLines.begin() ? TextLines.front() : *std::prev(Above);
}

int32 FTextParagraph::FindPiece(const FTextLine& Line, int32 Index) const
{
	const auto Begin = Pieces->begin() + Line.FirstPiece;
	const auto Above = std::upper_bound(Begin, Pieces->begin() + Line.EndPiece, Index,
		[](int32 Value, const FTextPiece& Piece) { return Value < static_cast<int32>(Piece.Begin); });
	return static_cast<int32>(Above - Pieces->begin()) - (Above == Begin ? 0 : 1);
}

// Within a word by its offsets, after it by the width of blanks.
float FTextParagraph::GetPlainX(const FTextLine& Line, int32 Index) const
{
	const int32 PieceIndex = FindPiece(Line, Index);
	if (PieceIndex >= Line.EndPiece)
	{
		return GetPiece(Line.EndPiece).X;
	}
	const FTextPiece& Piece = GetPiece(PieceIndex);
	const int32 Offset = Index - static_cast<int32>(Piece.Begin);
	if (Offset <= Piece.GetLength())
	{
		return Piece.GetUnitX(Offset);
	}
	// The next piece's x is right for tabs too.
	const FTextPiece& Next = GetPiece(PieceIndex + 1);
	if (Index >= static_cast<int32>(Next.Begin))
	{
		return Next.X;
	}
	return Piece.GetInkEnd() + Font->GetBlankAdvance() * static_cast<float>(Offset - Piece.GetLength());
}

// 1. The piece. 2. In its blanks: by share of their width, to the nearer edge. 3. In its word: the nearer edge of the
// letter.
int32 FTextParagraph::GetPlainIndexAt(const FTextLine& Line, float X) const
{
	const auto Begin = Pieces->begin() + Line.FirstPiece;
	const auto Above =
		std::upper_bound(Begin, Pieces->begin() + Line.EndPiece, X, [](float Value, const FTextPiece& Piece) { return Value < Piece.X; });
	const int32 PieceIndex = static_cast<int32>(Above - Pieces->begin()) - (Above == Begin ? 0 : 1);
	if (PieceIndex >= Line.EndPiece)
	{
		return Line.End;
	}
	const FTextPiece& Piece = GetPiece(PieceIndex);
	const FTextPiece& Next = GetPiece(PieceIndex + 1);
	const int32 PieceBegin = static_cast<int32>(Piece.Begin);
	if (X >= Piece.GetInkEnd())
	{
		const int32 BlankBegin = PieceBegin + Piece.GetLength();
		const int32 BlankCount = static_cast<int32>(Next.Begin) - BlankBegin;
		const float BlankWidth = Next.X - Piece.GetInkEnd();
		if (BlankCount <= 0 || BlankWidth <= 0.0f)
		{
			return static_cast<int32>(Next.Begin);
		}
		const float Share = std::min((X - Piece.GetInkEnd()) / BlankWidth, 1.0f);
		return BlankBegin + static_cast<int32>(std::floor(Share * static_cast<float>(BlankCount) + 0.5f));
	}
	const std::span<const float> Offsets = Piece.GetOffsets();
	const float Inside = X - Piece.X;
	const auto Right = std::upper_bound(Offsets.begin(), Offsets.end(), Inside);
	if (Right == Offsets.begin())
	{
		return PieceBegin;
	}
	if (Right == Offsets.end())
	{
		return PieceBegin + Piece.GetLength();
	}
	const int32 RightUnit = static_cast<int32>(Right - Offsets.begin());
	return PieceBegin + (Inside - *std::prev(Right) < *Right - Inside ? RightUnit - 1 : RightUnit);
}

int32 FTextParagraph::GetEndStop(const FLine& Line) const
{
	const FTextLine& TextLine = TextLines[static_cast<size_t>(Line.TextLine)];
	return GetComplex(TextLine).FindStop(Line.Public.EndIndex - TextLine.Begin);
}

int32 FTextParagraph::GetLineOfIndex(int32 Index) const
{
	const auto Above =
		std::upper_bound(Lines.begin(), Lines.end(), Index, [](int32 Value, const FLine& Line) { return Value < Line.Public.BeginIndex; });
	return std::max(0, static_cast<int32>(Above - Lines.begin()) - 1);
}

float FTextParagraph::GetCaretX(int32 LineIndex, int32 Index) const
{
	const FLine& Line = Lines[static_cast<size_t>(ClampLine(LineIndex))];
	const FTextLine& TextLine = TextLines[static_cast<size_t>(Line.TextLine)];
	Index = std::clamp(Index, Line.Public.BeginIndex, Line.Public.EndIndex);
	if (TextLine.IsComplex())
	{
		return GetComplex(TextLine).GetCaretX(Line.First, GetEndStop(Line), Index - TextLine.Begin);
	}
	return GetPlainX(TextLine, Index) - GetPlainX(TextLine, Line.Public.BeginIndex);
}

int32 FTextParagraph::GetIndexAt(int32 LineIndex, float X) const
{
	X = std::isnan(X) ? 0.0f : X; // What is no number is nearest to nothing.
	LineIndex = ClampLine(LineIndex);
	const FLine& Line = Lines[static_cast<size_t>(LineIndex)];
	const FTextLine& TextLine = TextLines[static_cast<size_t>(Line.TextLine)];
	int32 Index = 0;
	if (TextLine.IsComplex())
	{
		Index = TextLine.Begin + GetComplex(TextLine).GetIndexAt(Line.First, GetEndStop(Line), X);
	}
	else
	{
		Index = GetPlainIndexAt(TextLine, X + GetPlainX(TextLine, Line.Public.BeginIndex));
		Index = std::clamp(Index, Line.Public.BeginIndex, Line.Public.EndIndex);
	}
	// The end of a wrapped line is the begin of the next one: a caret set there would leave the line that was meant.
	const bool bWrapped = Index == Line.Public.EndIndex && Line.Public.EndIndex < TextLine.End;
	return bWrapped ? std::max(Line.Public.BeginIndex, GetPreviousGrapheme(Index)) : Index;
}

void FTextParagraph::GetSpans(int32 LineIndex, int32 Begin, int32 End, TArray<FParagraphSpan>& OutSpans) const
{
	const FLine& Line = Lines[static_cast<size_t>(ClampLine(LineIndex))];
	const FTextLine& TextLine = TextLines[static_cast<size_t>(Line.TextLine)];
	Begin = std::max(Begin, Line.Public.BeginIndex);
	End = std::min(End, Line.Public.EndIndex);
	if (Begin >= End)
	{
		return;
	}
	if (TextLine.IsComplex())
	{
		GetComplex(TextLine).GetSpans(Line.First, GetEndStop(Line), Begin - TextLine.Begin, End - TextLine.Begin, OutSpans);
		return;
	}
	const float Left = GetPlainX(TextLine, Line.Public.BeginIndex);
	const FParagraphSpan Span{ GetPlainX(TextLine, Begin) - Left, GetPlainX(TextLine, End) - Left };
	if (Span.Right > Span.Left)
	{
		OutSpans.Add(Span);
	}
}

int32 FTextParagraph::GetNextGrapheme(int32 Index) const
{
	const int32 Length = static_cast<int32>(Text.size());
	Index = std::max(Index, 0);
	if (Index >= Length)
	{
		return Length;
	}
	const FTextLine& Line = GetTextLineOfIndex(Index);
	if (Index >= Line.End)
	{
		// Over the line break, both units of a pair.
		const size_t Next = static_cast<size_t>(&Line - TextLines.data()) + 1;
		return Next < TextLines.size() ? TextLines[Next].Begin : Length;
	}
	return Line.IsComplex() ? Line.Begin + GetComplex(Line).GetNextStop(Index - Line.Begin) : Index + 1;
}

int32 FTextParagraph::GetPreviousGrapheme(int32 Index) const
{
	Index = std::min(Index, static_cast<int32>(Text.size()));
	if (Index <= 0)
	{
		return 0;
	}
	const FTextLine& Line = GetTextLineOfIndex(Index);
	if (Index <= Line.Begin)
	{
		return (&Line)[-1].End;
	}
	if (Index > Line.End)
	{
		return Line.End; // Between the units of a pair.
	}
	return Line.IsComplex() ? Line.Begin + GetComplex(Line).GetPreviousStop(Index - Line.Begin) : Index - 1;
}

// What a character is for moving by words.
EClass FTextParagraph::GetClassAt(int32 Index) const
{
	// Marks that belong to the character before them take its class. A heap of marks is not searched to its bottom.
	constexpr int32 MaxMarks = 64;
	EClass Class = EClass::Extend;
	for (const int32 Lowest = std::max(0, Index - MaxMarks); Index >= Lowest; --Index)
	{
		if (IsLowSurrogate(Text[static_cast<size_t>(Index)]) && Index > 0 && IsHighSurrogate(Text[static_cast<size_t>(Index - 1)]))
		{
			--Index;
		}
		int32 Next = Index;
		Class = GetClass(Decode(GetView(), Next));
		if (Class != EClass::Extend)
		{
			return Class;
		}
	}
	return EClass::Mark;
}

// To the next begin of a word: a change of class into a class that words are made of.
int32 FTextParagraph::GetNextWord(int32 Index) const
{
	const int32 Length = static_cast<int32>(Text.size());
	Index = std::clamp(Index, 0, Length);
	if (Index == Length)
	{
		return Length;
	}
	EClass Previous = GetClassAt(Index);
	while (Index < Length)
	{
		int32 Next = Index;
		EClass Class = GetClass(Decode(GetView(), Next));
		Class = Class == EClass::Extend ? Previous : Class;
		if (Class != Previous && IsWordClass(Class))
		{
			return Index;
		}
		Previous = Class;
		Index = Next;
	}
	return Length;
}

// Back over what is no word, then to the begin of the word before it.
int32 FTextParagraph::GetPreviousWord(int32 Index) const
{
	Index = std::clamp(Index, 0, static_cast<int32>(Text.size()));
	while (Index > 0 && !IsWordClass(GetClassAt(Index - 1)))
	{
		--Index;
	}
	if (Index == 0)
	{
		return 0;
	}
	const EClass Class = GetClassAt(Index - 1);
	while (Index > 0 && GetClassAt(Index - 1) == Class)
	{
		--Index;
	}
	return Index;
}

void FTextParagraph::GetWordAt(int32 Index, int32& OutBegin, int32& OutEnd) const
{
	const int32 Length = static_cast<int32>(Text.size());
	Index = std::clamp(Index, 0, Length);
	const FTextLine& Line = GetTextLineOfIndex(Index);
	Index = std::min(Index, Line.End);
	OutBegin = Index;
	OutEnd = Index;
	if (Line.Begin == Line.End)
	{
		return;
	}
	// At the end of a word, and at the end of a line, what stands before is meant.
	const bool bAtEnd = Index == Line.End;
	if (Index > Line.Begin && (bAtEnd || (!IsWordClass(GetClassAt(Index)) && IsWordClass(GetClassAt(Index - 1)))))
	{
		Index = GetPreviousGrapheme(Index);
	}
	const EClass Class = GetClassAt(Index);
	OutBegin = GetPreviousGrapheme(std::min(GetNextGrapheme(Index), Line.End));
	OutEnd = GetNextGrapheme(Index);
	if (Class == EClass::Mark)
	{
		return;
	}
	while (OutBegin > Line.Begin && GetClassAt(OutBegin - 1) == Class)
	{
		--OutBegin;
	}
	while (OutEnd < Line.End && GetClassAt(OutEnd) == Class)
	{
		++OutEnd;
	}
}
