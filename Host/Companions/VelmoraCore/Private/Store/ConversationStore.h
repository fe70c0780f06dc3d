#pragma once

#include <mutex>

#include "CoreMinimal.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	/** All conversations in which something was said, for the life of the process. Any thread; what goes in and out are copies. */
	class FConversationStore
	{
	public:
		static FConversationStore& Get();

		/** Adds the conversation or replaces the one of the same id. One without messages is not kept. */
		void Save(const FConversationMetadata& Conversation);

		/** False when there is none of that id. */
		bool Load(const FString& Id, FConversationMetadata& OutConversation) const;
		bool Delete(const FString& Id);
		void Clear();

		/** The last saved first. */
		TArray<FConversationMetadata> GetAll() const;

	private:
		int32 FindIndex(const FString& Id) const;

		mutable std::mutex Mutex;

		/** The last saved stands last. */
		TArray<FConversationMetadata> Conversations;
	};
}
