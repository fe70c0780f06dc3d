#include "Model/SummaryShelf.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <mutex>
#include <string_view>

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxKept = 16;

		struct FKept
		{
			uint64_t Key = 0;
			FSummaryShelf::FSummary Summary;
		};

		std::mutex Mutex;
		/** The latest first. */
		std::deque<FKept> Shelf;

		/** So that the same words in another order, or parted elsewhere, are something else. */
		void Mix(uint64_t& Key, std::string_view Text)
		{
			Key = (Key ^ std::hash<std::string_view>()(Text)) * 0x9E3779B97F4A7C15ull + Text.size();
		}
	}

	FSummaryShelf::FSummaryShelf(const std::vector<FModelMessage>& Messages, size_t First)
	{
		uint64_t Key = 0;
		Keys.push_back(Key);
		for (size_t Index = First; Index + 1 < Messages.size(); ++Index)
		{
			const FModelMessage& Message = Messages[Index];
			Mix(Key, Message.Text);
			Mix(Key, Message.CallId);
			for (const FModelCall& Call : Message.Calls)
			{
				Mix(Key, Call.Name);
				Mix(Key, Call.Arguments);
			}
			Keys.push_back(Key);
		}
	}

	std::optional<FSummaryShelf::FSummary> FSummaryShelf::Find() const
	{
		std::optional<FSummary> Best;
		const std::scoped_lock Lock(Mutex);
		for (const FKept& Kept : Shelf)
		{
			const size_t Count = Kept.Summary.Count;
			if (Count < Keys.size() && Keys[Count] == Kept.Key && (!Best || Count > Best->Count))
			{
				Best = Kept.Summary;
			}
		}
		return Best;
	}

	void FSummaryShelf::Keep(const FSummary& Summary) const
	{
		if (Summary.Count == 0 || Summary.Count >= Keys.size())
		{
			return;
		}
		const std::scoped_lock Lock(Mutex);
		Shelf.push_front({ Keys[Summary.Count], Summary });
		Shelf.resize(std::min(Shelf.size(), MaxKept));
	}
}
