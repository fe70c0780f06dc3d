#include "Framework/Text/TextDocument.h"

#include <iterator>
#include <string_view>

// Lines as separate texts, since a key changes one of them. The whole text is put together when somebody asks for it and
// kept until the next change, so that those who look at it in each frame share one.

namespace
{
	int32 GetTextLineEndLength(ETextLineEnd End)
	{
		switch (End)
		{
		case ETextLineEnd::LineFeed:
			return 1;
		case ETextLineEnd::CarriageReturnLineFeed:
			return 2;
		case ETextLineEnd::None:
			break;
		}
		return 0;
	}

	FStringView GetTextLineEndText(ETextLineEnd End)
	{
		return FStringView(TEXT("\r\n")).Right(GetTextLineEndLength(End));
	}
}

FTextDocument::FTextDocument()
{
	Lines.AddDefaulted();
}

void FTextDocument::SetText(FStringView Text)
{
	const int32 OldCount = Lines.Num();
	Lines = Parse(Text);
	Length = Text.Len();
	NoteChange(0, OldCount, Lines.Num());
}

// By length first: nearly all texts that differ differ in that.
bool FTextDocument::Equals(FStringView Text) const
{
	if (Text.Len() != Length)
	{
		return false;
	}
	// Compared line by line: joining the lines first would copy the whole text with each look.
	for (const FTextLine& Line : Lines)
	{
		const FStringView End = GetTextLineEndText(Line.End);
		if (!Text.Left(Line.Text.Len()).Equals(Line.Text))
		{
			return false;
		}
		Text.RightChopInline(Line.Text.Len());
		if (!Text.Left(End.Len()).Equals(End))
		{
			return false;
		}
		Text.RightChopInline(End.Len());
	}
	return true;
}

const FText& FTextDocument::GetDisplayText() const
{
	// Made when somebody asks and kept until the next change: it is asked for with every frame that shows a caret.
	if (TextRevision != Revision)
	{
		CachedText = FText::FromString(ToString(Lines));
		TextRevision = Revision;
	}
	return CachedText;
}

void FTextDocument::KeepDisplayText(const FText& Text)
{
	CachedText = Text;
	TextRevision = Revision;
}

FTextLocation FTextDocument::GetEnd() const
{
	return FTextLocation(Lines.Num() - 1, Lines.Last().Text.Len());
}

FTextLocation FTextDocument::Clamp(const FTextLocation& Location) const
{
	if (Location.GetLineIndex() < 0)
	{
		return FTextLocation();
	}
	if (Location.GetLineIndex() >= Lines.Num())
	{
		return GetEnd();
	}
	return FTextLocation(Location.GetLineIndex(), FMath::Clamp(Location.GetOffset(), 0, GetLineLength(Location.GetLineIndex())));
}

FTextFragment FTextDocument::Copy(const FTextLocation& Begin, const FTextLocation& End) const
{
	FTextFragment Piece;
	Piece.Reserve(End.GetLineIndex() - Begin.GetLineIndex() + 1);
	for (int32 Line = Begin.GetLineIndex(); Line <= End.GetLineIndex(); ++Line)
	{
		const bool bLast = Line == End.GetLineIndex();
		const int32 From = Line == Begin.GetLineIndex() ? Begin.GetOffset() : 0;
		const int32 To = bLast ? End.GetOffset() : GetLineLength(Line);
		Piece.Add({ FString(FStringView(Lines[Line].Text).Mid(From, To - From)), bLast ? ETextLineEnd::None : Lines[Line].End });
	}
	return Piece;
}

// A text may be one line of a hundred megabytes: what is cut off at a line's begin or end is all that is copied.
FTextFragment FTextDocument::CutOut(const FTextLocation& Begin, const FTextLocation& End, FString& OutHead, FTextLine& OutTail)
{
	FTextLine& Last = Lines[End.GetLineIndex()];
	OutTail = { FString(FStringView(Last.Text).RightChop(End.GetOffset())), Last.End };
	FTextFragment Removed;
	Removed.Reserve(End.GetLineIndex() - Begin.GetLineIndex() + 1);
	for (int32 Line = Begin.GetLineIndex(); Line <= End.GetLineIndex(); ++Line)
	{
		Removed.Add(MoveTemp(Lines[Line]));
	}
	Removed.Last().End = ETextLineEnd::None;
	Removed.Last().Text.LeftInline(End.GetOffset());
	FString& First = Removed[0].Text;
	OutHead = FStringView(First).Left(Begin.GetOffset());
	First.RemoveAt(0, Begin.GetOffset());
	return Removed;
}

// 1. Within one line, as with every key: the text of that line alone. 2. Otherwise lines are made or taken away once, and the piece
// is joined to what stands before and after the place. 3. The new length.
FTextLocation FTextDocument::Exchange(
	const FTextLocation& Begin, const FTextLocation& End, FTextFragment&& Piece, FTextFragment& OutRemoved)
{
	check(Piece.Num() > 0 && !(End < Begin));
	const int32 First = Begin.GetLineIndex();
	const int32 RemovedLines = End.GetLineIndex() - First + 1;
	const int32 AddedLines = Piece.Num();
	const int64 AddedLength = GetLength(Piece);
	const bool bWholeLines = Begin.GetOffset() == 0 && End.GetOffset() == GetLineLength(End.GetLineIndex());

	FTextLocation Behind;
	// Most changes are a letter in a line.
	if (AddedLines == 1 && RemovedLines == 1 && !bWholeLines)
	{
		OutRemoved = Copy(Begin, End);
		FString& Text = Lines[First].Text;
		Text.RemoveAt(Begin.GetOffset(), End.GetOffset() - Begin.GetOffset());
		if (Begin.GetOffset() == Text.Len())
		{
			Text += Piece[0].Text;
		}
		else
		{
			Text.InsertAt(Begin.GetOffset(), Piece[0].Text);
		}
		Behind = FTextLocation(First, Begin.GetOffset() + Piece[0].Text.Len());
	}
	else
	{
		// What stands before and after the gap in its two lines goes on with the first and the last line of the piece.
		FString Head;
		FTextLine Tail;
		OutRemoved = CutOut(Begin, End, Head, Tail);
		// Records are moved once: the array grows or shrinks to its new size, then the piece is written over the gap.
		if (AddedLines > RemovedLines)
		{
			Lines.InsertDefaulted(First + RemovedLines, AddedLines - RemovedLines);
		}
		else if (AddedLines < RemovedLines)
		{
			Lines.RemoveAt(First + AddedLines, RemovedLines - AddedLines);
		}
		for (int32 Index = 0; Index < AddedLines; ++Index)
		{
			Lines[First + Index] = MoveTemp(Piece[Index]);
		}
		FString& FirstText = Lines[First].Text;
		FirstText = Head.IsEmpty() ? MoveTemp(FirstText) : MoveTemp(Head) + FirstText;
		FTextLine& LastLine = Lines[First + AddedLines - 1];
		Behind = FTextLocation(First + AddedLines - 1, LastLine.Text.Len());
		LastLine.Text += Tail.Text;
		LastLine.End = Tail.End;
	}
	Length += AddedLength - GetLength(OutRemoved);
	NoteChange(First, RemovedLines, AddedLines);
	return Behind;
}

// By a search for line feeds, which is several times as fast as a look at each unit.
FTextFragment FTextDocument::Parse(FStringView Text)
{
	FTextFragment Piece;
	const std::u16string_view All(Text.GetData() ? Text.GetData() : TEXT(""), static_cast<std::size_t>(Text.Len()));
	std::size_t Begin = 0;
	for (;;)
	{
		const std::size_t LineFeed = All.find(TEXT('\n'), Begin);
		FTextLine& Line = Piece.AddDefaulted_GetRef();
		if (LineFeed == std::u16string_view::npos)
		{
			Line.Text = FStringView(All.data() + Begin, static_cast<int32>(All.size() - Begin));
			return Piece;
		}
		// A carriage return that stands alone is a character of its line.
		const bool bReturn = LineFeed > Begin && All[LineFeed - 1] == TEXT('\r');
		Line.Text = FStringView(All.data() + Begin, static_cast<int32>(LineFeed - Begin) - (bReturn ? 1 : 0));
		Line.End = bReturn ? ETextLineEnd::CarriageReturnLineFeed : ETextLineEnd::LineFeed;
		Begin = LineFeed + 1;
	}
}

// In blocks of a fixed size, so that the compiler has several units looked at with one instruction.
int32 FTextDocument::FindEither(FStringView Text, TCHAR First, TCHAR Second)
{
	constexpr int32 BlockSize = 1024;
	const TCHAR* const Units = Text.GetData();
	const int32 Length = Text.Len();
	int32 Begin = 0;
	for (uint16 Found = 0; Begin + BlockSize <= Length; Begin += BlockSize)
	{
		for (int32 Index = 0; Index < BlockSize; ++Index)
		{
			const TCHAR Unit = Units[Begin + Index];
			Found = static_cast<uint16>(Found | static_cast<uint16>(Unit == First) | static_cast<uint16>(Unit == Second));
		}
		if (Found != 0)
		{
			break;
		}
	}
	while (Begin < Length && Units[Begin] != First && Units[Begin] != Second)
	{
		++Begin;
	}
	return Begin;
}

FTextFragment FTextDocument::Take(FString&& Text)
{
	if (FindEither(Text, TEXT('\n'), TEXT('\n')) < Text.Len())
	{
		return Parse(Text);
	}
	FTextFragment Piece;
	Piece.Add({ MoveTemp(Text), ETextLineEnd::None });
	return Piece;
}

FString FTextDocument::ToString(const FTextFragment& Piece)
{
	FString Text;
	Text.Reserve(static_cast<int32>(GetLength(Piece)));
	for (const FTextLine& Line : Piece)
	{
		Text += Line.Text;
		Text += GetTextLineEndText(Line.End);
	}
	return Text;
}

int64 FTextDocument::GetLength(const FTextFragment& Piece)
{
	int64 Sum = 0;
	for (const FTextLine& Line : Piece)
	{
		Sum += Line.Text.Len() + GetTextLineEndLength(Line.End);
	}
	return Sum;
}

void FTextDocument::NoteChange(int32 First, int32 Removed, int32 Added)
{
	++Revision;
	if (OnLinesChanged)
	{
		OnLinesChanged(First, Removed, Added);
	}
}
