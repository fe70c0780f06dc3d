#pragma once

#include "Host/TextShaper.h"

#include <cairo.h>
#include <pango/pango.h>

#include <memory>
#include <vector>

/** A font file at one size, as Pango shapes it and Cairo paints it. Shared by all runs that use it. */
class FPlatformFont
{
public:
	explicit FPlatformFont(PangoFont* InFont);
	~FPlatformFont();
	FPlatformFont(const FPlatformFont&) = delete;
	FPlatformFont& operator=(const FPlatformFont&) = delete;

	cairo_scaled_font_t* GetScaledFont() const { return ScaledFont; }
	/** Glyphs carry their own colours, as emoji do. */
	bool HasColor() const { return bColor; }
	float GetAscent() const { return Ascent; }
	float GetDescent() const { return Descent; }

private:
	PangoFont* Font = nullptr;
	cairo_scaled_font_t* ScaledFont = nullptr;
	float Ascent = 0.0f;
	float Descent = 0.0f;
	bool bColor = false;
};

/** Takes the glyphs of a run one by one. The painter's side. */
class FGlyphSink
{
public:
	virtual ~FGlyphSink();

	void SetFont(const FPlatformFont& InFont)
	{
		if (Font != &InFont)
		{
			Flush();
			Font = &InFont;
		}
	}
	void Add(uint32 Glyph, float X, float Y)
	{
		if (Glyph & PANGO_GLYPH_UNKNOWN_FLAG)
		{
			AddMissing(X, Y);
		}
		else
		{
			Glyphs.push_back(cairo_glyph_t{ Glyph, X, Y });
		}
	}
	/** A character that no font has. */
	virtual void AddMissing(float X, float Y) = 0;
	/** Paints what was collected. */
	virtual void Flush() = 0;

protected:
	const FPlatformFont* Font = nullptr;
	std::vector<cairo_glyph_t> Glyphs;
};

/** What every FGlyphRun of this platform is. */
class FPlatformGlyphRun : public FGlyphRun
{
public:
	/** Hands over all glyphs, placed for a pen at (X, Y). */
	virtual void Emit(FGlyphSink& Sink, float X, float Y) const = 0;

	/** Ink lies within these distances of the pen: above, below, and from InkLeft to InkRight. Generous, for skipping only. */
	float InkAbove = 0.0f;
	float InkBelow = 0.0f;
	float InkLeft = 0.0f;
	float InkRight = 0.0f;
};
