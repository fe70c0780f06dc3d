#pragma once

#include "Layout/SlateRect.h"
#include "Rendering/DrawElements.h"
#include "Styling/SlateTypes.h"

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
	void Paint(const FSlateRect& Bar, const FSlateRect& Thumb, FSlateWindowElementList& Out, const FScrollBarStyle& Style,
		const FWidgetStyle& WidgetStyle, float Scale) const;
};
