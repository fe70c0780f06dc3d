#include "ViewModels/ChatViewModel.h"

#include "Tools/ToolStyleResolver.h"

using Velmora::EConversationState;

namespace
{

	/** The first running tool row of a group that the test accepts. */
	template <typename TestType>
	TSharedPtr<FChatMessage> FindRunningRowInGroup(const FChatMessage& Group, const TestType& Test)
	{
		for (const TSharedPtr<FChatMessage>& Row : Group.ToolExecutions)
		{
			if (Row.IsValid() && Row->IsToolRunning() && Test(*Row))
			{
				return Row;
			}
		}
		return nullptr;
	}

	/** The same over all groups of a list, the newest group first. */
	template <typename TestType>
	TSharedPtr<FChatMessage> FindRunningRow(const TArray<TSharedPtr<FChatMessage>>& Messages, const TestType& Test)
	{
		for (int32 Index = Messages.Num() - 1; Index >= 0; --Index)
		{
			const TSharedPtr<FChatMessage>& Message = Messages[Index];
			if (Message.IsValid() && Message->Type == EChatMessageType::ToolSummary)
			{
				if (TSharedPtr<FChatMessage> Row = FindRunningRowInGroup(*Message, Test))
				{
					return Row;
				}
			}
		}
		return nullptr;
	}

	bool HasRunningChild(const FChatMessage& Group)
	{
		for (const TSharedPtr<FChatMessage>& Row : Group.ToolExecutions)
		{
			if (Row.IsValid() && Row->ToolStatus == EToolStatus::Running)
			{
				return true;
			}
		}
		return false;
	}

} // namespace

void FChatViewModel::OnAgentMessageReceived(const FString& Text, bool bHasToolCalls)
{
	if (!Text.IsEmpty())
	{
		// Through the batch: a model may report a sentence word by word, and each change of the list lays it out again.
		AddToBatch(FChatMessage::CreateAIMessage(Text, bHasToolCalls));
	}
}

void FChatViewModel::OnAgentProcessMessage(const FString& Text)
{
	// Not through the batch: the group below must stand right after its text.
	AddSystemMessage(Text);
	if (Text.StartsWith(TEXT("Executing step"), ESearchCase::IgnoreCase) || Text.StartsWith(TEXT("Execute step"), ESearchCase::IgnoreCase))
	{
		ClearSeenToolHeaders();
		CurrentToolSummary = FChatMessage::CreateToolSummaryMessage();
		AddMessage(CurrentToolSummary); // The empty group stands right under the text of its step.
	}
}

void FChatViewModel::OnAgentStateChanged(EConversationState OldState, EConversationState NewState, const FString& Reason)
{
	if (NewState == EConversationState::Ready || NewState == EConversationState::AwaitingInput || NewState == EConversationState::Completed)
	{
		ClearSeenToolHeaders();
	}
	StateChangedEvent.Broadcast(NewState);
}

void FChatViewModel::ClearSeenToolHeaders()
{
	// Both together: the headers are those of the group, so that each step is shown in full.
	SeenToolHeaders.Empty();
	CurrentToolSummary.Reset();
}

void FChatViewModel::OnAgentToolStarted(const FString& ToolId, const FString& ToolName, const FString& Parameters, const FString& Metadata)
{
	// 1. The words of the row. A repeated header is dropped by them and not by the name: reading two files is two rows.
	const Velmora::FResolvedToolStyle Style = Velmora::FToolStyleResolver::ResolveStyle(ToolName, Metadata);
	const FString DisplayParameter = Velmora::FToolStyleResolver::ExtractDisplayParameter(Parameters);
	const FString Header = Style.ActionVerb + TEXT(" ") + DisplayParameter;
	if (SeenToolHeaders.Contains(Header))
	{
		return; // The step already has a row that reads the same.
	}
	SeenToolHeaders.Add(Header);

	// 2. The row, with all that it shows, since its texts are fixed once it is drawn.
	const TSharedPtr<FChatMessage> Row = FChatMessage::CreateToolMessage(ToolName, Parameters, EToolStatus::Running);
	Row->ToolCallId = ToolId;
	Row->ToolColor = Style.Color;
	Row->ToolDisplayName = Style.DisplayName;
	Row->ToolIcon = Style.Icon;
	Row->ToolCategory = Style.Category;
	Row->ToolActionVerb = Style.ActionVerb;
	Row->ToolDisplayParameter = DisplayParameter;

	// 3. Its group: a tool that runs outside of any step opens one.
	if (!CurrentToolSummary.IsValid())
	{
		CurrentToolSummary = FChatMessage::CreateToolSummaryMessage();
		AddMessage(CurrentToolSummary);
	}
	// 4. Into the group, which opens so that a run that begins is seen.
	CurrentToolSummary->ToolExecutions.Add(Row);
	CurrentToolSummary->bIsExpanded = true;
	MessagesChangedEvent.Broadcast();
}

TSharedPtr<FChatMessage> FChatViewModel::FindToolForCompletion(const FString& ToolId, const FString& ToolName) const
{
	const auto HasId = [&ToolId](const FChatMessage& Row) { return Row.ToolCallId == ToolId; };
	const auto HasName = [&ToolName](const FChatMessage& Row) { return Row.ToolName == ToolName; };
	TSharedPtr<FChatMessage> Row;
	if (CurrentToolSummary.IsValid())
	{
		// Mostly it is in the group of the step; a tool that ran over the end of its step is in an older one.
		Row = FindRunningRowInGroup(*CurrentToolSummary, HasId);
	}
	if (!Row.IsValid())
	{
		Row = FindRunningRow(Messages, HasId);
	}
	if (!Row.IsValid())
	{
		// The row of this run was dropped as a repeated header: it finishes the oldest run of its name.
		Row = FindRunningRow(Messages, HasName);
	}
	return Row;
}

void FChatViewModel::OnAgentToolCompleted(const FString& ToolId, const FString& ToolName, bool bSuccess, const FString& Result)
{
	// 1. The row. Without one there is nothing to show: the run was never reported, or its conversation is gone.
	const TSharedPtr<FChatMessage> Row = FindToolForCompletion(ToolId, ToolName);
	if (!Row.IsValid())
	{
		return;
	}
	UpdateToolMessage(Row, bSuccess, Result);
	// 2. The group is complete with the last of its runs.
	if (CurrentToolSummary.IsValid() && CurrentToolSummary->ToolExecutions.Num() > 0 && !HasRunningChild(*CurrentToolSummary))
	{
		CurrentToolSummary->bIsComplete = true;
	}
	MessagesChangedEvent.Broadcast();
}

void FChatViewModel::UpdateToolMessage(TSharedPtr<FChatMessage> Row, bool bSuccess, const FString& Result)
{
	if (!Row.IsValid())
	{
		return;
	}
	Row->ToolStatus = bSuccess ? EToolStatus::Success : EToolStatus::Failed;
	Row->ToolResult = Result;
	Row->bIsComplete = true;
	Row->Content = bSuccess ? Row->ToolName + TEXT(" completed successfully") : Row->ToolName + TEXT(" failed: ") + Result;
	// The content is another one now.
	Row->InvalidateLayout();
}

void FChatViewModel::OnAgentConversationCompleted(bool bSuccess, const FString& Summary)
{
	AddSystemMessage(bSuccess ? TEXT("Conversation completed successfully") : TEXT("Conversation failed"));
}

void FChatViewModel::OnAgentError(const FString& Error)
{
	AddSystemMessage(TEXT("Error: ") + Error);
	ErrorEvent.Broadcast(Error);
}
