#pragma once

#include "Layout/SlateRect.h"
#include "Rendering/DrawElements.h"
#include "Styling/SlateTypes.h"

/** What a bar shows and changes: the part of a content that is in view. All three in one unit, whichever. */
struct FScrollRange
{
	double View = 0.0;
	double Content = 0.0;
	double Offset = 0.0;

	bool IsNeeded() const { return Content > View; }
	/** The thumb on a bar of that length. It never gets shorter than one can grab, nor longer than the bar. */
	float GetThumbLength(float Bar, float MinLength) const;
	float GetThumbStart(float Bar, float MinLength) const;
	/** The offset that puts the thumb's start at a place of the bar, within the content. */
	double GetOffsetFor(float ThumbStart, float Bar, float MinLength) const;
};

/** The thumb of a vertical bar inside a widget that scrolls by itself: its place, its look and dragging. Device pixels. */
struct FScrollThumb
{
	bool bDragging = false;
	bool bHovered = false;
	/** From the thumb's top to the pointer while dragging. */
	float Grip = 0.0f;

	/** The thumb's extent along the bar. Empty without overflow. */
	static FSlateRect GetThumb(
		const FSlateRect& Bar, double View, double Content, double Offset, const FScrollBarStyle& Style, float Scale);
	/** The scroll offset that puts the thumb's top at a height. */
	static double GetOffsetFor(
		const FSlateRect& Bar, float ThumbTop, double View, double Content, const FScrollBarStyle& Style, float Scale);
	/** A thumb of any direction; as round as it is thick. */
	static void PaintThumb(const FSlateRect& Thumb, float Thickness, bool bDragging, bool bHovered, FSlateWindowElementList& Out,
		const FScrollBarStyle& Style, const FWidgetStyle& WidgetStyle);
	void Paint(const FSlateRect& Bar, const FSlateRect& Thumb, FSlateWindowElementList& Out, const FScrollBarStyle& Style,
		const FWidgetStyle& WidgetStyle, float Scale) const;
};
