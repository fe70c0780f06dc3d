#pragma once

#include <string>
#include <string_view>

/** Files in the user's configuration folder that nobody else may look into. Bytes. */
namespace Velmora::PrivateFile
{
	/** "…/velmora-ui" in the user's configuration folder; empty when there is none. */
	std::string GetFolder();

	/** @return False without a problem when there is none, else with a sentence. */
	bool Read(const std::string& Name, std::string& OutText, std::string& OutProblem);

	/** Whole or not at all, mode 0600; makes the folder. Empty, or a sentence that says why not. */
	[[nodiscard]] std::string Write(const std::string& Name, std::string_view Text);
}
