#pragma once

#include "CoreMinimal.h"
#include "Widgets/SWidget.h"

/** Where the Tab key goes. Game thread. */
namespace TabStops
{
	/** All widgets that the Tab key can reach, in tree order. A panel of several stops is none itself. */
	SLATE_API void Collect(const TSharedRef<SWidget>& Widget, TArray<TSharedRef<SWidget>>& Out);

	/** Something of it lies within what clips it, or a box that scrolls can bring it there. */
	SLATE_API bool CanBeSeen(const TSharedRef<SWidget>& Widget);

	/** Scrolls all boxes around it, so that each finds its own content in place. */
	SLATE_API void BringIntoView(const TSharedRef<SWidget>& Widget);
}
