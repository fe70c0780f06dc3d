#pragma once

#include "CoreTypes.h"

/** How grave a line of the log is. A category shows a line when the line's value is not above its own limit. */
namespace ELogVerbosity
{
	enum Type : uint8
	{
		NoLogging = 0,
		Fatal, // Prints and ends the process.
		Error,
		Warning,
		Display,
		Log,
		Verbose,
		VeryVerbose,
		All = VeryVerbose,
		NumVerbosity,
	};
}

/** "Fatal", "Error", ... as written in front of a line. Static storage. */
CORE_API const TCHAR* ToString(ELogVerbosity::Type Verbosity);
