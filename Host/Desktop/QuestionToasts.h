#pragma once

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
};
