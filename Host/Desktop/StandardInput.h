#pragma once

#include "CoreMinimal.h"

#include <string>

/** Lines of standard input, read without ever holding up a frame. Broken UTF-8 is read with replacement signs. */
class FStandardInput
{
public:
	/** Somebody has put a pipe or a file there: it comes to an end, and no hand types into it. */
	static bool IsPiped();
	/**
	 * Takes the next whole line, without its end.
	 * @param bOutAtEnd  Set when the input has ended; what stands behind the last line end is a line too.
	 * @return True when OutLine was filled.
	 */
	bool TakeLine(FString& OutLine, bool& bOutAtEnd);

private:
	std::string Waiting;
	bool bClosed = false;
};
