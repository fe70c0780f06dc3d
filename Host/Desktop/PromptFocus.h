#pragma once

#include "CoreMinimal.h"

class FChatViewModel;
class SWidget;

/**
 * Gives the keyboard to the prompt when what took it away is over: another conversation or mode, messages that were taken back,
 * a message sent by the mouse, a dialog that was closed, a tab that was opened again. A user who has moved it to another text or
 * out of the chat keeps it there. Game thread.
 */
class FPromptFocus
{
public:
	/** Before each turn of the loop. Costs nothing without a frame since the last call. */
	void NoteTurn();

private:
	/** What may have changed under the user's hand. */
	struct FSight
	{
		/** By address alone: never used. */
		const FChatViewModel* ViewModel = nullptr;
		FString ConversationId;
		int32 Mode = 0;
		int32 MessageCount = 0;
	};
	static FSight Look();
	/** The keyboard is with a control of the chat, or nowhere. */
	static bool IsFree(const TSharedRef<SWidget>& Prompt);

	FSight Seen;
	uint64 SeenFrames = 0;
	bool bWasInDialog = false;
	/** The tab is new: its box takes the keyboard when it can be seen. */
	bool bIsNewTab = false;
};
