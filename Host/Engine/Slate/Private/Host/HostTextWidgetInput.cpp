#include "Framework/Application/SlateApplication.h"
#include "Host/HostTextContextMenu.h"
#include "Host/HostServices.h"
#include "Host/HostTextState.h"
#include "Host/HostTextWidget.h"

// Keys and mouse of the text widget. Every edit goes the same way: an open text of an input method is confirmed first
// (EndPreedit), since the editor knows nothing of it and offsets would be off by its length; then the editor changes the
// document; then FinishEdit tells the view, the caret's blinking and the owner's delegates.
//
// A handler of the owner sees a key before anything else does and may keep it, as in the editor. Handlers are copied
// before they are called: they may replace themselves, or take the widget out of the tree.

namespace
{
	/** A press this soon behind a double click, at the same place, is the third one. */
	constexpr double TripleClickSeconds = 0.5;
	constexpr double TripleClickDistance = 4.0;
	constexpr float WheelLines = 3.0f;
	/** Lines a second that a drag outside scrolls for each line height that the pointer is away. */
	constexpr float DragScrollSpeed = 8.0f;

	/** Without control characters, line breaks and tabs excepted. */
	FString FilterTypedText(const FString& Text)
	{
		FString Result;
		Result.Reserve(Text.Len());
		for (const TCHAR Unit : Text)
		{
			if ((Unit >= 0x20 && Unit != 0x7F) || Unit == TEXT('\n') || Unit == TEXT('\r') || Unit == TEXT('\t'))
			{
				Result.AppendChar(Unit);
			}
		}
		return Result;
	}
}

FReply SHostTextWidget::OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent)
{
	const FOnKeyChar Handler = Setup->OnKeyCharHandler;
	if (Handler.IsBound())
	{
		const FReply Reply = Handler.Execute(MyGeometry, InCharacterEvent);
		if (Reply.IsEventHandled())
		{
			return Reply;
		}
	}
	// Ctrl with Alt is the third level of many keyboards, Ctrl alone a shortcut.
	const bool bShortcut = (InCharacterEvent.IsControlDown() && !InCharacterEvent.IsAltDown()) || InCharacterEvent.IsCommandDown();
	const FString Typed = FilterTypedText(InCharacterEvent.GetText());
	if (!CanEdit() || bShortcut || Typed.IsEmpty())
	{
		return FReply::Unhandled();
	}
	if (!GetState().HasRoomFor(Typed))
	{
		return FReply::Handled();
	}
	EndPreedit();
	GetEditor().SetAllowMultiLine(IsMultiLine());
	FinishEdit(GetEditor().Insert(Typed, ETextInsert::Typed, GetNow()));
	return FReply::Handled();
}

FReply SHostTextWidget::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FOnKeyDown Handler = Setup->OnKeyDownHandler;
	if (Handler.IsBound())
	{
		const FReply Reply = Handler.Execute(MyGeometry, InKeyEvent);
		if (Reply.IsEventHandled())
		{
			return Reply;
		}
	}
	if (const TSharedPtr<IMenu> Menu = GetState().ContextMenu.Pin(); Menu && Menu->IsOpen() && !InKeyEvent.GetKey().IsModifierKey())
	{
		Menu->Dismiss();
		if (InKeyEvent.GetKey() == EKeys::Escape)
		{
			return FReply::Handled();
		}
	}
	return HandleKey(MyGeometry, InKeyEvent);
}

FReply SHostTextWidget::HandleKey(const FGeometry& Geometry, const FKeyEvent& Event)
{
	const FKey Key = Event.GetKey();
	const bool bControl = Event.IsControlDown() || Event.IsCommandDown();
	if (Key == EKeys::Enter)
	{
		return HandleEnter(Event);
	}
	if (Event.IsAltDown())
	{
		return FReply::Unhandled();
	}
	if (Key == EKeys::Escape)
	{
		return HandleEscape();
	}
	if (Key == EKeys::BackSpace || Key == EKeys::Delete)
	{
		if (Key == EKeys::Delete && Event.IsShiftDown() && !bControl)
		{
			CutSelectedText();
			return FReply::Handled();
		}
		if (!CanEdit())
		{
			return FReply::Unhandled();
		}
		EndPreedit();
		FinishEdit(
			Key == EKeys::BackSpace ? GetEditor().DeleteBackward(bControl, GetNow()) : GetEditor().DeleteForward(bControl, GetNow()));
		return FReply::Handled();
	}
	if (Key == EKeys::Insert && (bControl || Event.IsShiftDown()))
	{
		if (bControl)
		{
			CopySelectedText();
		}
		else
		{
			PasteText();
		}
		return FReply::Handled();
	}
	if (bControl && HandleShortcut(Key, Event.IsShiftDown()))
	{
		return FReply::Handled();
	}
	return HandleMove(Geometry, Event) ? FReply::Handled() : FReply::Unhandled();
}

// Held Ctrl and a letter. What has nothing to do, such as copying without a selection, is taken all the same: a shortcut
// of the box that is on must not reach what lies around it.
bool SHostTextWidget::HandleShortcut(const FKey& Key, bool bShift)
{
	if (Key == EKeys::A)
	{
		SelectAllText();
	}
	else if (Key == EKeys::C)
	{
		CopySelectedText();
	}
	else if (Key == EKeys::X)
	{
		CutSelectedText();
	}
	else if (Key == EKeys::V)
	{
		PasteText();
	}
	else if (Key == EKeys::Z && !bShift)
	{
		Undo();
	}
	else if (Key == EKeys::Y || Key == EKeys::Z)
	{
		Redo();
	}
	else
	{
		return false;
	}
	return true;
}

// Moves by letters and words are the editor's matter, which knows the text alone. Moves by rows need the layout, which
// says where rows end and what stands above what.
bool SHostTextWidget::HandleMove(const FGeometry& Geometry, const FKeyEvent& Event)
{
	const FKey Key = Event.GetKey();
	const bool bControl = Event.IsControlDown() || Event.IsCommandDown();
	const bool bSelect = Event.IsShiftDown();
	FTextEditor& Editor = GetEditor();
	FTextView& View = GetView();
	const bool bRows = Key == EKeys::Up || Key == EKeys::Down || Key == EKeys::PageUp || Key == EKeys::PageDown;
	if (bRows && !IsMultiLine() && Editor.GetDocument().GetLineCount() == 1)
	{
		// Up and Down in a box of one line belong to what holds it, such as a list.
		return false;
	}
	EndPreedit();
	UpdateLayout(Geometry);
	const float LineHeight = FMath::Max(View.GetMetrics().LineHeight, 1.0f);
	if (Key == EKeys::Left || Key == EKeys::Right)
	{
		const bool bLeft = Key == EKeys::Left;
		Editor.Move(
			bControl ? (bLeft ? ETextMove::WordLeft : ETextMove::WordRight) : (bLeft ? ETextMove::Left : ETextMove::Right), bSelect);
		FinishEdit(false);
	}
	else if (Key == EKeys::Home || Key == EKeys::End)
	{
		bool bRowEnd = false;
		if (bControl)
		{
			Editor.Move(Key == EKeys::Home ? ETextMove::DocumentBegin : ETextMove::DocumentEnd, bSelect);
		}
		else if (Key == EKeys::Home)
		{
			Editor.MoveTo(View.GetRowBegin(Editor.GetCaret(), GetState().bCaretRowEnd), bSelect);
		}
		else
		{
			Editor.MoveTo(View.GetRowEnd(Editor.GetCaret(), GetState().bCaretRowEnd, bRowEnd), bSelect);
		}
		FinishEdit(false);
		GetState().bCaretRowEnd = bRowEnd;
	}
	else if (bControl && (Key == EKeys::Up || Key == EKeys::Down))
	{
		View.ScrollBy(Key == EKeys::Up ? -LineHeight : LineHeight);
	}
	else if (Key == EKeys::Up || Key == EKeys::Down)
	{
		MoveRows(Key == EKeys::Up ? -1 : 1, bSelect);
	}
	else if (Key == EKeys::PageUp || Key == EKeys::PageDown)
	{
		const int32 Page = FMath::Max(FMath::FloorToInt32(GetTextRect(Geometry).Height() / LineHeight) - 1, 1);
		MoveRows(Key == EKeys::PageUp ? -Page : Page, bSelect);
	}
	else
	{
		return false;
	}
	return true;
}

// The wished X is that of the first step up or down; it is kept while such steps follow each other, so that the caret
// comes back to its column after short rows.
void SHostTextWidget::MoveRows(int32 Rows, bool bSelect)
{
	FTextEditor& Editor = GetEditor();
	FTextView& View = GetView();
	const float X = GetState().WishedX.IsSet() ? GetState().WishedX.GetValue() : View.PlaceOf(Editor.GetCaret(), GetState().bCaretRowEnd).X;
	bool bRowEnd = false;
	Editor.MoveTo(View.MoveRows(Editor.GetCaret(), GetState().bCaretRowEnd, Rows, X, bRowEnd), bSelect);
	FinishEdit(false);
	GetState().bCaretRowEnd = bRowEnd;
	GetState().WishedX = X;
}

// Exactly the modifier that was asked for makes a new line; Enter with any other commits. With None a plain Enter breaks
// the line and every modifier commits.
FReply SHostTextWidget::HandleEnter(const FKeyEvent& Event)
{
	if (!CanEdit())
	{
		return FReply::Unhandled();
	}
	const bool bControl = Event.IsControlDown() || Event.IsCommandDown();
	bool bNewLine = false;
	switch (Setup->NewLineModifier)
	{
	case EModifierKey::None:
		bNewLine = !bControl && !Event.IsShiftDown() && !Event.IsAltDown();
		break;
	case EModifierKey::Control:
	case EModifierKey::Command:
		bNewLine = bControl;
		break;
	case EModifierKey::Shift:
		bNewLine = Event.IsShiftDown();
		break;
	case EModifierKey::Alt:
		bNewLine = Event.IsAltDown();
		break;
	}
	EndPreedit();
	if (IsMultiLine() && bNewLine)
	{
		if (!GetState().HasRoomFor(TEXT("\n")))
		{
			return FReply::Handled();
		}
		GetEditor().SetAllowMultiLine(true);
		FinishEdit(GetEditor().Insert(TEXT("\n"), ETextInsert::Typed, GetNow()));
		return FReply::Handled();
	}
	Commit(ETextCommit::OnEnter);
	if (Setup->ClearKeyboardFocusOnCommit.Get() && HasKeyboardFocus())
	{
		// The text has been committed just now; leaving does not commit it again.
		const TGuardValue<bool> Guard(GetState().bCommitting, true);
		FSlateApplication::Get().ClearKeyboardFocus(EFocusCause::Cleared);
	}
	return FReply::Handled();
}

// Escape means something here only while there is a change to take back. Otherwise it belongs to the popup or window
// around.
FReply SHostTextWidget::HandleEscape()
{
	// Ends a composition and nothing else.
	if (GetView().HasPreedit())
	{
		EndPreedit();
		return FReply::Handled();
	}
	if (!Setup->RevertTextOnEscape.Get() || !CanEdit() || GetEditor().GetDocument().Equals(GetState().TextAtFocus))
	{
		return FReply::Unhandled();
	}
	EndPreedit();
	FinishEdit(GetEditor().SetText(GetState().TextAtFocus, true));
	return FReply::Handled();
}

FTextLocation SHostTextWidget::HitTest(const FGeometry& Geometry, const FVector2D& Position, bool& bOutRowEnd) const
{
	UpdateLayout(Geometry);
	const FSlateRect Rect = GetTextRect(Geometry);
	return GetView().Hit(
		FVector2f(static_cast<float>(Position.X) - Rect.Left + GetView().GetScrollX(), static_cast<float>(Position.Y) - Rect.Top),
		bOutRowEnd);
}

// A press selects a unit: nothing, a word or a line, by the number of clicks. DragBegin and DragEnd keep that unit while
// the pointer moves, so that dragging back over it never loses a part of it.
void SHostTextWidget::BeginDrag(const FGeometry& Geometry, const FPointerEvent& Event, EDragUnit Unit)
{
	EndPreedit();
	bool bRowEnd = false;
	const FTextLocation Place = HitTest(Geometry, Event.GetScreenSpacePosition(), bRowEnd);
	FTextEditor& Editor = GetEditor();
	DragUnit = Unit;
	GetState().DragPointer = Event.GetScreenSpacePosition();
	GetState().DragBegin = Place;
	GetState().DragEnd = Place;
	switch (Unit)
	{
	case EDragUnit::Word:
		Editor.GetWordAt(Place, GetState().DragBegin, GetState().DragEnd);
		Editor.Select(GetState().DragBegin, GetState().DragEnd);
		break;
	case EDragUnit::Line:
		Editor.GetLineAt(Place, GetState().DragBegin, GetState().DragEnd);
		Editor.Select(GetState().DragBegin, GetState().DragEnd);
		break;
	case EDragUnit::Character:
	case EDragUnit::None:
		Editor.MoveTo(Place, Event.IsShiftDown());
		GetState().DragBegin = Editor.GetAnchor();
		GetState().DragEnd = Editor.GetAnchor();
		break;
	}
	FinishEdit(false);
	GetState().bCaretRowEnd = bRowEnd && Unit == EDragUnit::Character;
	// What was pressed is in view; a line whose end lies outside must not move under the pointer.
	GetState().bScrollToCaret = false;
}

void SHostTextWidget::DragTo(const FGeometry& Geometry, const FVector2D& Position)
{
	GetState().DragPointer = Position;
	bool bRowEnd = false;
	FTextEditor& Editor = GetEditor();
	const FTextLocation Place = HitTest(Geometry, Position, bRowEnd);
	FTextLocation Begin = Place;
	FTextLocation End = Place;
	if (DragUnit == EDragUnit::Word)
	{
		Editor.GetWordAt(Place, Begin, End);
	}
	else if (DragUnit == EDragUnit::Line)
	{
		Editor.GetLineAt(Place, Begin, End);
	}
	// The selection grows from the unit that was pressed first, to either side.
	if (Begin < GetState().DragBegin)
	{
		Editor.Select(GetState().DragEnd, Begin);
	}
	else
	{
		Editor.Select(GetState().DragBegin, GetState().DragEnd < End ? End : GetState().DragEnd);
	}
	FinishEdit(false);
	GetState().bCaretRowEnd = bRowEnd && DragUnit == EDragUnit::Character;
	GetState().bScrollToCaret = false;
}

// The further out the pointer is, the faster it goes. Called in each frame, since a pointer that rests outside of the
// box sends nothing.
void SHostTextWidget::ScrollWhileDragging(const FGeometry& Geometry, float DeltaTime)
{
	const FSlateRect Rect = GetTextRect(Geometry);
	const float Y = static_cast<float>(GetState().DragPointer.Y);
	const float X = static_cast<float>(GetState().DragPointer.X);
	const float Below = FMath::Max(Y - Rect.Bottom, 0.0f) - FMath::Max(Rect.Top - Y, 0.0f);
	const float Right = FMath::Max(X - Rect.Right, 0.0f) - FMath::Max(Rect.Left - X, 0.0f);
	const bool bSideways = Right != 0.0f && !Setup->AutoWrapText.Get();
	if (Below == 0.0f && !bSideways)
	{
		return;
	}
	GetView().ScrollBy(FMath::RoundToFloat(Below * DragScrollSpeed * DeltaTime));
	if (bSideways)
	{
		const float Limit = FMath::Max(GetView().GetContentWidth() + GetCaretWidth(Geometry.GetAccumulatedScale()) - Rect.Width(), 0.0f);
		GetView().SetScrollX(FMath::Clamp(GetView().GetScrollX() + FMath::RoundToFloat(Right * DragScrollSpeed * DeltaTime), 0.0f, Limit));
	}
	DragTo(Geometry, GetState().DragPointer);
}

FReply SHostTextWidget::OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const FVector2D& Position = MouseEvent.GetScreenSpacePosition();
	// 1. Right: a press on the selection keeps it, so that the menu can copy it; elsewhere the caret goes there first.
	if (MouseEvent.GetEffectingButton() == EKeys::RightMouseButton)
	{
		bool bRowEnd = false;
		const FTextLocation Place = HitTest(MyGeometry, Position, bRowEnd);
		FTextEditor& Editor = GetEditor();
		if (!Editor.HasSelection() || Place < Editor.GetSelectionBegin() || Editor.GetSelectionEnd() < Place)
		{
			Editor.MoveTo(Place, false);
			FinishEdit(false);
			GetState().bCaretRowEnd = bRowEnd;
		}
		if (Setup->AllowContextMenu.Get())
		{
			OpenContextMenu(MyGeometry, Position);
		}
		return FReply::Handled().SetUserFocus(AsShared(), EFocusCause::Mouse);
	}
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton)
	{
		return FReply::Unhandled();
	}
	const FSlateRect Bar = GetBarRect(MyGeometry);
	// 2. Left on the scroll bar: nothing of the text changes.
	if (!Bar.IsEmpty() && Bar.ContainsPoint(Position))
	{
		const FSlateRect Text = GetTextRect(MyGeometry);
		const float Scale = MyGeometry.GetAccumulatedScale();
		const FScrollBarStyle& Style = Setup->BoxStyle->ScrollBarStyle;
		const FSlateRect Thumb =
			FScrollThumb::GetThumb(Bar, Text.Height(), GetView().GetContentHeight(), GetView().GetScrollOffset(), Style, Scale);
		const float Y = static_cast<float>(Position.Y);
		// A press beside the thumb brings the thumb's middle there.
		const bool bOnThumb = Y >= Thumb.Top && Y < Thumb.Bottom;
		GetState().Thumb.bDragging = true;
		GetState().Thumb.Grip = bOnThumb ? Y - Thumb.Top : Thumb.Height() * 0.5f;
		if (!bOnThumb)
		{
			GetView().SetScrollOffset(
				FScrollThumb::GetOffsetFor(Bar, Y - GetState().Thumb.Grip, Text.Height(), GetView().GetContentHeight(), Style, Scale));
		}
		return FReply::Handled().CaptureMouse(AsShared()).SetUserFocus(AsShared(), EFocusCause::Mouse);
	}
	// 3. Left on the text. The router tells double clicks; the third click is counted here, from the second.
	const FVector2D Moved = Position - GetState().LastDoubleClickPosition;
	const bool bTriple = GetState().LastDoubleClick >= 0.0 && GetNow() - GetState().LastDoubleClick <= TripleClickSeconds &&
		FMath::Abs(Moved.X) <= TripleClickDistance && FMath::Abs(Moved.Y) <= TripleClickDistance;
	GetState().LastDoubleClick = -1.0;
	BeginDrag(MyGeometry, MouseEvent, bTriple ? EDragUnit::Line : EDragUnit::Character);
	return FReply::Handled().CaptureMouse(AsShared()).SetUserFocus(AsShared(), EFocusCause::Mouse);
}

FReply SHostTextWidget::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton ||
		GetBarRect(MyGeometry).ContainsPoint(MouseEvent.GetScreenSpacePosition()))
	{
		return OnMouseButtonDown(MyGeometry, MouseEvent);
	}
	GetState().LastDoubleClick = GetNow();
	GetState().LastDoubleClickPosition = MouseEvent.GetScreenSpacePosition();
	BeginDrag(MyGeometry, MouseEvent, EDragUnit::Word);
	return FReply::Handled().CaptureMouse(AsShared()).SetUserFocus(AsShared(), EFocusCause::Mouse);
}

// A box that selects all when it is focused does so at the release: a drag that began with the same press wins.
FReply SHostTextWidget::OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (MouseEvent.GetEffectingButton() != EKeys::LeftMouseButton || !HasMouseCapture())
	{
		return FReply::Unhandled();
	}
	if (GetState().bSelectAllOnRelease && !GetEditor().HasSelection())
	{
		SelectAllText();
	}
	GetState().bSelectAllOnRelease = false;
	GetState().Thumb.bDragging = false;
	DragUnit = EDragUnit::None;
	return FReply::Handled().ReleaseMouseCapture();
}

FReply SHostTextWidget::OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	const FVector2D& Position = MouseEvent.GetScreenSpacePosition();
	const FSlateRect Bar = GetBarRect(MyGeometry);
	GetState().Thumb.bHovered = !Bar.IsEmpty() && Bar.ContainsPoint(Position);
	if (!HasMouseCapture())
	{
		return FReply::Unhandled();
	}
	if (GetState().Thumb.bDragging)
	{
		GetView().SetScrollOffset(
			FScrollThumb::GetOffsetFor(Bar, static_cast<float>(Position.Y) - GetState().Thumb.Grip, GetTextRect(MyGeometry).Height(),
				GetView().GetContentHeight(), Setup->BoxStyle->ScrollBarStyle, MyGeometry.GetAccumulatedScale()));
		return FReply::Handled();
	}
	if (DragUnit != EDragUnit::None)
	{
		DragTo(MyGeometry, Position);
	}
	return FReply::Handled();
}

FReply SHostTextWidget::OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (!Setup->BoxStyle || !IsMultiLine())
	{
		return FReply::Unhandled();
	}
	UpdateLayout(MyGeometry);
	const double Before = GetView().GetScrollOffset();
	GetView().ScrollBy(FMath::RoundToFloat(-MouseEvent.GetWheelDelta() * WheelLines * GetView().GetMetrics().LineHeight));
	// At its end the box leaves the wheel to what holds it.
	return GetView().GetScrollOffset() != Before ? FReply::Handled() : FReply::Unhandled();
}

void SHostTextWidget::OnMouseLeave(const FPointerEvent& MouseEvent)
{
	GetState().Thumb.bHovered = false;
}

void SHostTextWidget::OnMouseCaptureLost()
{
	GetState().Thumb.bDragging = false;
	GetState().bSelectAllOnRelease = false;
	DragUnit = EDragUnit::None;
}

FCursorReply SHostTextWidget::OnCursorQuery(const FGeometry& MyGeometry, const FPointerEvent& CursorEvent) const
{
	const FSlateRect Bar = GetBarRect(MyGeometry);
	const bool bOnBar = GetState().Thumb.bDragging || (!Bar.IsEmpty() && Bar.ContainsPoint(CursorEvent.GetScreenSpacePosition()));
	return FCursorReply::Cursor(bOnBar ? EMouseCursor::Default : EMouseCursor::TextEditBeam);
}

// The rows hold the widget weakly and the menu outlives nothing: a tab that closes meanwhile leaves rows that do
// nothing.
void SHostTextWidget::OpenContextMenu(const FGeometry& Geometry, const FVector2D& Position)
{
	const bool bSelected = GetEditor().HasSelection();
	const bool bCanPaste = CanEdit() && FHostServices::CanPasteIntoBox();
	const TWeakPtr<SHostTextWidget> Weak = SharedThis(this);
	const auto MakeCommand = [Weak](void (SHostTextWidget::*Command)()) -> TFunction<void()>
	{
		return [Weak, Command]()
		{
			if (const TSharedPtr<SHostTextWidget> Pinned = Weak.Pin())
			{
				(Pinned.Get()->*Command)();
			}
		};
	};
	const TArray<FTextMenuRow> Rows = {
		{ NSLOCTEXT("HostText", "Cut", "Cut"), FText::FromString(TEXT("Ctrl+X")), FName(TEXT("Icons.Cut")), bSelected && CanEdit(),
			MakeCommand(&SHostTextWidget::CutSelectedText) },
		{ NSLOCTEXT("HostText", "Copy", "Copy"), FText::FromString(TEXT("Ctrl+C")), FName(TEXT("Icons.Copy")), bSelected,
			MakeCommand(&SHostTextWidget::CopySelectedText) },
		{ NSLOCTEXT("HostText", "Paste", "Paste"), FText::FromString(TEXT("Ctrl+V")), FName(TEXT("Icons.Paste")), bCanPaste,
			MakeCommand(&SHostTextWidget::PasteText) },
		{ NSLOCTEXT("HostText", "SelectAll", "Select All"), FText::FromString(TEXT("Ctrl+A")), FName(),
			!GetEditor().GetDocument().IsEmpty(), MakeCommand(&SHostTextWidget::SelectAllText) },
	};
	const float X = static_cast<float>(Position.X);
	const float Y = static_cast<float>(Position.Y);
	// The keyboard stays here, so that opening a menu commits nothing.
	GetState().ContextMenu = FSlateApplication::Get().PushMenu(
		AsShared(), MakeTextMenu(Rows), FSlateRect(X, Y, X, Y), MenuPlacement_BelowAnchor, false, EHostOwnerPress::ClosesAndReaches);
}
