#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

class SWidget;

/** One entry of a text box's menu. */
struct FTextMenuRow
{
	FText Label;
	FText Keys;
	/** No icon when none. */
	FName Icon;
	bool bEnabled = true;
	TFunction<void()> Execute;
};

/** The surface with its rows, ready for FSlateApplication::PushMenu. A click closes all menus, then executes. */
TSharedRef<SWidget> MakeTextMenu(const TArray<FTextMenuRow>& Rows);
