#include "LastMessage.h"

#include "Host/AgentMessages.h"
#include "Misc/MessageDialog.h"
#include "OpenChat.h"
#include "ProblemToasts.h"
#include "PromptBox.h"
#include "ViewModels/ChatViewModel.h"

#define LOCTEXT_NAMESPACE "LastMessage"

namespace
{
	using Velmora::FAgentMessages;
	using Velmora::FLastMessage;

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
	return FOpenChat::GetViewModel().IsValid() && FAgentMessages::GetLast().IsSet();
}

void FLastMessageCommands::SendAgain()
{
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
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
	const TSharedPtr<FChatViewModel> ViewModel = FOpenChat::GetViewModel();
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
