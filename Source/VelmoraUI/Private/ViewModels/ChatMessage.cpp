#include "ViewModels/ChatMessage.h"

namespace
{

	TSharedPtr<FChatMessage> MakeChatMessage(EChatMessageType Type, const FString& Content)
	{
		TSharedPtr<FChatMessage> Message = MakeShared<FChatMessage>();
		Message->Type = Type;
		Message->Content = Content;
		Message->Timestamp = FDateTime::Now();
		return Message;
	}

	FString DescribeToolStatus(const FString& ToolName, EToolStatus Status)
	{
		switch (Status)
		{
		case EToolStatus::Running:
			return TEXT("Executing ") + ToolName + TEXT("...");
		case EToolStatus::Success:
			return ToolName + TEXT(" completed successfully");
		case EToolStatus::Failed:
			return ToolName + TEXT(" failed");
		}
		return FString();
	}

} // namespace

FChatMessageLayout::~FChatMessageLayout() = default;

FChatMessage::FChatMessage()
	: Timestamp(FDateTime::Now())
{
}

TSharedPtr<FChatMessage> FChatMessage::CreateUserMessage(const FString& Text)
{
	return MakeChatMessage(EChatMessageType::User, Text);
}

TSharedPtr<FChatMessage> FChatMessage::CreateAIMessage(const FString& Text, bool bHasToolCalls)
{
	TSharedPtr<FChatMessage> Message = MakeChatMessage(EChatMessageType::AI, Text);
	Message->bHasToolCalls = bHasToolCalls;
	return Message;
}

TSharedPtr<FChatMessage> FChatMessage::CreateSystemMessage(const FString& Text)
{
	return MakeChatMessage(EChatMessageType::System, Text);
}

TSharedPtr<FChatMessage> FChatMessage::CreateToolMessage(const FString& ToolName, const FString& Parameters, EToolStatus Status)
{
	TSharedPtr<FChatMessage> Message = MakeChatMessage(EChatMessageType::Tool, DescribeToolStatus(ToolName, Status));
	Message->ToolName = ToolName;
	Message->ToolParameters = Parameters;
	Message->ToolStatus = Status;
	// A run that was over before it was reported comes without a completion of its own.
	Message->bIsComplete = Status != EToolStatus::Running;
	return Message;
}

TSharedPtr<FChatMessage> FChatMessage::CreateToolSummaryMessage()
{
	TSharedPtr<FChatMessage> Message = MakeChatMessage(EChatMessageType::ToolSummary, FString());
	// A group is complete when the last of its runs ends, which whoever adds the runs finds out.
	Message->bIsComplete = false;
	return Message;
}

FString FChatMessage::GetFormattedTimestamp() const
{
	// From the ticks and not through a calendar: rows are made by the hundred when a conversation is loaded.
	const int64 Seconds = Timestamp.GetTicks() / ETimespan::TicksPerSecond;
	return FString::Printf(TEXT("%02d:%02d:%02d"), static_cast<int32>(Seconds / 3600 % 24), static_cast<int32>(Seconds / 60 % 60),
		static_cast<int32>(Seconds % 60));
}

FString FChatMessage::GetSenderName() const
{
	switch (Type)
	{
	case EChatMessageType::User:
		return TEXT("You");
	case EChatMessageType::AI:
		return TEXT("Velmora AI");
	case EChatMessageType::System:
		return TEXT("System");
	case EChatMessageType::Tool:
		return TEXT("Tool: ") + ToolName;
	case EChatMessageType::ToolSummary:
		return TEXT("Tool Executions");
	}
	return TEXT("Unknown");
}

void FChatMessage::InvalidateLayout()
{
	// Only dropped: whoever draws the message next makes a new one.
	CachedLayout.Reset();
}
