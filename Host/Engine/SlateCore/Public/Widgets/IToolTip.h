#pragma once

#include "CoreMinimal.h"

class SWidget;

/** What hovers beside the pointer while it rests on a widget. */
class SLATECORE_API IToolTip
{
public:
	virtual ~IToolTip();
	virtual TSharedRef<SWidget> AsWidget() = 0;
	/** False when there is nothing to show. */
	virtual bool HasContent() const = 0;
};
