#pragma once

#include "CoreMinimal.h"

/** Fills stores of conversations that a benchmark then reads. */
class FMadeStore
{
public:
	/** The text of a message by its number in its conversation; even ones are of the user. */
	using FMakeText = TFunctionRef<FString(int32 Number)>;

	/**
	 * Adds so many conversations of so many messages to a store, in one transaction, since the making is not what is measured.
	 * Makes the store when there is none. Ends the process when that fails.
	 */
	static void Fill(const FString& Database, int32 ConversationCount, int32 MessageCount, FMakeText MakeText);
	static FString GetConversationId(int32 ConversationNumber);
};
