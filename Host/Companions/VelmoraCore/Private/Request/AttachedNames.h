#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	/**
	 * Puts quotes around each of the file names that blanks or quotation marks keep from being read as one word. Where a
	 * name holds all quotation marks there are, and is the only one, "it" takes its place. What stands in quotes or in a
	 * fenced block is left as it is. Pure.
	 *
	 * @param Names  As they stand in the text.
	 */
	std::string QuoteAttachedNames(std::string_view Text, const std::vector<std::string>& Names);

	/** What stands behind the names at the beginning of the text, and the blanks and commas after them. Pure. */
	std::string_view SkipAttachedNames(std::string_view Text, const std::vector<std::string>& Names);

	/**
	 * Which of the names a text consists of, by their places in Names: nothing else stands in it but words such as "and",
	 * "these files". All of them when it has only such words; none when it says anything else. Pure.
	 */
	std::vector<size_t> FindNamesIn(std::string_view Text, const std::vector<std::string>& Names);
}
