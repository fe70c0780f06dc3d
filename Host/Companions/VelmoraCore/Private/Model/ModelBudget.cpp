#include "Model/ModelBudget.h"

#include <algorithm>
#include <cmath>

#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** "0.25": cents, whatever the currency. */
		std::string FormatMoney(double Amount)
		{
			const int64_t Cents = std::llround(Amount * 100.0);
			const std::string Rest = std::to_string(Cents % 100);
			return std::to_string(Cents / 100) + '.' + (Rest.size() == 1 ? "0" : "") + Rest;
		}

		/** Nobody charges for what was refused; an answer that broke off may have cost all of it. */
		bool IsRefusal(const FModelProblem& Problem)
		{
			switch (Problem.Fault)
			{
			case EModelFault::BadAddress:
			case EModelFault::Unreachable:
			case EModelFault::NotTrusted:
			case EModelFault::Redirected:
			case EModelFault::NoModelServer:
				return true;
			default:
				return Problem && Problem.Status >= 400;
			}
		}
	}

	FModelSpending::FModelSpending(const FModelConnection& InConnection)
		: Connection(InConnection)
	{
		// A connection without limits for the day never looks at the file.
		if (Connection.Budget.MaxDayTokens > 0 || Connection.Budget.MaxDayCost > 0.0)
		{
			Day = ModelUsage::GetToday(Connection.Name);
		}
	}

	void FModelSpending::Add(const FModelReply& Reply, int64_t EstimatedTokens)
	{
		const FModelUsage& Usage = Reply.Usage;
		// Some say nothing by saying zero, and no limit would ever be reached.
		const bool bIsTold = Usage.PromptTokens >= 0 && Usage.CompletionTokens >= 0 && Usage.PromptTokens + Usage.CompletionTokens > 0;
		if (!bIsTold && IsRefusal(Reply.Problem))
		{
			return;
		}
		const int64_t Prompt = bIsTold ? Usage.PromptTokens : EstimatedTokens;
		const int64_t Completion = bIsTold ? Usage.CompletionTokens : 0;
		const ModelUsage::FSpent Spent{ Prompt + Completion, std::max(0.0, Connection.Budget.GetCost(Prompt, Completion)) };
		for (ModelUsage::FSpent* const Sum : { &Turn, &Day })
		{
			Sum->Tokens += Spent.Tokens;
			Sum->Cost += Spent.Cost;
		}
		if (Connection.Budget.MaxDayTokens > 0 || Connection.Budget.MaxDayCost > 0.0)
		{
			ModelUsage::Add(Connection.Name, Spent);
		}
	}

	std::vector<FModelSpending::FBound> FModelSpending::ListBounds() const
	{
		const FModelBudget& Budget = Connection.Budget;
		return {
			{ "This turn", static_cast<double>(Turn.Tokens), static_cast<double>(Budget.MaxTurnTokens), &FModelSpending::TurnTokenGrants,
				false },
			{ "Today this connection", static_cast<double>(Day.Tokens), static_cast<double>(Budget.MaxDayTokens),
				&FModelSpending::DayTokenGrants, false },
			{ "This turn", Turn.Cost, Budget.MaxTurnCost, &FModelSpending::TurnCostGrants, true },
			{ "Today this connection", Day.Cost, Budget.MaxDayCost, &FModelSpending::DayCostGrants, true },
		};
	}

	std::string FModelSpending::FindReached() const
	{
		for (const FBound& Bound : ListBounds())
		{
			if (Bound.Max > 0.0 && Bound.Used >= Bound.Max * (this->*Bound.Grants))
			{
				return std::string(Bound.Whose) +
					(Bound.bIsMoney ? " has cost " + FormatMoney(Bound.Used)
									: " has used " + Utf8Text::Count(static_cast<size_t>(Bound.Used), "token", "tokens")) +
					'.';
			}
		}
		return std::string();
	}

	void FModelSpending::Extend()
	{
		for (const FBound& Bound : ListBounds())
		{
			// At once: a server may say that it has used a thousand times what is allowed.
			if (Bound.Max > 0.0 && Bound.Used >= Bound.Max * (this->*Bound.Grants))
			{
				this->*Bound.Grants = std::floor(Bound.Used / Bound.Max) + 1.0;
			}
		}
	}
}
