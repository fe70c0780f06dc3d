#pragma once

#include "CoreMinimal.h"

class SWidget;

/** A row of a list, whatever its item's type. */
class SLATE_API ITableRow
{
public:
	virtual ~ITableRow();
	virtual TSharedRef<SWidget> AsWidget() = 0;
	/** The list tells the row where it stands. */
	virtual void SetIndexInList(int32 InIndex) = 0;
};
