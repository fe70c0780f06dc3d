#include "FoundMarks.h"

#include "Host/TextShaper.h"
#include "Rendering/DrawElements.h"

namespace
{
	/** A text that is wider by less than this is not wrapped, as in a text block. */
	constexpr float WrapTolerance = 0.01f;
	constexpr float MarkRadius = 2.0f;

	const FColor FoundFill(0xF2, 0xB8, 0x3C, 0x30);
	const FColor FoundFrame(0xF2, 0xB8, 0x3C, 0xA0);
	const FColor CurrentFill(0xFF, 0xD1, 0x5C, 0x60);
	const FColor CurrentFrame(0xFF, 0xE0, 0x8A, 0xFF);
}

void FoundMarks::AppendRects(const FString& Text, const FSlateFontInfo& Font, float Scale, float WrapPixels,
	const Velmora::FFoundPlace& Place, TArray<FSlateRect>& OutRects)
{
	const TSharedRef<ITextParagraph> Paragraph = ITextShaper::Get().MakeParagraph(Text, Font, Scale);
	if (WrapPixels > 0.0f && Paragraph->GetUnwrappedWidth() > WrapPixels + WrapTolerance)
	{
		Paragraph->Wrap(WrapPixels);
	}
	const int32 End = Place.Begin + Place.Length;
	TArray<FParagraphSpan> Spans;
	for (int32 Index = Paragraph->GetLineOfIndex(Place.Begin); Index < Paragraph->GetLineCount(); ++Index)
	{
		const FParagraphLine& Line = Paragraph->GetLine(Index);
		if (Line.BeginIndex >= End)
		{
			break;
		}
		Spans.Reset();
		Paragraph->GetSpans(Index, FMath::Max(Place.Begin, Line.BeginIndex), FMath::Min(End, Line.EndIndex), Spans);
		for (const FParagraphSpan& Span : Spans)
		{
			if (Span.Right > Span.Left)
			{
				OutRects.Add(FSlateRect(Span.Left, Line.Top, Span.Right, Line.Top + Line.Height));
			}
		}
	}
}

void FoundMarks::Paint(const FSlateRect& Rect, float Scale, bool bIsCurrent, FSlateWindowElementList& Out)
{
	const float Radius = MarkRadius * Scale;
	const float Width = FMath::Max(FMath::RoundToFloat(Scale), 1.0f);
	Out.AddRoundedBox(Rect.ExtendBy(Width), FVector4f(Radius, Radius, Radius, Radius), bIsCurrent ? CurrentFill : FoundFill,
		bIsCurrent ? CurrentFrame : FoundFrame, Width);
}

void SFoundMarks::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	Font = InArgs._Font;
	Places = InArgs._Places;
	WrapTextAt = InArgs._WrapTextAt;
	bIsCurrent = InArgs._IsCurrent;
}

int32 SFoundMarks::OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
	FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const
{
	const float Scale = AllottedGeometry.GetAccumulatedScale();
	const float Wrap = WrapTextAt.Get() * Scale;
	if (RectScale != Scale || RectWrap != Wrap)
	{
		RectScale = Scale;
		RectWrap = Wrap;
		Rects.Reset();
		for (const Velmora::FFoundPlace& Place : Places)
		{
			FoundMarks::AppendRects(Text, Font, Scale, Wrap, Place, Rects);
		}
	}
	const FVector2D& Corner = AllottedGeometry.GetAbsolutePosition();
	const float Left = FMath::RoundToFloat(static_cast<float>(Corner.X));
	const float Top = static_cast<float>(Corner.Y);
	for (const FSlateRect& Rect : Rects)
	{
		FoundMarks::Paint(
			FSlateRect(Left + Rect.Left, Top + Rect.Top, Left + Rect.Right, Top + Rect.Bottom), Scale, bIsCurrent, OutDrawElements);
	}
	return LayerId;
}

FVector2D SFoundMarks::ComputeDesiredSize(float LayoutScaleMultiplier) const
{
	// The text above it gives the size.
	return FVector2D(0, 0);
}
