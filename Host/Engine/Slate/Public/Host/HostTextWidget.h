#pragma once

#include "Framework/SlateDelegates.h"
#include "Framework/Text/ITextLayoutMarshaller.h"
#include "Framework/Text/TextLayout.h"
#include "Styling/SlateTypes.h"
#include "Types/SlateEnums.h"
#include "Widgets/Layout/SBorder.h"

class FTextEditor;
class FTextView;
class ITextParagraph;
struct FHostTextState;
struct FTextRow;

/** The caret moved, for whatever reason. */
DECLARE_DELEGATE_OneParam(FHostOnCursorMoved, const FTextLocation&)

	/** What the editable widgets differ in. Unset attributes take their value from the style. */
	struct FHostTextSetup
{
	TAttribute<FText> Text;
	TAttribute<FText> HintText;
	TAttribute<FSlateFontInfo> Font;
	TAttribute<FSlateColor> ForegroundColor;
	TAttribute<FSlateColor> BackgroundColor;
	TAttribute<FMargin> Padding;
	TAttribute<bool> IsReadOnly = false;
	TAttribute<bool> AllowMultiLine = false;
	TAttribute<bool> AutoWrapText = false;
	/** Units; zero or less means none. */
	TAttribute<float> WrapTextAt = 0.0f;
	TAttribute<float> MinDesiredWidth = 0.0f;
	TAttribute<bool> SelectAllTextWhenFocused = false;
	TAttribute<bool> ClearKeyboardFocusOnCommit = false;
	TAttribute<bool> RevertTextOnEscape = false;
	TAttribute<bool> AllowContextMenu = true;
	TAttribute<bool> ClearTextSelectionOnFocusLoss = false;
	EModifierKey NewLineModifier = EModifierKey::None;
	bool bAlwaysShowScrollbars = false;
	/** Null for text without a box around it. */
	const FEditableTextBoxStyle* BoxStyle = nullptr;
	const FEditableTextStyle* TextStyle = nullptr;
	FOnKeyDown OnKeyDownHandler;
	FOnKeyChar OnKeyCharHandler;
	FOnTextChanged OnTextChanged;
	FOnTextCommitted OnTextCommitted;
	FHostOnCursorMoved OnCursorMoved;
};

/**
 * What all editable widgets share: the text with caret and selection, its layout, painting and input. Game thread only.
 *
 * Text: OnTextChanged is called for every change, by the user or by SetText, and only when the text differs. A bound text
 * is taken over whenever the binding gives another one than before, and once the box loses the focus; that is no change
 * by the user and calls nothing.
 *
 * History: a text set from code while the user edits here is one undo step; otherwise it begins a new history.
 */
class SLATE_API SHostTextWidget : public SBorder
{
public:
	virtual ~SHostTextWidget() override;

	/**
	 * Text of several lines leaves a box with line feeds, or with carriage returns before them: the engine's boxes do that on some
	 * systems. For tests; off at the start. Places are the same with both.
	 */
	static void SetJoinsLinesWithCarriageReturns(bool bJoins);

	FText GetText() const;
	void SetText(const TAttribute<FText>& InText);
	FText GetHintText() const { return Setup->HintText.Get(); }
	void SetFont(const TAttribute<FSlateFontInfo>& InFont);
	bool IsReadOnly() const { return Setup->IsReadOnly.Get(); }
	void SetOnKeyDownHandler(FOnKeyDown InHandler);
	void SetOnTextChanged(FOnTextChanged InHandler);

	FTextLocation GetCursorLocation() const;
	/** Moves the caret, clamped to the text, and brings it into view. */
	void GoTo(const FTextLocation& NewLocation);
	void GoTo(ETextLocation NewLocation);
	/** Replaces the selection as a paste would, also in a read-only box. Line breaks of any kind become "\n". */
	void InsertTextAtCursor(const FString& InString);
	void InsertTextAtCursor(const FText& InText) { InsertTextAtCursor(InText.ToString()); }
	void SelectAllText();
	void ClearSelection();
	bool AnyTextSelected() const;
	FText GetSelectedText() const;
	/** Places as UTF-16 units from the start of the text, line feeds included: for those who know the text and not its lines. */
	int32 GetCaretOffset() const;
	/** Both the caret when nothing is selected. */
	void GetSelectionOffsets(int32& OutBegin, int32& OutEnd) const;
	/** Selects, with the caret at the end; clamped to the text. Equal places move the caret. */
	void SelectOffsets(int32 Begin, int32 End);
	bool CanUndo() const;
	bool CanRedo() const;

	// Commands of the user; each does nothing where it cannot be done.
	void CutSelectedText();
	void CopySelectedText();
	void PasteText();
	void Undo();
	void Redo();

	virtual bool SupportsKeyboardFocus() const override { return true; }
	virtual bool IsTabStop() const override;
	virtual FText GetDisplayedText() const override { return GetText(); }
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	virtual FReply OnKeyChar(const FGeometry& MyGeometry, const FCharacterEvent& InCharacterEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual FReply OnMouseButtonDown(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonUp(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseMove(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual FReply OnMouseWheel(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent) override;
	virtual void OnMouseLeave(const FPointerEvent& MouseEvent) override;
	virtual void OnMouseCaptureLost() override;
	virtual FCursorReply OnCursorQuery(const FGeometry& MyGeometry, const FPointerEvent& CursorEvent) const override;
	virtual FReply OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent) override;
	virtual void OnFocusLost(const FFocusEvent& InFocusEvent) override;
	virtual bool OnPreedit(FStringView Text, int32 Cursor) override;
	virtual bool GetTextInputArea(FSlateRect& OutCaret) const override;
	virtual void DescribeAccess(FHostAccess& Out) const override;

protected:
	SHostTextWidget();
	/** To be called once, from Construct. */
	void SetUp(FHostTextSetup&& InSetup);

	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	enum class EDragUnit : uint8
	{
		None,
		Character,
		Word,
		Line,
	};

	/** A line that is only shown has no editor yet; whatever asks for one makes it. */
	bool IsResting() const { return !State; }
	void WakeUp() const;
	FHostTextState& GetState() const;
	/** The set-up, no longer shared with others. */
	FHostTextSetup& ChangeSetup();
	FTextEditor& GetEditor() const;
	FTextView& GetView() const;
	bool IsMultiLine() const { return Setup->AllowMultiLine.Get(); }
	const FEditableTextStyle& GetTextStyle() const { return *Setup->TextStyle; }
	FSlateFontInfo GetFont() const { return Setup->Font.Get(GetTextStyle().Font); }
	FMargin GetTextPadding() const;
	bool CanEdit() const { return IsEnabled() && !IsReadOnly(); }

	// Layout.
	/** Brings the layout up to date for a geometry; asks for a new layout of the frame when the desired size changed. */
	void UpdateLayout(const FGeometry& Geometry) const;
	/** Device pixels of the window that the text may cover. */
	FSlateRect GetTextRect(const FGeometry& Geometry) const;
	FSlateRect GetBarRect(const FGeometry& Geometry) const;
	float GetCaretWidth(float Scale) const { return Scale >= 1.5f ? 2.0f : 1.0f; }
	FVector2D MeasureText(float Scale) const;
	FVector2D MeasureResting(float Scale) const;
	/** Units that a text of so many device pixels wants. */
	FVector2D AddPadding(float Width, float Height, float Scale) const;
	/** The caret's device rectangle; false when it is out of view. */
	bool FindCaret(const FGeometry& Geometry, FSlateRect& OutRect) const;
	bool IsCaretOn(double Now) const;

	// Painting.
	void PaintBox(const FGeometry& Geometry, FSlateWindowElementList& Out, const FWidgetStyle& Style, bool bEnabled) const;
	void PaintHint(const FSlateRect& Rect, FSlateWindowElementList& Out, const FWidgetStyle& Style) const;
	/** @param Corner  Upper left one of the row. */
	void PaintSelection(const FTextRow& Row, const FVector2f& Corner, FSlateWindowElementList& Out, const FWidgetStyle& Style) const;
	void PaintRow(
		const FTextRow& Row, const FSlateRect& Rect, FSlateWindowElementList& Out, const FWidgetStyle& Style, bool bEnabled) const;

	// Changes.
	void PullBoundText();
	void EndPreedit();
	void NoteInput();
	/** Behind every change: layout, scrolling, OnTextChanged, OnCursorMoved. */
	void FinishEdit(bool bTextChanged);
	void Commit(ETextCommit::Type Type);
	double GetNow() const;

	// Input.
	FReply HandleKey(const FGeometry& Geometry, const FKeyEvent& Event);
	bool HandleShortcut(const FKey& Key, bool bShift);
	bool HandleMove(const FGeometry& Geometry, const FKeyEvent& Event);
	void MoveRows(int32 Rows, bool bSelect);
	FReply HandleEnter(const FKeyEvent& Event);
	FReply HandleEscape();
	FTextLocation HitTest(const FGeometry& Geometry, const FVector2D& Position, bool& bOutRowEnd) const;
	void BeginDrag(const FGeometry& Geometry, const FPointerEvent& Event, EDragUnit Unit);
	void DragTo(const FGeometry& Geometry, const FVector2D& Position);
	void ScrollWhileDragging(const FGeometry& Geometry, float DeltaTime);
	void OpenContextMenu(const FGeometry& Geometry, const FVector2D& Position);

	TAttribute<FText> TextAttribute;
	/** Its text is empty: that is what differs between many that share one. */
	TSharedPtr<FHostTextSetup> Setup;
	/** Null while resting. */
	mutable TUniquePtr<FHostTextState> State;
	/** What was measured while resting; null before, and once awake. */
	mutable TSharedPtr<ITextParagraph> RestingParagraph;
	mutable float RestingScale = 0.0f;
	bool bSharesSetup = false;
	EDragUnit DragUnit = EDragUnit::None;
};
