#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

#include "Agent/Agent.h"

namespace Velmora
{
	/**
	 * Answers two questions about an agent that widgets ask every frame. Holds the agent. Game thread.
	 * The answers are true at the moment of asking, so none of them waits for a tick.
	 */
	class VELMORACORE_API FAgentStateObserver
	{
	public:
		/** A null agent accepts nothing and is never busy. */
		explicit FAgentStateObserver(TSharedPtr<FAgent> InAgent);

		/** Called every frame by the owner. The local agent needs no polling, so nothing happens here. */
		void Tick(float DeltaTime);

		/** A new message may be sent now: a conversation is current and no turn is running or paused. */
		bool CanAcceptMessage() const;

		/** A turn is running. A paused one is not busy: it waits for the user. */
		bool IsBusy() const;

	private:
		TSharedPtr<FAgent> Agent;
	};
}
