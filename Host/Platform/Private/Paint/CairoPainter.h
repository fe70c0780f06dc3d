#pragma once

#include "Paint/PaintCaches.h"
#include "Rendering/DrawElements.h"

#include <cairo.h>

#include <memory>

/** Paints lists of elements into an image. Game thread only. */
class FCairoPainter
{
public:
	FCairoPainter();
	~FCairoPainter();
	FCairoPainter(const FCairoPainter&) = delete;
	FCairoPainter& operator=(const FCairoPainter&) = delete;

	/**
	 * @param Pixels  Bytes blue, green, red and one unused (CAIRO_FORMAT_RGB24); stay with the caller.
	 * @param Stride  Bytes from one row to the next.
	 */
	void SetTarget(unsigned char* Pixels, int32 Width, int32 Height, int32 Stride);
	bool HasTarget() const { return Target != nullptr; }
	/** Paints what lies inside Damage. Pixels there that no element covers become black. */
	void Paint(const FSlateWindowElementList& Elements, const FPixelRect& Damage);
	cairo_surface_t* GetSurface() const { return Target; }

private:
	class FSink;
	void PaintImage(const FSlateDrawElement& Element, const FPixelRect& Clip);
	void PaintShadow(const FSlateDrawElement& Element, const FPixelRect& Clip);
	/** Any element but glyphs. */
	void PaintShape(const FSlateDrawElement& Element, const FPixelRect& Clip);
	void PaintGlyphs(const FSlateDrawElement& Element, const FPixelRect& Clip);
	void ReleaseTarget();

	cairo_surface_t* Target = nullptr;
	cairo_t* Context = nullptr;
	std::unique_ptr<FPixelCanvas> Canvas;
	std::unique_ptr<FSink> Sink;
	FImageCache Images;
	FShadowCache Shadows;
};
