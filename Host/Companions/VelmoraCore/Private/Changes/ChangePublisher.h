#pragma once

#include <string>
#include <vector>

#include "Changes/ChangeJournal.h"

namespace Velmora
{
	/** Files each change with the tracker of its sort, under its transaction. Game thread. */
	void PublishToTrackers(const std::vector<FPerformedChange>& Changes);

	/** Takes the changes of transactions that were undone away again. Game thread. */
	void RemoveFromTrackers(const std::string& ConversationId, const std::vector<std::string>& TransactionIds);
}
