#include "Layout/LayoutUtils.h"

namespace
{
	FAlignedAxis PlaceAxis(int32 Where, float SlotSize, float DesiredSize, float Before, float After, bool bClampToSlot)
	{
		const float Room = FMath::Max(SlotSize - Before - After, 0.0f);
		const float Size = bClampToSlot ? FMath::Min(DesiredSize, Room) : DesiredSize;
		switch (Where)
		{
		case 1:
			return { Before, Size };
		case 2:
			return { Before + (Room - Size) * 0.5f, Size };
		case 3:
			return { SlotSize - After - Size, Size };
		default:
			return { Before, Room };
		}
	}
}

FAlignedAxis AlignChild(EHorizontalAlignment Alignment, float SlotSize, float DesiredSize, const FMargin& Padding, bool bClampToSlot)
{
	return PlaceAxis(static_cast<int32>(Alignment), SlotSize, DesiredSize, Padding.Left, Padding.Right, bClampToSlot);
}

FAlignedAxis AlignChild(EVerticalAlignment Alignment, float SlotSize, float DesiredSize, const FMargin& Padding, bool bClampToSlot)
{
	return PlaceAxis(static_cast<int32>(Alignment), SlotSize, DesiredSize, Padding.Top, Padding.Bottom, bClampToSlot);
}
