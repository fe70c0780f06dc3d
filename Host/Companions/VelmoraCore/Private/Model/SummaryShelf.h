#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Model/ModelTypes.h"

namespace Velmora
{
	/**
	 * Summaries of beginnings of conversations, so that a model is asked for one once and not in every turn that follows. A summary goes
	 * by the messages themselves: whatever has changed in them since, an undo or an edit, has none. In memory, the latest few. Any thread.
	 */
	class FSummaryShelf
	{
	public:
		/** What a list of messages begins with, for one turn. @param First  The one after the system's. */
		FSummaryShelf(const std::vector<FModelMessage>& Messages, size_t First);

		struct FSummary
		{
			/** How many messages it stands for. */
			size_t Count = 0;
			std::string Text;
		};
		/** The longest beginning of these messages that has one, but for the last message. */
		std::optional<FSummary> Find() const;

		void Keep(const FSummary& Summary) const;

	private:
		/** Of the first messages, by their number. */
		std::vector<uint64_t> Keys;
	};
}
