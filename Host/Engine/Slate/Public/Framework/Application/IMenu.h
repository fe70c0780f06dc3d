#pragma once

#include "CoreMinimal.h"

class SWidget;

/** A popup that is open. Closing it early is the application's or its opener's right. */
class SLATE_API IMenu
{
public:
	virtual ~IMenu();
	DECLARE_MULTICAST_DELEGATE_OneParam(FOnMenuDismissed, TSharedRef<IMenu>) virtual FOnMenuDismissed& GetOnMenuDismissed() = 0;
	virtual void Dismiss() = 0;
	virtual bool IsOpen() const = 0;
	virtual TSharedPtr<SWidget> GetContent() const = 0;
};
