#pragma once

#include "TextBreaks.h"
#include "TextDocument.h"

/** Moves of the caret that need nothing but the text. */
enum class ETextMove : uint8
{
	Left,
	Right,
	WordLeft,
	WordRight,
	LineBegin,
	LineEnd,
	DocumentBegin,
	DocumentEnd,
};

/** How text came in, which decides what one undo takes back. */
enum class ETextInsert : uint8
{
	/** Runs of typing are one step, see FTextEditor. */
	Typed,
	/** Always a step of its own. */
	Pasted,
};

/**
 * The editing core behind every editable widget: a text, a caret, a selection and a history. Knows nothing of widgets,
 * fonts or clocks; times are passed in.
 *
 * The selection lies between anchor and caret. One undo step is a run of typing, of Backspace or of Delete without a
 * caret move, a line break or a pause of a second in it, or one paste, cut, drop or replacement.
 */
class FTextEditor
{
public:
	/** In units; 128 MB. Copies and histories of a text must stay far below what a string can hold. */
	static constexpr int64 MaxLength = 64 * 1024 * 1024;

	/** @param InBreaks  Outlives the editor. */
	explicit FTextEditor(const ITextBreaks& InBreaks);

	FTextDocument& GetDocument() { return Document; }
	const FTextDocument& GetDocument() const { return Document; }

	/** While false, line breaks that come in become blanks. A text set whole is kept as it is. */
	void SetAllowMultiLine(bool bInAllow) { bAllowMultiLine = bInAllow; }

	// Caret and selection.
	const FTextLocation& GetCaret() const { return Caret; }
	const FTextLocation& GetAnchor() const { return Anchor; }
	bool HasSelection() const { return Caret != Anchor; }
	const FTextLocation& GetSelectionBegin() const { return Caret < Anchor ? Caret : Anchor; }
	const FTextLocation& GetSelectionEnd() const { return Caret < Anchor ? Anchor : Caret; }
	FString GetSelectedText() const;
	void MoveTo(const FTextLocation& Location, bool bSelect);
	/** Without bSelect a selection collapses: Left and Right stop at its edge, the others start from the caret. */
	void Move(ETextMove Kind, bool bSelect);
	void Select(const FTextLocation& InAnchor, const FTextLocation& InCaret);
	void SelectAll();
	void ClearSelection();
	/** The word, run of blanks or mark around a place; empty on an empty line. */
	void GetWordAt(const FTextLocation& Location, FTextLocation& OutBegin, FTextLocation& OutEnd) const;
	/** The line with its end, so that deleting it leaves no empty line. */
	void GetLineAt(const FTextLocation& Location, FTextLocation& OutBegin, FTextLocation& OutEnd) const;

	// Changes. All answer whether the text changed.
	/**
	 * Replaces the whole text; nothing happens when it is exactly the same.
	 * @param bUndoable  False begins a new history.
	 */
	bool SetText(FStringView Text, bool bUndoable);
	/** The same with a text that is given out again as it came. */
	bool SetText(const FText& Text, bool bUndoable);
	/** Whether Insert takes a text of this length: with it the whole is not longer than MaxLength. */
	bool HasRoomFor(int32 Units) const;
	/** Replaces the selection. Line breaks of any kind come in as "\n". Nothing happens where there is no room for the text. */
	bool Insert(FStringView Text, ETextInsert Kind, double Now) { return Take(FString(Text), Kind, Now); }
	/** The same with a text that the caller gives up; one of many megabytes is then not copied. */
	bool Take(FString&& Text, ETextInsert Kind, double Now);
	/** Deletes the selection, or the cluster or word before the caret. */
	bool DeleteBackward(bool bWord, double Now);
	/** Deletes the selection, or the cluster or word behind the caret. */
	bool DeleteForward(bool bWord, double Now);
	bool DeleteSelection();
	bool Undo();
	bool Redo();
	bool CanUndo() const { return UndoCount > 0; }
	bool CanRedo() const { return UndoCount < Steps.Num(); }
	/** What happens next is a step of its own. */
	void SealStep() { bStepOpen = false; }

	/** Line breaks of any kind become "\n"; or a blank where there is only one line. */
	static void NormalizeBreaks(FString& InOutText, bool bAllowMultiLine);

private:
	enum class EStepKind : uint8
	{
		Typing,
		Backward,
		Forward,
		Single,
	};
	struct FStep
	{
		EStepKind Kind = EStepKind::Single;
		FTextLocation Begin;
		FTextLocation RemovedEnd;
		FTextLocation InsertedEnd;
		/** What the document does not hold: what was removed, and after an undo what was inserted. */
		FTextFragment Other;
		/** Of both texts, in units. */
		int64 Length = 0;
		FTextLocation AnchorBefore;
		FTextLocation CaretBefore;
	};

	FTextLocation Step(const FTextLocation& From, ETextMove Kind) const;
	/** One change of the text with its entry in the history. Leaves the caret behind the new piece. */
	void Apply(const FTextLocation& Begin, const FTextLocation& End, FTextFragment&& Inserted, EStepKind Kind, double Now);
	bool TryMerge(const FStep& Next);
	void ForgetOldSteps();
	bool DeleteStep(ETextMove Kind, EStepKind StepKind, double Now);

	const ITextBreaks& Breaks;
	FTextDocument Document;
	FTextLocation Caret;
	FTextLocation Anchor;
	bool bAllowMultiLine = true;

	TArray<FStep> Steps;
	int32 UndoCount = 0;
	int64 HistoryLength = 0;
	double LastChange = 0.0;
	bool bStepOpen = false;
};
