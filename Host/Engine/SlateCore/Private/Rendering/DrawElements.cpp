#include "Rendering/DrawElements.h"

#include "Styling/SlateBrush.h"

// What is to be painted, as a flat list. Nothing that cannot be seen gets in, so two lists differ only where the picture
// does; every element carries its clip, so that any part of the list can be painted alone.

namespace
{
	bool IsSameColor(const FColor& A, const FColor& B)
	{
		return A.R == B.R && A.G == B.G && A.B == B.B && A.A == B.A;
	}

	FLinearColor Multiply(const FLinearColor& A, const FLinearColor& B)
	{
		return FLinearColor(A.R * B.R, A.G * B.G, A.B * B.B, A.A * B.A);
	}
}

bool FSlateDrawElement::operator==(const FSlateDrawElement& Other) const
{
	return Type == Other.Type && bTintImage == Other.bTintImage && IsSameColor(Color, Other.Color) &&
		IsSameColor(OutlineColor, Other.OutlineColor) && OutlineWidth == Other.OutlineWidth && ShadowBlur == Other.ShadowBlur &&
		ShadowOffset == Other.ShadowOffset && Radii.X == Other.Radii.X && Radii.Y == Other.Radii.Y && Radii.Z == Other.Radii.Z &&
		Radii.W == Other.Radii.W && Rect == Other.Rect && Clip == Other.Clip && Image == Other.Image && Glyphs == Other.Glyphs;
}

// Where the element may leave pixels. Glyphs reach over their advance, so for them it is the clip.
FSlateRect FSlateDrawElement::GetBounds() const
{
	switch (Type)
	{
	case ESlateDrawType::Glyphs:
		return Clip;
	case ESlateDrawType::Shadow:
	{
		FSlateRect Bounds = Rect.ExtendBy(ShadowBlur * 2.0f + 1.0f);
		Bounds.Top += FMath::Min(ShadowOffset, 0.0f);
		Bounds.Bottom += FMath::Max(ShadowOffset, 0.0f);
		return Bounds.IntersectionWith(Clip);
	}
	case ESlateDrawType::Box:
	case ESlateDrawType::RoundedBox:
	case ESlateDrawType::Image:
	case ESlateDrawType::Chequer:
		break;
	}
	// A pixel of margin for antialiased edges.
	return Rect.ExtendBy(1.0f).IntersectionWith(Clip);
}

FSlateWindowElementList::FSlateWindowElementList(const FVector2D& InWindowSize, float InScale)
{
	Reset(InWindowSize, InScale);
}

void FSlateWindowElementList::ChangeElements(TFunctionRef<void(FSlateDrawElement& Element)> Change)
{
	for (FSlateDrawElement& Element : Elements)
	{
		Change(Element);
	}
}

void FSlateWindowElementList::Reset(const FVector2D& InWindowSize, float InScale)
{
	WindowSize = InWindowSize;
	Scale = InScale;
	ChequerCount = 0;
	Elements.Reset();
	Clips.Reset();
	Clips.Add(FSlateRect(0.0f, 0.0f, static_cast<float>(WindowSize.X), static_cast<float>(WindowSize.Y)));
}

void FSlateWindowElementList::PushClip(const FSlateRect& DeviceRect)
{
	// Whole pixels, so that an edge inside a pixel does not let a neighbour shine through.
	const FSlateRect Snapped(FMath::RoundToFloat(DeviceRect.Left), FMath::RoundToFloat(DeviceRect.Top),
		FMath::RoundToFloat(DeviceRect.Right), FMath::RoundToFloat(DeviceRect.Bottom));
	Clips.Add(Clips.Last().IntersectionWith(Snapped));
}

void FSlateWindowElementList::PopClip()
{
	check(Clips.Num() > 1);
	Clips.Pop();
}

bool FSlateWindowElementList::IsVisible(const FSlateRect& Rect) const
{
	return !Rect.IsEmpty() && FSlateRect::DoRectanglesIntersect(Rect, Clips.Last());
}

void FSlateWindowElementList::AddBox(const FSlateRect& Rect, const FColor& Color)
{
	if (Color.A == 0 || !IsVisible(Rect))
	{
		return;
	}
	FSlateDrawElement& Element = Elements.AddDefaulted_GetRef();
	Element.Type = ESlateDrawType::Box;
	Element.Rect = Rect;
	Element.Clip = Clips.Last();
	Element.Color = Color;
}

void FSlateWindowElementList::AddRoundedBox(
	const FSlateRect& Rect, const FVector4f& Radii, const FColor& Fill, const FColor& Outline, float OutlineWidth)
{
	const bool bOutline = Outline.A != 0 && OutlineWidth > 0.0f;
	if ((Fill.A == 0 && !bOutline) || !IsVisible(Rect))
	{
		return;
	}
	FSlateDrawElement& Element = Elements.AddDefaulted_GetRef();
	Element.Type = ESlateDrawType::RoundedBox;
	Element.Rect = Rect;
	Element.Clip = Clips.Last();
	Element.Radii = Radii;
	Element.Color = Fill;
	// Of no width and of the box's own colour it paints nothing, and says that the box is a mark and not a surface.
	Element.OutlineColor = bOutline || (OutlineWidth <= 0.0f && Outline == Fill) ? Outline : FColor(0, 0, 0, 0);
	Element.OutlineWidth = bOutline ? OutlineWidth : 0.0f;
}

void FSlateWindowElementList::AddImage(const FSlateRect& Rect, FName FullPath, const FColor& Tint, bool bTint)
{
	if (Tint.A == 0 || !IsVisible(Rect))
	{
		return;
	}
	FSlateDrawElement& Element = Elements.AddDefaulted_GetRef();
	Element.Type = ESlateDrawType::Image;
	Element.Rect = Rect;
	Element.Clip = Clips.Last();
	Element.Color = Tint;
	Element.Image = FullPath;
	Element.bTintImage = bTint;
}

void FSlateWindowElementList::AddGlyphs(float Left, float Baseline, TSharedPtr<const FGlyphRun> Glyphs, const FColor& Color)
{
	if (Color.A == 0 || !Glyphs || Clips.Last().IsEmpty())
	{
		return;
	}
	FSlateDrawElement& Element = Elements.AddDefaulted_GetRef();
	Element.Type = ESlateDrawType::Glyphs;
	const float X = FMath::RoundToFloat(Left);
	const float Y = FMath::RoundToFloat(Baseline);
	Element.Rect = FSlateRect(X, Y, X, Y);
	Element.Clip = Clips.Last();
	Element.Color = Color;
	Element.Glyphs = MoveTemp(Glyphs);
}

void FSlateWindowElementList::AddShadow(const FSlateRect& Rect, float Radius, float Blur, float Offset, const FColor& Color)
{
	if (Color.A == 0)
	{
		return;
	}
	FSlateDrawElement& Element = Elements.AddDefaulted_GetRef();
	Element.Type = ESlateDrawType::Shadow;
	Element.Rect = Rect;
	Element.Clip = Clips.Last();
	Element.Color = Color;
	Element.Radii = FVector4f(Radius, Radius, Radius, Radius);
	Element.ShadowBlur = Blur;
	Element.ShadowOffset = Offset;
}

void FSlateWindowElementList::AddChequer(const FSlateRect& Rect)
{
	++ChequerCount;
	FSlateDrawElement& Element = Elements.AddDefaulted_GetRef();
	Element.Type = ESlateDrawType::Chequer;
	Element.Rect = Rect;
	Element.Clip = Clips.Last();
	Element.Color = FColor(255, 0, 0, 255);
}

// 1. A brush that nobody knows shows as a chequer. 2. Its colour, from brush, widget and parents. 3. Image, box or round
// box.
void FSlateWindowElementList::AddBrush(
	const FSlateRect& Rect, const FSlateBrush& Brush, const FLinearColor& Color, const FLinearColor& InheritedTint)
{
	if (Brush.IsUnknown())
	{
		AddChequer(Rect);
		return;
	}
	if (Brush.DrawAs == ESlateBrushDrawType::NoDrawType)
	{
		return;
	}
	const FLinearColor Resting = Brush.TintColor.GetSpecifiedColor();
	const bool bReplaces = Brush.IsSurface() && Color != FLinearColor::White;
	const FLinearColor Own = bReplaces ? Color : Multiply(Resting, Color);
	const FColor Fill = Multiply(Own, InheritedTint).ToFColorSRGB();
	if (!Brush.GetResourceName().IsNone())
	{
		AddImage(Rect, Brush.GetResourceName(), Fill, true);
		return;
	}
	if (Brush.DrawAs != ESlateBrushDrawType::RoundedBox)
	{
		AddBox(Rect, Fill);
		return;
	}
	const FSlateBrushOutlineSettings& Settings = Brush.OutlineSettings;
	FVector4f Radii(static_cast<float>(Settings.CornerRadii.X), static_cast<float>(Settings.CornerRadii.Y),
		static_cast<float>(Settings.CornerRadii.Z), static_cast<float>(Settings.CornerRadii.W));
	if (Settings.RoundingType == ESlateBrushRoundingType::HalfHeightRadius)
	{
		const float Half = Rect.Height() * 0.5f / Scale;
		Radii = FVector4f(Half, Half, Half, Half);
	}
	Radii = FVector4f(Radii.X * Scale, Radii.Y * Scale, Radii.Z * Scale, Radii.W * Scale);
	FLinearColor Outline = Settings.Color.GetSpecifiedColor();
	// Outlines keep their colour and fade with the fill, so that a row tinted away takes its outline along.
	Outline.A *= Color.A;
	const FColor OutlineColor = Multiply(Outline, FLinearColor(1.0f, 1.0f, 1.0f, InheritedTint.A)).ToFColorSRGB();
	AddRoundedBox(Rect, Radii, Fill, OutlineColor, Settings.Width * Scale);
}
