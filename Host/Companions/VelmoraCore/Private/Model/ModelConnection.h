#pragma once

#include <cstdint>
#include <string>

#include "Model/ModelTypes.h"

namespace Velmora
{
	struct FAgentConnection;

	/** What a turn and a day may cost before the user is asked. Zero for no limit; prices for a million tokens. */
	struct FModelBudget
	{
		double PromptPrice = 0.0;
		double CompletionPrice = 0.0;
		int64_t MaxTurnTokens = 0;
		int64_t MaxDayTokens = 0;
		double MaxTurnCost = 0.0;
		double MaxDayCost = 0.0;

		/** Negative without prices. */
		double GetCost(int64_t PromptTokens, int64_t CompletionTokens) const
		{
			return PromptPrice <= 0.0 && CompletionPrice <= 0.0
				? -1.0
				: (static_cast<double>(PromptTokens) * PromptPrice + static_cast<double>(CompletionTokens) * CompletionPrice) / 1.0e6;
		}
	};

	/** A connection as a turn uses it, with its key. UTF-8. */
	struct FModelConnection
	{
		std::string Name;
		FModelServer Server;
		std::string Model;
		std::string Options;
		int ContextTokens = 0;
		int MaxRounds = 50;
		FModelBudget Budget;
	};

	/** Looks for the key, which may take as long as a user takes to unlock a keyring. */
	FModelConnection MakeModelConnection(const FAgentConnection& Connection);
}
