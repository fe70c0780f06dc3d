#pragma once

#include "Containers/UnrealString.h"
#include "Templates/Function.h"

/** Tells the user by toasts what went wrong behind the scenes: files not saved, clipboard and openings that failed. */
class FProblemToasts
{
public:
	/** Needs the application. With bAlsoPrint the sentences go to the standard error stream as well, for runs without a user. */
	static void Install(bool bAlsoPrint);
	static void Uninstall();
	/** Asked before a sentence is shown or printed; false drops it. Null for none. Goes with Uninstall. */
	static void SetFilter(TFunction<bool(const FString&)> Filter);
	/** Tells a sentence in the same way. Game thread. */
	static void Tell(const FString& Sentence);
};
