#include "OpenChat.h"

#include "Framework/Application/SlateApplication.h"
#include "Framework/Docking/TabManager.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"

namespace
{
	TSharedPtr<SDockTab> FindTab()
	{
		static const FName ChatType(TEXT("SVelmoraTab"));
		const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName()));
		// One that is about to close has no content any more.
		return Tab && Tab->GetContent()->GetType() == ChatType ? Tab : nullptr;
	}

	TSharedPtr<SWidget> FindBelow(SWidget& Widget, FName Tag)
	{
		static const FName MessageListType(TEXT("SMessageList"));
		if (!Widget.GetVisibility().IsVisible() || Widget.GetType() == MessageListType)
		{
			return nullptr;
		}
		if (Widget.GetTag() == Tag)
		{
			return Widget.AsShared();
		}
		FChildren& Children = *Widget.GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			if (const TSharedPtr<SWidget> Found = FindBelow(Children.GetChildRefAt(Index), Tag))
			{
				return Found;
			}
		}
		return nullptr;
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

TSharedPtr<SWidget> FOpenChat::FindByTag(FName Tag)
{
	const TSharedPtr<SWidget> Content = GetContent();
	return Content ? FindBelow(*Content, Tag) : nullptr;
}

void FOpenChat::Press(const TSharedRef<SWidget>& Button)
{
	FSlateApplication& Application = FSlateApplication::Get();
	const TSharedPtr<SWidget> Before = Application.GetKeyboardFocusedWidget();
	Application.SetKeyboardFocus(Button, EFocusCause::SetDirectly);
	const FKeyEvent Enter(EKeys::Enter, FModifierKeysState());
	Button->OnKeyDown(Button->GetCachedGeometry(), Enter);
	Button->OnKeyUp(Button->GetCachedGeometry(), Enter);
	if (Before && Button->HasKeyboardFocus())
	{
		Application.SetKeyboardFocus(Before, EFocusCause::SetDirectly);
	}
}

bool FOpenChat::IsInFront()
{
	const TSharedPtr<SDockTab> Tab = FindTab();
	return Tab && Tab->IsForeground();
}
