#pragma once

#include "CoreMinimal.h"
#include "Layout/Margin.h"
#include "Layout/Visibility.h"
#include "Misc/Attribute.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Widgets/Input/SButton.h"

/** A button that is one of this plug-in's icons and no words, so that its tooltip says what it does. */
struct FIconButton
{
	FName Tag;
	/** Of the application's style set. */
	FName Style;
	FMargin ContentPadding;
	FName Icon;
	/** Slate units, both ways. */
	double IconSize = 0.0;
	/** Polled, as are all attributes below. */
	TAttribute<FSlateColor> Tint = FSlateColor(FLinearColor::White);
	TAttribute<FText> ToolTip;
	FOnClicked OnClicked;
	TAttribute<bool> IsEnabled = true;
	TAttribute<EVisibility> Visibility = EVisibility::Visible;
};

TSharedRef<SButton> MakeIconButton(const FIconButton& Look);
