#include "PromptFocus.h"

#include "Agent/ConversationTypes.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostTextWidget.h"
#include "Host/WidgetFinder.h"
#include "OpenChat.h"
#include "PromptBox.h"
#include "ViewModels/ChatViewModel.h"

namespace
{
	/** A prompt is among the messages from there on. */
	bool HasUserSpoken(int32 FirstMessage)
	{
		const TSharedPtr<const FChatViewModel> ViewModel = FOpenChat::GetViewModel();
		const TArray<TSharedPtr<FChatMessage>>& Messages = ViewModel->GetMessages();
		for (int32 Index = FirstMessage; Index < Messages.Num(); ++Index)
		{
			if (Messages[Index]->IsUserMessage())
			{
				return true;
			}
		}
		return false;
	}
}

FPromptFocus::FSight FPromptFocus::Look()
{
	FSight Sight;
	const TSharedPtr<const FChatViewModel> ViewModel = FOpenChat::GetViewModel();
	if (!ViewModel)
	{
		return Sight;
	}
	Sight.ViewModel = ViewModel.Get();
	Sight.Mode = static_cast<int32>(ViewModel->GetMode());
	Sight.MessageCount = ViewModel->GetMessageCount();
	if (const TSharedPtr<Velmora::FConversationMetadata> Conversation = ViewModel->GetCurrentConversationMetadata())
	{
		Sight.ConversationId = Conversation->Id;
	}
	return Sight;
}

bool FPromptFocus::IsFree(const TSharedRef<SWidget>& Prompt)
{
	const TSharedPtr<SWidget> Focused = FSlateApplication::Get().GetKeyboardFocusedWidget();
	// A control that went away with what it did leaves the keyboard to nobody.
	if (!Focused || !FWidgetFinder::IsShown(*Focused))
	{
		return true;
	}
	if (dynamic_cast<const SHostTextWidget*>(Focused.Get()))
	{
		return false;
	}
	const auto FindChat = [](TSharedPtr<SWidget> Widget)
	{
		while (Widget && Widget->GetType() != FName(TEXT("SVelmoraTab")))
		{
			Widget = Widget->GetParentWidget();
		}
		return Widget;
	};
	return FindChat(Focused) == FindChat(Prompt);
}

void FPromptFocus::NoteTurn()
{
	// 1. Without a frame nothing has been done that anybody could see. A dialog keeps the keyboard until it is closed.
	FSlateApplication& Application = FSlateApplication::Get();
	if (Application.GetFrameStats().FrameCount == SeenFrames)
	{
		return;
	}
	SeenFrames = Application.GetFrameStats().FrameCount;
	if (Application.GetActiveModalWindow())
	{
		bWasInDialog = true;
		return;
	}
	// 2. What is another than at the last look. Answers that come are not the user's doing; a prompt, and fewer messages, are.
	const FSight Now = Look();
	const bool bIsSameTab = Now.ViewModel && Now.ViewModel == Seen.ViewModel;
	bIsNewTab |= Now.ViewModel && Seen.ViewModel != Now.ViewModel;
	const bool bHasChanged = bIsSameTab &&
		(bWasInDialog || HasUserSpoken(Seen.MessageCount) || Now.MessageCount < Seen.MessageCount || Now.Mode != Seen.Mode ||
			!Now.ConversationId.Equals(Seen.ConversationId));
	bWasInDialog = false;
	Seen = Now;
	if (!bHasChanged && !bIsNewTab)
	{
		return;
	}
	// 3. A list that stays open is what the user looks at; the new tab waits for it.
	const TSharedPtr<SWidget> Prompt = FPromptBox::Find();
	if (!Prompt || Application.AnyMenusVisible())
	{
		return;
	}
	if (bIsNewTab || IsFree(Prompt.ToSharedRef()))
	{
		Application.SetKeyboardFocus(Prompt, EFocusCause::SetDirectly);
		Application.NoteActivity();
	}
	bIsNewTab = false;
}
