#pragma once

#include "CoreMinimal.h"
#include "Host/ConversationSearch.h"
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

	/** Where it stands, in pixels of the window, as painted last. Empty when the widget is gone. */
	TArray<FSlateRect> GetRects(const FShownPlace& Place);

	/** What of a widget its scroll boxes, up to that outer one, let through. */
	FSlateRect GetClip(const SWidget& Widget, const SWidget& Outer);
}
