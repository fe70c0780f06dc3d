#pragma once

#include "CoreMinimal.h"
#include "Styling/SlateColor.h"
#include "ViewModels/ChatMessage.h"

struct FSlateBrush;

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
};
