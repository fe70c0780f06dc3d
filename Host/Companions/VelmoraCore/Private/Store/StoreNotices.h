#pragma once

#include <string>
#include <vector>

#include "Templates/Function.h"

/**
 * What the store has to tell the user: that a damaged file was set aside, for one. Each sentence waits until an agent
 * can tell it, and is told once. UTF-8.
 */
namespace Velmora::StoreNotices
{
	/** What went wrong. Any thread. */
	void Add(std::string Sentence);

	/** What went well, and should be known. Any thread. */
	void AddNews(std::string Sentence);

	/** What waits, the oldest first; it waits no longer. Any thread. */
	std::vector<std::string> Take();
	std::vector<std::string> TakeNews();

	/** Called on the game thread, in a task of its own, when something begins to wait. Replaces the one before; game thread. */
	void SetListener(TFunction<void()> Listener);

	/** Calls the listener soon if something waits. Any thread. */
	void Remind();
}
