#pragma once

#include <string>

/**
 * The keyring of the user's session, by the session library that is loaded when it is first needed: the program runs without it.
 * Any thread but the game's: a keyring may ask its user for a password first.
 */
namespace Velmora::KeyRing
{
	/** Why there is none to ask: a clause. Empty when there may be one. */
	std::string WhyNone();

	/** What is kept for a server. Empty without one, and with a sentence in OutProblem where the keyring did not answer. */
	std::string Find(const std::string& Origin, std::string& OutProblem);

	/** An empty key is forgotten. Empty, or a sentence that says why it was not kept. */
	[[nodiscard]] std::string Store(const std::string& Origin, const std::string& Key);
}
