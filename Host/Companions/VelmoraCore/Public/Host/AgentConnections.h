#pragma once

#include "CoreMinimal.h"
#include "Misc/Optional.h"
#include "Templates/Function.h"

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

		// How long the server may be silent, in seconds.
		int32 ConnectSeconds = 10;
		int32 FirstByteSeconds = 120;
		int32 SilenceSeconds = 60;

		// For a million tokens each, in whatever currency the user thinks in; 0 where nothing is to be counted.
		double PromptPrice = 0.0;
		double CompletionPrice = 0.0;

		// Beyond these the user is asked whether it may go on; 0 for no limit. A day ends at midnight, local time.
		int64 MaxTurnTokens = 0;
		int64 MaxDayTokens = 0;
		double MaxTurnCost = 0.0;
		double MaxDayCost = 0.0;
	};

	/** What a test of a connection has found. */
	struct FConnectionReport
	{
		/** An answer came. */
		bool bSuccess = false;

		/** All of it in one sentence or two. */
		FString Sentence;

		/** That the server lists; empty when it lists none. */
		TArray<FString> Models;

		/** The one that was asked. */
		FString Model;

		/** 0 when the server does not say. */
		int64 ContextTokens = 0;

		enum class ETools : uint8
		{
			Unknown, // The server took the tools, and the model did not call the one that it was asked to call.
			Yes,
			No
		};
		ETools Tools = ETools::Unknown;

		/** Of the answer; negative when none came. */
		double FirstByteSeconds = -1.0;
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

		/**
		 * Writes the whole list, whole or not at all, so that the user alone may read it. Names must differ and pass Check.
		 *
		 * @return Empty, or a sentence that says why nothing was written.
		 */
		[[nodiscard]] static FString Save(const TArray<FAgentConnection>& Connections);

		/** The name of the connection that answers from the start of the program on; empty for the built-in agent. Any thread. */
		static FString GetDefault();

		/** Empty, or a sentence that says why nothing was written. */
		[[nodiscard]] static FString SetDefault(const FString& Name);

		/**
		 * Where a connection's key comes from, for people: "the variable X", "the keyring"; empty when there is none. Any
		 * thread; may wait for the user, whom a keyring asks for a password.
		 */
		static FString DescribeKey(const FAgentConnection& Connection);

		/**
		 * Keeps a key for the connection's scheme, host and port: in the keyring of the session, or without one in a file that only
		 * the user may read. An empty key is forgotten. Any thread; may wait for the user.
		 *
		 * @return Empty, or a sentence that says why it was not kept.
		 */
		[[nodiscard]] static FString StoreKey(const FAgentConnection& Connection, const FString& Key);

		/** Empty, or a sentence that says what is wrong with it and how it is put right. */
		static FString Check(const FAgentConnection& Connection);

		/**
		 * Who answers from the next message on: a model, or the built-in agent when nothing is given. Opens no connection.
		 * Takes the key's variable out of the environment, so that no child gets it. Game thread, before threads that
		 * look at the environment if possible.
		 */
		static void Select(const TOptional<FAgentConnection>& Connection);

		/**
		 * Remembers the keys that stand in the environment for any of the user's connections, and takes them out of it, so that no
		 * child gets them. Game thread.
		 */
		static void HideKeys();

		/** Empty for the built-in agent. Any thread. */
		static TOptional<FAgentConnection> GetSelected();

		/**
		 * Asks the server which models it has: one a line, with the context size where it tells one. Blocks; any thread.
		 *
		 * @return False with a sentence when the server gives no list.
		 */
		static bool ListModels(const FAgentConnection& Connection, TArray<FString>& OutLines, FString& OutProblem);

		/**
		 * Lists the models and asks the model for a short answer and a call of a tool. Sends nothing of the project.
		 *
		 * @param Done  Called once on the game thread, when its tasks are run.
		 */
		static void Test(const FAgentConnection& Connection, TFunction<void(const FConnectionReport&)> Done);
	};
}
