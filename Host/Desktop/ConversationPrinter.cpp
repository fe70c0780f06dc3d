#include "ConversationPrinter.h"

#include "Containers/StringConv.h"

#include <cstdio>

namespace
{
	/** Bytes as they are: no locale has a say in what a program prints. */
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
	// As the row in the window reads, so that both can be compared.
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
	// By address: messages have no other identity, and are kept while they are in the list.
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
			// Once it has ended: its line says how.
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
			// A blank line between two answers keeps Markdown from running them together.
			PrintToStandardOutput(AnswerCount > 0 ? TEXT("\n") + Message->Content : Message->Content);
			PrintToStandardOutput(Message->Content.EndsWith(TEXT("\n")) ? TEXT("") : TEXT("\n"));
			++AnswerCount;
		}
		else if (Message->Type == EChatMessageType::System)
		{
			PrintToStandardError(Message->Content + TEXT("\n"));
			// The window tells failures as notes of the system; these beginnings are how one knows them.
			if (Failure.IsEmpty() && (Message->Content.StartsWith(TEXT("Error: ")) || Message->Content.StartsWith(TEXT("Failed to "))))
			{
				Failure = Message->Content;
			}
		}
	}
}
