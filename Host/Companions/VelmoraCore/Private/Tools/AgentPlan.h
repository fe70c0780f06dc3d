#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velmora
{
	enum class EPlanStepStatus
	{
		Waiting,
		Running,
		Done,
		Failed,
		Stopped, // The user has ended the turn while it ran.
		Paused // The turn waits for the user while it runs.
	};

	struct FPlanStep
	{
		/** A request of its own, as the user wrote it. */
		std::string Text;
		EPlanStepStatus Status = EPlanStepStatus::Waiting;
	};

	/** What a request of several steps comes to. UTF-8 throughout. */
	struct FAgentPlan
	{
		/** Steps beyond this are left out, and the plan says so. */
		static constexpr size_t MaxSteps = 50;

		std::string Goal;
		/** How the steps are gone through; empty when nobody has said. */
		std::string Approach;
		std::vector<FPlanStep> Steps;
		size_t LeftOutSteps = 0;

		bool IsEmpty() const { return Steps.empty(); }
		size_t CountSteps(EPlanStepStatus Status) const;

		/** For people: goal and approach where there are any, steps with their status, progress. Empty for an empty plan. */
		std::string ToMarkdown() const;
	};
}
