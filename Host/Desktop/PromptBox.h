#pragma once

#include "CoreMinimal.h"

class SWidget;

/** The box of the tab that prompts are typed into, as a user reaches it: by focus and keys. Without a tab nothing happens. Game thread. */
class FPromptBox
{
public:
	/** Null while it cannot be seen. */
	static TSharedPtr<SWidget> Find();
	static void Focus();
	static void Clear();
	/** The files above the box, which go out with the next prompt. */
	static TArray<FString> GetFiles();
	static void AttachFiles(const TArray<FString>& Files);
	/** Puts a text above what stands there, which is not lost. */
	static void PutBefore(const FString& Text);
	/** What the agent has said waits a moment for more of it to be shown in one go; this shows it at once. */
	static void ShowWaitingMessages();
	/** Types a text behind what stands there and sends all of it. Needs a frame before anything else is typed. */
	static void TypeAndSend(const FString& Text);
};
