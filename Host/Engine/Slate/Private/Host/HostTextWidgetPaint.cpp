#include "Host/HostFocus.h"
#include "Host/HostMotion.h"
#include "Host/HostSleep.h"
#include "Host/HostTextState.h"
#include "Host/HostTextWidget.h"
#include "Rendering/DrawElements.h"
#include "Styling/AppStyle.h"
#include "Widgets/Text/SharedParagraphs.h"

// Layout and painting of the text widget. The view is brought in line with size, font and document in each frame before
// anything is asked of it (UpdateLayout). Painted from below: box, selection, letters, what an input method has open,
// caret, scroll bar.

namespace
{
	constexpr double CaretBlinkSeconds = 0.53;
	/** The caret stays on behind this, so that nothing needs to be painted. */
	constexpr double CaretRestSeconds = 10.0;
	/** A selected line break is shown as wide as this, in units. */
	constexpr float SelectedBreakWidth = 4.0f;

	FColor GetTextPaintColor(const FSlateColor& Color, const FWidgetStyle& Style)
	{
		return (Color.GetColor(Style) * Style.GetColorAndOpacityTint()).ToFColorSRGB();
	}
}

FSlateRect SHostTextWidget::GetTextRect(const FGeometry& Geometry) const
{
	const float Scale = Geometry.GetAccumulatedScale();
	const FSlateRect Bounds = Geometry.GetLayoutBoundingRect();
	const FMargin Padding = GetTextPadding();
	const float Room = Setup->BoxStyle && GetState().bBar ? FMath::Max(Setup->BoxStyle->ScrollBarStyle.Room, Padding.Right) : Padding.Right;
	FSlateRect Rect(Bounds.Left + Padding.Left * Scale, Bounds.Top + Padding.Top * Scale, Bounds.Right - Room * Scale,
		Bounds.Bottom - Padding.Bottom * Scale);
	Rect.Left = FMath::RoundToFloat(Rect.Left);
	Rect.Top = FMath::RoundToFloat(Rect.Top);
	Rect.Right = FMath::Max(FMath::RoundToFloat(Rect.Right), Rect.Left);
	Rect.Bottom = FMath::Max(FMath::RoundToFloat(Rect.Bottom), Rect.Top);
	return Rect;
}

FSlateRect SHostTextWidget::GetBarRect(const FGeometry& Geometry) const
{
	if (!Setup->BoxStyle || !GetState().bBar)
	{
		return FSlateRect();
	}
	const float Scale = Geometry.GetAccumulatedScale();
	const FSlateRect Bounds = Geometry.GetLayoutBoundingRect();
	return FSlateRect(
		Bounds.Right - Setup->BoxStyle->ScrollBarStyle.Room * Scale, Bounds.Top + 2.0f * Scale, Bounds.Right, Bounds.Bottom - 2.0f * Scale);
}

void SHostTextWidget::UpdateLayout(const FGeometry& Geometry) const
{
	FTextView& View = GetView();
	const float Scale = Geometry.GetAccumulatedScale();
	const bool bWrap = Setup->AutoWrapText.Get();
	const float WrapAt = Setup->WrapTextAt.Get() * Scale;
	View.SetFont(GetFont(), Scale);
	// Without the bar first: a text that fits does not give room to one.
	const auto LayOut = [&]()
	{
		const FSlateRect Rect = GetTextRect(Geometry);
		float Width = bWrap ? FMath::Max(Rect.Width(), 1.0f) : 0.0f;
		Width = WrapAt > 0.0f && (Width <= 0.0f || WrapAt < Width) ? WrapAt : Width;
		View.SetWrapWidth(Width);
		View.SetViewSize(Rect.Width(), Rect.Height());
		View.MeasureIfSmall();
	};
	LayOut();
	if (Setup->BoxStyle && IsMultiLine())
	{
		const bool bNeedsBar = Setup->bAlwaysShowScrollbars || View.GetContentHeight() > GetTextRect(Geometry).Height() + 0.5;
		if (bNeedsBar != GetState().bBar)
		{
			GetState().bBar = bNeedsBar;
			LayOut();
		}
	}
	View.ClampScroll();
	if (GetState().bScrollToCaret)
	{
		GetState().bScrollToCaret = false;
		const FTextCaretPlace Place = View.HasPreedit() ? View.PlaceInPreedit(GetState().PreeditCursor)
														: View.PlaceOf(GetEditor().GetCaret(), GetState().bCaretRowEnd);
		View.ScrollToShow(Place, GetCaretWidth(Scale));
	}
	if (MeasureText(Scale) != GetState().DesiredSize)
	{
		const_cast<SHostTextWidget*>(this)->Invalidate(EInvalidateWidgetReason::Layout);
	}
}

FVector2D SHostTextWidget::MeasureText(float Scale) const
{
	FTextView& View = GetView();
	const bool bWrapsToRoom = Setup->AutoWrapText.Get();
	float Width = bWrapsToRoom ? View.GetUnwrappedWidth() : View.GetContentWidth();
	// A long line is laid out in pieces, each a row of its own. A box of one line shows one of them, however many there are.
	const FTextDocument& Document = GetEditor().GetDocument();
	const bool bOneRow = !IsMultiLine() && Document.GetLineCount() == 1 && Document.GetLineLength(0) > FTextViewLines::MaxSegment;
	float Height = bOneRow ? View.GetMetrics().LineHeight : static_cast<float>(View.GetContentHeight());
	const FString& Hint = Setup->HintText.Get().ToString();
	if (GetEditor().GetDocument().IsEmpty() && !Hint.IsEmpty())
	{
		// The caret stands before the hint and needs no room of its own.
		const FSlateFontInfo Font = GetFont();
		if (!GetState().HintParagraph || !GetState().ShapedHint.Equals(Hint) || GetState().HintFont != Font ||
			GetState().HintScale != Scale)
		{
			GetState().HintParagraph = ITextShaper::Get().MakeParagraph(Hint, Font, Scale);
			GetState().ShapedHint = Hint;
			GetState().HintFont = Font;
			GetState().HintScale = Scale;
		}
		const FSlateRect Rect = GetTextRect(GetCachedGeometry());
		GetState().HintParagraph->Wrap(bWrapsToRoom ? Rect.Width() : 0.0f);
		Width = FMath::Max(Width, bWrapsToRoom ? GetState().HintParagraph->GetUnwrappedWidth() : GetState().HintParagraph->GetSize().X);
		Height = FMath::Max(Height, GetState().HintParagraph->GetSize().Y);
	}
	return AddPadding(Width, Height, Scale);
}

FVector2D SHostTextWidget::AddPadding(float Width, float Height, float Scale) const
{
	Width += IsReadOnly() ? 0.0f : GetCaretWidth(Scale);
	const FMargin Padding = GetTextPadding();
	return FVector2D(FMath::Max(Width / Scale + Padding.Left + Padding.Right, Setup->MinDesiredWidth.Get()),
		Height / Scale + Padding.Top + Padding.Bottom);
}

// What MeasureText gives for a line that is laid out whole.
FVector2D SHostTextWidget::MeasureResting(float Scale) const
{
	if (!RestingParagraph || RestingScale != Scale)
	{
		const FString Line = TextUnits::MakeShapeable(TextAttribute.Get().ToString());
		RestingParagraph = Line.Len() <= FSharedParagraphs::MaxLength ? FSharedParagraphs::Get(Line, GetFont(), Scale)
																	  : ITextShaper::Get().MakeParagraph(Line, GetFont(), Scale);
		RestingScale = Scale;
	}
	const FVector2f Size = RestingParagraph->GetSize();
	return AddPadding(Size.X, Size.Y, Scale);
}

FVector2D SHostTextWidget::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	if (IsResting())
	{
		return MeasureResting(LayoutScaleMultiplier);
	}
	const_cast<SHostTextWidget*>(this)->PullBoundText();
	FTextView& View = GetView();
	View.SetFont(GetFont(), LayoutScaleMultiplier);
	View.MeasureIfSmall();
	GetState().DesiredSize = MeasureText(LayoutScaleMultiplier);
	return GetState().DesiredSize;
}

void SHostTextWidget::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	PullBoundText();
	if (DragUnit != EDragUnit::None)
	{
		ScrollWhileDragging(AllottedGeometry, InDeltaTime);
		FHostSleep::RequestFrameAt(InCurrentTime);
	}
}

bool SHostTextWidget::IsCaretOn(double Now) const
{
	if (GetState().bInputSincePaint)
	{
		GetState().bInputSincePaint = false;
		GetState().LastInput = Now;
	}
	const double Elapsed = Now - GetState().LastInput;
	if (Elapsed < 0.0 || Elapsed >= CaretRestSeconds || FHostMotion::IsReduced())
	{
		return true;
	}
	const int64 Blinks = static_cast<int64>(Elapsed / CaretBlinkSeconds);
	const double Next = FMath::Min((static_cast<double>(Blinks) + 1.0) * CaretBlinkSeconds, CaretRestSeconds);
	FHostSleep::RequestFrameAt(GetState().LastInput + Next);
	return Blinks % 2 == 0;
}

bool SHostTextWidget::FindCaret(const FGeometry& Geometry, FSlateRect& OutRect) const
{
	FTextView& View = GetView();
	const FTextCaretPlace Place =
		View.HasPreedit() ? View.PlaceInPreedit(GetState().PreeditCursor) : View.PlaceOf(GetEditor().GetCaret(), GetState().bCaretRowEnd);
	float BlockTop = 0.0f;
	if (!View.FindTop(Place.Block, BlockTop))
	{
		return false;
	}
	const FSlateRect Rect = GetTextRect(Geometry);
	const float Width = GetCaretWidth(Geometry.GetAccumulatedScale());
	// Blanks at the end of a full row hang outside; the caret stays where it can be seen.
	const bool bWraps = Setup->AutoWrapText.Get();
	const float X = FMath::RoundToFloat(Rect.Left + (bWraps ? FMath::Min(Place.X, Rect.Width()) : Place.X - View.GetScrollX()));
	const float Y = FMath::RoundToFloat(Rect.Top + BlockTop + Place.Top);
	OutRect = FSlateRect(X, Y, X + Width, Y + FMath::RoundToFloat(Place.Height));
	return true;
}

bool SHostTextWidget::GetTextInputArea(FSlateRect& OutCaret) const
{
	if (!CanEdit())
	{
		return false;
	}
	if (!FindCaret(GetCachedGeometry(), OutCaret))
	{
		OutCaret = GetCachedGeometry().GetLayoutBoundingRect();
	}
	return true;
}

void SHostTextWidget::PaintBox(const FGeometry& Geometry, FSlateWindowElementList& Out, const FWidgetStyle& Style, bool bEnabled) const
{
	const FEditableTextBoxStyle& Box = *Setup->BoxStyle;
	const FSlateBrush* Brush = &Box.BackgroundImageNormal;
	if (!bEnabled)
	{
		Brush = &Box.BackgroundImageDisabled;
	}
	else if (HasKeyboardFocus() && FHostFocus::Get().bWindowActive)
	{
		Brush = &Box.BackgroundImageFocused;
	}
	else if (IsHovered())
	{
		Brush = &Box.BackgroundImageHovered;
	}
	else if (IsReadOnly())
	{
		Brush = &Box.BackgroundImageReadOnly;
	}
	const FLinearColor& Tint = Style.GetColorAndOpacityTint();
	const FSlateRect Rect = Geometry.GetLayoutBoundingRect();
	if (!Setup->BackgroundColor.IsSet() || Brush->DrawAs != ESlateBrushDrawType::RoundedBox)
	{
		Out.AddBrush(
			Rect, *Brush, Setup->BackgroundColor.IsSet() ? Setup->BackgroundColor.Get().GetColor(Style) : FLinearColor::White, Tint);
		return;
	}
	// A colour of the box's own replaces the fill only: a translucent one must not take the line along.
	const FSlateBrushOutlineSettings& Line = Brush->OutlineSettings;
	const float Scale = Geometry.GetAccumulatedScale();
	const FVector4f Radii(static_cast<float>(Line.CornerRadii.X) * Scale, static_cast<float>(Line.CornerRadii.Y) * Scale,
		static_cast<float>(Line.CornerRadii.Z) * Scale, static_cast<float>(Line.CornerRadii.W) * Scale);
	Out.AddRoundedBox(
		Rect, Radii, GetTextPaintColor(Setup->BackgroundColor.Get(), Style), GetTextPaintColor(Line.Color, Style), Line.Width * Scale);
}

void SHostTextWidget::PaintHint(const FSlateRect& Rect, FSlateWindowElementList& Out, const FWidgetStyle& Style) const
{
	if (!GetState().HintParagraph || Setup->HintText.Get().IsEmpty())
	{
		return;
	}
	const FColor Color = GetTextPaintColor(GetTextStyle().HintColor, Style);
	GetState().HintParagraph->Wrap(Setup->AutoWrapText.Get() ? Rect.Width() : 0.0f);
	for (int32 Line = 0; Line < GetState().HintParagraph->GetLineCount(); ++Line)
	{
		const FParagraphLine& Place = GetState().HintParagraph->GetLine(Line);
		for (const FParagraphRun& Run : GetState().HintParagraph->GetRuns(Line))
		{
			Out.AddGlyphs(Rect.Left + Run.X, Rect.Top + Place.Top + Place.Baseline, Run.Glyphs, Color);
		}
	}
}

namespace
{
	/** What a stretch of the shown line covers of one of its rows: several spans where directions are mixed, none where it ends before. */
	TArray<FParagraphSpan> GetSpansInRow(const FTextRow& Row, int32 Begin, int32 End)
	{
		TArray<FParagraphSpan> Spans;
		const int32 From = FMath::Clamp(Begin, Row.Begin, Row.End);
		const int32 To = FMath::Clamp(End, Row.Begin, Row.End);
		if (From < To)
		{
			Row.Paragraph->GetSpans(Row.Row, From - Row.SegmentBegin, To - Row.SegmentBegin, Spans);
		}
		return Spans;
	}
}

void SHostTextWidget::PaintRow(
	const FTextRow& Row, const FSlateRect& Rect, FSlateWindowElementList& Out, const FWidgetStyle& Style, bool bEnabled) const
{
	FTextView& View = GetView();
	const float Left = Rect.Left - View.GetScrollX();
	const float Baseline = Rect.Top + Row.Top + Row.Paragraph->GetLine(Row.Row).Baseline;

	// 1. The selection lies below the letters.
	PaintSelection(Row, FVector2f(Left, Rect.Top + Row.Top), Out, Style);

	// 2. The letters, those runs that reach into the box.
	const FSlateColor& TextColor = !bEnabled ? GetTextStyle().DisabledColor
		: Setup->ForegroundColor.IsSet()	 ? Setup->ForegroundColor.Get()
											 : GetTextStyle().ColorAndOpacity;
	const FColor Color = GetTextPaintColor(TextColor, Style);
	for (const FParagraphRun& Run : Row.Paragraph->GetRuns(Row.Row))
	{
		if (Left + Run.X < Rect.Right && Left + Run.X + Run.Width > Rect.Left)
		{
			Out.AddGlyphs(Left + Run.X, Baseline, Run.Glyphs, Color);
		}
	}

	// 3. A line below what an input method has not confirmed yet.
	if (View.HasPreedit() && View.GetPreeditPlace().GetLineIndex() == Row.Block.Line)
	{
		const int32 Offset = View.GetPreeditPlace().GetOffset();
		const FFontLineMetrics& Metrics = View.GetMetrics();
		const float Y = FMath::RoundToFloat(Baseline + Metrics.UnderlineOffset);
		const float Thickness = FMath::Max(FMath::RoundToFloat(Metrics.LineThickness), 1.0f);
		for (const FParagraphSpan& Span : GetSpansInRow(Row, Offset, Offset + View.GetPreeditLength()))
		{
			Out.AddBox(FSlateRect(FMath::RoundToFloat(Left + Span.Left), Y, FMath::RoundToFloat(Left + Span.Right), Y + Thickness), Color);
		}
	}
}

void SHostTextWidget::PaintSelection(
	const FTextRow& Row, const FVector2f& Corner, FSlateWindowElementList& Out, const FWidgetStyle& Style) const
{
	const FTextEditor& Editor = GetEditor();
	const FTextLocation& Begin = Editor.GetSelectionBegin();
	const FTextLocation& End = Editor.GetSelectionEnd();
	const int32 LineIndex = Row.Block.Line;
	if (!Editor.HasSelection() || LineIndex < Begin.GetLineIndex() || LineIndex > End.GetLineIndex())
	{
		return;
	}
	const float Bottom = Corner.Y + Row.Paragraph->GetLine(Row.Row).Height;
	const FColor Color =
		GetTextPaintColor(HasKeyboardFocus() ? GetTextStyle().SelectionColor : GetTextStyle().InactiveSelectionColor, Style);
	const int32 From = Begin.GetLineIndex() < LineIndex ? Row.Begin : GetView().ToShown(Begin);
	const int32 To = End.GetLineIndex() > LineIndex ? Row.End : GetView().ToShown(End);
	for (const FParagraphSpan& Span : GetSpansInRow(Row, From, To))
	{
		Out.AddBox(
			FSlateRect(FMath::RoundToFloat(Corner.X + Span.Left), Corner.Y, FMath::RoundToFloat(Corner.X + Span.Right), Bottom), Color);
	}
	// A selected line break has no letter to show it.
	if (Row.bEndsLine && LineIndex < End.GetLineIndex())
	{
		const float X = FMath::RoundToFloat(Corner.X + Row.Paragraph->GetCaretX(Row.Row, Row.End - Row.SegmentBegin));
		Out.AddBox(FSlateRect(X, Corner.Y, X + SelectedBreakWidth * Out.GetScale(), Bottom), Color);
	}
}

int32 SHostTextWidget::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	UpdateLayout(AllottedGeometry);
	const float Scale = AllottedGeometry.GetAccumulatedScale();
	const bool bEnabled = ShouldBeEnabled(bParentEnabled);
	FTextView& View = GetView();
	if (Setup->BoxStyle)
	{
		PaintBox(AllottedGeometry, OutDrawElements, InWidgetStyle, bEnabled);
	}

	const FSlateRect Rect = GetTextRect(AllottedGeometry);
	FSlateRect Clip = Rect;
	// A caret behind a full row stands in the padding, and slanted letters lean out a little.
	Clip.Left -= 1.0f;
	Clip.Right += GetCaretWidth(Scale);
	OutDrawElements.PushClip(Clip);
	if (GetEditor().GetDocument().IsEmpty() && !View.HasPreedit())
	{
		PaintHint(Rect, OutDrawElements, InWidgetStyle);
	}
	View.ForEachRow([&](const FTextRow& Row) { PaintRow(Row, Rect, OutDrawElements, InWidgetStyle, bEnabled); });
	FSlateRect Caret;
	if (HasKeyboardFocus() && bEnabled && FHostFocus::Get().bWindowActive && IsCaretOn(Args.GetCurrentTime()) &&
		FindCaret(AllottedGeometry, Caret))
	{
		OutDrawElements.AddBox(Caret, GetTextPaintColor(GetTextStyle().CaretColor, InWidgetStyle));
	}
	OutDrawElements.PopClip();

	if (GetState().bBar)
	{
		const FScrollBarStyle& BarStyle = Setup->BoxStyle->ScrollBarStyle;
		const FSlateRect Bar = GetBarRect(AllottedGeometry);
		const FSlateRect Thumb =
			FScrollThumb::GetThumb(Bar, Rect.Height(), View.GetContentHeight(), View.GetScrollOffset(), BarStyle, Scale);
		GetState().Thumb.Paint(Bar, Thumb, OutDrawElements, BarStyle, InWidgetStyle, Scale);
	}
	return LayerId;
}
