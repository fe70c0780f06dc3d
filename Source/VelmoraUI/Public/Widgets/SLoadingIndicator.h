#pragma once

#include "CoreMinimal.h"
#include "Misc/Attribute.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/StayAwake.h"

/** A throbber beside a text whose trailing dots cycle from none to three. */
class VELMORAUI_API SLoadingIndicator : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SLoadingIndicator)
		: _ShowThrobber(true)
	{
	}
	/** Without dots of its own. Empty reads "Loading". */
	SLATE_ATTRIBUTE(FText, Message)
	SLATE_ARGUMENT(bool, ShowThrobber)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	FText GetAnimatedMessage() const;

	TAttribute<FText> Message;
	bool bShowThrobber = true;
	/** Seconds into the cycle of 1.5. */
	float AnimationTime = 0.0f;
	FStayAwake StayAwake;
};
