#pragma once

#include "CoreMinimal.h"
#include "Fonts/SlateFontInfo.h"
#include "Host/ConversationSearch.h"
#include "Layout/SlateRect.h"
#include "Misc/Attribute.h"
#include "Widgets/SLeafWidget.h"

class FSlateWindowElementList;

/** Where pieces of a text stand on screen, and the look of what was found there. Game thread. */
namespace FoundMarks
{
	/**
	 * Appends the rectangles of a piece, device pixels from the text's upper left corner; several where it wraps.
	 *
	 * @param WrapPixels  The width at which the text is wrapped; zero for none.
	 */
	void AppendRects(const FString& Text, const FSlateFontInfo& Font, float Scale, float WrapPixels, const Velmora::FFoundPlace& Place,
		TArray<FSlateRect>& OutRects);

	/** A frame and a veil over what was found; the one that the user stands at is stronger. */
	void Paint(const FSlateRect& Rect, float Scale, bool bIsCurrent, FSlateWindowElementList& Out);
}

/** Lies under a text block of the same text, font and width, and marks what was found in it. */
class SFoundMarks : public SLeafWidget
{
public:
	SLATE_BEGIN_ARGS(SFoundMarks) {}
	SLATE_ARGUMENT(FString, Text)
	SLATE_ARGUMENT(FSlateFontInfo, Font)
	SLATE_ARGUMENT(TArray<Velmora::FFoundPlace>, Places)
	/** It is what the user stands at. */
	SLATE_ARGUMENT_DEFAULT(bool, IsCurrent) = false;
	/** Units; zero for no wrapping. */
	SLATE_ATTRIBUTE(float, WrapTextAt)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

protected:
	virtual int32 OnPaint(const FPaintArgs& Args, const FGeometry& AllottedGeometry, const FSlateRect& MyCullingRect,
		FSlateWindowElementList& OutDrawElements, int32 LayerId, const FWidgetStyle& InWidgetStyle, bool bParentEnabled) const override;
	virtual FVector2D ComputeDesiredSize(float LayoutScaleMultiplier) const override;

private:
	FString Text;
	FSlateFontInfo Font;
	TArray<Velmora::FFoundPlace> Places;
	TAttribute<float> WrapTextAt;
	bool bIsCurrent = false;
	// What the rectangles were made for.
	mutable TArray<FSlateRect> Rects;
	mutable float RectScale = 0.0f;
	mutable float RectWrap = -1.0f;
};
