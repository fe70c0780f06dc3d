#pragma once

#include "CoreMinimal.h"
#include "ViewModels/ChatMessage.h"

/** Prints one turn of a conversation: answers as Markdown on standard output, tools and notes on standard error. */
class FConversationPrinter
{
public:
	/** From here on messages count as new. */
	void Begin(const TArray<TSharedPtr<FChatMessage>>& Messages);
	/** Prints tools that have come to an end and answers that have arrived since. Call each frame. */
	void PrintNew(const TArray<TSharedPtr<FChatMessage>>& Messages);
	bool HasAnswer() const { return AnswerCount > 0; }
	/** The first failure told in the conversation since Begin; empty when there was none. */
	const FString& GetFailure() const { return Failure; }

	/** "Searching Hero ... ok: 3 matches", as a tool row reads. Pure. */
	static FString DescribeTool(const FChatMessage& Tool);
	/** The label of a tool row as it stands on screen. Pure. */
	static FString GetToolLabel(const FChatMessage& Tool);

private:
	TSet<const FChatMessage*> Printed;
	FString Failure;
	int32 AnswerCount = 0;
};

/** Writes text as UTF-8 and flushes, so that a reader at the other end of a pipe sees it at once. */
void PrintToStandardOutput(const FString& Text);
void PrintToStandardError(const FString& Text);
