#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

/** The command line of the console. */
class CORE_API FHostConsole
{
public:
	/**
	 * "name" prints a variable or runs a command, "name ?" prints help, "name value" or "name=value" sets, a command
	 * takes the rest as arguments (double quotes keep blanks together). Game thread.
	 *
	 * @param OutLines  What there is to print; never empty on failure.
	 * @return False when the name is unknown or the variable cannot be set.
	 */
	static bool Execute(const FString& Line, TArray<FString>& OutLines);
	/** Names that begin with Prefix, sorted, at most MaxCount. */
	static TArray<FString> Complete(const FString& Prefix, int32 MaxCount = 20);
};
