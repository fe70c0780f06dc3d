#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "HAL/IConsoleManager.h"

/** The command line of the console. */
class CORE_API FHostConsole
{
public:
	/**
	 * "name" prints a variable or runs a command, "name ?" prints help, "name value" or "name=value" sets, a command
	 * takes the rest as arguments (double quotes keep blanks together), "list" and "list prefix" print what there is.
	 * Game thread.
	 *
	 * @param OutLines  What there is to print; never empty on failure.
	 * @return False when the name is unknown or the variable cannot be set.
	 */
	static bool Execute(const FString& Line, TArray<FString>& OutLines);
	/**
	 * Sets a variable to what a user wrote. A text that is no value of the variable's kind changes nothing. Game thread.
	 *
	 * @return Empty when it is set; else one sentence that says what is wrong.
	 */
	static FString SetVariable(const FString& Name, const FString& Value, EConsoleVariableFlags SetBy = ECVF_SetByConsole);
	/** Names that begin with Prefix, sorted, at most MaxCount. */
	static TArray<FString> Complete(const FString& Prefix, int32 MaxCount = 20);
};
