#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

/** A number of a JSON text that the parser's library does not compute itself. */
struct FJsonLongNumber
{
	/** How many numbers stand before it in the text. */
	int32 Ordinal;
	/** Infinite when no double can hold it. */
	double Value;
};

/**
 * Computes the numbers of a JSON text that the library computes wrongly, reading beyond its tables: those with more digits than a
 * double holds exactly, and those with an exponent. In Text a 0 and blanks take their place, so that other places stay where they are.
 * @param Text Any text; what is no good number is left for the parser to refuse.
 */
TArray<FJsonLongNumber> TakeJsonLongNumbers(FString& Text);
