#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	/** What the user has said of a conversation, beside what was said in it. */
	struct FConversationMark
	{
		/** One line; empty for the title that the first message gives. */
		FString Name;
		bool bIsPinned = false;

		bool IsEmpty() const { return Name.IsEmpty() && !bIsPinned; }
	};

	/**
	 * The stored conversations of the open project for whoever is not their agent. Reads and writes the disk: for workers, any
	 * thread. Several programs may do so at once.
	 */
	class VELMORACORE_API FStoredConversations
	{
	public:
		/**
		 * Reads one with all its messages.
		 *
		 * @return Empty, or a sentence; then the conversation is not changed.
		 */
		[[nodiscard]] static FString Load(const FString& Id, FConversationMetadata& OutConversation);

		/** Removes one with its mark. One that is not there is removed. Never the one that an agent holds: that is the agent's to do. */
		[[nodiscard]] static FString Delete(const FString& Id);

		/** By id. They stand in a file of their own beside the store; one that is missing or cannot be read has none. */
		static TMap<FString, FConversationMark> ReadMarks();

		/** Changes one mark, as it stands in the file by then. Line breaks and tabs in a name become blanks. */
		[[nodiscard]] static FString ChangeMark(const FString& Id, TFunctionRef<void(FConversationMark&)> Edit);
	};
}
