#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

namespace Velmora
{
	/** A question of the agent that waits for the user. */
	struct FAgentQuestion
	{
		/** Of this process, never zero. */
		uint32 Id = 0;

		/** The tool's name, or what else is asked for. */
		FString Tool;

		/** What it is to act on: a path below the project, a command line. */
		FString Subject;

		/** Markdown, as the row in the conversation has it. */
		FString Text;

		/** AllowAlways is one of the answers. */
		bool bMayBeRemembered = true;
	};

	enum class EAgentAnswer : uint8
	{
		AllowOnce,
		AllowAlways, // In this project: a rule is written down.
		Refuse // The turn goes on without it.
	};

	/**
	 * The side of the agent's questions that programs drive. An answer given here acts on the agent and leaves the prompt
	 * alone. Game thread.
	 */
	class VELMORACORE_API FAgentQuestions
	{
	public:
		/** Called with each question when it is asked, and with null when it is open no longer. Unset for nobody. */
		static void SetListener(TFunction<void(const FAgentQuestion*)> Listener);

		/** False when that question is open no longer. */
		static bool Answer(uint32 Id, EAgentAnswer Answer);
	};
}
