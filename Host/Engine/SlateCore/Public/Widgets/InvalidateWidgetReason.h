#pragma once

#include "CoreMinimal.h"

/** What has changed about a widget. */
enum class EInvalidateWidgetReason : uint8
{
	None = 0,
	Layout = 1,
	Paint = 2,
	Volatility = 4,
	ChildOrder = 8,
	Visibility = 16,
	Prepass = 32,
	LayoutAndVolatility = Layout | Volatility,
};
