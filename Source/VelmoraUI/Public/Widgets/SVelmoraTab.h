#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

class FChatViewModel;
class SChatWindow;
class SDockTab;

namespace Velmora
{
class FAgent;
}

/**
 * Root of the dockable tab. Owns the agent and the view model and shows the chat. Without an agent the chat stays
 * without a view model and says so. Closing the tab ends the conversation, and the agent goes last.
 */
class VELMORAUI_API SVelmoraTab : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SVelmoraTab) {}
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<SDockTab>& InOwnerTab);

	/** The name under which the tab is registered and invoked. */
	static FName GetTabName();

	/** The conversation to read, such as for a report on it. Never null once constructed. */
	TSharedPtr<const FChatViewModel> GetViewModel() const { return ViewModel; }

private:
	void InitializeAgent();
	void InitializeViewModel();

	// Released in reverse order: the view model ends the conversation while the agent is alive.
	TWeakPtr<SDockTab> OwnerTab;
	TSharedPtr<Velmora::FAgent> Agent;
	TSharedPtr<FChatViewModel> ViewModel;
	TSharedPtr<SChatWindow> ChatWindow;
};
