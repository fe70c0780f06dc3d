#pragma once

#include <string>

#include "Host/AgentConnections.h"

/**
 * The keys of the user's servers: an environment variable that the connection names, else the session's keyring, else a file that
 * only the user may read. A key belongs to scheme, host and port. Any thread; what looks for a key or keeps one may wait for
 * the user, whom a keyring asks for a password.
 */
namespace Velmora::ModelKeys
{
	/** Empty when there is none. */
	std::string Find(const FAgentConnection& Connection);

	/** Where it comes from: a clause; empty when there is none. */
	std::string Describe(const FAgentConnection& Connection);

	/** An empty key is forgotten. Empty, or a sentence that says why it was not kept. */
	[[nodiscard]] std::string Store(const FAgentConnection& Connection, const std::string& Key);

	/** Remembers the variable's value in this process and takes it out of the environment, so that no child gets it. */
	void TakeFromEnvironment(const std::string& Variable);
}
