#pragma once

#include "CoreMinimal.h"
#include "Framework/Text/TextLayout.h"
#include "Widgets/SWidget.h"

/** Hands what is selected in a text on to the desktop's primary selection, which the middle button pastes elsewhere. Game thread. */
class FPrimarySelection
{
public:
	/** Before each turn of the loop. Costs nothing without a frame since the last call. */
	void NoteTurn();

private:
	uint64 SeenFrames = 0;
	TWeakPtr<SWidget> SeenText;
	FTextLocation SeenCursor;
	bool bWasSelected = false;
};
