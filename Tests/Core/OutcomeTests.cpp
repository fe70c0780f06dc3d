#include "Host/FileDescriptor.h"
#include "Host/HostNumbers.h"
#include "Host/HostUtf8.h"
#include "Host/Outcome.h"
#include "Support/Base/Printers.h"
#include "Support/Base/TempFolder.h"

#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace
{
	TOutcome<int> Halve(int Number)
	{
		if (Number % 2 != 0)
		{
			return FOutcome(EOutcome::Refused, "it is odd");
		}
		return Number / 2;
	}
}

TEST(Outcome, ErrorsOfTheSystemBecomeCodesAndWords)
{
	const std::tuple<int, EOutcome, const char*> Cases[] = {
		{ ENOENT, EOutcome::Missing, "no such file or folder" },
		{ EEXIST, EOutcome::Exists, "the file exists" },
		{ EROFS, EOutcome::Denied, "the file system is read-only" },
		{ EDQUOT, EOutcome::Full, "the disk quota is used up" },
		{ EIO, EOutcome::Failed, "the disk reports an error" },
		{ EINTR, EOutcome::Failed, "signals interrupt it again and again" },
		{ ENOTSUP, EOutcome::Failed, "the system says: Operation not supported" },
		{ 9999, EOutcome::Failed, "system error 9999" },
	};
	for (const auto& [Error, Code, Words] : Cases)
	{
		SCOPED_TRACE(Error);
		const FOutcome Outcome = FOutcome::FromSystem(Error, "/a/b");
		EXPECT_EQ(Outcome.GetCode(), Code);
		EXPECT_EQ(Outcome.GetWords(), Words);
		EXPECT_EQ(Outcome.GetPath(), "/a/b");
		EXPECT_FALSE(Outcome.IsDone());
	}
}

TEST(Outcome, WordsInFrontKeepCodeAndPath)
{
	const FOutcome Outcome = FOutcome::FromSystem(EACCES, "/a").Explain("The index could not be read");
	EXPECT_EQ(Outcome.GetWords(), "The index could not be read: no permission.");
	EXPECT_TRUE(Outcome.Is(EOutcome::Denied));
	EXPECT_EQ(Outcome.GetPath(), "/a");
	EXPECT_TRUE(FOutcome::Done().Explain("Nothing").IsDone());
	EXPECT_EQ(FOutcome::Done().Explain("Nothing").GetWords(), "");
}

TEST(Outcome, AValueComesOnlyWithSuccess)
{
	const TOutcome<int> Good = Halve(6);
	ASSERT_TRUE(Good.IsDone());
	EXPECT_EQ(*Good, 3);
	const TOutcome<int> Bad = Halve(7);
	EXPECT_FALSE(Bad);
	EXPECT_EQ(Bad.GetWords(), "it is odd");
	EXPECT_FALSE(TOutcome<int>(FOutcome::Done()).IsDone()) << "Success without a value is none.";
}

TEST(Interruptions, CallsAreMadeAgainUntilItIsForGood)
{
	int Calls = 0;
	const auto Interrupted = [&Calls](int Times)
	{
		return [&Calls, Times]
		{
			errno = EINTR;
			return ++Calls <= Times ? -1 : 7;
		};
	};
	EXPECT_EQ(HostRetryInterrupted(Interrupted(20)), 7);
	EXPECT_EQ(Calls, 21);
	Calls = 0;
	EXPECT_EQ(HostRetryInterrupted(Interrupted(1 << 30)), -1);
	EXPECT_EQ(errno, EINTR);
	EXPECT_EQ(Calls, HostMaxInterruptions + 1);
	Calls = 0;
	const auto OtherError = [&Calls]
	{
		++Calls;
		errno = EIO;
		return -1;
	};
	EXPECT_EQ(HostRetryInterrupted(OtherError), -1);
	EXPECT_EQ(Calls, 1) << "Other errors are not tried again.";
}

TEST(FileDescriptor, WhatIsWrittenIsReadAndTheNumberIsFree)
{
	const FTempFolder Temp;
	const std::string Path = Temp.AtBytes("file");
	const std::string Text(200'000, 'x');
	int Number = -1;
	{
		FFileDescriptor File = FFileDescriptor::Open(Path, O_RDWR | O_CREAT | O_EXCL, 0600);
		ASSERT_TRUE(File.IsOpen());
		Number = File.Get();
		EXPECT_NE(fcntl(Number, F_GETFD) & FD_CLOEXEC, 0);
		EXPECT_TRUE(File.Write(Text) && File.Flush());
		EXPECT_FALSE(FFileDescriptor::Open(Path, O_RDWR | O_CREAT | O_EXCL, 0600).IsOpen());
		EXPECT_EQ(errno, EEXIST);
		FFileDescriptor Moved = std::move(File);
		EXPECT_FALSE(File.IsOpen());
		EXPECT_EQ(Moved.Get(), Number);
	}
	EXPECT_EQ(fcntl(Number, F_GETFD), -1);
	const FFileDescriptor File = FFileDescriptor::Open(Path, O_RDONLY);
	std::string Read = "<";
	EXPECT_TRUE(File.Read(Read, 5));
	EXPECT_EQ(Read, "<xxxxx");
	EXPECT_TRUE(File.Read(Read, UINT64_MAX));
	EXPECT_EQ(Read.size(), Text.size() + 1);
	EXPECT_FALSE(File.Write("y"));
	EXPECT_EQ(errno, EBADF);
}

TEST(FileDescriptor, SignalsCutNeitherReadingNorWriting)
{
	struct sigaction Nothing = {};
	struct sigaction Before = {};
	Nothing.sa_handler = [](int) {};
	sigaction(SIGUSR1, &Nothing, &Before);
	int Ends[2] = { -1, -1 };
	ASSERT_EQ(pipe2(Ends, O_CLOEXEC), 0);
	const FFileDescriptor Source(Ends[0]);
	FFileDescriptor Sink(Ends[1]);
	const std::string Text(1'000'000, 'x');
	const pthread_t Reader = pthread_self();
	std::thread Writer(
		[&Sink, &Text, Reader]
		{
			for (std::size_t Start = 0; Start < Text.size(); Start += 50'000)
			{
				pthread_kill(Reader, SIGUSR1);
				EXPECT_TRUE(Sink.Write(std::string_view(Text).substr(Start, 50'000)));
			}
			Sink.Close();
		});
	std::string Read;
	EXPECT_TRUE(Source.Read(Read, UINT64_MAX));
	Writer.join();
	EXPECT_EQ(Read.size(), Text.size());
	sigaction(SIGUSR1, &Before, nullptr);
}

TEST(Utf8, EveryCharacterComesBackAndNothingElseIsTaken)
{
	for (char32_t Character = 0; Character <= 0x10FFFF; Character += Character < 0x11000 ? 1 : 97)
	{
		std::string Bytes;
		HostAppendUtf8(Bytes, Character);
		char32_t Back = 0;
		const bool bIsSurrogate = Character >= 0xD800 && Character < 0xE000;
		ASSERT_EQ(HostDecodeUtf8(Bytes + "x", Back), bIsSurrogate ? 0u : Bytes.size()) << static_cast<uint32>(Character);
		ASSERT_TRUE(bIsSurrogate || Back == Character) << static_cast<uint32>(Character);
	}
	char32_t Out = 0;
	for (const char* const Bytes : { "", "\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5",
			 "\xE2\x82", "\xE2\x82x", "\xFF" })
	{
		EXPECT_EQ(HostDecodeUtf8(Bytes, Out), 0u) << Bytes;
	}
}

TEST(Numbers, ShortestTextThatReadsBack)
{
	EXPECT_EQ(Utf8(HostNumberToText(0.1f)), "0.1");
	EXPECT_EQ(Utf8(HostNumberToText(-42)), "-42");
	EXPECT_EQ(Utf8(HostNumberToText(5e-324, std::chars_format::fixed)).size(), 326u);
	EXPECT_EQ(Utf8(HostNumberToText(0.1, std::chars_format::general, 17)), "0.10000000000000001");
}
