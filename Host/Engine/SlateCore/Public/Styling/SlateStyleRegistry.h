#pragma once

#include "CoreMinimal.h"
#include "Styling/ISlateStyle.h"

/** Style sets by name, so that icons can name theirs. Keeps pointers only: unregister before releasing a set. */
class SLATECORE_API FSlateStyleRegistry
{
public:
	static void RegisterSlateStyle(const ISlateStyle& InSlateStyle);
	static void UnRegisterSlateStyle(const ISlateStyle& InSlateStyle);
	static void UnRegisterSlateStyle(const FName StyleName);
	/** Null when no set of that name is registered. */
	static const ISlateStyle* FindSlateStyle(const FName& InSlateStyleName);
};
