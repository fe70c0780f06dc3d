#include "Support/Base/Printers.h"

#include <thread>
#include <vector>

TEST(Assertions, EnsureSpeaksOncePerPlaceAndGoesOn)
{
	testing::internal::CaptureStderr();
	int32 Failures = 0;
	for (int32 Round = 0; Round < 3; ++Round)
	{
		if (!ensureMsgf(Round < 0, TEXT("round %d"), Round))
		{
			++Failures;
		}
	}
	EXPECT_TRUE(ensure(Failures == 3));
	const std::string Output = testing::internal::GetCapturedStderr();
	EXPECT_NE(Output.find("Round < 0"), std::string::npos);
	EXPECT_NE(Output.find("round 0"), std::string::npos);
	EXPECT_EQ(Output.find("round 1"), std::string::npos);
}

TEST(AssertionsDeathTest, CheckfTellsItsMessage)
{
	const FString Name(TEXT("täst"));
	EXPECT_DEATH(checkf(Name.IsEmpty(), TEXT("%s has %d units"), *Name, Name.Len()), "Name.IsEmpty\\(\\).*täst has 4 units");
}

TEST(NameThreads, AllThreadsGetTheSameNames)
{
	std::vector<std::vector<FName>> Seen(4);
	std::vector<std::thread> Threads;
	for (std::vector<FName>& Mine : Seen)
	{
		Threads.emplace_back(
			[&Mine]
			{
				for (int32 Index = 0; Index < 500; ++Index)
				{
					Mine.push_back(FName(FString::Printf(TEXT("ThreadName%d"), Index)));
				}
			});
	}
	for (std::thread& Thread : Threads)
	{
		Thread.join();
	}
	for (std::size_t Index = 0; Index < Seen[0].size(); ++Index)
	{
		EXPECT_TRUE(Seen[0][Index] == Seen[1][Index] && Seen[0][Index] == Seen[2][Index] && Seen[0][Index] == Seen[3][Index]);
		EXPECT_EQ(Utf8(Seen[3][Index]), "ThreadName" + std::to_string(Index));
	}
}
