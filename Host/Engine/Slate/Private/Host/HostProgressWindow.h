#pragma once

/** Shows work that the game thread waits for (FHostProgress) as a modal window with a bar. */
class FHostProgressWindow
{
public:
	static void Install();
	static void Uninstall();
};
