#pragma once

#include "Text/ComplexLine.h"

#include <algorithm>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

/** A word and the blanks after it, a tab, or leading blanks. */
struct FTextPiece
{
	/** None for tabs and leading blanks: ask the piece for lengths and places, which answers for those too. */
	FTextWordRef Word;
	/** First unit in the text. */
	uint32 Begin : 31 = 0;
	/** A line may end behind this piece. */
	uint32 bBreakAfter : 1 = 0;
	/** From the begin of its line of text, as if nothing were wrapped. */
	float X = 0.0f;

	float GetInkEnd() const { return Word ? X + Word->GetAdvance() : X; }
	int32 GetLength() const { return Word ? Word->Len() : 0; }
	/** x of every unit of the word and, last, its advance, from the piece's begin. Never empty: without a word it is one zero. */
	std::span<const float> GetOffsets() const
	{
		static constexpr float Nothing[] = { 0.0f };
		return Word ? std::span<const float>(Word->Offsets) : std::span<const float>(Nothing);
	}
	/** x of the unit at Offset, which is clamped to the word. */
	float GetUnitX(int32 Offset) const { return X + GetOffsets()[static_cast<size_t>(std::clamp(Offset, 0, GetLength()))]; }
};

/** Paragraph over shaped words. See ITextParagraph. */
class FTextParagraph final : public ITextParagraph
{
public:
	FTextParagraph(std::shared_ptr<FShaperFont> InFont, FStringView InText);
	virtual ~FTextParagraph() override;

	virtual void Wrap(float Width) override;
	virtual int32 GetLineCount() const override { return static_cast<int32>(Lines.size()); }
	virtual const FParagraphLine& GetLine(int32 Line) const override { return Lines[static_cast<size_t>(ClampLine(Line))].Public; }
	virtual TArrayView<const FParagraphRun> GetRuns(int32 Line) const override;
	virtual FVector2f GetSize() const override { return Size; }
	virtual float GetUnwrappedWidth() const override { return UnwrappedWidth; }
	virtual int32 GetLineOfIndex(int32 Index) const override;
	virtual float GetCaretX(int32 Line, int32 Index) const override;
	virtual int32 GetIndexAt(int32 Line, float X) const override;
	virtual void GetSpans(int32 Line, int32 Begin, int32 End, TArray<FParagraphSpan>& OutSpans) const override;
	virtual int32 GetNextGrapheme(int32 Index) const override;
	virtual int32 GetPreviousGrapheme(int32 Index) const override;
	virtual int32 GetNextWord(int32 Index) const override;
	virtual int32 GetPreviousWord(int32 Index) const override;
	virtual void GetWordAt(int32 Index, int32& OutBegin, int32& OutEnd) const override;

	using FPieces = std::vector<FTextPiece>;

private:
	/** A stretch of the text between line breaks. */
	struct FTextLine
	{
		int32 Begin = 0;
		int32 End = 0;
		/** Of Pieces, which hold one more piece that marks the end; or the number of a complex line, below zero, as ~Number. */
		int32 FirstPiece = 0;
		int32 EndPiece = 0;
		bool IsComplex() const { return FirstPiece < 0; }
	};
	struct FLine
	{
		FParagraphLine Public;
		int32 TextLine = 0;
		/** First piece, or first stop of a complex line. */
		int32 First = 0;
	};

	/** A place within a plain line: a piece, and the units of its word that stand before. */
	struct FPlace
	{
		int32 Piece = 0;
		int32 Offset = 0;
	};

	void AddTextLine(int32 Begin, int32 End, FPieces& Scratch);
	void AddPieces(int32 Begin, int32 End, FPieces& Scratch);
	void AddLongWord(TextUnits::FView Word, int32 Begin, float& X, FPieces& Scratch);
	void WrapPlain(int32 TextLine, float Width, std::vector<FLine>& OutLines) const;
	/** Where a line that begins at Start has to end so that its ink stays left of Limit. Always further than Start. */
	FPlace FindLineEnd(const FTextLine& Line, FPlace Start, float Limit) const;
	void WrapComplex(int32 TextLine, float Width, std::vector<FLine>& OutLines) const;
	static void AddLine(std::vector<FLine>& OutLines, int32 TextLine, int32 Begin, int32 End, int32 First, float Width);

	int32 ClampLine(int32 Line) const;
	const FTextPiece& GetPiece(int32 Piece) const { return (*Pieces)[static_cast<size_t>(Piece)]; }
	const FComplexLine& GetComplex(const FTextLine& Line) const { return *ComplexLines[static_cast<size_t>(~Line.FirstPiece)]; }
	const FTextLine& GetTextLineOfIndex(int32 Index) const;
	/** The piece on a text line that holds an index. */
	int32 FindPiece(const FTextLine& Line, int32 Index) const;
	/** x of an index from the begin of its text line. */
	float GetPlainX(const FTextLine& Line, int32 Index) const;
	int32 GetPlainIndexAt(const FTextLine& Line, float X) const;
	int32 GetEndStop(const FLine& Line) const;
	TextUnits::EClass GetClassAt(int32 Index) const;
	TextUnits::FView GetView() const { return TextUnits::FView(Text); }

	std::shared_ptr<FShaperFont> Font;
	std::basic_string<TCHAR> Text;
	/** Shared with the runs of this paragraph's lines, which refer to it. */
	std::shared_ptr<const FPieces> Pieces;
	std::vector<std::unique_ptr<FComplexLine>> ComplexLines;
	std::vector<FTextLine> TextLines;
	std::vector<FLine> Lines;
	/** Made when first asked for: most lines of a long text are never painted. */
	mutable std::unordered_map<int32, FParagraphRun> Runs;
	FVector2f Size = FVector2f(0.0f, 0.0f);
	float UnwrappedWidth = 0.0f;
	float WrapWidth = 0.0f;
	bool bWrapped = false;
};
