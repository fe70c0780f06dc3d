#include "Paint/CairoPainter.h"

#include "Text/PlatformGlyphRun.h"

#include <algorithm>
#include <cmath>

// Paints a list of elements into memory. Boxes, images and shadows are written straight into the pixels, which needs
// none of what a general drawing library provides for; glyphs go through Cairo, which knows fonts. Both see the same
// memory, so each hears when the other one has written. Glyphs are collected and drawn together as long as font,
// colour and clip stay.

namespace
{
	/** Whether the first element covers all that is to be painted, so that nothing need be cleared. */
	bool StartsSolid(const FSlateWindowElementList& Elements, const FPixelRect& Damage)
	{
		if (Elements.GetElements().Num() == 0)
		{
			return false;
		}
		const FSlateDrawElement& First = Elements.GetElements()[0];
		return First.Type == ESlateDrawType::Box && First.Color.A == 255 &&
			FPixelRect::Snap(First.Rect).Intersect(FPixelRect::Snap(First.Clip)).Intersect(Damage) == Damage;
	}
}

/** Gives glyphs to Cairo, one call for each stretch of one font, colour and clip. */
class FCairoPainter::FSink final : public FGlyphSink
{
public:
	void Begin(cairo_t* InContext, FPixelCanvas* InCanvas)
	{
		Context = InContext;
		Canvas = InCanvas;
		Clip = FPixelRect{};
		bClipSet = false;
		bSourceSet = false;
		Font = nullptr;
		CairoFont = nullptr;
		Glyphs.clear();
	}

	// Cairo's state is set when glyphs are really drawn: many runs are clipped away whole.
	void SetClipAndColor(const FPixelRect& InClip, const FColor& InColor)
	{
		if (!(InClip == Clip && bClipSet))
		{
			Flush();
			Clip = InClip;
			bClipSet = true;
			bClipApplied = false;
		}
		if (!bSourceSet || InColor.R != Color.R || InColor.G != Color.G || InColor.B != Color.B || InColor.A != Color.A)
		{
			Flush();
			Color = InColor;
			bSourceSet = true;
			bSourceApplied = false;
		}
	}

	virtual void AddMissing(float X, float Y) override
	{
		// A hollow box as high as a capital letter.
		Flush();
		const float Height = std::max(4.0f, std::round(Font->GetAscent() * 0.7f));
		const float Width = std::max(3.0f, std::round(Height * 0.55f));
		const FPixelRect Box = FPixelRect::Snap(FSlateRect(X + 1.0f, Y - Height, X + 1.0f + Width, Y));
		Canvas->FillRounded(Box, Clip, FVector4f(0.0f, 0.0f, 0.0f, 0.0f), FColor(0, 0, 0, 0), Color, 1);
	}

	virtual void Flush() override
	{
		if (Glyphs.empty())
		{
			return;
		}
		if (!bClipApplied)
		{
			cairo_reset_clip(Context);
			cairo_rectangle(Context, Clip.Left, Clip.Top, Clip.Width(), Clip.Height());
			cairo_clip(Context);
			bClipApplied = true;
		}
		if (!bSourceApplied)
		{
			cairo_set_source_rgba(Context, Color.R / 255.0, Color.G / 255.0, Color.B / 255.0, Color.A / 255.0);
			bSourceApplied = true;
		}
		if (CairoFont != Font)
		{
			cairo_set_scaled_font(Context, Font->GetScaledFont());
			CairoFont = Font;
		}
		const int Count = static_cast<int>(Glyphs.size());
		if (Font->HasColor() && Color.A != 255)
		{
			// Cairo takes colour glyphs as they are and lets the source's alpha go unused.
			cairo_push_group(Context);
			cairo_set_scaled_font(Context, Font->GetScaledFont());
			cairo_show_glyphs(Context, Glyphs.data(), Count);
			cairo_pop_group_to_source(Context);
			cairo_paint_with_alpha(Context, Color.A / 255.0);
			bSourceApplied = false;
		}
		else
		{
			cairo_show_glyphs(Context, Glyphs.data(), Count);
		}
		Glyphs.clear();
	}

private:
	cairo_t* Context = nullptr;
	FPixelCanvas* Canvas = nullptr;
	const FPlatformFont* CairoFont = nullptr;
	FPixelRect Clip;
	FColor Color = FColor(0, 0, 0, 0);
	bool bClipSet = false;
	bool bClipApplied = false;
	bool bSourceSet = false;
	bool bSourceApplied = false;
};

FCairoPainter::FCairoPainter()
	: Sink(std::make_unique<FSink>())
{
}

FCairoPainter::~FCairoPainter()
{
	ReleaseTarget();
}

void FCairoPainter::ReleaseTarget()
{
	Canvas.reset();
	if (Context)
	{
		cairo_destroy(Context);
		Context = nullptr;
	}
	if (Target)
	{
		cairo_surface_finish(Target);
		cairo_surface_destroy(Target);
		Target = nullptr;
	}
}

void FCairoPainter::SetTarget(unsigned char* Pixels, int32 Width, int32 Height, int32 Stride)
{
	ReleaseTarget();
	if (!Pixels)
	{
		return;
	}
	Target = cairo_image_surface_create_for_data(Pixels, CAIRO_FORMAT_RGB24, Width, Height, Stride);
	if (cairo_surface_status(Target) != CAIRO_STATUS_SUCCESS)
	{
		cairo_surface_destroy(Target);
		Target = nullptr;
		return;
	}
	Context = cairo_create(Target);
	Canvas = std::make_unique<FPixelCanvas>(reinterpret_cast<uint32*>(Pixels), Width, Height, Stride / 4);
}

void FCairoPainter::Paint(const FSlateWindowElementList& Elements, const FPixelRect& InDamage)
{
	if (!Target)
	{
		return;
	}
	const FPixelRect Damage = InDamage.Intersect(Canvas->GetRect());
	if (Damage.IsEmpty())
	{
		return;
	}
	// Boxes go straight into the pixels, glyphs through Cairo. Image surfaces draw at once, so both keep their order.
	cairo_surface_flush(Target);
	if (!StartsSolid(Elements, Damage))
	{
		Canvas->FillRect(Damage, Damage, FColor(0, 0, 0, 255));
	}
	cairo_surface_mark_dirty(Target);
	Sink->Begin(Context, Canvas.get());
	for (const FSlateDrawElement& Element : Elements.GetElements())
	{
		const FPixelRect Clip = FPixelRect::Snap(Element.Clip).Intersect(Damage);
		if (Clip.IsEmpty())
		{
			continue;
		}
		if (Element.Type == ESlateDrawType::Glyphs)
		{
			PaintGlyphs(Element, Clip);
			continue;
		}
		// What is collected lies below this element unless they do not touch; telling costs more than painting.
		Sink->Flush();
		PaintShape(Element, Clip);
	}
	Sink->Flush();
	cairo_surface_flush(Target);
}

void FCairoPainter::PaintShape(const FSlateDrawElement& Element, const FPixelRect& Clip)
{
	switch (Element.Type)
	{
	case ESlateDrawType::Box:
		Canvas->FillRect(FPixelRect::Snap(Element.Rect), Clip, Element.Color);
		break;
	case ESlateDrawType::RoundedBox:
	{
		const int32 LineWidth =
			Element.OutlineWidth > 0.0f ? std::max(1, static_cast<int32>(std::lround(std::min(Element.OutlineWidth, 1000.0f)))) : 0;
		Canvas->FillRounded(FPixelRect::Snap(Element.Rect), Clip, Element.Radii, Element.Color, Element.OutlineColor, LineWidth);
		break;
	}
	case ESlateDrawType::Image:
		PaintImage(Element, Clip);
		break;
	case ESlateDrawType::Shadow:
		PaintShadow(Element, Clip);
		break;
	case ESlateDrawType::Chequer:
		Canvas->FillChequer(FPixelRect::Snap(Element.Rect), Clip);
		break;
	case ESlateDrawType::Glyphs:
		break;
	}
}

// Text out of the clip costs a comparison.
void FCairoPainter::PaintGlyphs(const FSlateDrawElement& Element, const FPixelRect& Clip)
{
	const FPlatformGlyphRun& Run = static_cast<const FPlatformGlyphRun&>(*Element.Glyphs);
	const float X = std::round(Element.Rect.Left);
	const float Y = std::round(Element.Rect.Top);
	if (Y - Run.InkAbove >= static_cast<float>(Clip.Bottom) || Y + Run.InkBelow <= static_cast<float>(Clip.Top) ||
		X + Run.InkLeft >= static_cast<float>(Clip.Right) || X + Run.InkRight <= static_cast<float>(Clip.Left))
	{
		return;
	}
	Sink->SetClipAndColor(Clip, Element.Color);
	Run.Emit(*Sink, X, Y);
}

// An image that cannot be read shows as a chequer, so that the place of the mistake is seen.
void FCairoPainter::PaintImage(const FSlateDrawElement& Element, const FPixelRect& Clip)
{
	const FPixelRect Rect = FPixelRect::Snap(Element.Rect);
	if (Rect.Intersect(Clip).IsEmpty())
	{
		return;
	}
	if (const FPixelImage* Image = Images.Find(Element.Image, Rect.Width(), Rect.Height()))
	{
		Canvas->DrawImage(*Image, Rect.Left, Rect.Top, Clip, Element.Color, Element.bTintImage);
	}
	else
	{
		Canvas->FillChequer(Rect, Clip);
	}
}

// Values come from widgets and are brought into bounds here: blurring costs time with the square of its width.
void FCairoPainter::PaintShadow(const FSlateDrawElement& Element, const FPixelRect& Clip)
{
	FPixelRect Rect = FPixelRect::Snap(Element.Rect);
	if (Rect.IsEmpty())
	{
		return;
	}
	const int32 Offset = Element.ShadowOffset == Element.ShadowOffset
		? static_cast<int32>(std::lround(std::clamp(Element.ShadowOffset, -1000.0f, 1000.0f)))
		: 0;
	const int32 Blur = Element.ShadowBlur > 0.0f ? static_cast<int32>(std::lround(std::min(Element.ShadowBlur, 128.0f))) : 0;
	const float Radius = Element.Radii.X > 0.0f ? Element.Radii.X : 0.0f;
	Rect = FPixelRect{ Rect.Left - Blur, Rect.Top - Blur + Offset, Rect.Right + Blur, Rect.Bottom + Blur + Offset };
	if (Rect.Intersect(Clip).IsEmpty())
	{
		return;
	}
	const FPixelMask& Mask = Shadows.Find(Rect.Width() - 2 * Blur, Rect.Height() - 2 * Blur, Radius, Blur);
	Canvas->DrawNineSlice(Mask, Rect, Clip, Element.Color);
}
