#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Request/ChangeRequest.h"

namespace Velmora
{
	enum class ERequestKind
	{
		Unknown,
		Help,
		Greeting,
		Thanks,
		FindText, // Where something stands.
		FindSymbol, // Where something is defined.
		Outline, // What a file defines.
		WhichFiles, // The same, asked for files instead of lines.
		Explain, // What a symbol or file is.
		Show, // A file, or some lines of it. A folder is listed.
		List, // A folder. A file is shown.
		Summarise, // The project as a whole.
		Count, // How many files or lines.
		FreeQuestion, // Something that no command answers; see MainWords.
		ChangeFiles // Something is to be written or deleted.
	};

	/** What a user's sentence asks for. */
	struct FAgentRequest
	{
		ERequestKind Kind = ERequestKind::Unknown;

		/** What to look for or to show, in the user's spelling. Empty where the kind needs none, or where it was left out. */
		std::string Target;

		/** Where to look: what stood behind the last "in", not taken out of Target. Empty if nothing did. */
		std::string Scope;

		/** Target without " in Scope", for the case that Scope turns out to be a place in the project. */
		std::string TargetInScope;

		/** Lines to show, from 1, both included. Zero: not said. */
		int FirstLine = 0;
		int LastLine = 0;

		/** Show that many lines from the end. Zero: not said. */
		int TailLines = 0;

		/** Of FreeQuestion: what it is about, each once, in the user's spelling and order. */
		std::vector<std::string> MainWords;

		/** Of ChangeFiles. */
		FChangeRequest Change;
	};

	/**
	 * Understands a request in plain words, whatever its letter case, quotes and courtesies. Only the first few
	 * thousand bytes of a long text are looked at, but all of what is to be written. Pure.
	 *
	 * @param Text  UTF-8.
	 */
	FAgentRequest ParseAgentRequest(std::string_view Text);
}
