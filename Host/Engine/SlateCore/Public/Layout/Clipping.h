#pragma once

#include "CoreMinimal.h"

/** Whether a widget cuts off what it and its children paint outside its bounds. */
enum class EWidgetClipping : uint8
{
	Inherit,
	ClipToBounds,
	ClipToBoundsWithoutIntersecting,
	ClipToBoundsAlways,
	OnDemand,
};
