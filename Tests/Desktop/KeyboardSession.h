#pragma once

#include "Desktop/ProgramDriver.h"

#include <string>
#include <vector>

// Sessions without a pointer: no step of them clicks, scrolls or presses an entry by its name.

struct FKeyboardPart
{
	const char* What;
	std::string Steps;
	/** Is a line of the accessible tree after the steps, or the beginning of one. */
	std::string Line;
};

/** The same steps several times, each seen before the next. */
std::string Repeat(const std::string& Step, int Times);

/** Opens the menu by its letter and picks an entry of it. @param Downs  How often Down is pressed before Enter. */
std::string PickEntry(const std::string& Menu, int Downs);

/**
 * Runs the parts one after the other in one run of the program, and looks after each for its line and for who has the keyboard:
 * somebody must. @param Options  More of the command line. @param Environment  More entries of the environment.
 */
void RunKeyboardSession(const FRandomProject& Project, const std::vector<FKeyboardPart>& Parts,
	const std::vector<std::string>& Options = { "--headless", "--now", "2026-01-31T12:00:00" },
	const std::vector<std::string>& Environment = {});

/** The accessible tree after that part, a line each, without the tabs before it. */
std::vector<std::string> ReadTree(const FRandomProject& Project, int Part);
