#pragma once

#include "Agent/ConversationTypes.h"
#include "CoreMinimal.h"

/** The states of a conversation as dumps and scripts call them. Pure. */
class FStateWords
{
public:
	/** "Thinking", "AwaitingInput", ... */
	static const TCHAR* Get(Velmora::EConversationState State);
	/** Whether a state is called so, letter case ignored. */
	static bool IsWord(const FString& Word);
	/** All of them, with commas between. */
	static FString GetAll();
};
