#pragma once

#include "CoreMinimal.h"

class SWidget;

/** The widget that stands where there is none: no size, nothing painted. Shared by all empty slots. */
class SLATECORE_API SNullWidget
{
public:
	static const TSharedRef<SWidget>& GetNullWidget();
	static const TSharedRef<SWidget>& NullWidget;
};
