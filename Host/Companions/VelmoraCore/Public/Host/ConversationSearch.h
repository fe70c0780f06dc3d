#pragma once

#include <memory>

#include "CoreMinimal.h"
#include "Misc/DateTime.h"
#include "Templates/Function.h"

#include "Agent/ConversationTypes.h"

namespace Velmora
{
	/** A place in a text, in UTF-16 units. */
	struct FFoundPlace
	{
		int32 Begin = 0;
		int32 Length = 0;
	};

	/** A message in which something was found. */
	struct FConversationHit
	{
		FString ConversationId;

		/** Of the message among all that are stored of its conversation, from 0. */
		int32 Position = 0;
		EConversationRole Role = EConversationRole::User;

		/** Local time of the conversation's last change. */
		FDateTime LastUpdated = FDateTime(0);

		/** One line of the message around the first place. */
		FString Excerpt;

		/** In the excerpt, in its order. */
		TArray<FFoundPlace> Places;
	};

	struct FConversationSearchResult
	{
		FString Query;

		/** The newest first, at most FConversationSearch::MaxHits. Empty when the query holds no word. */
		TArray<FConversationHit> Hits;

		/** False while messages are stored that the index does not know yet: another result follows. */
		bool bIsComplete = false;

		/** A sentence when the search failed; then there are no hits. */
		FString Problem;
	};

	/**
	 * Full-text search over all messages of the open project's conversations. Keeps an index in a file of its own beside the
	 * store (see FStoreLocation), which can be deleted at any time: it is made anew. All work is done on a worker; members are
	 * called on the game thread.
	 *
	 * A message is found when each word of the query begins a word in it, without letter case; a name such as TryParseTable is
	 * found by each of its words. Traffic between agent and tools is left out.
	 */
	class VELMORACORE_API FConversationSearch
	{
	public:
		static constexpr int32 MaxHits = 50;

		using FOnResult = TFunction<void(const FConversationSearchResult&)>;

		FConversationSearch();

		/** No result comes any more. Waits for what the worker is at, which ends within some milliseconds. */
		~FConversationSearch();
		FConversationSearch(const FConversationSearch&) = delete;
		FConversationSearch& operator=(const FConversationSearch&) = delete;

		/**
		 * Looks with what the index knows, then takes into it what was stored since, and looks again if there was anything.
		 * A search that is under way ends without a further result.
		 *
		 * @param OnResult  Called on the game thread, once or twice.
		 */
		void Search(const FString& Query, FOnResult OnResult);

	private:
		class FWorker;
		std::shared_ptr<FWorker> Worker;
	};
}
