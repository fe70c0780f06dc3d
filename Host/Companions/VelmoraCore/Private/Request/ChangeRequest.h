#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	enum class EChangeRequest
	{
		/** A change is asked for, but which one cannot be told. */
		Unclear,
		Create,
		Write,
		Replace,
		Append,
		Delete
	};

	/** What a request to change files asks for. */
	struct FChangeRequest
	{
		EChangeRequest Kind = EChangeRequest::Unclear;

		/** As written. Empty: the file that came with the message is meant. More than one for a deletion only. */
		std::vector<std::string> Files;

		/** What to write, to add, or to put in the place of Old. To the letter where it stood in quotes or a fence. */
		std::string Content;
		std::string Old;
	};

	/**
	 * Understands a request to change files in plain words: what stands in quotes or code fences is taken to the letter,
	 * and what the words leave open makes it Unclear rather than a guess. Pure.
	 *
	 * @param Text  UTF-8, of any length.
	 */
	FChangeRequest ParseChangeRequest(std::string_view Text);
}
