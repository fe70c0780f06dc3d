#pragma once

#include "Framework/Text/TextBreaks.h"
#include "Framework/Text/TextEditor.h"
#include "Framework/Text/TextView.h"
#include "Framework/Application/IMenu.h"
#include "Host/ScrollThumb.h"
#include "Misc/Optional.h"

/** What an editable widget remembers between events. */
struct FHostTextState
{
	FHostTextState()
		: Editor(Breaks)
		, View(Editor.GetDocument())
	{
		Editor.GetDocument().SetOnLinesChanged(
			[this](int32 First, int32 Removed, int32 Added) { View.NoteLinesChanged(First, Removed, Added); });
	}

	/** Whether the text can be inserted. Says so in a toast if it cannot. */
	bool HasRoomFor(FStringView Text) const;

	FShapedTextBreaks Breaks;
	FTextEditor Editor;
	FTextView View;

	/** The caret stands at a wrap and belongs to the end of the upper row. */
	bool bCaretRowEnd = false;
	/** Where Up and Down want to go, device pixels. */
	TOptional<float> WishedX;
	FTextLocation NotifiedCaret;
	bool bScrollToCaret = false;

	double LastInput = 0.0;
	bool bInputSincePaint = true;

	int32 PreeditCursor = 0;
	FText LastBoundText;
	bool bHasBoundText = false;
	FString TextAtFocus;
	bool bCommitting = false;

	// Layout.
	FVector2D DesiredSize = FVector2D(0, 0);
	bool bBar = false;
	FScrollThumb Thumb;
	TSharedPtr<ITextParagraph> HintParagraph;
	FString ShapedHint;
	FSlateFontInfo HintFont;
	float HintScale = 0.0f;

	// Mouse.
	FTextLocation DragBegin;
	FTextLocation DragEnd;
	FVector2D DragPointer = FVector2D(0, 0);
	double LastDoubleClick = -1.0;
	FVector2D LastDoubleClickPosition = FVector2D(0, 0);
	bool bSelectAllOnRelease = false;
	TWeakPtr<IMenu> ContextMenu;
};
