#pragma once

#include <mutex>
#include <vector>

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	class FConversationStore;

	/**
	 * Stores what the agent says in one turn before it is told: whatever the user has seen is on the disk. What was
	 * stored when the turn was dropped before it was told is taken back; a process that dies in between may leave it in
	 * the store. Shared by the worker and the game thread.
	 */
	class FTurnRecorder
	{
	public:
		/** @param bInIsBehind  The store lacks earlier messages of the conversation, so that nothing may follow them yet. */
		FTurnRecorder(const TSharedRef<FConversationStore>& InStore, const FString& InConversationId, bool bInIsBehind);

		/** Once one cannot be stored, none that follows it in this turn is. Worker. */
		void Record(const FConversationMessage& Message);

		/** Whether the next message to be told, in the order of recording, is in the store. It counts as told then. Game thread. */
		bool TakeStored();

		/** What was stored is in the store no longer. Game thread. */
		void Forget();

		/** The turn is dropped: nothing more of it counts. Game thread. */
		void Drop();

	private:
		void Withdraw(int64 Key);

		const TSharedRef<FConversationStore> Store;
		const FString ConversationId;

		std::mutex Mutex;
		std::vector<int64> UntoldKeys;
		uint32 Generation = 0;
		bool bIsBehind = false;
		bool bIsDropped = false;
	};
}
