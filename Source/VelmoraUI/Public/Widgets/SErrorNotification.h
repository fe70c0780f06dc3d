#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Input/Reply.h"
#include "Misc/Attribute.h"
#include "Style/WidgetAnimator.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/StayAwake.h"

/**
 * A bar with an error that stays until the user dismisses it. Fades in by itself; taking it away is the host's part, on
 * OnDismissed.
 */
class VELMORAUI_API SErrorNotification : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SErrorNotification) {}
	SLATE_ATTRIBUTE(FText, ErrorMessage)
	SLATE_EVENT(FSimpleDelegate, OnDismissed)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	FLinearColor GetAnimatedOpacity() const;
	FReply OnDismissClicked();

	TAttribute<FText> ErrorMessage;
	FSimpleDelegate OnDismissed;
	FWidgetAnimator Animator;
	FStayAwake StayAwake;
};
