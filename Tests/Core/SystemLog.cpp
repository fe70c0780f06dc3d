#include "Containers/Array.h"
#include "Host/HostLog.h"
#include "Logging/LogMacros.h"
#include "Support/Base/Printers.h"

#include <thread>
#include <vector>

DEFINE_LOG_CATEGORY_STATIC(LogSystemTest, Log, All);
DEFINE_LOG_CATEGORY_STATIC(LogSystemQuiet, Log, Warning);

namespace
{
	class SystemLog : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			FHostLog::SetStderrVerbosity(ELogVerbosity::NoLogging);
			FHostLog::ResetCounts();
			Handle = FHostLog::AddSink([this](const FHostLogLine& Line) { Lines.push_back(Utf8(Line.ToString())); });
		}
		void TearDown() override
		{
			FHostLog::RemoveSink(Handle);
			FHostLog::SetStderrVerbosity(ELogVerbosity::Warning);
		}
		std::vector<std::string> Lines;
		int32 Handle = 0;
	};
}

TEST_F(SystemLog, FiltersAndCounts)
{
	int32 Evaluated = 0;
	const auto Count = [&Evaluated] { return ++Evaluated; };
	UE_LOG(LogSystemTest, Warning, TEXT("x %s %d"), TEXT("y"), Count());
	UE_LOG(LogSystemTest, Verbose, TEXT("hidden %d"), Count());
	UE_LOG(LogSystemQuiet, Log, TEXT("compiled out %d"), Count());
	UE_LOG(LogSystemTest, Log, TEXT("plain"));
	UE_CLOG(false, LogSystemTest, Error, TEXT("no"));
	EXPECT_EQ(Lines, (std::vector<std::string>{ "LogSystemTest: Warning: x y 1", "LogSystemTest: plain" }));
	EXPECT_EQ(Evaluated, 1) << "a line that is not written costs nothing";

	LogSystemTest.SetVerbosity(ELogVerbosity::Verbose);
	LogSystemQuiet.SetVerbosity(ELogVerbosity::Verbose);
	UE_LOG(LogSystemTest, Verbose, TEXT("now"));
	UE_LOG(LogSystemQuiet, Log, TEXT("still out"));
	EXPECT_EQ(Lines.back(), "LogSystemTest: Verbose: now");
	LogSystemTest.SetVerbosity(ELogVerbosity::Log);

	EXPECT_EQ(FHostLog::GetCount(ELogVerbosity::Warning), 1);
	EXPECT_EQ(FHostLog::GetWarningCount(TEXT("logsystemtest")), 1);
	EXPECT_EQ(Utf8(FHostLog::GetRecentLines().Last().Text), "now");
}

TEST_F(SystemLog, SinksMayLogAndRemoveThemselves)
{
	int32 Own = 0;
	int32 Calls = 0;
	Own = FHostLog::AddSink(
		[&](const FHostLogLine&)
		{
			++Calls;
			UE_LOG(LogSystemTest, Warning, TEXT("from a sink"));
			FHostLog::RemoveSink(Own);
		});
	UE_LOG(LogSystemTest, Log, TEXT("one"));
	UE_LOG(LogSystemTest, Log, TEXT("two"));
	EXPECT_EQ(Calls, 1);
	EXPECT_EQ(Lines, (std::vector<std::string>{ "LogSystemTest: one", "LogSystemTest: two" }));
}

TEST_F(SystemLog, ManyThreads)
{
	std::vector<std::thread> Threads;
	for (int32 Index = 0; Index < 4; ++Index)
	{
		Threads.emplace_back(
			[]
			{
				for (int32 Line = 0; Line < 500; ++Line)
				{
					UE_LOG(LogSystemTest, Log, TEXT("line %d"), Line);
				}
			});
	}
	for (std::thread& Thread : Threads)
	{
		Thread.join();
	}
	EXPECT_EQ(Lines.size(), 2000u);
	EXPECT_EQ(FHostLog::GetCount(ELogVerbosity::Log), 2000);
}

TEST(SystemLogDeathTest, FatalEndsTheProcess)
{
	EXPECT_DEATH(UE_LOG(LogSystemTest, Fatal, TEXT("the end")), "LogSystemTest: Fatal: the end");
}
