#pragma once

#include "CoreMinimal.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

class SButton;
class SScrollBox;

/** The side panel that shows the agent's plan as Markdown, or says what will stand here when there is one. */
class VELMORAUI_API SConversationPlan : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SConversationPlan) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** Shows another plan from its top. Works while the panel is hidden, too. An empty plan is none. */
	void UpdatePlan(const FString& PlanContent);

	void ClearPlan();

private:
	TSharedRef<SWidget> BuildHeader();
	TSharedRef<SWidget> BuildPlanDisplay();
	TSharedRef<SWidget> CreatePlanWidget(const FString& Content);
	/** The one place for a filter of what is shown and copied. Nothing is filtered. */
	FString FilterPlanContent(const FString& Content) const;
	/** False for the placeholder, too, should an agent send it as its plan. */
	bool HasPlan() const;
	EVisibility GetCopyButtonVisibility() const;
	FText GetCopyButtonTooltip() const;
	FReply OnCopyButtonClicked();

	TSharedPtr<SScrollBox> PlanScrollBox;
	TSharedPtr<SButton> CopyButton;
	FString CurrentPlanContent;
	FString PlaceholderText;
};
