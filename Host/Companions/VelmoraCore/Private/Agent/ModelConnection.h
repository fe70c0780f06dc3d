#pragma once

#include <optional>
#include <string>

#include "Model/ModelTypes.h"

namespace Velmora
{
	struct FAgentConnection;

	/** A connection as a turn uses it, with its key. UTF-8. */
	struct FModelConnection
	{
		std::string Name;
		FModelServer Server;
		std::string Model;
		std::string Options;
		int ContextTokens = 0;
		int MaxRounds = 50;
	};

	/** The one that answers now; nothing for the built-in agent. Any thread. */
	std::optional<FModelConnection> GetSelectedModel();

	FModelConnection MakeModelConnection(const FAgentConnection& Connection);
}
