#pragma once

#include "CoreMinimal.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Styling/SlateColor.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/StayAwake.h"

class FChatViewModel;
class SButton;
class SChatWindow;
class SConversationPlan;
class SCustomizeBehavior;
class SDockTab;
class SSplitter;
struct FSlateBrush;

namespace Velmora
{
	class FAgent;
}

/**
 * Root of the dockable tab. Owns the agent and the view model, shows the chat beside a side panel with the plan or the
 * behaviour texts, and remembers which of the two was open in "Velmora/TabState.json" of the project's saved folder.
 * Without an agent the chat stays without a view model and says so. Closing the tab ends the conversation, and the
 * agent goes last.
 */
class VELMORAUI_API SVelmoraTab : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SVelmoraTab) {}
	SLATE_END_ARGS()

	virtual ~SVelmoraTab() override;

	void Construct(const FArguments& InArgs, const TSharedRef<SDockTab>& InOwnerTab);

	/** The name under which the tab is registered and invoked. */
	static FName GetTabName();

	/** Opens or closes a page of the side panel, closes the other one and saves both. */
	void TogglePlanVisibility();
	void ToggleCustomizeBehaviorVisibility();
	bool IsPlanVisible() const { return bShowPlan; }
	bool IsCustomizeBehaviorVisible() const { return bShowCustomizeBehavior; }

	/** The view model is ticked by the chat. */
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

	/** Shows the plan, also while its page is hidden. */
	void OnPlanUpdate(const FString& First, const FString& PlanText);

	/** Opens the settings page, where the editor has one. */
	FReply OnSettingsClicked();

	/** The conversation to read, such as for a report on it. Never null once constructed. */
	TSharedPtr<const FChatViewModel> GetViewModel() const { return ViewModel; }

private:
	void InitializeAgent();
	void InitializeViewModel();
	/** What cannot be read leaves the pages as they are. */
	void RestoreTabState();
	void SaveTabState() const;

	TSharedRef<SWidget> BuildToolbar();
	TSharedRef<SWidget> BuildMainLayout();
	TSharedRef<SWidget> BuildSidePanel();
	FReply OnPlanClicked();
	FReply OnCustomizeBehaviorClicked();
	const FSlateBrush* GetPlanButtonBrush() const;
	const FSlateBrush* GetCustomizeButtonBrush() const;
	FSlateColor GetPlanButtonTint() const;
	FSlateColor GetCustomizeButtonTint() const;
	FSlateColor GetSettingsButtonTint() const;
	EVisibility GetSidePanelVisibility() const;
	EVisibility GetPlanVisibility() const;
	EVisibility GetCustomizeBehaviorVisibility() const;
	FText GetSidePanelTitle() const;

	// Released in reverse order: the view model ends the conversation while the agent is alive.
	TWeakPtr<SDockTab> OwnerTab;
	TSharedPtr<Velmora::FAgent> Agent;
	TSharedPtr<FChatViewModel> ViewModel;
	TSharedPtr<SChatWindow> ChatWindow;
	TSharedPtr<SConversationPlan> PlanPanel;
	TSharedPtr<SCustomizeBehavior> CustomizePanel;
	TSharedPtr<SSplitter> Splitter;
	TSharedPtr<SButton> SettingsButton;
	bool bShowPlan = true;
	bool bShowCustomizeBehavior = false;
	FString TabStatePath;
	/** For the plan, which comes at any time; the chat has its own. */
	FStayAwake StayAwake;
};
