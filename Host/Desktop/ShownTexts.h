#pragma once

#include "CoreMinimal.h"
#include "Host/ConversationSearch.h"
#include "Layout/Geometry.h"
#include "Layout/SlateRect.h"
#include "Widgets/SWidget.h"

/** A stretch of text that reads as one although several widgets show it: a sentence with a bold word, a line of code. */
struct FShownText
{
	struct FPart
	{
		TWeakPtr<SWidget> Widget;
		/** Of its text in the whole. */
		int32 Begin = 0;
		int32 Length = 0;
	};

	FString Text;
	TArray<FPart> Parts;
};

/** The part of a found place that one widget shows. */
struct FShownPlace
{
	TWeakPtr<SWidget> Widget;
	/** In the widget's own text. */
	Velmora::FFoundPlace Place;

	// Kept from frame to frame: the rectangles from the widget's corner, and what they were made for.
	mutable TArray<FSlateRect> Rects;
	mutable FVector2D Size = FVector2D(0, 0);
	mutable float Scale = 0.0f;
};

/** Where a widget stands, and what of it is let through, in pixels of the window. */
struct FSeenWidget
{
	FGeometry Geometry;
	FSlateRect Clip;
};

/** Reads the texts of message rows as a user does: by the widgets, with what is folded away and can be unfolded. Game thread. */
namespace ShownTexts
{
	/** Of what was said and of the tools; not the names and times above a message. In reading order. */
	TArray<FShownText> Collect(SWidget& Row);

	/** It, or something that it stands in below the outer widget, is hidden. */
	bool IsHidden(const SWidget& Widget, const SWidget& Outer);

	/** Opens what it is folded away in. False when nothing was to be opened. It has its place in the next frame. */
	bool Unfold(const SWidget& Widget, const SWidget& Outer);

	TArray<FShownPlace> Split(const FShownText& Text, const Velmora::FFoundPlace& Place);

	/**
	 * What can be seen of a widget and below it, put in place anew: a line that was scrolled out of view keeps the place that it was
	 * painted at last.
	 */
	TMap<const SWidget*, FSeenWidget> CollectSeen(SWidget& Outer);

	/** Where it stands now, seen or not. Unset when it is not below the outer widget, or is folded away. */
	TOptional<FGeometry> FindGeometry(const SWidget& Widget, const SWidget& Outer);

	/** The rectangles of the place in pixels of the window, its widget standing there. Empty when the widget is gone. */
	TArray<FSlateRect> GetRects(const FShownPlace& Place, const FGeometry& Geometry);
}
