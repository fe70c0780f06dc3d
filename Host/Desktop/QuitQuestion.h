#pragma once

/** Asks before the program ends in the middle of a turn. Game thread. */
class FQuitQuestion
{
public:
	static void Install();
	static void Uninstall();
};
