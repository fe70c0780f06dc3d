#include "Host/HostLog.h"

#include "Containers/Map.h"
#include "Host/HostStderr.h"
#include "Logging/LogMacros.h"

#include <atomic>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

// One way for every line of the log: standard error if it is important enough, counters for tests, the recent lines for
// reports, then the sinks. Any thread may log, also from a sink; such a line is counted and kept but goes to no sink,
// else two sinks would call each other for ever.

namespace
{
	constexpr std::size_t MaxRecentLines = 2000;

	struct FLogState
	{
		/** Counts and recent lines. */
		std::mutex DataMutex;
		std::deque<FHostLogLine> Recent;
		int32 Counts[ELogVerbosity::NumVerbosity] = {};
		TMap<FString, int32> WarningsByCategory;

		/** Held while sinks run, so that a removed sink is really gone. Recursive: a sink may add and remove sinks. */
		std::recursive_mutex SinkMutex;
		std::vector<std::pair<int32, FHostLog::FSink>> Sinks;
		int32 NextHandle = 1;
	};

	FLogState& GetLogState()
	{
		// Never destroyed: a thread that was left behind on a dead disk may still log while the process goes down.
		static FLogState* const State = std::make_unique<FLogState>().release();
		return *State;
	}

	std::atomic<ELogVerbosity::Type> StderrVerbosity{ ELogVerbosity::Warning };
	thread_local bool bInsideSink = false;

	// Sinks run one thread at a time and without the data lock, so that they may ask for counts and lines.
	void CallSinks(const FHostLogLine& Line)
	{
		FLogState& State = GetLogState();
		const std::lock_guard<std::recursive_mutex> Lock(State.SinkMutex);
		bInsideSink = true;
		// A sink may remove itself or others, so only the numbers are remembered.
		std::vector<int32> Handles;
		for (const auto& Sink : State.Sinks)
		{
			Handles.push_back(Sink.first);
		}
		for (const int32 Handle : Handles)
		{
			for (std::size_t Index = 0; Index < State.Sinks.size(); ++Index)
			{
				if (State.Sinks[Index].first == Handle)
				{
					const FHostLog::FSink Copy = State.Sinks[Index].second;
					Copy(Line);
					break;
				}
			}
		}
		bInsideSink = false;
	}
}

const TCHAR* ToString(ELogVerbosity::Type Verbosity)
{
	switch (Verbosity)
	{
	case ELogVerbosity::NoLogging:
		return TEXT("NoLogging");
	case ELogVerbosity::Fatal:
		return TEXT("Fatal");
	case ELogVerbosity::Error:
		return TEXT("Error");
	case ELogVerbosity::Warning:
		return TEXT("Warning");
	case ELogVerbosity::Display:
		return TEXT("Display");
	case ELogVerbosity::Log:
		return TEXT("Log");
	case ELogVerbosity::Verbose:
		return TEXT("Verbose");
	case ELogVerbosity::VeryVerbose:
		return TEXT("VeryVerbose");
	case ELogVerbosity::NumVerbosity:
		break;
	}
	return TEXT("");
}

void FLogCategoryBase::SetVerbosity(ELogVerbosity::Type Verbosity)
{
	Limit.store(Verbosity < CompileTimeLimit ? Verbosity : CompileTimeLimit, std::memory_order_relaxed);
}

FString FHostLogLine::ToString() const
{
	FString Result = Category + TEXT(": ");
	if (Verbosity != ELogVerbosity::Log)
	{
		Result += ::ToString(Verbosity);
		Result += TEXT(": ");
	}
	return Result + Text;
}

void HostLogPrivate::Write(const FLogCategoryBase& Category, ELogVerbosity::Type Verbosity, FString&& Text)
{
	FHostLogLine Line;
	Line.Category = Category.GetCategoryName().ToString();
	Line.Verbosity = Verbosity;
	Line.Text = static_cast<FString&&>(Text);
	Line.Time = FDateTime::Now();

	if (Verbosity <= StderrVerbosity.load(std::memory_order_relaxed) || Verbosity == ELogVerbosity::Fatal)
	{
		HostPrintError(Line.ToString());
	}
	FLogState& State = GetLogState();
	{
		const std::lock_guard<std::mutex> Lock(State.DataMutex);
		if (Verbosity < ELogVerbosity::NumVerbosity)
		{
			++State.Counts[Verbosity];
		}
		if (Verbosity <= ELogVerbosity::Warning)
		{
			++State.WarningsByCategory.FindOrAdd(Line.Category);
		}
		State.Recent.push_back(Line);
		if (State.Recent.size() > MaxRecentLines)
		{
			State.Recent.pop_front();
		}
	}
	if (!bInsideSink)
	{
		CallSinks(Line);
	}
	if (Verbosity == ELogVerbosity::Fatal)
	{
		std::abort();
	}
}

int32 FHostLog::AddSink(FSink Sink)
{
	FLogState& State = GetLogState();
	const std::lock_guard<std::recursive_mutex> Lock(State.SinkMutex);
	const int32 Handle = State.NextHandle++;
	if (Sink)
	{
		State.Sinks.emplace_back(Handle, static_cast<FSink&&>(Sink));
	}
	return Handle;
}

void FHostLog::RemoveSink(int32 Handle)
{
	FLogState& State = GetLogState();
	const std::lock_guard<std::recursive_mutex> Lock(State.SinkMutex);
	std::erase_if(State.Sinks, [Handle](const auto& Sink) { return Sink.first == Handle; });
}

void FHostLog::SetStderrVerbosity(ELogVerbosity::Type Verbosity)
{
	StderrVerbosity.store(Verbosity, std::memory_order_relaxed);
}

int32 FHostLog::GetCount(ELogVerbosity::Type Verbosity)
{
	FLogState& State = GetLogState();
	const std::lock_guard<std::mutex> Lock(State.DataMutex);
	return Verbosity < ELogVerbosity::NumVerbosity ? State.Counts[Verbosity] : 0;
}

int32 FHostLog::GetWarningCount(const FString& Category)
{
	FLogState& State = GetLogState();
	const std::lock_guard<std::mutex> Lock(State.DataMutex);
	return State.WarningsByCategory.FindRef(Category);
}

void FHostLog::ResetCounts()
{
	FLogState& State = GetLogState();
	const std::lock_guard<std::mutex> Lock(State.DataMutex);
	for (int32& Count : State.Counts)
	{
		Count = 0;
	}
	State.WarningsByCategory.Empty();
}

TArray<FHostLogLine> FHostLog::GetRecentLines()
{
	FLogState& State = GetLogState();
	const std::lock_guard<std::mutex> Lock(State.DataMutex);
	TArray<FHostLogLine> Lines;
	for (const FHostLogLine& Line : State.Recent)
	{
		Lines.Add(Line);
	}
	return Lines;
}
