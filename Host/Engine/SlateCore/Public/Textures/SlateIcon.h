#pragma once

#include "CoreMinimal.h"
#include "Styling/SlateBrush.h"

/** An icon by style set and name, looked up when it is drawn. */
struct SLATECORE_API FSlateIcon
{
	FSlateIcon() = default;
	FSlateIcon(const FName& InStyleSetName, const FName& InStyleName)
		: StyleSetName(InStyleSetName)
		, StyleName(InStyleName)
	{
	}
	bool IsSet() const { return !StyleName.IsNone(); }
	const FName& GetStyleSetName() const { return StyleSetName; }
	const FName& GetStyleName() const { return StyleName; }
	/** Null when not set; the chequer for an unknown name. */
	const FSlateBrush* GetIcon() const;

private:
	FName StyleSetName;
	FName StyleName;
};
