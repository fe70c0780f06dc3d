#pragma once

#include "CoreMinimal.h"

/**
 * The menu's "Send Last Message Again" and "Edit Last Message". Both ask first and undo to the message, so that the conversation
 * never has it twice. Messages that were loaded carry no undo point of the window's: for those the agent is asked, and the
 * conversation is shown anew. Game thread.
 */
class FLastMessageCommands
{
public:
	/** There is a last message, and no turn runs. */
	static bool CanTakeBack();
	static void SendAgain();
	/** Its text goes into the box, above a draft that stands there; its files are attached again. */
	static void Edit();
};
