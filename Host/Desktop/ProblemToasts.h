#pragma once

#include "Containers/UnrealString.h"

/** Tells the user by toasts what went wrong behind the scenes: files not saved, clipboard and openings that failed. */
class FProblemToasts
{
public:
	/** Needs the application. With bAlsoPrint the sentences go to the standard error stream as well, for runs without a user. */
	static void Install(bool bAlsoPrint);
	static void Uninstall();
	/** Tells a sentence in the same way. Game thread. */
	static void Tell(const FString& Sentence);
};
