#pragma once

#include "CoreMinimal.h"
#include "Fonts/SlateFontInfo.h"
#include "Layout/SlateRect.h"
#include "Styling/WidgetStyle.h"

class FSlateWindowElementList;

/** Pieces of the look that several widgets draw alike. Game thread only. */
class SLATE_API FHostWidgetPaint
{
public:
	/**
	 * Draws the focus ring just inside a rectangle.
	 * @param Rect    Device pixels.
	 * @param Radius  Of the corners, in units.
	 */
	static void AddFocusRing(
		FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Radius, float Scale, const FWidgetStyle& Style);
	/** Shadow and fill of a tooltip. */
	static void AddToolTipSurface(FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Scale, const FWidgetStyle& Style);
	/** Shadow and fill of a toast. */
	static void AddToastSurface(FSlateWindowElementList& OutDrawElements, const FSlateRect& Rect, float Scale, const FWidgetStyle& Style);
	/** What to give as LineHeightPercentage so that lines are LineHeight units high at the present scale; 1 without a shaper. */
	static float GetLineHeightPercentage(const FSlateFontInfo& Font, float LineHeight);
};
