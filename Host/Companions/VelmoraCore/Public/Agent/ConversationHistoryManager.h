#pragma once

#include "CoreMinimal.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	/**
	 * Reads the conversation store without an agent. An instance belongs to one thread, which may be any; each reads
	 * on a connection of its own, so instances on different threads do not disturb each other or the agent.
	 */
	class VELMORACORE_API FConversationHistoryManager
	{
	public:
		FConversationHistoryManager() = default;
		~FConversationHistoryManager() = default;

		/**
		 * Chooses the store of the project that is open now.
		 *
		 * @param Path  Folder of the store's file, empty for the folder where agents keep it. One that does not exist is an empty store.
		 */
		void Initialize(const FString& Path);

		/**
		 * One entry per stored conversation, the latest first. Reads the store anew each time. Empty before Initialize,
		 * and when the store cannot be read.
		 *
		 * An entry carries messages up to the first one of the user and no more; one longer than 1,024 characters is
		 * cut: white space before it goes, and an ellipsis stands for what follows.
		 */
		TArray<FConversationMetadata> GetConversationSummaries() const;

	private:
		FString DatabasePath;
		bool bIsDefaultStore = false;
	};
}
