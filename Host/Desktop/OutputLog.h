#pragma once

#include "CoreMinimal.h"
#include "Host/HostLog.h"

#include <atomic>
#include <mutex>

/** One line as it is shown. Numbers go up by one and never come again. */
struct FOutputLogLine
{
	FString Text;
	ELogVerbosity::Type Verbosity = ELogVerbosity::Log;
	int64 Number = 0;
};

/**
 * Keeps the last lines of the log for the log window, also while that is closed. Lines come from any thread and are taken
 * over on the game thread; the rest belongs to the game thread. Beyond MaxLines the oldest tenth goes, so that a flood
 * costs nothing more than a trickle.
 */
class FOutputLog
{
public:
	static constexpr int32 MaxLines = 100000;
	/** Longer lines are cut, and say so. */
	static constexpr int32 MaxLineLength = 4000;

	/** Begins with the lines that were logged so far. */
	FOutputLog();
	~FOutputLog();
	FOutputLog(const FOutputLog&) = delete;
	FOutputLog& operator=(const FOutputLog&) = delete;

	/** Takes over what was logged since. For windows that show lines, once a frame; the line after the call wakes Slate. */
	void Update();
	/** A line of the console's own, which goes nowhere else. */
	void Add(const FString& Text, ELogVerbosity::Type Verbosity);
	void Clear();

	/** Oldest first. */
	const TArray<TSharedPtr<const FOutputLogLine>>& GetLines() const { return Lines; }
	/** The number of the oldest line kept, or of the next one when there is none. */
	int64 GetFirstNumber() const { return FirstNumber; }

private:
	void Append(const FString& Prefix, const FString& Text, ELogVerbosity::Type Verbosity);
	void Trim();

	/** Somebody shows the lines, and has all that are there. */
	std::atomic<bool> bIsWatched = false;
	std::mutex WaitingMutex;
	TArray<FHostLogLine> Waiting;
	int32 SinkHandle = 0;
	TArray<TSharedPtr<const FOutputLogLine>> Lines;
	int64 FirstNumber = 0;
};
