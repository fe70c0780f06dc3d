#include "Widgets/SMessageRow.h"

#include "Brushes/SlateRoundedBoxBrush.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Style/VelmoraUIStyles.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/ToolRowLook.h"
#include "Widgets/WidgetLook.h"

#define LOCTEXT_NAMESPACE "VelmoraUI"

namespace
{

	/** The card behind a kind of message. Shared by all rows: widgets keep the pointer to the brush. */
	struct FCardLook
	{
		FCardLook(const FLinearColor& InFill, const FLinearColor& InOutline, float OutlineWidth)
			: Fill(InFill)
			, Outline(InOutline)
			, Brush(InFill, 8.0f, InOutline, OutlineWidth)
		{
		}

		FLinearColor Fill;
		FLinearColor Outline;
		FSlateRoundedBoxBrush Brush;
	};

	const FCardLook& GetCardLook(const TSharedPtr<FChatMessage>& Message)
	{
		static const FCardLook User(FVelmoraUIStyles::GetUserMessageBackgroundColor(), FVelmoraUIStyles::GetUserMessageBorderColor(), 1.0f);
		static const FCardLook AI(
			FVelmoraUIStyles::GetVelmoraMessageBackgroundColor(), FVelmoraUIStyles::GetVelmoraMessageBorderColor(), 1.0f);
		static const FCardLook System(
			FVelmoraUIStyles::GetSystemMessageBackgroundColor(), FVelmoraUIStyles::GetSystemMessageBorderColor(), 1.0f);
		static const FCardLook Tool(FVelmoraUIStyles::GetToolMessageBackgroundColor(), FVelmoraUIStyles::GetToolMessageBorderColor(), 1.0f);
		static const FCardLook ToolSummary(FLinearColor(0.0f, 0.0f, 0.0f, 0.0f), FLinearColor(0.0f, 0.0f, 0.0f, 0.0f), 0.0f);
		// A row without a message looks like the plainest of all.
		if (!Message.IsValid())
		{
			return Tool;
		}
		switch (Message->Type)
		{
		case EChatMessageType::User:
			return User;
		case EChatMessageType::AI:
			return AI;
		case EChatMessageType::System:
			return System;
		case EChatMessageType::Tool:
			return Tool;
		case EChatMessageType::ToolSummary:
			return ToolSummary;
		}
		return System;
	}

} // namespace

FLinearColor SMessageRow::GetAnimatedOpacity() const
{
	return FLinearColor::White.CopyWithNewOpacity(FadeAnimator.GetOpacity());
}

const FSlateBrush* SMessageRow::GetBorderBrush() const
{
	return &GetCardLook(Message).Brush;
}

FSlateColor SMessageRow::GetBackgroundColor() const
{
	return FSlateColor(GetCardLook(Message).Fill);
}

FLinearColor SMessageRow::GetBorderColor() const
{
	return GetCardLook(Message).Outline;
}

FSlateColor SMessageRow::GetSenderNameColor() const
{
	if (!Message.IsValid())
	{
		return FSlateColor(FLinearColor::White);
	}
	switch (Message->Type)
	{
	case EChatMessageType::User:
		return FSlateColor(FVelmoraUIStyles::GetUserMessageColor());
	case EChatMessageType::AI:
		return FSlateColor(FVelmoraUIStyles::GetVelmoraMessageColor());
	case EChatMessageType::System:
	case EChatMessageType::Tool:
		return FSlateColor(FVelmoraUIStyles::GetSystemMessageColor());
	case EChatMessageType::ToolSummary:
		break;
	}
	return FSlateColor(FLinearColor::White);
}

EVisibility SMessageRow::GetTypingIndicatorVisibility() const
{
	// Only the last row: an answer that was cut off stays incomplete for good and must not seem to go on.
	const bool bTyping = Message.IsValid() && Message->IsAIMessage() && !Message->bIsComplete && bIsLatestMessage;
	return VisibleIf(bTyping);
}

EVisibility SMessageRow::GetCopyButtonVisibility() const
{
	const bool bHasText = Message.IsValid() && (Message->IsUserMessage() || Message->IsAIMessage());
	return VisibleIf(bHasText);
}

FText SMessageRow::GetCopyButtonTooltip() const
{
	if (!Message.IsValid())
	{
		return FText::GetEmpty();
	}
	if (Message->IsUserMessage())
	{
		return LOCTEXT("CopyUserMessageTooltip", "Copy user message to clipboard");
	}
	if (Message->IsAIMessage())
	{
		return LOCTEXT("CopyAIMessageTooltip", "Copy AI response to clipboard");
	}
	return LOCTEXT("CopyMessageTooltip", "Copy message to clipboard");
}

FSlateColor SMessageRow::GetCopyButtonTint() const
{
	return GetActionIconTint(CopyButton);
}

EVisibility SMessageRow::GetUndoButtonVisibility() const
{
	// Without a transaction there is nothing to go back to, and a button that can only refuse is worse than none.
	const bool bHasTransaction = Message.IsValid() && Message->IsUserMessage() && !Message->TransactionId.IsEmpty();
	return VisibleIf(bHasTransaction);
}

bool SMessageRow::GetUndoButtonEnabled() const
{
	// Asked in each frame: whether an undo may run is the conversation's matter and changes without a word to the rows.
	return CanUndoDelegate.IsBound() && CanUndoDelegate.Execute();
}

FText SMessageRow::GetUndoButtonTooltip() const
{
	if (GetUndoButtonEnabled())
	{
		return LOCTEXT("UndoTooltip",
			"Undo all changes made after this message.\n\nThis will revert:\n• Asset modifications (Enums, Structs, etc.)\n• File "
			"changes\n• All subsequent messages\n\nThis action cannot be undone.");
	}
	return LOCTEXT("UndoDisabledTooltip", "Undo is disabled while AI is processing.\n\nPlease wait for the current operation to complete.");
}

FSlateColor SMessageRow::GetUndoButtonTint() const
{
	return GetUndoButtonEnabled() ? GetActionIconTint(UndoButton) : FSlateColor(FVelmoraUIStyles::GetActionIconDisabledColor());
}

const FSlateBrush* SMessageRow::GetToolStatusIcon() const
{
	return Message.IsValid() && Message->IsToolMessage() ? FToolRowLook::GetStatusBrush(Message->ToolStatus) : nullptr;
}

FSlateColor SMessageRow::GetToolStatusColor() const
{
	return Message.IsValid() && Message->IsToolMessage() ? FToolRowLook::GetStatusColor(Message->ToolStatus)
														 : FSlateColor(FLinearColor::White);
}

FText SMessageRow::GetToolStatusText() const
{
	if (Message.IsValid() && Message->IsToolMessage())
	{
		switch (Message->ToolStatus)
		{
		case EToolStatus::Running:
			return LOCTEXT("ToolRunning", "Running...");
		case EToolStatus::Success:
			return LOCTEXT("ToolSuccess", "Completed");
		case EToolStatus::Failed:
			return LOCTEXT("ToolFailed", "Failed");
		}
	}
	return FText::GetEmpty();
}

FReply SMessageRow::OnCopyButtonClicked()
{
	if (Message.IsValid() && !Message->Content.IsEmpty())
	{
		FPlatformApplicationMisc::ClipboardCopy(*Message->Content);
	}
	return FReply::Handled();
}

FReply SMessageRow::OnUndoButtonClicked()
{
	OnUndoDelegate.ExecuteIfBound();
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE
