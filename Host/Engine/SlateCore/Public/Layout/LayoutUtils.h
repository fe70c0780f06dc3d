#pragma once

#include "CoreMinimal.h"
#include "Layout/Margin.h"
#include "Types/SlateEnums.h"

/** Where one axis of a child ends up in its slot. */
struct FAlignedAxis
{
	float Offset = 0.0f;
	float Size = 0.0f;
};

/** Places a child along one axis of a slot: fill takes all room, the others the desired size, clamped to the room unless told otherwise.
 * Pure. */
SLATECORE_API FAlignedAxis AlignChild(
	EHorizontalAlignment Alignment, float SlotSize, float DesiredSize, const FMargin& Padding, bool bClampToSlot = true);
SLATECORE_API FAlignedAxis AlignChild(
	EVerticalAlignment Alignment, float SlotSize, float DesiredSize, const FMargin& Padding, bool bClampToSlot = true);
