#pragma once

#include "CoreMinimal.h"
#include "Layout/Margin.h"
#include "Misc/Attribute.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "ViewModels/ChatMessage.h"

class SWidget;
struct FSlateBrush;

/** Wherein the row of a tool run differs by the place where it stands. */
struct FToolRowShape
{
	FMargin LabelPadding;
	FMargin StatusPadding;
	/** Unset: the size of the mark's picture. */
	TOptional<FVector2D> StatusSize;
	/** Polled: a run ends while its row is shown. */
	TAttribute<const FSlateBrush*> StatusIcon;
	TAttribute<FSlateColor> StatusColor;
};

/** How one tool run looks, wherever its row stands. Pure functions on the message. */
class VELMORAUI_API FToolRowLook
{
public:
	/** "Creating BP_Hero"; "Reading function..." without a parameter; the display name without a verb. */
	static FString MakeLabel(const FChatMessage& Message);

	/** The linear colour of "#RRGGBB"; white for an empty text. */
	static FLinearColor ReadColor(const FString& ToolColor);

	/** Null for a status out of range. */
	static const FSlateBrush* GetStatusBrush(EToolStatus Status);

	/** White for a status out of range. */
	static FSlateColor GetStatusColor(EToolStatus Status);

	/** Dot, label, mark and time in one line. But for the mark the row is fixed when it is made. */
	static TSharedRef<SWidget> MakeRow(const FChatMessage& Message, const FToolRowShape& Shape);
};
