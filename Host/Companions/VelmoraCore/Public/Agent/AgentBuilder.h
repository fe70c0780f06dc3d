#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

#include "Agent/Agent.h"

/** Makes agents. */
class VELMORACORE_API FAgentBuilder
{
public:
	/**
	 * Builds an agent from the current settings. It holds an empty conversation in the default mode, so that
	 * a mode can be picked and the first message sent at once. Game thread.
	 *
	 * @return Null when no agent can work: there is no project folder.
	 */
	static TSharedPtr<Velmora::FAgent> CreateDefault();
};
