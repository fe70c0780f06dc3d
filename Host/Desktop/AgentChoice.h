#pragma once

#include "CoreMinimal.h"
#include "Host/AgentConnections.h"
#include "Misc/Optional.h"

class FMenuBuilder;

/**
 * Who answers: the built-in agent or one of the user's connections. A change counts from the next message on, and the conversation
 * goes on. Game thread.
 */
class FAgentChoice
{
public:
	/** "Built-in agent", or the name of the connection that answers. */
	static FString GetName();

	/** "Hero - local - Velmora UI": project and agent, so that one of several windows is found by its title. */
	static FString MakeTitle();

	/** Gives the program's window that title. Without a window nothing happens. */
	static void ShowTitle();

	/** Nothing for the built-in agent. A connection that cannot be used is reported, and who answers stays. */
	static void Choose(const TOptional<Velmora::FAgentConnection>& Connection);

	/** The entries of the menu Tools, Agent: all that can answer, the present one marked, and the way to the settings. */
	static void BuildMenu(FMenuBuilder& Builder);
};
