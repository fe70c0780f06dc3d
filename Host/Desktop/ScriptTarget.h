#pragma once

#include "CoreMinimal.h"
#include "Widgets/SWidget.h"

/** A widget that a script names, and where to put the pointer for it. */
struct FScriptTarget
{
	TSharedPtr<SWidget> Widget;
	/** Device pixels. */
	FVector2D Point = FVector2D(0, 0);

	/**
	 * Finds the one shown widget of that name: "#Tag", a whole text, or the first line of a tooltip.
	 * @return Empty when there is exactly one; else a sentence that says what was found instead.
	 */
	static FString Find(const FString& Name, TSharedPtr<SWidget>& OutWidget);
	/** Reads "@X%,Y%", a place in the window, 100% being its last pixel. Nothing for any other name. */
	static TOptional<FVector2D> GetPlace(const FString& Name, const FIntPoint& WindowSize);
	/** Asks the nearest scroll box around a widget to bring it into view in the next frame. False when there is none. */
	static bool BringIntoView(const TSharedRef<SWidget>& Widget);
	/** Where the pointer reaches the widget. Empty when it does; else a sentence that says why not. */
	static FString Reach(const FString& Name, FScriptTarget& Target);
	/** The middle of what is to be seen of a widget, nothing when it is scrolled or moved out of view. */
	static TOptional<FVector2D> GetVisiblePoint(const SWidget& Widget);
	/** True when the widget lies in that one. */
	static bool IsInside(const TSharedPtr<const SWidget>& Widget, const SWidget& Outer);
};
