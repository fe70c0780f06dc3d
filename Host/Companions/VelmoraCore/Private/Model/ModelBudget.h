#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Model/ModelConnection.h"
#include "Model/ModelUsage.h"

namespace Velmora
{
	/** Counts what a turn and the day have used, and says when a limit is reached. On the turn's worker. */
	class FModelSpending
	{
	public:
		explicit FModelSpending(const FModelConnection& InConnection);

		/** @param EstimatedTokens  For a server that does not say. */
		void Add(const FModelReply& Reply, int64_t EstimatedTokens);

		/** Empty, or a sentence that says which limit is reached: "This turn has used 12,000 tokens." */
		std::string FindReached() const;

		/** The user has agreed: as much again, of all that is reached now. */
		void Extend();

	private:
		/** One limit with what has been used of it. */
		struct FBound
		{
			const char* Whose;
			double Used;
			double Max;

			/** How often as much again was allowed. */
			double FModelSpending::*Grants;
			bool bIsMoney;
		};
		std::vector<FBound> ListBounds() const;

		const FModelConnection& Connection;
		ModelUsage::FSpent Turn;
		ModelUsage::FSpent Day;
		double TurnTokenGrants = 1.0;
		double DayTokenGrants = 1.0;
		double TurnCostGrants = 1.0;
		double DayCostGrants = 1.0;
	};
}
