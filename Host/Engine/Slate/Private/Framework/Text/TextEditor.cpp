#include "Framework/Text/TextEditor.h"

// Document, caret and history of edits; knows no layout and no widget.
//
// Every change is one replacement of a range (Apply), and a step of the history is such a replacement with the text that the
// document does not hold. So undo and redo are replacements too, which exchange that text for the one in the document, and no kind
// of edit needs an inverse of its own. Runs of typing, of backspaces and of deletes grow one step, until a pause, a move of the
// caret or another kind of edit seals it.

namespace
{
	/** A pause this long ends a run of typing, in seconds. */
	constexpr double TypingPause = 1.0;
	/** The history is cut at its old end beyond these, the newest step excepted. */
	constexpr int32 MaxUndoSteps = 2000;
	constexpr int64 MaxUndoUnits = 32 * 1024 * 1024;
}

FTextEditor::FTextEditor(const ITextBreaks& InBreaks)
	: Breaks(InBreaks)
{
}

FString FTextEditor::GetSelectedText() const
{
	return FTextDocument::ToString(Document.Copy(GetSelectionBegin(), GetSelectionEnd()));
}

void FTextEditor::MoveTo(const FTextLocation& Location, bool bSelect)
{
	Select(bSelect ? Anchor : Location, Location);
}

// Left and Right on a selection go to its edge, they do not step.
void FTextEditor::Move(ETextMove Kind, bool bSelect)
{
	if (!bSelect && HasSelection() && (Kind == ETextMove::Left || Kind == ETextMove::Right))
	{
		MoveTo(Kind == ETextMove::Left ? GetSelectionBegin() : GetSelectionEnd(), false);
		return;
	}
	MoveTo(Step(Caret, Kind), bSelect);
}

// A caret that was moved seals the open step: what is typed elsewhere is undone apart.
void FTextEditor::Select(const FTextLocation& InAnchor, const FTextLocation& InCaret)
{
	const FTextLocation NewCaret = Document.Clamp(InCaret);
	const FTextLocation NewAnchor = Document.Clamp(InAnchor);
	if (NewCaret != Caret || NewAnchor != Anchor)
	{
		SealStep();
	}
	Caret = NewCaret;
	Anchor = NewAnchor;
}

void FTextEditor::SelectAll()
{
	Select(FTextLocation(), Document.GetEnd());
}

void FTextEditor::ClearSelection()
{
	Select(Caret, Caret);
}

void FTextEditor::GetWordAt(const FTextLocation& Location, FTextLocation& OutBegin, FTextLocation& OutEnd) const
{
	const FTextLocation Place = Document.Clamp(Location);
	int32 Begin = 0;
	int32 End = 0;
	Breaks.GetWordAt(Document.GetLine(Place.GetLineIndex()), Place.GetOffset(), Begin, End);
	OutBegin = FTextLocation(Place.GetLineIndex(), Begin);
	OutEnd = FTextLocation(Place.GetLineIndex(), End);
}

void FTextEditor::GetLineAt(const FTextLocation& Location, FTextLocation& OutBegin, FTextLocation& OutEnd) const
{
	const int32 Line = Document.Clamp(Location).GetLineIndex();
	OutBegin = FTextLocation(Line, 0);
	OutEnd = Line + 1 < Document.GetLineCount() ? FTextLocation(Line + 1, 0) : Document.GetEnd();
}

// The caret stays at its place as far as the new text has one, at the end of a cluster and not inside.
bool FTextEditor::SetText(FStringView Text, bool bUndoable)
{
	if (Document.Equals(Text))
	{
		return false;
	}
	const FTextLocation OldCaret = Caret;
	if (bUndoable)
	{
		SealStep();
		Apply(FTextLocation(), Document.GetEnd(), FTextDocument::Parse(Text), EStepKind::Single, LastChange);
	}
	else
	{
		Document.SetText(Text);
		Steps.Reset();
		UndoCount = 0;
		HistoryLength = 0;
		SealStep();
	}
	Caret = Document.Clamp(OldCaret);
	// The old place may now lie inside a cluster.
	const FString& Line = Document.GetLine(Caret.GetLineIndex());
	if (Caret.GetOffset() > 0 && Caret.GetOffset() < Line.Len())
	{
		const int32 Next = Breaks.GetNextGrapheme(Line, Breaks.GetPreviousGrapheme(Line, Caret.GetOffset()));
		Caret = FTextLocation(Caret.GetLineIndex(), Next);
	}
	Anchor = Caret;
	return true;
}

// A restored draft may be a hundred megabytes; whoever asks for the text shares the one that was set.
bool FTextEditor::SetText(const FText& Text, bool bUndoable)
{
	const bool bChanged = SetText(FStringView(Text.ToString()), bUndoable);
	if (bChanged)
	{
		Document.KeepDisplayText(Text);
	}
	return bChanged;
}

// What the selection gives up counts, but is measured only when it matters: it may be megabytes.
bool FTextEditor::HasRoomFor(int32 Units) const
{
	const int64 Whole = Document.GetLength() + Units;
	return Whole <= MaxLength || Whole - FTextDocument::GetLength(Document.Copy(GetSelectionBegin(), GetSelectionEnd())) <= MaxLength;
}

// Only typing within one line goes on with the open step; a typed line break and a paste stand for themselves.
bool FTextEditor::Take(FString&& Text, ETextInsert Kind, double Now)
{
	if (Text.IsEmpty() || !HasRoomFor(Text.Len()))
	{
		return false;
	}
	NormalizeBreaks(Text, bAllowMultiLine);
	FTextFragment Piece = FTextDocument::Take(MoveTemp(Text));
	const bool bRun = Kind == ETextInsert::Typed && Piece.Num() == 1;
	Apply(GetSelectionBegin(), GetSelectionEnd(), MoveTemp(Piece), bRun ? EStepKind::Typing : EStepKind::Single, Now);
	return true;
}

bool FTextEditor::DeleteBackward(bool bWord, double Now)
{
	return DeleteStep(bWord ? ETextMove::WordLeft : ETextMove::Left, EStepKind::Backward, Now);
}

bool FTextEditor::DeleteForward(bool bWord, double Now)
{
	return DeleteStep(bWord ? ETextMove::WordRight : ETextMove::Right, EStepKind::Forward, Now);
}

// Joining two lines is a step of its own, as making them was.
bool FTextEditor::DeleteStep(ETextMove Kind, EStepKind StepKind, double Now)
{
	if (HasSelection())
	{
		return DeleteSelection();
	}
	const FTextLocation Other = Step(Caret, Kind);
	if (Other == Caret)
	{
		return false;
	}
	const FTextLocation Begin = Other < Caret ? Other : Caret;
	const FTextLocation End = Other < Caret ? Caret : Other;
	const bool bOneLine = Begin.GetLineIndex() == End.GetLineIndex();
	Apply(Begin, End, FTextDocument::Parse(FStringView()), bOneLine ? StepKind : EStepKind::Single, Now);
	return true;
}

bool FTextEditor::DeleteSelection()
{
	if (!HasSelection())
	{
		return false;
	}
	SealStep();
	Apply(GetSelectionBegin(), GetSelectionEnd(), FTextDocument::Parse(FStringView()), EStepKind::Single, LastChange);
	return true;
}

// The caret goes back to where it was before the step, with its selection.
bool FTextEditor::Undo()
{
	if (!CanUndo())
	{
		return false;
	}
	FStep& Entry = Steps[--UndoCount];
	FTextFragment Inserted;
	Document.Exchange(Entry.Begin, Entry.InsertedEnd, MoveTemp(Entry.Other), Inserted);
	Entry.Other = MoveTemp(Inserted);
	Caret = Entry.CaretBefore;
	Anchor = Entry.AnchorBefore;
	SealStep();
	return true;
}

bool FTextEditor::Redo()
{
	if (!CanRedo())
	{
		return false;
	}
	FStep& Entry = Steps[UndoCount++];
	FTextFragment Removed;
	Caret = Document.Exchange(Entry.Begin, Entry.RemovedEnd, MoveTemp(Entry.Other), Removed);
	Entry.Other = MoveTemp(Removed);
	Anchor = Caret;
	SealStep();
	return true;
}

// All kinds of breaks become line feeds; in a box of one line they become blanks, so that words do not run together.
void FTextEditor::NormalizeBreaks(FString& InOutText, bool bAllowMultiLine)
{
	const TCHAR Break = bAllowMultiLine ? TEXT('\n') : TEXT(' ');
	TCHAR* const Units = InOutText.begin();
	const int32 Length = InOutText.Len();
	int32 End = FTextDocument::FindEither(InOutText, TEXT('\r'), bAllowMultiLine ? TEXT('\r') : TEXT('\n'));
	for (int32 Index = End; Index < Length; ++Index)
	{
		const TCHAR Unit = Units[Index];
		const bool bReturn = Unit == TEXT('\r');
		Index += bReturn && Index + 1 < Length && Units[Index + 1] == TEXT('\n') ? 1 : 0;
		Units[End++] = bReturn || Unit == TEXT('\n') ? Break : Unit;
	}
	InOutText.LeftInline(End);
}

FTextLocation FTextEditor::Step(const FTextLocation& From, ETextMove Kind) const
{
	const int32 Line = From.GetLineIndex();
	const FString& Text = Document.GetLine(Line);
	switch (Kind)
	{
	case ETextMove::Left:
	case ETextMove::WordLeft:
		if (From.GetOffset() == 0)
		{
			return Line > 0 ? FTextLocation(Line - 1, Document.GetLineLength(Line - 1)) : From;
		}
		return FTextLocation(Line,
			Kind == ETextMove::Left ? Breaks.GetPreviousGrapheme(Text, From.GetOffset()) : Breaks.GetPreviousWord(Text, From.GetOffset()));
	case ETextMove::Right:
	case ETextMove::WordRight:
		if (From.GetOffset() >= Text.Len())
		{
			return Line + 1 < Document.GetLineCount() ? FTextLocation(Line + 1, 0) : From;
		}
		return FTextLocation(
			Line, Kind == ETextMove::Right ? Breaks.GetNextGrapheme(Text, From.GetOffset()) : Breaks.GetNextWord(Text, From.GetOffset()));
	case ETextMove::LineBegin:
		return FTextLocation(Line, 0);
	case ETextMove::LineEnd:
		return FTextLocation(Line, Text.Len());
	case ETextMove::DocumentBegin:
		return FTextLocation();
	case ETextMove::DocumentEnd:
		return Document.GetEnd();
	}
	return From;
}

void FTextEditor::Apply(const FTextLocation& Begin, const FTextLocation& End, FTextFragment&& Inserted, EStepKind Kind, double Now)
{
	FStep Next;
	Next.Kind = Kind;
	Next.Begin = Begin;
	Next.RemovedEnd = End;
	Next.AnchorBefore = Anchor;
	Next.CaretBefore = Caret;
	const int64 InsertedLength = FTextDocument::GetLength(Inserted);
	Next.InsertedEnd = Document.Exchange(Begin, End, MoveTemp(Inserted), Next.Other);
	Next.Length = InsertedLength + FTextDocument::GetLength(Next.Other);
	Caret = Next.InsertedEnd;
	Anchor = Caret;

	while (Steps.Num() > UndoCount)
	{
		HistoryLength -= Steps.Last().Length;
		Steps.Pop();
	}
	HistoryLength += Next.Length;
	const bool bInTime = Now - LastChange <= TypingPause && Now >= LastChange;
	if (!(bStepOpen && bInTime && TryMerge(Next)))
	{
		Steps.Add(MoveTemp(Next));
		UndoCount = Steps.Num();
	}
	bStepOpen = Kind != EStepKind::Single;
	LastChange = Now;
	ForgetOldSteps();
}

bool FTextEditor::TryMerge(const FStep& Next)
{
	if (Steps.IsEmpty() || Steps.Last().Kind != Next.Kind)
	{
		return false;
	}
	FStep& Last = Steps.Last();
	switch (Next.Kind)
	{
	case EStepKind::Typing:
		if (Next.Begin != Last.InsertedEnd || Next.RemovedEnd != Next.Begin)
		{
			return false;
		}
		Last.InsertedEnd = Next.InsertedEnd;
		Last.Length += Next.Length;
		return true;
	case EStepKind::Backward:
		if (Next.RemovedEnd != Last.Begin)
		{
			return false;
		}
		Last.Other[0].Text.InsertAt(0, Next.Other[0].Text);
		Last.Begin = Next.Begin;
		Last.InsertedEnd = Next.Begin;
		Last.Length += Next.Length;
		return true;
	case EStepKind::Forward:
		if (Next.Begin != Last.Begin)
		{
			return false;
		}
		Last.Other[0].Text += Next.Other[0].Text;
		Last.RemovedEnd = FTextLocation(Last.RemovedEnd, Next.Other[0].Text.Len());
		Last.Length += Next.Length;
		return true;
	case EStepKind::Single:
		break;
	}
	return false;
}

void FTextEditor::ForgetOldSteps()
{
	int32 Forgotten = 0;
	while (Steps.Num() - Forgotten > 1 && (Steps.Num() - Forgotten > MaxUndoSteps || HistoryLength > MaxUndoUnits))
	{
		HistoryLength -= Steps[Forgotten].Length;
		++Forgotten;
	}
	if (Forgotten > 0)
	{
		Steps.RemoveAt(0, Forgotten);
		UndoCount = Steps.Num();
	}
}
