#pragma once

#include "CoreMinimal.h"
#include "Misc/Optional.h"

namespace Velmora
{
	/** How a language model is reached. */
	struct FAgentConnection
	{
		/** What the user calls it; unique in the list. */
		FString Name;

		/** "http://127.0.0.1:8080/v1" */
		FString Url;

		/** Empty for the first one that the server lists. */
		FString Model;

		/** Environment variable with the key. Empty, or unset: the key file of the user, by the server's address. */
		FString KeyVariable;

		/** Certificates to trust instead of the system's; empty for those. */
		FString CaFile;

		/** Empty for what the environment says. */
		FString Proxy;

		/** Further members of each request, such as {"temperature":0.2}: a JSON object, or nothing. */
		FString Options;

		/** How many tokens a conversation may have; 0 for what the server says. */
		int32 ContextTokens = 0;

		/** How often a turn may ask the model before the user is asked whether it may go on. */
		int32 MaxRounds = 50;
	};

	/**
	 * The models that the user of this machine has set up, and the one that answers. Kept in the user's configuration folder,
	 * never in a project, so that nothing that comes with a project can select anything that talks.
	 */
	class VELMORACORE_API FAgentConnections
	{
	public:
		/** "…/velmora-ui" in the user's configuration folder; empty when there is none. */
		static FString GetFolder();

		/**
		 * Reads the list. Any thread.
		 *
		 * @param OutProblem  A sentence when there is a file that cannot be used; the list is empty then.
		 */
		static TArray<FAgentConnection> List(FString& OutProblem);

		/** Empty, or a sentence that says what is wrong with it and how it is put right. */
		static FString Check(const FAgentConnection& Connection);

		/**
		 * Who answers from the next message on: a model, or the built-in agent when nothing is given. Opens no connection.
		 * Takes the key's variable out of the environment, so that no child gets it. Game thread, before threads that
		 * look at the environment if possible.
		 */
		static void Select(const TOptional<FAgentConnection>& Connection);

		/** Empty for the built-in agent. Any thread. */
		static TOptional<FAgentConnection> GetSelected();

		/**
		 * Asks the server which models it has: one a line, with the context size where it tells one. Blocks; any thread.
		 *
		 * @return False with a sentence when the server gives no list.
		 */
		static bool ListModels(const FAgentConnection& Connection, TArray<FString>& OutLines, FString& OutProblem);
	};
}
