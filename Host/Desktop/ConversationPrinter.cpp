#include "ConversationPrinter.h"

#include "Containers/StringConv.h"

#include <cstdio>

namespace
{
	void PrintTo(FILE* Stream, const FString& Text)
	{
		const FTCHARToUTF8 Bytes(*Text, Text.Len());
		fwrite(Bytes.Get(), 1, static_cast<size_t>(Bytes.Length()), Stream);
		fflush(Stream);
	}
}

void PrintToStandardOutput(const FString& Text)
{
	PrintTo(stdout, Text);
}

void PrintToStandardError(const FString& Text)
{
	PrintTo(stderr, Text);
}

FString FConversationPrinter::GetToolLabel(const FChatMessage& Tool)
{
	if (Tool.ToolActionVerb.IsEmpty())
	{
		return Tool.ToolDisplayName;
	}
	return Tool.ToolDisplayParameter.IsEmpty() ? Tool.ToolActionVerb + TEXT("...")
											   : Tool.ToolActionVerb + TEXT(" ") + Tool.ToolDisplayParameter;
}

FString FConversationPrinter::DescribeTool(const FChatMessage& Tool)
{
	const TCHAR* Outcome =
		Tool.ToolStatus == EToolStatus::Success ? TEXT("ok") : (Tool.ToolStatus == EToolStatus::Failed ? TEXT("failed") : TEXT("running"));
	const FString Line = GetToolLabel(Tool) + TEXT(" ... ") + Outcome;
	return Tool.ToolResult.IsEmpty() ? Line : Line + TEXT(": ") + Tool.ToolResult;
}

void FConversationPrinter::Begin(const TArray<TSharedPtr<FChatMessage>>& Messages)
{
	Printed.Reset();
	Failure.Reset();
	AnswerCount = 0;
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		Printed.Add(Message.Get());
		for (const TSharedPtr<FChatMessage>& Tool : Message->ToolExecutions)
		{
			Printed.Add(Tool.Get());
		}
	}
}

void FConversationPrinter::PrintNew(const TArray<TSharedPtr<FChatMessage>>& Messages)
{
	for (const TSharedPtr<FChatMessage>& Message : Messages)
	{
		for (const TSharedPtr<FChatMessage>& Tool : Message->ToolExecutions)
		{
			if (!Tool->IsToolRunning() && !Printed.Contains(Tool.Get()))
			{
				Printed.Add(Tool.Get());
				PrintToStandardError(TEXT("  ") + DescribeTool(*Tool) + TEXT("\n"));
			}
		}
		if (Message->Type == EChatMessageType::ToolSummary || Printed.Contains(Message.Get()))
		{
			continue;
		}
		Printed.Add(Message.Get());
		if (Message->IsAIMessage())
		{
			PrintToStandardOutput(AnswerCount > 0 ? TEXT("\n") + Message->Content : Message->Content);
			PrintToStandardOutput(Message->Content.EndsWith(TEXT("\n")) ? TEXT("") : TEXT("\n"));
			++AnswerCount;
		}
		else if (Message->Type == EChatMessageType::System)
		{
			PrintToStandardError(Message->Content + TEXT("\n"));
			if (Failure.IsEmpty() && (Message->Content.StartsWith(TEXT("Error: ")) || Message->Content.StartsWith(TEXT("Failed to "))))
			{
				Failure = Message->Content;
			}
		}
	}
}
