#pragma once

#include <string>
#include <string_view>

namespace Velmora
{
	/**
	 * Whether a file steers tools: version control, hooks, jobs of build servers, tasks of editors, start-up files of shells,
	 * what a package manager runs. Who writes one of these runs a program at some later time, so it is asked for. Pure.
	 *
	 * @param Path  Below the project. Letter case does not count, since it does not on every file system.
	 * @return      A clause for the user: "it is a hook or setting of version control". Empty for an ordinary file.
	 */
	std::string DescribeSteering(std::string_view Path);

	/** Whether a file holds secrets by its name, or is left out of the project by its own rules, so that a model asks first. Pure. */
	bool IsSecretName(std::string_view Path);
}
