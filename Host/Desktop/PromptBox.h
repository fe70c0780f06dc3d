#pragma once

#include "CoreMinimal.h"

/** The box of the tab that prompts are typed into, as a user reaches it: by focus and keys. Without a tab nothing happens. Game thread. */
class FPromptBox
{
public:
	static void Focus();
	static void Clear();
	/** Puts a text above what stands there, which is not lost. */
	static void PutBefore(const FString& Text);
	/** Types a text behind what stands there and sends all of it. Needs a frame before anything else is typed. */
	static void TypeAndSend(const FString& Text);
};
