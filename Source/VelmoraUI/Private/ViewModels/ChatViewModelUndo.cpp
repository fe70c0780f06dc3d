#include "ViewModels/ChatViewModel.h"

#include "Agent/Agent.h"
#include "Misc/MessageDialog.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	bool AskToUndo(const FString& TransactionId)
	{
		// The text has no place for the id; a translation may have one.
		const FText Question =
			FText::Format(LOCTEXT("UndoConfirmMessage",
							  "Undo all changes after this message?\n\nThis will revert:\n• Asset modifications (Enums, Structs, "
							  "DataTables, etc.)\n• File changes\n• All subsequent messages\n\nThis action cannot be undone."),
				FText::FromString(TransactionId.Left(8)));
		return FMessageDialog::Open(EAppMsgType::YesNo, Question, LOCTEXT("UndoConfirmTitle", "Confirm Undo")) == EAppReturnType::Yes;
	}

} // namespace

bool FChatViewModel::UndoToMessage(TSharedPtr<FChatMessage> Message)
{
	// 1. May it be at all? Each refusal is reported in a row of its own, busy before missing, since waiting helps only the first.
	if (!Agent.IsValid() || !Message.IsValid())
	{
		return false;
	}
	if (!Agent->CanUndo())
	{
		AddSystemMessage(TEXT("Cannot undo while AI is processing. Please wait for the current operation to complete."));
		return false;
	}
	if (Message->TransactionId.IsEmpty())
	{
		AddSystemMessage(TEXT("Cannot undo: Transaction ID not available. This feature requires the latest version."));
		return false;
	}
	// 2. Is it wanted? The dialog runs frames of its own, in which the agent may have begun to work: it is asked by the call below.
	if (!AskToUndo(Message->TransactionId))
	{
		return false;
	}
	// 3. The files first. If that fails, the messages that led to their state stay as well.
	if (!Agent->UndoToTransaction(Message->TransactionId))
	{
		AddSystemMessage(TEXT("Failed to undo changes. Please check the logs for details."));
		return false;
	}
	// 4. The turn that was paused is undone, and with it the choice that the notice offers.
	RemovePausedNotice();
	// The message goes, too: what it led to is part of the transaction.
	const int32 Index = Messages.Find(Message);
	if (Index != INDEX_NONE)
	{
		Messages.SetNum(Index);
		Messages.Shrink();
		MessagesChangedEvent.Broadcast();
	}
	return true;
}

#undef LOCTEXT_NAMESPACE
