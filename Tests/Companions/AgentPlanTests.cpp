#include "AgentFixture.h"

#include "Request/PlanRequest.h"

using Velmora::EConversationState;
using Velmora::EPlanStepStatus;
using Velmora::FAgentPlan;
using Velmora::MakeAgentPlan;

namespace
{
	std::vector<std::string> StepsOf(const std::string& Request)
	{
		std::vector<std::string> Steps;
		for (const Velmora::FPlanStep& Step : MakeAgentPlan(Request).Steps)
		{
			Steps.push_back(Step.Text);
		}
		return Steps;
	}

	class AgentPlans : public FAgentTest
	{
	protected:
		void SetUp() override
		{
			FAgentTest::SetUp();
			Project.Write("Source/A.cpp", "int Snail = 1;\n");
			Project.Write("README.md", "# Garden\n");
			Agent->OnPlanUpdate(
				[this](const FString& First, const FString& Plan)
				{
					EXPECT_EQ(Utf8(Plan), Utf8(Agent->GetCurrentPlan()));
					Plans.push_back(Utf8(Plan));
					Add("plan " + Utf8(First));
				});
		}

		std::vector<std::string> Plans;
	};
}

TEST(AgentPlanText, IsReadFromARequest)
{
	using FSteps = std::vector<std::string>;
	const std::pair<const char*, FSteps> Cases[] = {
		{ "first find Snail, then show README.md", { "find Snail", "show README.md" } },
		{ "First, find Snail and then list Source, after that show README.md and finally help.",
			{ "find Snail", "list Source", "show README.md", "help" } },
		{ "first find \"a, then b\" then show `then x`.md", { "find \"a, then b\"", "show `then x`.md" } },
		{ "first create a.md with ```\none then two\n``` then delete a.md", { "create a.md with ```\none then two\n```", "delete a.md" } },
		{ "first find athenian", {} },
		{ "first find \"open quote, then list Source", { "find \"open quote", "list Source" } },
		{ "find first, then last", {} },
		{ "plan: find Snail", { "find Snail" } },
		{ "PLAN:\n1. find Snail\n2) show README.md\n\n- list Source\n", { "find Snail", "show README.md", "list Source" } },
		{ "plan: first find Snail; list Source, then help", { "find Snail", "list Source", "help" } },
		{ "plan: show Docs/..", { "show Docs/.." } },
		{ "plan:", {} },
		{ "plan: , ; \n", {} },
		{ "first", {} },
		{ "", {} },
	};
	for (const auto& [Request, Steps] : Cases)
	{
		EXPECT_EQ(StepsOf(Request), Steps) << Request;
	}
}

TEST(AgentPlanText, ShowsStatusAndProgress)
{
	FAgentPlan Plan = MakeAgentPlan("first find Snail, then show\nREADME.md, then help");
	ASSERT_EQ(Plan.Steps.size(), 3u);
	Plan.Steps[0].Status = EPlanStepStatus::Done;
	Plan.Steps[1].Status = EPlanStepStatus::Running;
	const std::string Markdown = Plan.ToMarkdown();
	EXPECT_NE(Markdown.find("1. ✅ find Snail\n2. ⏳ show README.md (running)\n3. ⬜ help\n"), std::string::npos) << Markdown;
	EXPECT_NE(Markdown.find("1 of 3 steps done"), std::string::npos) << Markdown;
	EXPECT_EQ(FAgentPlan().ToMarkdown(), "");
}

TEST(AgentPlanText, IsBounded)
{
	std::string Request = "plan:";
	for (size_t Step = 0; Step < FAgentPlan::MaxSteps + 7; ++Step)
	{
		Request += "\n- help";
	}
	const FAgentPlan Plan = MakeAgentPlan(Request);
	EXPECT_EQ(Plan.Steps.size(), FAgentPlan::MaxSteps);
	EXPECT_NE(Plan.ToMarkdown().find("7 steps are left out"), std::string::npos);
	EXPECT_LE(MakeAgentPlan("plan: find " + std::string(5000000, 'x')).ToMarkdown().size(), 2000u);
}

TEST_F(AgentPlans, RunStepByStep)
{
	Ask("first find Snail, then show README.md, then list Source");
	EXPECT_EQ(Agent->GetState(), EConversationState::AwaitingInput);
	EXPECT_EQ(EventsOf("progress"),
		(std::vector<std::string>{ "Executing step 1: find Snail", "Executing step 2: show README.md", "Executing step 3: list Source" }));
	ASSERT_EQ(Plans.size(), 5u); // As it is made, at each step, and at the end.
	EXPECT_TRUE(Holds(Plans.front(), "0 of 3 steps done"));
	EXPECT_TRUE(Holds(Plans[2], "1. ✅ find Snail\n2. ⏳ show README.md (running)\n3. ⬜ list Source")) << Plans[2];
	EXPECT_TRUE(Holds(Plans.back(), "3 of 3 steps done"));
	// Each step answers for itself, in order.
	const TSharedPtr<Velmora::FConversationMetadata> Metadata = Agent->GetCurrentConversationMetadata();
	ASSERT_EQ(Metadata->GetMessageCount(), 4);
	EXPECT_TRUE(Holds(Utf8(Metadata->Messages[1].Content), "A.cpp"));
	EXPECT_TRUE(Holds(Utf8(Metadata->Messages[2].Content), "Garden"));

	// A plain request leaves the plan as it ended; a new conversation has none.
	Ask("help");
	EXPECT_EQ(Utf8(Agent->GetCurrentPlan()), Plans.back());
	Agent->StartConversation(Velmora::EConversationMode::General);
	EXPECT_EQ(Utf8(Agent->GetCurrentPlan()), "");
	EXPECT_EQ(Plans.back(), "");
}

TEST_F(AgentPlans, EndAtTheFirstStepThatFails)
{
	Ask("first find Snail, then gibberish wibble, then list Source");
	EXPECT_TRUE(Holds(Plans.back(), "2. ❌ gibberish wibble (failed)\n3. ⬜ list Source")) << Plans.back();
	EXPECT_TRUE(Holds(Plans.back(), "1 of 3 steps done"));
	EXPECT_EQ(EventsOf("progress").size(), 2u);
	EXPECT_TRUE(Holds(LastAnswer, "step 2")) << LastAnswer;
}

TEST_F(AgentPlans, TellThatTheyWaitForTheUser)
{
	AfterEvent = [this]
	{
		if (Events.back() == "progress Executing step 2: list Source")
		{
			AfterEvent = nullptr;
			Agent->PauseConversation();
			EXPECT_TRUE(Holds(Utf8(Agent->GetCurrentPlan()), "1. ✅ find Snail\n2. ⏸ list Source (paused)\n3. ⬜ help"))
				<< Plans.back();
			Agent->ResumeConversation(FString());
			EXPECT_TRUE(Holds(Utf8(Agent->GetCurrentPlan()), "2. ⏳ list Source (running)")) << Plans.back();
		}
	};
	Ask("first find Snail, then list Source, then help");
	EXPECT_TRUE(Holds(Plans.back(), "3 of 3 steps done")) << Plans.back();

	AfterEvent = [this]
	{
		if (Events.back() == "progress Executing step 2: list Source")
		{
			AfterEvent = nullptr;
			Agent->PauseConversation();
			Agent->CancelConversation();
		}
	};
	Ask("first find Snail, then list Source, then help");
	EXPECT_TRUE(Holds(Plans.back(), "2. ⏹ list Source (stopped)")) << Plans.back();
}

TEST_F(AgentPlans, AreStoppedByTheUser)
{
	AfterEvent = [this]
	{
		if (Events.back() == "progress Executing step 2: list Source")
		{
			AfterEvent = nullptr;
			Agent->CancelConversation();
		}
	};
	Ask("first find Snail, then list Source, then help");
	EXPECT_EQ(Agent->GetState(), EConversationState::Cancelled);
	EXPECT_TRUE(Holds(Plans.back(), "2. ⏹ list Source (stopped)\n3. ⬜ help")) << Plans.back();
	PumpUntilQuiet();
	EXPECT_TRUE(Holds(Utf8(Agent->GetCurrentPlan()), "(stopped)"));
}
