#pragma once

#include "CoreMinimal.h"
#include "Layout/Visibility.h"
#include "Style/VelmoraUIStyles.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/SBoxPanel.h"

/** What is not visible takes no room. */
inline EVisibility VisibleIf(bool bCondition)
{
	return bCondition ? EVisibility::Visible : EVisibility::Collapsed;
}

/** Of an icon that is all there is of its button. */
inline FSlateColor GetActionIconTint(bool bHighlighted)
{
	return FSlateColor(bHighlighted ? FVelmoraUIStyles::GetActionIconHighlightColor() : FVelmoraUIStyles::GetActionIconNormalColor());
}

/** Highlighted while the button is hovered. A button that is not there yet is not. */
inline FSlateColor GetActionIconTint(const TSharedPtr<SButton>& Button)
{
	return GetActionIconTint(Button.IsValid() && Button->IsHovered());
}

/** A row that begins with a mark; what is added to it comes after a small distance. */
inline TSharedRef<SHorizontalBox> MakeMarkedRow(const TSharedRef<SWidget>& Mark)
{
	const TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox);
	Row->AddSlot().AutoWidth().VAlign(VAlign_Center).Padding(0.0f, 0.0f, 8.0f, 0.0f)[Mark];
	return Row;
}
