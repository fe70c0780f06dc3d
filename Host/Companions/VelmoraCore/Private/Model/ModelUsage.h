#pragma once

#include <cstdint>
#include <string>

/** What the user's models have used today, so that a limit for a day holds over several runs of the program. Any thread. */
namespace Velmora::ModelUsage
{
	struct FSpent
	{
		int64_t Tokens = 0;

		/** By the prices of the connection; 0 without. */
		double Cost = 0.0;
	};

	/** Since midnight, local time. */
	FSpent GetToday(const std::string& Connection);

	/** What cannot be written is counted for this run only. */
	void Add(const std::string& Connection, const FSpent& Spent);
}
