#pragma once

#include "CoreMinimal.h"

struct FPointerEvent;

/**
 * Lets the wheel reach the attached files that the row over the prompt has no room for. The row itself clips them, so it is put into
 * a box that moves the first time that somebody turns the wheel over it. Game thread.
 */
class FChipScroll
{
public:
	/** A wheel that nobody in the tab has taken. False when the pointer is elsewhere, or all files are in view. */
	static bool HandleWheel(const FPointerEvent& Event);
};
