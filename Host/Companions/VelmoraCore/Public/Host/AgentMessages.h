#pragma once

#include "CoreMinimal.h"
#include "Misc/Optional.h"

namespace Velmora
{
	/** The last message of the user in the conversation that is current. */
	struct FLastMessage
	{
		FString Text;

		/** That went out with it. */
		TArray<FString> Files;

		/** What was done since can be undone; after a restart as long as what earlier runs have kept is there. */
		bool bCanUndo = false;
	};

	/** The side of the agent by which programs take back a message that the front end has no undo point for. Game thread. */
	class VELMORACORE_API FAgentMessages
	{
	public:
		/** Nothing without a conversation, before its first message, and while a turn runs. */
		static TOptional<FLastMessage> GetLast();

		/**
		 * Undoes what was done at and after the last message, where that is possible, and cuts the conversation before it in any case.
		 * The conversation is then reported as loaded, so that every front end shows it anew.
		 *
		 * @return Empty, or a sentence that says why nothing was changed.
		 */
		[[nodiscard]] static FString TakeBackLast();
	};
}
