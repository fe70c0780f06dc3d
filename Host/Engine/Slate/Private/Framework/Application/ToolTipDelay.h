#pragma once

#include "Widgets/SWidget.h"

class FLayerStack;

/** Shows the tooltip of what the pointer has rested on for a while, and takes it away again. */
class FToolTipDelay
{
public:
	explicit FToolTipDelay(FLayerStack& InLayers)
		: Layers(InLayers)
	{
	}

	/** The pointer has come to rest at a place, from now on. */
	void NoteRest(double Now) { RestSince = Now; }
	/** Closes an open one; none comes before the pointer moves again. */
	void Close(const FVector2D& Pointer);
	/**
	 * @param Hovered    From the outermost widget to the innermost; the innermost that has something to say does.
	 * @param bMayShow   False while a button is down or the pointer is elsewhere.
	 * @return True when one came or went.
	 */
	bool Update(double Now, const TArray<TWeakPtr<SWidget>>& Hovered, const FVector2D& Pointer, bool bMayShow);

private:
	static TSharedPtr<SWidget> FindOwner(const TArray<TWeakPtr<SWidget>>& Hovered);
	void Show(const TSharedRef<SWidget>& NewOwner, const FVector2D& Pointer);

	FLayerStack& Layers;
	TWeakPtr<SWidget> Owner;
	/** Since when the pointer rests where it is; below zero while tooltips wait for it to move. */
	double RestSince = -1.0;
};
