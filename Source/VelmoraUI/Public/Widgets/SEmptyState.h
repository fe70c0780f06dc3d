#pragma once

#include "CoreMinimal.h"
#include "Misc/Attribute.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

struct FSlateBrush;

/** Welcome panel that stands where a conversation has no messages yet: a title over a text, both centred. */
class VELMORAUI_API SEmptyState : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SEmptyState)
		: _Icon(nullptr)
	{
	}
	SLATE_ATTRIBUTE(FText, Title)
	SLATE_ATTRIBUTE(FText, Message)
	/** A switch: any brush shows the question mark above the title, none hides it. */
	SLATE_ARGUMENT(const FSlateBrush*, Icon)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

private:
	TAttribute<FText> Title;
	TAttribute<FText> Message;
	const FSlateBrush* Icon = nullptr;
};
