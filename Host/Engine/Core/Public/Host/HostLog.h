#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Logging/LogVerbosity.h"
#include "Misc/DateTime.h"
#include "Templates/Function.h"

/** One line as sinks get it. */
struct FHostLogLine
{
	FString Category;
	ELogVerbosity::Type Verbosity = ELogVerbosity::Log;
	FString Text;
	/** Local time by the host clock. */
	FDateTime Time = FDateTime(0);

	/** "LogTemp: Warning: text". Lines of verbosity Log carry no word for it. */
	CORE_API FString ToString() const;
};

/**
 * Where lines of the log go. The standard error stream is one sink, at first for warnings and errors only; the
 * program adds its output log as another. Every operation may be called from any thread.
 */
class CORE_API FHostLog
{
public:
	using FSink = TFunction<void(const FHostLogLine&)>;

	/**
	 * The sink is called on the thread that logs, one line at a time. It must be quick and must not wait for
	 * another thread. A line logged inside a sink reaches the error stream only.
	 *
	 * @return A number for RemoveSink, never 0.
	 */
	static int32 AddSink(FSink Sink);
	/** On return the sink is not running and will not run again. Unknown numbers are ignored. */
	static void RemoveSink(int32 Handle);

	/** Lines up to this verbosity go to the standard error stream. NoLogging turns it off. */
	static void SetStderrVerbosity(ELogVerbosity::Type Verbosity);

	/** How many lines of exactly this verbosity were written since start or the last ResetCounts. */
	static int32 GetCount(ELogVerbosity::Type Verbosity);
	/** The same for one category (letter case ignored), warnings and errors together. */
	static int32 GetWarningCount(const FString& Category);
	static void ResetCounts();

	/** The last lines (at most 2,000), oldest first, for a log window that opens late. */
	static TArray<FHostLogLine> GetRecentLines();
};
