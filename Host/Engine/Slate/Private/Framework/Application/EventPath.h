#pragma once

#include "Layout/ArrangedWidget.h"
#include "Widgets/SWidget.h"

class FLayerStack;

/** Widgets from a layer's root to the one that an event is for, with their places. Holds them all alive. */
struct FEventPath
{
	TArray<FArrangedWidget> Widgets;
	/** Index of the first widget that is disabled; input stops before it. Widgets.Num() when none is. */
	int32 EnabledCount = 0;
	bool IsEmpty() const { return Widgets.Num() == 0; }

	/** To the innermost widget under a point of the window, in device pixels. Empty where nothing can be hit. */
	static FEventPath Under(const FLayerStack& Layers, const FVector2D& Position, const FIntPoint& WindowSize);
	/** To a widget, with the places that it and its parents had when they were painted last. */
	static FEventPath To(const TSharedPtr<SWidget>& Widget);
	/** Drops the widgets from an index on. */
	void Shorten(int32 Count);

	static TSharedRef<SWidget> GetRootOf(const TSharedRef<SWidget>& Widget);

private:
	void CountEnabled();
};
