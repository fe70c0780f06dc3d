#pragma once

#include "CoreMinimal.h"
#include "Layout/SlateRect.h"

class SDockTab;
class SWidget;

/**
 * Who works with the keys alone must not lose their place. What has the keyboard may go away by what it does: a page is made anew, an
 * entry is removed, a tab comes to the front. The keyboard then goes to what stands nearest to the old place, and in another tab to the
 * first stop. Who has let go of it on purpose is left alone. Game thread.
 */
class FKeyboardPlace
{
public:
	/** Before each turn of the loop. Costs nothing without a frame since the last call. */
	void NoteTurn();

private:
	void Remember(const TSharedRef<SWidget>& Focused);
	/** Null when nothing is left around the old place, or when it is not laid out yet. */
	TSharedPtr<SWidget> FindNearest(bool bMayWait) const;
	/** The first stop in a tab. */
	static TSharedPtr<SWidget> FindFirst(const SDockTab& Tab, bool bMayWait);

	/** From the one that had the keyboard outward. */
	TArray<TWeakPtr<SWidget>> Path;
	FSlateRect Place;
	bool bHadRing = false;
	TWeakPtr<SDockTab> FrontTab;
	/** The tab has come to the front; its content may not have been laid out yet. */
	bool bIsNewTab = false;
	int32 LooksLeft = 0;
	uint64 SeenFrames = 0;
};
