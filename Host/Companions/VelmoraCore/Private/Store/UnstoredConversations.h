#pragma once

#include "CoreMinimal.h"
#include "Host/Outcome.h"
#include "Templates/SharedPointer.h"

#include "Agent/ConversationTypes.h"
#include "Store/AttachedFiles.h"

namespace Velmora
{
	class FConversationStore;

	/** Conversations that were left before their store would take all of them. They wait here, in order. Game thread. */
	class FUnstoredConversations
	{
	public:
		/** @param StoredCount  How many of its messages the store has. */
		void Add(const TSharedRef<FConversationStore>& Store, const TSharedRef<FConversationMetadata>& Conversation, int32 StoredCount,
			const FAttachedFiles& Attached);

		bool Has(const FString& Id) const;

		/** Hands one back that is gone on with; it waits here no longer. Null when it does not wait here. */
		TSharedPtr<FConversationMetadata> Take(const FString& Id, int32& OutStoredCount, FAttachedFiles& OutAttached);

		/** They are not to be stored any more. */
		void Remove(const FString& Id);
		void Clear() { Waiting.Empty(); }

		/** Stores as many as it can, the oldest first. Done when none waits any longer. */
		FOutcome Store(int32 TimeoutMilliseconds);

		/** The last one that was left stands first. */
		TArray<FConversationMetadata> GetAll() const;

		/** How many messages wait. */
		int32 CountMessages() const;

	private:
		struct FWaiting
		{
			TSharedRef<FConversationStore> Store;
			TSharedRef<FConversationMetadata> Conversation;
			int32 StoredCount = 0;
			FAttachedFiles Attached;
		};

		int32 Find(const FString& Id) const;

		TArray<FWaiting> Waiting;
	};
}
