#include "Host/ScrollThumb.h"

namespace
{
	float GetScrollThumbLength(const FSlateRect& Bar, double View, double Content, const FScrollBarStyle& Style, float Scale)
	{
		const float Length = static_cast<float>(Bar.Height() * View / FMath::Max(Content, 1.0));
		return FMath::Min(FMath::Max(Length, Style.MinThumbLength * Scale), Bar.Height());
	}
}

FSlateRect FScrollThumb::GetThumb(
	const FSlateRect& Bar, double View, double Content, double Offset, const FScrollBarStyle& Style, float Scale)
{
	if (Content <= View || Bar.IsEmpty())
	{
		return FSlateRect();
	}
	const float Length = GetScrollThumbLength(Bar, View, Content, Style, Scale);
	const float Top = Bar.Top + (Bar.Height() - Length) * static_cast<float>(FMath::Clamp(Offset / (Content - View), 0.0, 1.0));
	return FSlateRect(Bar.Left, FMath::RoundToFloat(Top), Bar.Right, FMath::RoundToFloat(Top + Length));
}

double FScrollThumb::GetOffsetFor(
	const FSlateRect& Bar, float ThumbTop, double View, double Content, const FScrollBarStyle& Style, float Scale)
{
	const float Room = Bar.Height() - GetScrollThumbLength(Bar, View, Content, Style, Scale);
	return Room > 0.0f ? FMath::Clamp((ThumbTop - Bar.Top) / Room, 0.0f, 1.0f) * FMath::Max(Content - View, 0.0) : 0.0;
}

void FScrollThumb::Paint(const FSlateRect& Bar, const FSlateRect& Thumb, FSlateWindowElementList& Out, const FScrollBarStyle& Style,
	const FWidgetStyle& WidgetStyle, float Scale) const
{
	if (Thumb.IsEmpty())
	{
		return;
	}
	const FSlateColor& Color = bDragging ? Style.DraggedThumb : bHovered ? Style.HoveredThumb : Style.NormalThumb;
	const float Width = FMath::RoundToFloat((bDragging || bHovered ? Style.ActiveThumbWidth : Style.ThumbWidth) * Scale);
	const float Left = FMath::RoundToFloat((Bar.Left + Bar.Right - Width) * 0.5f);
	const float Radius = Width * 0.5f;
	const FLinearColor Fill = Color.GetColor(WidgetStyle) * WidgetStyle.GetColorAndOpacityTint();
	Out.AddRoundedBox(FSlateRect(Left, Thumb.Top, Left + Width, Thumb.Bottom), FVector4f(Radius, Radius, Radius, Radius),
		Fill.ToFColorSRGB(), FColor(0, 0, 0, 0), 0.0f);
}
