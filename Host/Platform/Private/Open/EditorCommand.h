#pragma once

#include <string>
#include <string_view>
#include <vector>

/** The user's own choice of an editor. */
struct FEditorCommand
{
	/** Program and arguments; empty when the user has chosen none. */
	std::vector<std::string> Words;
	/** The environment variable that names it, and whether it could be read. */
	std::string Variable;
	bool bReadable = true;

	/** By VISUAL, else by EDITOR. */
	static FEditorCommand ReadEnvironment();

	/**
	 * Cuts a command into words as people write it: at blanks, with quotation marks and backslashes as they would stand for
	 * a shell. Nothing else is taken for more than its letters: no variables, no patterns, no commands. Pure.
	 *
	 * @return False when a quotation mark is not closed.
	 */
	static bool Split(std::string_view Command, std::vector<std::string>& OutWords);
};
