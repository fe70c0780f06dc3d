#include "Widgets/Text/STextBlock.h"

#include "Host/HostAccess.h"
#include "Rendering/DrawElements.h"
#include "SharedParagraphs.h"
#include "Styling/AppStyle.h"

// A text block is the most frequent widget: a long conversation holds tens of thousands. So it keeps little and does
// little twice. Short texts share one laid-out paragraph with every block of the same text, font and scale
// (FSharedParagraphs), as long as nobody wraps it; the first wrap takes a copy of its own. What few blocks set lies in
// FLook and FRareArguments.
//
// A wrapped block has a chicken and an egg: how high it is depends on the width that it is given, and that is known only
// when it is arranged. It measures itself at the width it had last, and asks for a new layout of the same frame when it
// then meets another width.

namespace
{
	/** Room that rounding may take away without a text being called too wide, device pixels. */
	constexpr float WidthTolerance = 0.5f;

	const FTextBlockStyle& GetPlainTextStyle()
	{
		static const FTextBlockStyle Style = FTextBlockStyle(FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>("NormalText"))
												 .SetColorAndOpacity(FSlateColor::UseForeground());
		return Style;
	}

	bool IsUnknownFont(const FSlateFontInfo& Font)
	{
		static const FName Unknown(TEXT("Unknown"));
		return Font.FamilyName == Unknown;
	}

	TSharedRef<ITextParagraph> MakeParagraphOf(const FString& Text, const FSlateFontInfo& Font, float Scale)
	{
		return Text.Len() <= FSharedParagraphs::MaxLength ? FSharedParagraphs::Get(Text, Font, Scale)
														  : ITextShaper::Get().MakeParagraph(Text, Font, Scale);
	}

	bool IsBlank(TCHAR Char)
	{
		return Char == TEXT(' ') || Char == TEXT('\t');
	}
}

void STextBlock::Construct(const FArguments& InArgs)
{
	SetCanTick(false);
	TextStyle = InArgs._TextStyle ? InArgs._TextStyle : &GetPlainTextStyle();
	AssignSizeAttribute(Text, InArgs._Text);
	SetAutoWrapText(InArgs._AutoWrapText);
	if (InArgs._Font.IsSet())
	{
		SetFont(InArgs._Font);
	}
	if (InArgs._ColorAndOpacity.IsSet())
	{
		SetColorAndOpacity(InArgs._ColorAndOpacity);
	}
	if (InArgs._Justification.IsSet())
	{
		SetJustification(InArgs._Justification);
	}
	OverflowPolicy = InArgs._OverflowPolicy.Get(ETextOverflowPolicy::Clip);
	if (InArgs._WrapTextAt.IsSet())
	{
		SetWrapTextAt(InArgs._WrapTextAt);
	}
	if (InArgs._Margin.IsSet())
	{
		SetMargin(InArgs._Margin);
	}
	if (InArgs._LineHeightPercentage.IsSet())
	{
		SetLineHeightPercentage(InArgs._LineHeightPercentage);
	}
	if (InArgs._MinDesiredWidth.IsSet())
	{
		SetMinDesiredWidth(InArgs._MinDesiredWidth);
	}
	if (InArgs._OnDoubleClicked.IsBound())
	{
		GetRare().OnDoubleClicked = InArgs._OnDoubleClicked;
	}
}

STextBlock::FLook& STextBlock::GetLook()
{
	if (!Look)
	{
		Look = MakeUnique<FLook>();
	}
	return *Look;
}

STextBlock::FRareArguments& STextBlock::GetRare()
{
	if (!Rare)
	{
		Rare = MakeUnique<FRareArguments>();
	}
	return *Rare;
}

// Setting the same words again is frequent, by owners that poll, and must cost neither shaping nor a layout.
void STextBlock::SetText(TAttribute<FText> InText)
{
	if (!InText.IsBound() && !Text.IsBound() && InText.Get().EqualTo(Text.Get()))
	{
		// The same words, though perhaps with another key.
		Text = MoveTemp(InText);
		return;
	}
	bShapeAnew = true;
	AssignSizeAttribute(Text, MoveTemp(InText));
}

void STextBlock::SetFont(TAttribute<FSlateFontInfo> InFont)
{
	bShapeAnew = true;
	AssignSizeAttribute(GetLook().Font, MoveTemp(InFont));
}

void STextBlock::SetAutoWrapText(TAttribute<bool> InAutoWrapText)
{
	if (!InAutoWrapText.IsBound() && !bAutoWrapBound)
	{
		if (bAutoWrap != InAutoWrapText.Get())
		{
			bAutoWrap = !bAutoWrap;
			Invalidate(EInvalidateWidgetReason::Layout);
		}
		return;
	}
	AssignSizeAttribute(GetRare().AutoWrapText, MoveTemp(InAutoWrapText));
	bAutoWrapBound = Rare->AutoWrapText.IsBound();
	if (!bAutoWrapBound)
	{
		bAutoWrap = Rare->AutoWrapText.Get();
	}
}

void STextBlock::SetWrapTextAt(TAttribute<float> InWrapTextAt)
{
	// Many say that they have none; that makes it no rare argument.
	if (!Rare && !InWrapTextAt.IsBound() && InWrapTextAt.Get() == 0.0f)
	{
		return;
	}
	AssignSizeAttribute(GetRare().WrapTextAt, MoveTemp(InWrapTextAt));
}

void STextBlock::SetMargin(TAttribute<FMargin> InMargin)
{
	AssignSizeAttribute(GetRare().Margin, MoveTemp(InMargin));
}

void STextBlock::SetLineHeightPercentage(TAttribute<float> InLineHeightPercentage)
{
	AssignSizeAttribute(GetRare().LineHeightPercentage, MoveTemp(InLineHeightPercentage));
}

void STextBlock::SetMinDesiredWidth(TAttribute<float> InMinDesiredWidth)
{
	AssignSizeAttribute(GetRare().MinDesiredWidth, MoveTemp(InMinDesiredWidth));
}

void STextBlock::SetOverflowPolicy(TOptional<ETextOverflowPolicy> InOverflowPolicy)
{
	OverflowPolicy = InOverflowPolicy.Get(ETextOverflowPolicy::Clip);
}

FSlateFontInfo STextBlock::GetFont() const
{
	return ReadFont();
}

FReply STextBlock::OnMouseButtonDoubleClick(const FGeometry& MyGeometry, const FPointerEvent& MouseEvent)
{
	if (Rare && Rare->OnDoubleClicked.IsBound() && MouseEvent.GetEffectingButton() == EKeys::LeftMouseButton)
	{
		return Rare->OnDoubleClicked.Execute();
	}
	return FReply::Unhandled();
}

// Cheap while nothing has changed. Bound texts are read in each frame and compared to what was shaped.
void STextBlock::UpdateParagraph(float Scale) const
{
	const bool bPolled = Text.IsBound() || (Look && Look->Font.IsBound());
	if (!bShapeAnew && !bPolled && ShapedScale == Scale)
	{
		return;
	}
	const FText& Current = Text.Get();
	const FSlateFontInfo& CurrentFont = ReadFont();
	// Exact comparison: the operators of texts ignore case.
	if (Paragraph && ShapedScale == Scale && ShapedFont == CurrentFont &&
		(Current.IdenticalTo(ShapedText) || Current.ToString().Equals(ShapedText.ToString())))
	{
		bShapeAnew = false;
		return;
	}
	ShapedText = Current;
	ShapedFont = CurrentFont;
	ShapedScale = Scale;
	bShapeAnew = false;
	Elided.Reset();
	Paragraph = MakeParagraphOf(ShapedText.ToString(), ShapedFont, Scale);
	WrapPixels = 0.0f;
	NaturalPixels = GetNaturalPixels();
}

// The width without wrapping, whole pixels.
float STextBlock::GetNaturalPixels() const
{
	// Blanks at a line's end hang over when text is wrapped, but between two widgets of a line they are the gap.
	float Width = Paragraph->GetUnwrappedWidth();
	const FString& Shaped = ShapedText.ToString();
	for (int32 Line = 0; Line < Paragraph->GetLineCount(); ++Line)
	{
		const int32 End = Paragraph->GetLine(Line).EndIndex;
		if (End > 0 && End <= Shaped.Len() && IsBlank(Shaped[End - 1]))
		{
			Width = FMath::Max(Width, Paragraph->GetCaretX(Line, End));
		}
	}
	return FMath::CeilToFloat(Width);
}

// Zero means no wrapping. A fixed width and the room that is there may both ask for one; the smaller wins.
float STextBlock::GetWrapPixels(float AllottedWidth, float Scale) const
{
	const float Fixed = Rare ? Rare->WrapTextAt.Get() : 0.0f;
	float Width = FMath::Max(Fixed, 0.0f) * Scale;
	if (WrapsToAllotted() && AllottedWidth > 0.0f)
	{
		const FMargin Margin = GetMargin();
		const float Room = FMath::Max((AllottedWidth - Margin.Left - Margin.Right) * Scale, 1.0f);
		Width = Width > 0.0f ? FMath::Min(Width, Room) : Room;
	}
	return Width;
}

// A text that fits is not wrapped at all, so that it can stay the shared one.
void STextBlock::WrapTo(float Pixels) const
{
	if (Pixels > 0.0f && Paragraph->GetUnwrappedWidth() <= Pixels + WidthTolerance)
	{
		Pixels = 0.0f;
	}
	if (Pixels != WrapPixels)
	{
		const FString& Shaped = ShapedText.ToString();
		if (WrapPixels == 0.0f && Shaped.Len() <= FSharedParagraphs::MaxLength)
		{
			// Others may show the same one.
			Paragraph = ITextShaper::Get().MakeParagraph(Shaped, ShapedFont, ShapedScale);
		}
		Paragraph->Wrap(Pixels);
		WrapPixels = Pixels;
	}
}

// What the block wants. One that wraps to its room wants all the width it could use, so that a parent that has room
// gives it; one that wraps at a fixed width wants what its lines take.
FVector2D STextBlock::MeasureParagraph(float Scale) const
{
	const FVector2f Wrapped = Paragraph->GetSize();
	float Width = NaturalPixels;
	const float Fixed = Rare ? FMath::Max(Rare->WrapTextAt.Get(), 0.0f) * Scale : 0.0f;
	if (Fixed > 0.0f)
	{
		Width =
			WrapsToAllotted() ? FMath::Min(Width, FMath::CeilToFloat(Fixed)) : (WrapPixels > 0.0f ? FMath::CeilToFloat(Wrapped.X) : Width);
	}
	const float Height = FMath::RoundToFloat(Wrapped.Y * GetLineHeight());
	const FMargin Margin = GetMargin();
	FVector2D Size(Width / Scale + Margin.Left + Margin.Right, Height / Scale + Margin.Top + Margin.Bottom);
	if (Rare)
	{
		Size.X = FMath::Max(Size.X, static_cast<double>(Rare->MinDesiredWidth.Get()));
	}
	return Size;
}

FVector2D STextBlock::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	if (IsUnknownFont(ReadFont()))
	{
		return Measured = FVector2D(16, 16);
	}
	UpdateParagraph(LayoutScaleMultiplier);
	WrapTo(GetWrapPixels(LastAllottedWidth, LayoutScaleMultiplier));
	return Measured = MeasureParagraph(LayoutScaleMultiplier);
}

// Each line that is too wide is cut before the first letter that would not leave room for the dots, blanks before them
// dropped. Kept until the room changes.
const ITextParagraph& STextBlock::GetElided(float RoomPixels) const
{
	if (Elided && Elided->Pixels == RoomPixels)
	{
		return *Elided->Paragraph;
	}
	const FString Ellipsis(TEXT("\u2026"));
	const float EllipsisWidth = FSharedParagraphs::Get(Ellipsis, ShapedFont, ShapedScale)->GetUnwrappedWidth();
	const FString& Whole = ShapedText.ToString();
	FString Cut;
	for (int32 Line = 0; Line < Paragraph->GetLineCount(); ++Line)
	{
		const FParagraphLine& Span = Paragraph->GetLine(Line);
		if (Line > 0)
		{
			Cut.AppendChar(TEXT('\n'));
		}
		if (Span.Width <= RoomPixels + WidthTolerance)
		{
			Cut.Append(FStringView(Whole).Mid(Span.BeginIndex, Span.EndIndex - Span.BeginIndex));
			continue;
		}
		const float Room = FMath::Max(RoomPixels - EllipsisWidth, 0.0f);
		int32 End = Paragraph->GetIndexAt(Line, Room);
		while (End > Span.BeginIndex && (Paragraph->GetCaretX(Line, End) > Room || IsBlank(Whole[End - 1])))
		{
			End = FMath::Max(Paragraph->GetPreviousGrapheme(End), Span.BeginIndex);
		}
		Cut.Append(FStringView(Whole).Mid(Span.BeginIndex, FMath::Max(End - Span.BeginIndex, 0)));
		Cut.Append(Ellipsis);
	}
	Elided = MakeUnique<FElided>();
	Elided->Paragraph = ITextShaper::Get().MakeParagraph(Cut, ShapedFont, ShapedScale);
	Elided->Pixels = RoomPixels;
	return *Elided->Paragraph;
}

int32 STextBlock::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	if (IsUnknownFont(ReadFont()))
	{
		OutDrawElements.AddChequer(AllottedGeometry.GetLayoutBoundingRect());
		return LayerId;
	}
	const float Scale = AllottedGeometry.GetAccumulatedScale();
	const float Width = static_cast<float>(AllottedGeometry.GetLocalSize().X);
	if (Width > 0.0f)
	{
		LastAllottedWidth = Width;
	}
	// Painting may meet another scale or width than measuring did.
	UpdateParagraph(Scale);
	WrapTo(GetWrapPixels(Width, Scale));
	if (!Measured.Equals(MeasureParagraph(Scale), 0.01))
	{
		// Wrapped at a width that was not known when it was measured, or the text came in since.
		const_cast<STextBlock*>(this)->Invalidate(EInvalidateWidgetReason::Layout);
	}

	const FMargin Margin = GetMargin();
	const float Room = (Width - Margin.Left - Margin.Right) * Scale;
	const FVector2D& Corner = AllottedGeometry.GetAbsolutePosition();
	const FVector2D Origin(FMath::RoundToFloat(Corner.X + Margin.Left * Scale), Corner.Y + Margin.Top * Scale);
	const FLinearColor Color =
		(Look && Look->ColorAndOpacity.IsSet() ? Look->ColorAndOpacity.Get() : TextStyle->ColorAndOpacity).GetColor(InWidgetStyle);
	const FLinearColor& Tint = InWidgetStyle.GetColorAndOpacityTint();
	const bool bTooWide = Paragraph->GetSize().X > Room + WidthTolerance;
	if (!bTooWide)
	{
		PaintLines(*Paragraph, Origin, Room, Color, Tint, OutDrawElements, Scale);
		return LayerId;
	}
	const bool bElide = OverflowPolicy == ETextOverflowPolicy::Ellipsis && WrapPixels == 0.0f;
	// Cut off at the sides only: marks above and below a line may reach out of it.
	const FSlateRect Bounds = AllottedGeometry.GetLayoutBoundingRect();
	const FSlateRect Clip = OutDrawElements.GetClip();
	OutDrawElements.PushClip(FSlateRect(Bounds.Left, Clip.Top, Bounds.Right, Clip.Bottom));
	PaintLines(bElide ? GetElided(FMath::Max(Room, 0.0f)) : *Paragraph, Origin, Room, Color, Tint, OutDrawElements, Scale);
	OutDrawElements.PopClip();
	return LayerId;
}

namespace
{
	/** The first line that reaches below a place, by search: a message may have thousands. */
	int32 FindFirstLineBelow(const ITextParagraph& Lines, double OriginY, float LineHeight, float Where)
	{
		int32 Low = 0;
		for (int32 High = Lines.GetLineCount(); Low < High;)
		{
			const int32 Middle = (Low + High) / 2;
			const FParagraphLine& Line = Lines.GetLine(Middle);
			if (OriginY + (Line.Top + Line.Height) * LineHeight <= Where)
			{
				Low = Middle + 1;
			}
			else
			{
				High = Middle;
			}
		}
		return Low;
	}
}

void STextBlock::PaintLines(const ITextParagraph& Lines, const FVector2D& Origin, float RoomPixels, const FLinearColor& Color,
	const FLinearColor& Tint, FSlateWindowElementList& OutDrawElements, float Scale) const
{
	const float LineHeight = GetLineHeight();
	const ETextJustify::Type Justify = GetJustification();
	const FColor Bytes = (Color * Tint).ToFColorSRGB();
	const FSlateRect& Clip = OutDrawElements.GetClip();
	const bool bStrike = TextStyle->StrikeBrush.DrawAs != ESlateBrushDrawType::NoDrawType;
	const bool bUnderline = TextStyle->UnderlineBrush.DrawAs != ESlateBrushDrawType::NoDrawType;
	for (int32 Index = FindFirstLineBelow(Lines, Origin.Y, LineHeight, Clip.Top); Index < Lines.GetLineCount(); ++Index)
	{
		// 1. Whole pixels, so that lines stand alike. The added or missing height is half above and half below the font's own.
		const FParagraphLine& Line = Lines.GetLine(Index);
		const float Top = static_cast<float>(Origin.Y) + FMath::RoundToFloat(Line.Top * LineHeight) +
			FMath::RoundToFloat(Line.Height * (LineHeight - 1.0f) * 0.5f);
		if (Top >= Clip.Bottom)
		{
			break;
		}
		const float Slack = Justify == ETextJustify::Left ? 0.0f : FMath::Max(RoomPixels - Line.Width, 0.0f);
		const float Left = static_cast<float>(Origin.X) + FMath::RoundToFloat(Justify == ETextJustify::Center ? Slack * 0.5f : Slack);
		const float Baseline = FMath::RoundToFloat(Top + Line.Baseline);

		// 2. The letters.
		for (const FParagraphRun& Run : Lines.GetRuns(Index))
		{
			OutDrawElements.AddGlyphs(Left + Run.X, Baseline, Run.Glyphs, Bytes);
		}

		// 3. Lines through and below them.
		if (!bStrike && !bUnderline)
		{
			continue;
		}
		const FFontLineMetrics Metrics = ITextShaper::Get().GetLineMetrics(ShapedFont, Scale);
		const float Thickness = FMath::Max(FMath::RoundToFloat(Metrics.LineThickness), 1.0f);
		const auto AddLine = [&](float Y, const FSlateBrush& Brush, const FLinearColor& BrushColor)
		{ OutDrawElements.AddBrush(FSlateRect(Left, Y, Left + Line.Width, Y + Thickness), Brush, BrushColor, Tint); };
		if (bStrike)
		{
			AddLine(FMath::RoundToFloat(Baseline - Metrics.StrikeOffset), TextStyle->StrikeBrush, FLinearColor(1.0f, 1.0f, 1.0f, Color.A));
		}
		if (bUnderline)
		{
			AddLine(FMath::RoundToFloat(Baseline + Metrics.UnderlineOffset), TextStyle->UnderlineBrush, Color);
		}
	}
}

void STextBlock::DescribeAccess(FHostAccess& Out) const
{
	Out.Name = Text.Get();
	Out.Role = Out.Name.IsEmpty() ? EHostRole::None : EHostRole::Label;
}
