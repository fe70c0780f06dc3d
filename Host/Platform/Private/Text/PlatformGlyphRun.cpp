#include "Text/PlatformGlyphRun.h"

#include <cairo-ft.h>
#include <pango/pangocairo.h>

#include FT_FREETYPE_H

FPlatformFont::FPlatformFont(PangoFont* InFont)
	: Font(static_cast<PangoFont*>(g_object_ref(InFont)))
{
	ScaledFont = cairo_scaled_font_reference(pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(Font)));
	cairo_font_extents_t Extents = {};
	cairo_scaled_font_extents(ScaledFont, &Extents);
	Ascent = static_cast<float>(Extents.ascent);
	Descent = static_cast<float>(Extents.descent);
	if (cairo_scaled_font_get_type(ScaledFont) == CAIRO_FONT_TYPE_FT)
	{
		if (const FT_Face Face = cairo_ft_scaled_font_lock_face(ScaledFont))
		{
			bColor = FT_HAS_COLOR(Face);
			cairo_ft_scaled_font_unlock_face(ScaledFont);
		}
	}
}

FPlatformFont::~FPlatformFont()
{
	cairo_scaled_font_destroy(ScaledFont);
	g_object_unref(Font);
}

FGlyphSink::~FGlyphSink() = default;
