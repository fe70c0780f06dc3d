#pragma once

/**
 * Keeps toasts off the prompt: off the buttons below it in any case, which may be what a toast asks about, and off the box where the
 * window has the room. Game thread.
 */
class FToastRoom
{
public:
	static void Install();
	static void Uninstall();
};
