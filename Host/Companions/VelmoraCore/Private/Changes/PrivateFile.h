#pragma once

#include <string>
#include <string_view>

#include "Host/FolderLock.h"

/** Files in the user's configuration folder that nobody else may look into. Bytes. */
namespace Velmora::PrivateFile
{
	/** "…/velmora-ui" in the user's configuration folder; empty when there is none. */
	std::string GetFolder();

	/**
	 * Who reads a file and writes it anew has the turn in between, so that no two programs lose what the other wrote. For a second at
	 * most it waits for it, and then goes on without. Not twice in one thread.
	 */
	[[nodiscard]] FFolderLock TakeTurn();

	/** @return False without a problem when there is none, else with a sentence. */
	bool Read(const std::string& Name, std::string& OutText, std::string& OutProblem);

	/** Whole or not at all, mode 0600; makes the folder. Empty, or a sentence that says why not. */
	[[nodiscard]] std::string Write(const std::string& Name, std::string_view Text);
}
