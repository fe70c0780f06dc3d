#include "Text/TextParagraph.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

// A laid-out text. Nearly all text is plain: words of one direction between blanks. It is kept as pieces, one for each
// word with the blanks after it, and words come shaped from the font, which keeps them; so wrapping is adding up
// widths, and a text that is wrapped anew at another width shapes nothing. A line that cannot be taken word by word
// (mixed directions, emoji sequences, scripts that join) goes to FComplexLine as a whole. Which way a line takes is
// decided unit by unit in AddTextLine.
//
// All widths are whole pixels, so that letters are equally sharp wherever a line begins.

namespace
{
	/** The glyphs of one line of words. Holds no glyphs itself: it refers to the words of its paragraph. */
	class FWordsRun final : public FPlatformGlyphRun
	{
	public:
		virtual void Emit(FGlyphSink& Sink, float X, float Y) const override
		{
			for (int32 Piece = FirstPiece; Piece < EndPiece; ++Piece)
			{
				const FTextPiece& Source = (*Pieces)[static_cast<size_t>(Piece)];
				if (Source.Word)
				{
					const int32 PieceBegin = static_cast<int32>(Source.Begin);
					EmitWord(Sink, *Source.Word, Begin - PieceBegin, End - PieceBegin, X + Source.X - Origin, Y);
				}
			}
		}

		std::shared_ptr<const FTextParagraph::FPieces> Pieces;
		int32 FirstPiece = 0;
		int32 EndPiece = 0;
		int32 Begin = 0;
		int32 End = 0;
		float Origin = 0.0f;

	private:
		/** Units from First to Last; a word that is broken between lines is painted in parts. */
		static void EmitWord(FGlyphSink& Sink, const FTextWord& Word, int32 First, int32 Last, float X, float Y)
		{
			const bool bWhole = First <= 0 && Last >= Word.Len();
			const float Left = bWhole ? 0.0f : Word.Offsets[static_cast<size_t>(std::max(First, 0))];
			const float Right = bWhole ? 0.0f : Word.Offsets[static_cast<size_t>(std::clamp(Last, 0, Word.Len()))];
			for (size_t Part = 0; Part < Word.Parts.size(); ++Part)
			{
				Sink.SetFont(*Word.Parts[Part].Font);
				const size_t GlyphEnd =
					Part + 1 < Word.Parts.size() ? static_cast<size_t>(Word.Parts[Part + 1].GlyphBegin) : Word.Glyphs.size();
				for (size_t Index = static_cast<size_t>(Word.Parts[Part].GlyphBegin); Index < GlyphEnd; ++Index)
				{
					const FWordGlyph& Glyph = Word.Glyphs[Index];
					if (bWhole || (Glyph.X >= Left && Glyph.X < Right))
					{
						Sink.Add(Glyph.Index, X + Glyph.X, Y + Glyph.Y);
					}
				}
			}
		}
	};
}

// 1. Lines, by any kind of line break. 2. Their pieces, in one list that lines and runs share. 3. The width without
// wrapping, which says later whether a width changes anything at all.
FTextParagraph::FTextParagraph(std::shared_ptr<FShaperFont> InFont, FStringView InText)
	: Font(std::move(InFont))
	, Text(InText.GetData() ? InText.GetData() : TEXT(""), static_cast<size_t>(InText.Len()))
{
	++Font->GetSystem().GetCounters().ParagraphsMade;
	// Its room stays for the next paragraph, so that most take memory once.
	thread_local FPieces Scratch;
	const int32 Length = static_cast<int32>(Text.size());
	for (int32 Begin = 0;;)
	{
		const size_t Found = Text.find_first_of(TEXT("\n\r"), static_cast<size_t>(Begin));
		if (Found == std::basic_string<TCHAR>::npos)
		{
			AddTextLine(Begin, Length, Scratch);
			break;
		}
		AddTextLine(Begin, static_cast<int32>(Found), Scratch);
		const bool bPair = Text[Found] == TEXT('\r') && Found + 1 < Text.size() && Text[Found + 1] == TEXT('\n');
		Begin = static_cast<int32>(Found) + (bPair ? 2 : 1);
	}
	constexpr size_t MaxRoom = 1024;
	if (Scratch.size() > MaxRoom)
	{
		Scratch.shrink_to_fit();
		Pieces = std::make_shared<const FPieces>(std::exchange(Scratch, {}));
	}
	else
	{
		Pieces = std::make_shared<const FPieces>(std::make_move_iterator(Scratch.begin()), std::make_move_iterator(Scratch.end()));
		Scratch.clear();
	}
	TextLines.shrink_to_fit();

	for (const FTextLine& Line : TextLines)
	{
		float Width = 0.0f;
		if (Line.IsComplex())
		{
			const FComplexLine& Complex = GetComplex(Line);
			Width = Complex.GetStop(Complex.TrimBlanks(0, Complex.GetStopCount())).X;
		}
		else
		{
			for (int32 Piece = Line.EndPiece - 1; Piece >= Line.FirstPiece && Width == 0.0f; --Piece)
			{
				Width = GetPiece(Piece).Word ? GetPiece(Piece).GetInkEnd() : 0.0f;
			}
		}
		UnwrappedWidth = std::max(UnwrappedWidth, Width);
	}
	Wrap(0.0f);
}

FTextParagraph::~FTextParagraph() = default;

void FTextParagraph::AddTextLine(int32 Begin, int32 End, FPieces& Scratch)
{
	FTextLine& Line = TextLines.emplace_back();
	Line.Begin = Begin;
	Line.End = End;
	const auto First = Text.begin() + Begin;
	const auto Last = Text.begin() + End;
	if (std::all_of(First, Last, [](TCHAR Unit) { return TextUnits::IsPlain(Unit); }))
	{
		Line.FirstPiece = static_cast<int32>(Scratch.size());
		AddPieces(Begin, End, Scratch);
		Line.EndPiece = static_cast<int32>(Scratch.size()) - 1;
	}
	else
	{
		Line.FirstPiece = ~static_cast<int32>(ComplexLines.size());
		ComplexLines.push_back(
			std::make_unique<FComplexLine>(*Font, GetView().substr(static_cast<size_t>(Begin), static_cast<size_t>(End - Begin))));
	}
}

// A piece may end a line if the text around its blanks may part there; blanks at a line's begin and tabs are pieces
// without a word. A sentinel ends the list, so that the end of each piece is the begin of the next.
void FTextParagraph::AddPieces(int32 Begin, int32 End, FPieces& Scratch)
{
	const size_t FirstPiece = Scratch.size();
	const float Blank = Font->GetBlankAdvance();
	const float Tab = Font->GetTabWidth();
	float X = 0.0f;
	for (int32 Index = Begin; Index < End;)
	{
		const TCHAR Unit = Text[static_cast<size_t>(Index)];
		const bool bTab = Unit == TEXT('\t');
		if (bTab || Unit == TEXT(' '))
		{
			// Blanks right behind a word belong to it and never come here.
			FTextPiece& Piece = Scratch.emplace_back();
			Piece.Begin = static_cast<uint32>(Index);
			Piece.bBreakAfter = 1;
			Piece.X = X;
			X = bTab ? (std::floor(X / Tab) + 1.0f) * Tab : X;
			Index += bTab ? 1 : 0;
		}
		else
		{
			int32 WordEnd = Index + 1;
			while (WordEnd < End && Text[static_cast<size_t>(WordEnd)] != TEXT(' ') && Text[static_cast<size_t>(WordEnd)] != TEXT('\t'))
			{
				++WordEnd;
			}
			if (Scratch.size() > FirstPiece && Index > Begin)
			{
				// Whether the line may end at the blanks before this word depends on the characters around them.
				FTextPiece& Previous = Scratch.back();
				Previous.bBreakAfter = !Previous.Word || Font->CanBreakBetween(Previous.Word->Text.back(), Unit);
			}
			const TextUnits::FView Word = GetView().substr(static_cast<size_t>(Index), static_cast<size_t>(WordEnd - Index));
			if (WordEnd - Index <= FShaperFont::MaxWordLength)
			{
				FTextPiece& Piece = Scratch.emplace_back();
				Piece.Word = Font->GetWord(Word);
				Piece.Begin = static_cast<uint32>(Index);
				Piece.X = X;
				X += Piece.Word->GetAdvance();
			}
			else
			{
				AddLongWord(Word, Index, X, Scratch);
			}
			Index = WordEnd;
		}
		while (!bTab && Index < End && Text[static_cast<size_t>(Index)] == TEXT(' '))
		{
			X += Blank;
			++Index;
		}
	}
	FTextPiece& Sentinel = Scratch.emplace_back();
	Sentinel.Begin = static_cast<uint32>(End);
	Sentinel.X = X;
}

// A word of megabytes is shaped in parts: the time for shaping grows faster than the word. Parts join without a gap, but
// ligatures across a cut are lost.
void FTextParagraph::AddLongWord(TextUnits::FView Word, int32 Begin, float& X, FPieces& Scratch)
{
	std::vector<int32> Breaks;
	Font->FindBreaks(Word, Breaks);
	const int32 Length = static_cast<int32>(Word.size());
	size_t Next = 0;
	for (int32 First = 0; First < Length;)
	{
		int32 Last = std::min(Length, First + FShaperFont::MaxWordLength);
		bool bBreak = false;
		// A cut where the word may break anyway, if there is one in the second half.
		for (; Next < Breaks.size() && Breaks[Next] <= First + FShaperFont::MaxWordLength; ++Next)
		{
			if (Breaks[Next] > First + FShaperFont::MaxWordLength / 2 && Length - First > FShaperFont::MaxWordLength)
			{
				Last = Breaks[Next];
				bBreak = true;
			}
		}
		FTextPiece& Piece = Scratch.emplace_back();
		Piece.Word = Font->GetWord(Word.substr(static_cast<size_t>(First), static_cast<size_t>(Last - First)));
		Piece.Begin = static_cast<uint32>(Begin + First);
		Piece.bBreakAfter = bBreak;
		Piece.X = X;
		X += Piece.Word->GetAdvance();
		First = Last;
	}
}

// Most calls change nothing: the width is the same, or the text fits both the old and the new one.
void FTextParagraph::Wrap(float Width)
{
	if (!(Width > 0.0f))
	{
		Width = 0.0f;
	}
	const bool bFits = Width == 0.0f || Width >= UnwrappedWidth;
	const bool bDidFit = bWrapped && (WrapWidth == 0.0f || WrapWidth >= UnwrappedWidth);
	if (bWrapped && (Width == WrapWidth || (bFits && bDidFit)))
	{
		WrapWidth = Width;
		return;
	}
	WrapWidth = Width;
	bWrapped = true;
	++Font->GetSystem().GetCounters().Wraps;

	std::vector<FLine> NewLines;
	NewLines.reserve(std::max(TextLines.size(), Lines.size()));
	for (int32 TextLine = 0; TextLine < static_cast<int32>(TextLines.size()); ++TextLine)
	{
		if (TextLines[static_cast<size_t>(TextLine)].IsComplex())
		{
			WrapComplex(TextLine, Width, NewLines);
		}
		else
		{
			WrapPlain(TextLine, Width, NewLines);
		}
	}
	// Another width often breaks the same way.
	// Lines that stayed as they were keep their runs, so that nothing is painted again for them.
	const bool bSame = std::equal(NewLines.begin(), NewLines.end(), Lines.begin(), Lines.end(),
		[](const FLine& A, const FLine& B) { return A.Public.BeginIndex == B.Public.BeginIndex; });
	if (bSame)
	{
		return;
	}
	Runs.clear();
	Lines = std::move(NewLines);
	Lines.shrink_to_fit();
	const FFontLineMetrics& Metrics = Font->GetMetrics();
	float Widest = 0.0f;
	for (size_t Index = 0; Index < Lines.size(); ++Index)
	{
		FParagraphLine& Line = Lines[Index].Public;
		Line.Top = Metrics.LineHeight * static_cast<float>(Index);
		Line.Height = Metrics.LineHeight;
		Line.Baseline = Metrics.Ascent + std::floor((Metrics.LineHeight - Metrics.Ascent - Metrics.Descent) * 0.5f);
		Widest = std::max(Widest, Line.Width);
	}
	Size = FVector2f(Widest, Metrics.LineHeight * static_cast<float>(Lines.size()));
}

void FTextParagraph::AddLine(std::vector<FLine>& OutLines, int32 TextLine, int32 Begin, int32 End, int32 First, float Width)
{
	FLine& Line = OutLines.emplace_back();
	Line.Public.BeginIndex = Begin;
	Line.Public.EndIndex = End;
	Line.Public.Width = std::max(0.0f, Width);
	Line.TextLine = TextLine;
	Line.First = First;
}

// Greedy: each line takes as much as fits. Every round moves on by one unit at least, so it ends for any width.
void FTextParagraph::WrapPlain(int32 TextLine, float Width, std::vector<FLine>& OutLines) const
{
	const FTextLine& Line = TextLines[static_cast<size_t>(TextLine)];
	int32 LastInk = Line.EndPiece - 1;
	while (LastInk >= Line.FirstPiece && !GetPiece(LastInk).Word)
	{
		--LastInk;
	}
	const float InkEnd = LastInk >= Line.FirstPiece ? GetPiece(LastInk).GetInkEnd() : 0.0f;

	FPlace Start{ Line.FirstPiece, 0 };
	do
	{
		// 1. What is left fits: the last line.
		const float Left = GetPiece(Start.Piece).GetUnitX(Start.Offset);
		const int32 Begin = static_cast<int32>(GetPiece(Start.Piece).Begin) + Start.Offset;
		if (Width <= 0.0f || InkEnd - Left <= Width)
		{
			AddLine(OutLines, TextLine, Begin, Line.End, Start.Piece, InkEnd - Left);
			return;
		}
		// 2. Where the next line begins.
		const FPlace Next = FindLineEnd(Line, Start, Left + Width);
		// 3. Blanks hang: the line ends with the ink of its last word.
		float LineInkEnd = GetPiece(Next.Piece).GetUnitX(Next.Offset);
		if (Next.Offset == 0)
		{
			int32 LastOnLine = Next.Piece - 1;
			while (LastOnLine > Start.Piece && !GetPiece(LastOnLine).Word)
			{
				--LastOnLine;
			}
			LineInkEnd = GetPiece(LastOnLine).GetInkEnd();
		}
		const int32 End = static_cast<int32>(GetPiece(Next.Piece).Begin) + Next.Offset;
		AddLine(OutLines, TextLine, Begin, End, Start.Piece, LineInkEnd - Left);
		Start = Next;
	} while (Start.Piece < Line.EndPiece);
}

FTextParagraph::FPlace FTextParagraph::FindLineEnd(const FTextLine& Line, FPlace Start, float Limit) const
{
	// 1. The last piece that begins on the line. It fits, and blanks and tabs after it hang; or it sticks out.
	const FPieces& All = *Pieces;
	const auto Beyond = std::upper_bound(All.begin() + Start.Piece + 1, All.begin() + Line.EndPiece, Limit,
		[](float Value, const FTextPiece& Piece) { return Value < Piece.X; });
	const int32 Sticking = static_cast<int32>(Beyond - All.begin()) - 1;
	const bool bFits = GetPiece(Sticking).GetInkEnd() <= Limit;
	int32 Last = Sticking;
	while (bFits && Last + 1 < Line.EndPiece && !GetPiece(Last + 1).Word)
	{
		++Last;
	}

	// 2. The last place at which the line may end, from there back to its begin.
	for (int32 Candidate = Last; Candidate >= Start.Piece; --Candidate)
	{
		const FTextPiece& Tried = GetPiece(Candidate);
		const bool bWhole = Candidate < Sticking || bFits;
		if (bWhole && Tried.bBreakAfter)
		{
			return { Candidate + 1, 0 };
		}
		if (!Tried.Word)
		{
			continue;
		}
		const std::vector<uint16>& Breaks = Tried.Word->Breaks;
		const int32 Taken = Candidate == Start.Piece ? Start.Offset : 0;
		for (auto Break = Breaks.rbegin(); Break != Breaks.rend() && *Break > Taken; ++Break)
		{
			if (Tried.GetUnitX(*Break) <= Limit)
			{
				return { Candidate, *Break };
			}
		}
	}

	// 3. A word wider than the line is cut where the line ends, but never before its first unit.
	if (bFits)
	{
		return { Last + 1, 0 };
	}
	const FTextPiece& Broken = GetPiece(Sticking);
	const int32 Taken = Sticking == Start.Piece ? Start.Offset : 0;
	const std::span<const float> Offsets = Broken.GetOffsets();
	const auto Unfitting = std::upper_bound(Offsets.begin() + Taken, Offsets.end(), Limit - Broken.X);
	const int32 Fitting = static_cast<int32>(Unfitting - Offsets.begin()) - 1;
	const int32 Cut = Fitting > Taken ? Fitting : (Sticking > Start.Piece ? 0 : Taken + 1);
	return Cut >= Broken.GetLength() ? FPlace{ Sticking + 1, 0 } : FPlace{ Sticking, Cut };
}

// The same on stops in place of pieces.
void FTextParagraph::WrapComplex(int32 TextLine, float Width, std::vector<FLine>& OutLines) const
{
	const FTextLine& Line = TextLines[static_cast<size_t>(TextLine)];
	const FComplexLine& Complex = GetComplex(Line);
	int32 First = 0;
	do
	{
		const int32 End = Width > 0.0f ? Complex.FindLineEnd(First, Width) : Complex.GetStopCount();
		const float InkEnd = Complex.GetStop(Complex.TrimBlanks(First, End)).X;
		AddLine(OutLines, TextLine, Line.Begin + Complex.GetStop(First).Begin, Line.Begin + Complex.GetStop(End).Begin, First,
			InkEnd - Complex.GetStop(First).X);
		First = End;
	} while (First < Complex.GetStopCount());
}

// Made when a line is painted for the first time and kept: equal runs in two frames are the same object, which is how
// the window sees that nothing there has changed. The ink is let out a little, since slanted letters reach over their
// advance.
TArrayView<const FParagraphRun> FTextParagraph::GetRuns(int32 LineIndex) const
{
	LineIndex = ClampLine(LineIndex);
	const auto [Entry, bNew] = Runs.try_emplace(LineIndex);
	FParagraphRun& Run = Entry->second;
	if (bNew)
	{
		const FLine& Line = Lines[static_cast<size_t>(LineIndex)];
		const FTextLine& TextLine = TextLines[static_cast<size_t>(Line.TextLine)];
		Run.Width = Line.Public.Width;
		if (TextLine.IsComplex())
		{
			Run.Glyphs = GetComplex(TextLine).MakeRun(Line.First, GetEndStop(Line));
		}
		else if (Line.Public.Width > 0.0f)
		{
			const TSharedRef<FWordsRun> Words = MakeShared<FWordsRun>();
			Words->Pieces = Pieces;
			Words->FirstPiece = Line.First;
			Words->Begin = Line.Public.BeginIndex;
			Words->End = Line.Public.EndIndex;
			Words->EndPiece = Line.First;
			while (Words->EndPiece < TextLine.EndPiece && static_cast<int32>(GetPiece(Words->EndPiece).Begin) < Words->End)
			{
				const FTextPiece& Piece = GetPiece(Words->EndPiece++);
				if (Piece.Word)
				{
					Words->InkAbove = std::max(Words->InkAbove, Piece.Word->InkAbove);
					Words->InkBelow = std::max(Words->InkBelow, Piece.Word->InkBelow);
				}
			}
			Words->Origin = GetPlainX(TextLine, Words->Begin);
			const float Margin = Words->InkAbove + Words->InkBelow;
			Words->InkLeft = -Margin;
			Words->InkRight = Line.Public.Width + Margin;
			Words->InkAbove += Margin * 0.5f;
			Words->InkBelow += Margin * 0.5f;
			Run.Glyphs = Words;
		}
	}
	return Run.Glyphs ? TArrayView<const FParagraphRun>(&Run, 1) : TArrayView<const FParagraphRun>();
}
