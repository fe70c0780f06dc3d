#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	/** The words of a text in one line, without the punctuation around them. Pure. */
	std::vector<std::string> SplitWords(std::string_view Text);

	/** Those that say what a question is about, each once, in the user's spelling and order. Pure. */
	std::vector<std::string> FindMainWords(std::string_view Text);
}
