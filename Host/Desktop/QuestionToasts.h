#pragma once

#include "Host/AgentQuestions.h"

/**
 * Shows each question of the agent as a toast with its answers. They act on the agent and leave the prompt alone. The toast goes
 * with the question, however that was answered. Game thread.
 */
class FQuestionToasts
{
public:
	/** Needs the application. */
	static void Install();
	static void Uninstall();

	/** Whether a question is open that takes this answer. */
	static bool CanAnswer(Velmora::EAgentAnswer Answer);
	/** Answers the open question; does nothing when there is none, or none that takes this answer. */
	static void Answer(Velmora::EAgentAnswer Answer);
};
