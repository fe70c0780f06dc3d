#include "Host/ScrollThumb.h"

// A thumb has two lengths: the share of the content in view, and the least that a hand can grab. Where the second one is
// the longer, the thumb's way is shorter than the bar's rest; so places go by shares of the way, never of the bar.

float FScrollRange::GetThumbLength(float Bar, float MinLength) const
{
	const float Length = static_cast<float>(Bar * View / FMath::Max(Content, 1.0));
	return FMath::Min(FMath::Max(Length, MinLength), Bar);
}

float FScrollRange::GetThumbStart(float Bar, float MinLength) const
{
	const float Way = Bar - GetThumbLength(Bar, MinLength);
	return IsNeeded() ? Way * static_cast<float>(FMath::Clamp(Offset / (Content - View), 0.0, 1.0)) : 0.0f;
}

double FScrollRange::GetOffsetFor(float ThumbStart, float Bar, float MinLength) const
{
	const float Way = Bar - GetThumbLength(Bar, MinLength);
	return Way > 0.0f ? FMath::Clamp(ThumbStart / Way, 0.0f, 1.0f) * FMath::Max(Content - View, 0.0) : 0.0;
}

FSlateRect FScrollThumb::GetThumb(
	const FSlateRect& Bar, double View, double Content, double Offset, const FScrollBarStyle& Style, float Scale)
{
	const FScrollRange Range{ View, Content, Offset };
	if (!Range.IsNeeded() || Bar.IsEmpty())
	{
		return FSlateRect();
	}
	const float MinLength = Style.MinThumbLength * Scale;
	const float Top = Bar.Top + Range.GetThumbStart(Bar.Height(), MinLength);
	const float Bottom = Top + Range.GetThumbLength(Bar.Height(), MinLength);
	return FSlateRect(Bar.Left, FMath::RoundToFloat(Top), Bar.Right, FMath::RoundToFloat(Bottom));
}

double FScrollThumb::GetOffsetFor(
	const FSlateRect& Bar, float ThumbTop, double View, double Content, const FScrollBarStyle& Style, float Scale)
{
	return FScrollRange{ View, Content }.GetOffsetFor(ThumbTop - Bar.Top, Bar.Height(), Style.MinThumbLength * Scale);
}

void FScrollThumb::PaintThumb(const FSlateRect& Thumb, float Thickness, bool bDragging, bool bHovered, FSlateWindowElementList& Out,
	const FScrollBarStyle& Style, const FWidgetStyle& WidgetStyle)
{
	const FSlateColor& Color = bDragging ? Style.DraggedThumb : bHovered ? Style.HoveredThumb : Style.NormalThumb;
	const FColor Fill = (Color.GetColor(WidgetStyle) * WidgetStyle.GetColorAndOpacityTint()).ToFColorSRGB();
	const float Radius = Thickness * 0.5f;
	// A mark: whoever changes colours for more contrast makes it as bright as a line.
	Out.AddRoundedBox(Thumb, FVector4f(Radius, Radius, Radius, Radius), Fill, Fill, 0.0f);
}

void FScrollThumb::Paint(const FSlateRect& Bar, const FSlateRect& Thumb, FSlateWindowElementList& Out, const FScrollBarStyle& Style,
	const FWidgetStyle& WidgetStyle, float Scale) const
{
	if (Thumb.IsEmpty())
	{
		return;
	}
	const float Width = FMath::RoundToFloat((bDragging || bHovered ? Style.ActiveThumbWidth : Style.ThumbWidth) * Scale);
	const float Left = FMath::RoundToFloat((Bar.Left + Bar.Right - Width) * 0.5f);
	PaintThumb(FSlateRect(Left, Thumb.Top, Left + Width, Thumb.Bottom), Width, bDragging, bHovered, Out, Style, WidgetStyle);
}
