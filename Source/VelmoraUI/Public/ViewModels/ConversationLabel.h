#pragma once

#include "CoreMinimal.h"
#include "Agent/ConversationTypes.h"
#include "Misc/DateTime.h"

/** The words by which a stored conversation is recognised in a list. */
struct VELMORAUI_API FConversationLabel
{
	/**
	 * The first thing that the user said, in one line of at most 50 characters and three dots; "New Conversation" when
	 * nothing was said. Reads no more of a long message than that takes.
	 */
	static FString MakeTitle(const Velmora::FConversationMetadata& Conversation);

	/** "just now", "1 min ago", "3 hrs ago", "2 days ago", "5 months ago"; a month has 30 days. The future is now. */
	static FString MakeAge(const FDateTime& LastUpdated, const FDateTime& Now);

	/** The first characters of the id, enough to tell conversations of one title apart. */
	static FString MakeShortId(const Velmora::FConversationMetadata& Conversation);

	/** The same conversation, whichever objects describe it. */
	static bool IsSame(const Velmora::FConversationMetadata& A, const Velmora::FConversationMetadata& B);
};
