#pragma once

#include "CoreMinimal.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	/**
	 * Reads the conversation store without an agent. An instance belongs to one thread, which may be any;
	 * instances on different threads do not disturb each other or the agent.
	 *
	 * Conversations live as long as the process: the local store keeps them in memory and writes no file yet.
	 */
	class VELMORACORE_API FConversationHistoryManager
	{
	public:
		FConversationHistoryManager() = default;
		~FConversationHistoryManager() = default;

		/** Opens a store. An empty path means the default store, the only one there is: any other path opens an empty one. */
		void Initialize(const FString& Path);

		/** One entry per stored conversation with all its messages, the latest first. Empty before Initialize. */
		TArray<FConversationMetadata> GetConversationSummaries() const;

	private:
		bool bReadsDefaultStore = false;
	};
}
