#include "OpenChat.h"

#include "Framework/Docking/TabManager.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"

namespace
{
	TSharedPtr<SDockTab> FindTab()
	{
		return FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName()));
	}
}

TSharedPtr<FChatViewModel> FOpenChat::GetViewModel()
{
	const TSharedPtr<SDockTab> Tab = FindTab();
	const TSharedPtr<const FChatViewModel> ViewModel = Tab ? StaticCastSharedRef<SVelmoraTab>(Tab->GetContent())->GetViewModel() : nullptr;
	return ViewModel ? const_cast<FChatViewModel&>(*ViewModel).AsShared().ToSharedPtr() : nullptr;
}

TSharedPtr<FChatViewModel> FOpenChat::Show()
{
	FGlobalTabmanager::Get()->TryInvokeTab(FTabId(SVelmoraTab::GetTabName()));
	return GetViewModel();
}

TSharedPtr<SWidget> FOpenChat::GetContent()
{
	const TSharedPtr<SDockTab> Tab = FindTab();
	return Tab ? TSharedPtr<SWidget>(Tab->GetContent()) : nullptr;
}

bool FOpenChat::IsInFront()
{
	const TSharedPtr<SDockTab> Tab = FindTab();
	return Tab && Tab->IsForeground();
}
