#include "Tools/AgentPlan.h"

#include <algorithm>

#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr size_t MaxStepCharacters = 160;

		constexpr std::string_view StatusMarks[] = { "⬜", "⏳", "✅", "❌", "⏹", "⏸" };
		constexpr std::string_view StatusWords[] = { "", " (running)", "", " (failed)", " (stopped)", " (paused)" };
	}

	size_t FAgentPlan::CountSteps(EPlanStepStatus Status) const
	{
		return static_cast<size_t>(
			std::count_if(Steps.begin(), Steps.end(), [Status](const FPlanStep& Step) { return Step.Status == Status; }));
	}

	std::string FAgentPlan::ToMarkdown() const
	{
		if (IsEmpty())
		{
			return std::string();
		}
		// Each line feed between two blocks is an empty row on screen: one is enough.
		std::string Out;
		Out += Goal.empty() ? std::string() : "### Goal\n" + Goal + '\n';
		Out += Approach.empty() ? std::string() : "### Approach\n" + Approach + '\n';
		Out += "### Steps\n";
		for (size_t Index = 0; Index < Steps.size(); ++Index)
		{
			const size_t Status = static_cast<size_t>(Steps[Index].Status);
			// A step may hold line feeds; its line in the list may not.
			std::string Line = Utf8Text::Shorten(Steps[Index].Text, MaxStepCharacters);
			std::replace(Line.begin(), Line.end(), '\n', ' ');
			Out +=
				std::to_string(Index + 1) + ". " + std::string(StatusMarks[Status]) + ' ' + Line + std::string(StatusWords[Status]) + '\n';
		}
		Out += "\n### Progress\n" + std::to_string(CountSteps(EPlanStepStatus::Done)) + " of " +
			Utf8Text::Count(Steps.size(), "step", "steps") + " done";
		if (LeftOutSteps > 0)
		{
			Out += "\n\nA plan has at most " + std::to_string(MaxSteps) + " steps; " +
				Utf8Text::Count(LeftOutSteps, "step is", "steps are") + " left out.";
		}
		return Out;
	}
}
