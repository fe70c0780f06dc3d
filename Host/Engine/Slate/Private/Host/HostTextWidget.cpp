#include "Host/HostTextWidget.h"

#include "Framework/Application/SlateApplication.h"
#include "Framework/Notifications/NotificationManager.h"
#include "HAL/PlatformTime.h"
#include "Host/HostNotifications.h"
#include "Host/HostServices.h"
#include "Host/HostTextState.h"
#include "Styling/AppStyle.h"

// What the text widgets share: setting up, the bound text, commands and focus. Document, history and view are classes of
// their own (FTextEditor, FTextView); keys and mouse, and painting, have their own sources.
//
// Most of them are words of code in a sentence, which nobody ever clicks. Such a line rests: it keeps its text and knows its
// size, and becomes an editor when it is first painted, or when somebody does something with it (GetState).
//
// The text that the owner sees and the one that the user edits are not the same thing while the user edits: a bound text
// is pulled only when it changes by itself, so that an owner that takes each change over does not get its own echo as a
// new text.

namespace
{
	constexpr float TooLongSeconds = 8.0f;

	bool bJoinsLinesWithCarriageReturns = false;

	/** Text that neither wraps nor has a box, with nobody to call: all that can differ between two of them are fixed values. */
	bool IsPlainSetup(const FHostTextSetup& Setup)
	{
		const bool bBound = Setup.HintText.IsBound() || Setup.Font.IsBound() || Setup.ForegroundColor.IsBound() ||
			Setup.BackgroundColor.IsBound() || Setup.Padding.IsBound() || Setup.IsReadOnly.IsBound() || Setup.AllowMultiLine.IsBound() ||
			Setup.AutoWrapText.IsBound() || Setup.WrapTextAt.IsBound() || Setup.MinDesiredWidth.IsBound() ||
			Setup.SelectAllTextWhenFocused.IsBound() || Setup.ClearKeyboardFocusOnCommit.IsBound() || Setup.RevertTextOnEscape.IsBound() ||
			Setup.AllowContextMenu.IsBound() || Setup.ClearTextSelectionOnFocusLoss.IsBound();
		const bool bCalls = Setup.OnKeyDownHandler.IsBound() || Setup.OnKeyCharHandler.IsBound() || Setup.OnTextChanged.IsBound() ||
			Setup.OnTextCommitted.IsBound() || Setup.OnCursorMoved.IsBound();
		return !bBound && !bCalls && !Setup.BoxStyle && !Setup.AllowMultiLine.Get() && !Setup.AutoWrapText.Get() &&
			Setup.WrapTextAt.Get() <= 0.0f;
	}

	/** One line that is laid out whole: neither empty, which would show a hint, nor cut into pieces. */
	bool IsPlainLine(const TAttribute<FText>& Text)
	{
		if (Text.IsBound())
		{
			return false;
		}
		const FString& Line = Text.Get().ToString();
		int32 Found = INDEX_NONE;
		return !Line.IsEmpty() && Line.Len() <= FTextViewLines::MaxSegment && !Line.FindChar(TEXT('\n'), Found);
	}

	bool AreSamePlainSetups(const FHostTextSetup& A, const FHostTextSetup& B)
	{
		return A.TextStyle == B.TextStyle && A.NewLineModifier == B.NewLineModifier && A.bAlwaysShowScrollbars == B.bAlwaysShowScrollbars &&
			!A.HintText.IsSet() && !B.HintText.IsSet() && A.Font.IdenticalTo(B.Font) && A.ForegroundColor.IdenticalTo(B.ForegroundColor) &&
			A.BackgroundColor.IdenticalTo(B.BackgroundColor) && A.Padding.IdenticalTo(B.Padding) &&
			A.IsReadOnly.IdenticalTo(B.IsReadOnly) && A.AllowMultiLine.IdenticalTo(B.AllowMultiLine) &&
			A.AutoWrapText.IdenticalTo(B.AutoWrapText) && A.WrapTextAt.IdenticalTo(B.WrapTextAt) &&
			A.MinDesiredWidth.IdenticalTo(B.MinDesiredWidth) && A.SelectAllTextWhenFocused.IdenticalTo(B.SelectAllTextWhenFocused) &&
			A.ClearKeyboardFocusOnCommit.IdenticalTo(B.ClearKeyboardFocusOnCommit) &&
			A.RevertTextOnEscape.IdenticalTo(B.RevertTextOnEscape) && A.AllowContextMenu.IdenticalTo(B.AllowContextMenu) &&
			A.ClearTextSelectionOnFocusLoss.IdenticalTo(B.ClearTextSelectionOnFocusLoss);
	}

	/** The last set-up again when this one is the same: the words of code in an answer are many and alike. */
	TSharedPtr<FHostTextSetup> ShareSetup(FHostTextSetup&& Setup)
	{
		static TWeakPtr<FHostTextSetup> Last;
		TSharedPtr<FHostTextSetup> Shared = Last.Pin();
		if (!Shared || !AreSamePlainSetups(*Shared, Setup))
		{
			Shared = MakeShared<FHostTextSetup>(MoveTemp(Setup));
			Last = Shared;
		}
		return Shared;
	}
}

// A text has a largest length, because positions in it are 32 bits. A refusal is reported at once: what was pasted is still
// on the clipboard then.
bool FHostTextState::HasRoomFor(FStringView Text) const
{
	if (Editor.HasRoomFor(Text.Len()))
	{
		return true;
	}
	FNotificationInfo Info(FText::Format(
		NSLOCTEXT("HostText", "TooLong",
			"A text can be {0} million characters long at most. With what was to be inserted it would be longer, so nothing was inserted."),
		static_cast<int32>(FTextEditor::MaxLength / 1000000)));
	Info.ExpireDuration = TooLongSeconds;
	// A refusal that comes again while it is told needs no second toast.
	const bool bShown = FHostNotifications::GetVisible().ContainsByPredicate(
		[&Info](const FHostToast& Toast) { return Toast.Text.ToString().Equals(Info.Text.Get().ToString()); });
	const TSharedPtr<SNotificationItem> Toast = bShown ? nullptr : FSlateNotificationManager::Get().AddNotification(Info);
	if (Toast)
	{
		Toast->SetCompletionState(SNotificationItem::CS_Fail);
	}
	return false;
}

void SHostTextWidget::SetJoinsLinesWithCarriageReturns(bool bJoins)
{
	bJoinsLinesWithCarriageReturns = bJoins;
}

SHostTextWidget::SHostTextWidget() = default;

SHostTextWidget::~SHostTextWidget() = default;

// Setting up is no edit: nothing is reported and nothing can be undone.
void SHostTextWidget::SetUp(FHostTextSetup&& InSetup)
{
	TextAttribute = MoveTemp(InSetup.Text);
	InSetup.Text = TAttribute<FText>();
	if (!InSetup.TextStyle)
	{
		InSetup.TextStyle = InSetup.BoxStyle ? &InSetup.BoxStyle->TextStyle
											 : &FAppStyle::Get().GetWidgetStyle<FEditableTextStyle>(TEXT("NormalEditableText"));
	}
	for (const bool bBound : { TextAttribute.IsBound(), InSetup.HintText.IsBound(), InSetup.Font.IsBound(), InSetup.Padding.IsBound(),
			 InSetup.AutoWrapText.IsBound(), InSetup.WrapTextAt.IsBound(), InSetup.MinDesiredWidth.IsBound() })
	{
		if (bBound)
		{
			NoteSizeBinding(true);
		}
	}
	// 1. One line that is only shown rests until somebody does something with it.
	if (IsPlainSetup(InSetup) && IsPlainLine(TextAttribute))
	{
		bSharesSetup = true;
		Setup = ShareSetup(MoveTemp(InSetup));
		return;
	}
	// 2. Anything else is an editor from the start.
	Setup = MakeShared<FHostTextSetup>(MoveTemp(InSetup));
	WakeUp();
	if (TextAttribute.IsBound())
	{
		State->LastBoundText = TextAttribute.Get();
		State->bHasBoundText = true;
	}
}

// As it would be now, had the text been an editor from the start.
void SHostTextWidget::WakeUp() const
{
	State = MakeUnique<FHostTextState>();
	State->Editor.SetText(TextAttribute.Get(), false);
	State->NotifiedCaret = State->Editor.GetCaret();
	if (RestingParagraph)
	{
		State->View.SetFont(GetFont(), RestingScale);
		State->View.MeasureIfSmall();
		State->DesiredSize = MeasureText(RestingScale);
		RestingParagraph.Reset();
	}
}

FHostTextState& SHostTextWidget::GetState() const
{
	if (!State)
	{
		WakeUp();
	}
	return *State;
}

FHostTextSetup& SHostTextWidget::ChangeSetup()
{
	if (bSharesSetup)
	{
		bSharesSetup = false;
		Setup = MakeShared<FHostTextSetup>(*Setup);
	}
	return *Setup;
}

void SHostTextWidget::SetOnKeyDownHandler(FOnKeyDown InHandler)
{
	ChangeSetup().OnKeyDownHandler = MoveTemp(InHandler);
}

void SHostTextWidget::SetOnTextChanged(FOnTextChanged InHandler)
{
	ChangeSetup().OnTextChanged = MoveTemp(InHandler);
}

FTextEditor& SHostTextWidget::GetEditor() const
{
	return GetState().Editor;
}

FTextView& SHostTextWidget::GetView() const
{
	return GetState().View;
}

double SHostTextWidget::GetNow() const
{
	return FPlatformTime::Seconds();
}

FMargin SHostTextWidget::GetTextPadding() const
{
	return Setup->Padding.Get(Setup->BoxStyle ? Setup->BoxStyle->Padding : FMargin(0.0f));
}

// The editor joins lines with carriage returns on one platform; tests switch that on to see that the module is ready for
// it.
FText SHostTextWidget::GetText() const
{
	if (IsResting())
	{
		return TextAttribute.Get();
	}
	const FText& Text = GetEditor().GetDocument().GetDisplayText();
	if (bJoinsLinesWithCarriageReturns && GetEditor().GetDocument().GetLineCount() > 1)
	{
		return FText::FromString(Text.ToString().Replace(TEXT("\n"), TEXT("\r\n")));
	}
	return Text;
}

// A text that is set while the user types in the box becomes a step that can be undone; otherwise the history begins
// anew.
void SHostTextWidget::SetText(const TAttribute<FText>& InText)
{
	GetState();
	AssignSizeAttribute(TextAttribute, InText);
	if (TextAttribute.IsBound())
	{
		GetState().bHasBoundText = false;
		PullBoundText();
		return;
	}
	EndPreedit();
	const bool bEditing = HasKeyboardFocus() && CanEdit();
	if (GetEditor().SetText(TextAttribute.Get(), bEditing))
	{
		FinishEdit(true);
	}
}

// Compared with what the binding gave before, not with what stands in the box: the user's own text is not undone by a
// binding that has not moved.
void SHostTextWidget::PullBoundText()
{
	if (!TextAttribute.IsBound())
	{
		return;
	}
	const FText Bound = TextAttribute.Get();
	if (GetState().bHasBoundText && Bound.ToString().Equals(GetState().LastBoundText.ToString()))
	{
		return;
	}
	GetState().LastBoundText = Bound;
	GetState().bHasBoundText = true;
	if (!GetEditor().GetDocument().Equals(Bound.ToString()))
	{
		EndPreedit();
		GetEditor().SetText(Bound, false);
		GetState().bScrollToCaret = true;
		GetState().NotifiedCaret = GetEditor().GetCaret();
		Invalidate(EInvalidateWidgetReason::Layout);
	}
}

void SHostTextWidget::SetFont(const TAttribute<FSlateFontInfo>& InFont)
{
	GetState();
	AssignSizeAttribute(ChangeSetup().Font, InFont);
}

FTextLocation SHostTextWidget::GetCursorLocation() const
{
	return GetEditor().GetCaret();
}

void SHostTextWidget::GoTo(const FTextLocation& NewLocation)
{
	EndPreedit();
	GetEditor().MoveTo(NewLocation, false);
	FinishEdit(false);
}

void SHostTextWidget::GoTo(ETextLocation NewLocation)
{
	EndPreedit();
	switch (NewLocation)
	{
	case ETextLocation::BeginningOfDocument:
		GetEditor().Move(ETextMove::DocumentBegin, false);
		break;
	case ETextLocation::EndOfDocument:
		GetEditor().Move(ETextMove::DocumentEnd, false);
		break;
	case ETextLocation::BeginningOfLine:
		GetEditor().Move(ETextMove::LineBegin, false);
		break;
	case ETextLocation::EndOfLine:
		GetEditor().Move(ETextMove::LineEnd, false);
		break;
	case ETextLocation::PreviousPage:
	case ETextLocation::NextPage:
	{
		const FGeometry& Geometry = GetCachedGeometry();
		UpdateLayout(Geometry);
		const int32 Page =
			FMath::Max(FMath::FloorToInt32(GetTextRect(Geometry).Height() / FMath::Max(GetView().GetMetrics().LineHeight, 1.0f)) - 1, 1);
		MoveRows(NewLocation == ETextLocation::NextPage ? Page : -Page, false);
		return;
	}
	}
	FinishEdit(false);
}

// Like a paste: one step of the history of its own.
void SHostTextWidget::InsertTextAtCursor(const FString& InString)
{
	if (!GetState().HasRoomFor(InString))
	{
		return;
	}
	EndPreedit();
	GetEditor().SetAllowMultiLine(IsMultiLine());
	FinishEdit(GetEditor().Insert(InString, ETextInsert::Pasted, GetNow()));
}

void SHostTextWidget::SelectAllText()
{
	GetEditor().SelectAll();
	// The whole text is marked; the view stays where it is.
	const bool bScroll = GetState().bScrollToCaret;
	FinishEdit(false);
	GetState().bScrollToCaret = bScroll;
}

void SHostTextWidget::ClearSelection()
{
	GetEditor().ClearSelection();
}

bool SHostTextWidget::AnyTextSelected() const
{
	return GetEditor().HasSelection();
}

FText SHostTextWidget::GetSelectedText() const
{
	return FText::FromString(GetEditor().GetSelectedText());
}

bool SHostTextWidget::CanUndo() const
{
	return CanEdit() && GetEditor().CanUndo();
}

bool SHostTextWidget::CanRedo() const
{
	return CanEdit() && GetEditor().CanRedo();
}

void SHostTextWidget::CutSelectedText()
{
	if (CanEdit() && GetEditor().HasSelection())
	{
		CopySelectedText();
		FinishEdit(GetEditor().DeleteSelection());
	}
}

void SHostTextWidget::CopySelectedText()
{
	if (GetEditor().HasSelection())
	{
		// Not by the engine's call, which stops at the first null.
		FHostServices::ClipboardCopy(GetEditor().GetSelectedText());
	}
}

void SHostTextWidget::PasteText()
{
	if (CanEdit())
	{
		FString Clipboard;
		FHostServices::PasteIntoBox(Clipboard);
		if (GetState().HasRoomFor(Clipboard))
		{
			// Handed over: it may be tens of megabytes.
			EndPreedit();
			GetEditor().SetAllowMultiLine(IsMultiLine());
			FinishEdit(GetEditor().Take(MoveTemp(Clipboard), ETextInsert::Pasted, GetNow()));
		}
	}
}

void SHostTextWidget::Undo()
{
	if (CanUndo())
	{
		EndPreedit();
		FinishEdit(GetEditor().Undo());
	}
}

void SHostTextWidget::Redo()
{
	if (CanRedo())
	{
		EndPreedit();
		FinishEdit(GetEditor().Redo());
	}
}

bool SHostTextWidget::IsTabStop() const
{
	// Text that can only be selected is reached by the mouse; a box is a stop even when it is read only.
	return Setup->BoxStyle || !IsReadOnly();
}

void SHostTextWidget::EndPreedit()
{
	if (GetView().HasPreedit())
	{
		GetView().SetPreedit(FTextLocation(), FStringView());
	}
}

void SHostTextWidget::NoteInput()
{
	GetState().bInputSincePaint = true;
}

// After each edit and each move of the caret. The delegates come last, when everything is as it will be: they may ask
// for text and caret, edit again or take the widget down.
void SHostTextWidget::FinishEdit(bool bTextChanged)
{
	NoteInput();
	GetState().bCaretRowEnd = false;
	GetState().WishedX.Reset();
	GetState().bScrollToCaret = true;
	if (bTextChanged)
	{
		Invalidate(EInvalidateWidgetReason::Layout);
		// A copy: the handler may replace itself.
		const FOnTextChanged Changed = Setup->OnTextChanged;
		if (Changed.IsBound())
		{
			Changed.Execute(GetText());
		}
	}
	const FTextLocation Caret = GetEditor().GetCaret();
	if (Caret != GetState().NotifiedCaret)
	{
		GetState().NotifiedCaret = Caret;
		const FHostOnCursorMoved Moved = Setup->OnCursorMoved;
		Moved.ExecuteIfBound(Caret);
	}
}

// What comes after a commit is a new step of the history. The guard keeps a handler that moves the focus from committing
// the same text once more.
void SHostTextWidget::Commit(ETextCommit::Type Type)
{
	GetEditor().SealStep();
	const TGuardValue<bool> Guard(GetState().bCommitting, true);
	const FOnTextCommitted Committed = Setup->OnTextCommitted;
	Committed.ExecuteIfBound(GetText(), Type);
}

FReply SHostTextWidget::OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent)
{
	NoteInput();
	if (Setup->RevertTextOnEscape.Get())
	{
		GetState().TextAtFocus = GetText().ToString();
	}
	if (Setup->SelectAllTextWhenFocused.Get())
	{
		if (InFocusEvent.GetCause() == EFocusCause::Mouse)
		{
			// The press that gave the focus sets the caret; the selection follows when no drag came of it.
			GetState().bSelectAllOnRelease = true;
		}
		else
		{
			SelectAllText();
		}
	}
	return FReply::Unhandled();
}

// 1. What an input method has not confirmed is dropped, as it does itself. 2. Leaving commits. 3. A bound text wins over
// what stands in the box from now on.
void SHostTextWidget::OnFocusLost(const FFocusEvent& InFocusEvent)
{
	EndPreedit();
	if (Setup->ClearTextSelectionOnFocusLoss.Get())
	{
		ClearSelection();
	}
	if (!IsReadOnly() && !GetState().bCommitting)
	{
		Commit(ETextCommit::OnUserMovedFocus);
	}
	if (TextAttribute.IsBound())
	{
		GetState().bHasBoundText = false;
		PullBoundText();
	}
}

// The text of an input method is shown in the line but is no part of the document until it is confirmed as typed text.
bool SHostTextWidget::OnPreedit(FStringView Text, int32 Cursor)
{
	if (!CanEdit())
	{
		return false;
	}
	NoteInput();
	if (Text.IsEmpty())
	{
		EndPreedit();
	}
	else
	{
		GetView().SetPreedit(GetEditor().GetCaret(), Text);
		GetState().PreeditCursor = Cursor;
	}
	GetState().bScrollToCaret = true;
	Invalidate(EInvalidateWidgetReason::Layout);
	return true;
}
