#pragma once

#include <string>
#include <vector>

/** How the editors in use are told to open a file at a line. Pure. */
namespace EditorLine
{
	/**
	 * Appends the file to an editor's command, at a line where that editor has a way to say it: by the program's name, whatever
	 * options stand behind it.
	 *
	 * @param Line  From 1; 0 for none.
	 */
	void Append(std::vector<std::string>& Command, const std::string& Path, int Line);

	/** The editor is known to open a window of its own, with these options, too. */
	bool HasWindow(const std::vector<std::string>& Command);
}
