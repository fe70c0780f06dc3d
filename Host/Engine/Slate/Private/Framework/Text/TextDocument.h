#pragma once

#include "CoreMinimal.h"
#include "Framework/Text/TextLayout.h"
#include "Templates/Function.h"

/** What ends a line. The last line of a text ends with nothing. */
enum class ETextLineEnd : uint8
{
	None,
	LineFeed,
	CarriageReturnLineFeed,
};

/** One line without its end. */
struct FTextLine
{
	FString Text;
	ETextLineEnd End = ETextLineEnd::None;
};

/** A piece of text cut into lines: at least one, and only the last ends with nothing. */
using FTextFragment = TArray<FTextLine>;

/**
 * A text kept as lines, so that an edit costs its own length and moves line records, never the whole text. Everything
 * is kept as it came, lone surrogates, nulls and lone carriage returns included. Pure; one thread.
 */
class FTextDocument
{
public:
	/** Tells that Removed lines from First on became Added lines. */
	using FOnLinesChanged = TFunction<void(int32 First, int32 Removed, int32 Added)>;

	FTextDocument();
	void SetOnLinesChanged(FOnLinesChanged InHandler) { OnLinesChanged = MoveTemp(InHandler); }

	void SetText(FStringView Text);
	/** The display text from now on, without another copy: exactly what the document holds. */
	void KeepDisplayText(const FText& Text);
	/** Exact comparison, without building the whole text. */
	bool Equals(FStringView Text) const;
	/** The whole text, built at the first call behind a change. */
	const FText& GetDisplayText() const;
	const FString& GetText() const { return GetDisplayText().ToString(); }
	/** UTF-16 units of the text, line ends included. */
	int64 GetLength() const { return Length; }
	bool IsEmpty() const { return Length == 0; }

	int32 GetLineCount() const { return Lines.Num(); }
	const FString& GetLine(int32 Line) const { return Lines[Line].Text; }
	int32 GetLineLength(int32 Line) const { return Lines[Line].Text.Len(); }
	ETextLineEnd GetLineEnd(int32 Line) const { return Lines[Line].End; }
	FTextLocation GetEnd() const;
	/** The nearest place that exists. */
	FTextLocation Clamp(const FTextLocation& Location) const;

	FTextFragment Copy(const FTextLocation& Begin, const FTextLocation& End) const;
	/**
	 * Replaces what lies between two existing places, Begin not behind End, and gives that out. Whole lines change hands and are not
	 * copied. Returns the place behind the new piece.
	 */
	FTextLocation Exchange(const FTextLocation& Begin, const FTextLocation& End, FTextFragment&& Piece, FTextFragment& OutRemoved);

	/** Cuts at "\n" and "\r\n". */
	static FTextFragment Parse(FStringView Text);
	/** The same; a text of one line is not copied. */
	static FTextFragment Take(FString&& Text);
	/** The place of the first unit that is one of two, or the length. */
	static int32 FindEither(FStringView Text, TCHAR First, TCHAR Second);
	static FString ToString(const FTextFragment& Piece);
	static int64 GetLength(const FTextFragment& Piece);

private:
	/** Gives out what lies between two places. Its lines stay behind with what is not part of it, and with nothing that is. */
	FTextFragment CutOut(const FTextLocation& Begin, const FTextLocation& End, FString& OutHead, FTextLine& OutTail);
	void NoteChange(int32 First, int32 Removed, int32 Added);

	TArray<FTextLine> Lines;
	int64 Length = 0;
	uint64 Revision = 0;
	mutable uint64 TextRevision = 0;
	mutable FText CachedText;
	FOnLinesChanged OnLinesChanged;
};
