#include "LastMessage.h"

#include "Framework/Docking/TabManager.h"
#include "Host/AgentMessages.h"
#include "Misc/MessageDialog.h"
#include "ProblemToasts.h"
#include "PromptBox.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/SVelmoraTab.h"

#define LOCTEXT_NAMESPACE "LastMessage"

namespace
{
	using Velmora::FAgentMessages;
	using Velmora::FLastMessage;

	/**
	 * The tab shows its view model to others for reading. These commands do what the user could do in the tab by hand, so they go
	 * the same way; the object itself is not constant.
	 */
	TSharedPtr<FChatViewModel> FindViewModel()
	{
		const TSharedPtr<SDockTab> Tab = FGlobalTabmanager::Get()->FindExistingLiveTab(FTabId(SVelmoraTab::GetTabName()));
		const TSharedPtr<const FChatViewModel> ViewModel =
			Tab ? StaticCastSharedRef<SVelmoraTab>(Tab->GetContent())->GetViewModel() : nullptr;
		return ViewModel ? const_cast<FChatViewModel&>(*ViewModel).AsShared().ToSharedPtr() : nullptr;
	}

	/** The row that the window can undo by itself; null when the message was loaded. */
	TSharedPtr<FChatMessage> FindRow(const FChatViewModel& ViewModel, const FLastMessage& Last)
	{
		const TArray<TSharedPtr<FChatMessage>>& Messages = ViewModel.GetMessages();
		for (int32 Index = Messages.Num() - 1; Index >= 0; --Index)
		{
			if (Messages[Index]->IsUserMessage() && !Messages[Index]->TransactionId.IsEmpty())
			{
				return Messages[Index]->Content.Equals(Last.Text, ESearchCase::CaseSensitive) ? Messages[Index] : nullptr;
			}
		}
		return nullptr;
	}

	bool AskToTakeBack(const FLastMessage& Last)
	{
		const FText Question = Last.bCanUndo
			? LOCTEXT("TakeBack", "Take back your last message?\n\nFiles become as they were before it, and the later messages go.")
			: LOCTEXT("CutOnly",
				  "Take back your last message?\n\nIt and the later messages go. What was done to files since, if anything was, stays: "
				  "what they were before is no longer kept.");
		return FMessageDialog::Open(EAppMsgType::YesNo, Question, LOCTEXT("TakeBackTitle", "Take Back")) == EAppReturnType::Yes;
	}

	/** Undoes to the last message, after asking. Nothing when that was not wanted or failed. */
	TOptional<FLastMessage> TakeBack(FChatViewModel& ViewModel)
	{
		const TOptional<FLastMessage> Last = FAgentMessages::GetLast();
		if (!Last.IsSet())
		{
			return TOptional<FLastMessage>();
		}
		// The window asks by itself, and keeps the rows of the tools above.
		if (const TSharedPtr<FChatMessage> Row = FindRow(ViewModel, Last.GetValue()))
		{
			return ViewModel.UndoToMessage(Row) ? Last : TOptional<FLastMessage>();
		}
		if (!AskToTakeBack(Last.GetValue()))
		{
			return TOptional<FLastMessage>();
		}
		if (const FString Problem = FAgentMessages::TakeBackLast(); !Problem.IsEmpty())
		{
			FProblemToasts::Tell(Problem);
			return TOptional<FLastMessage>();
		}
		return Last;
	}
}

bool FLastMessageCommands::CanTakeBack()
{
	return FindViewModel().IsValid() && FAgentMessages::GetLast().IsSet();
}

void FLastMessageCommands::SendAgain()
{
	const TSharedPtr<FChatViewModel> ViewModel = FindViewModel();
	const TOptional<FLastMessage> Last = ViewModel ? TakeBack(*ViewModel) : TOptional<FLastMessage>();
	if (!Last.IsSet())
	{
		return;
	}
	// What is attached for the next message stays attached to that.
	const TArray<FString> Attached = ViewModel->GetContextFiles();
	ViewModel->ClearContextFiles();
	for (const FString& File : Last->Files)
	{
		ViewModel->AddContextFile(File);
	}
	if (!ViewModel->SendMessage(Last->Text))
	{
		// It must not be lost: it was cut from the conversation.
		FPromptBox::PutBefore(Last->Text);
		return;
	}
	for (const FString& File : Attached)
	{
		ViewModel->AddContextFile(File);
	}
}

void FLastMessageCommands::Edit()
{
	const TSharedPtr<FChatViewModel> ViewModel = FindViewModel();
	const TOptional<FLastMessage> Last = ViewModel ? TakeBack(*ViewModel) : TOptional<FLastMessage>();
	if (!Last.IsSet())
	{
		return;
	}
	for (const FString& File : Last->Files)
	{
		ViewModel->AddContextFile(File);
	}
	FPromptBox::PutBefore(Last->Text);
	FPromptBox::Focus();
}

#undef LOCTEXT_NAMESPACE
