#include "ViewModels/ChatMessage.h"

#include "Host/HostClock.h"
#include "Support/Base/Printers.h"
#include "ViewModels/MessageBatcher.h"

namespace
{

	class FMessageBatcherTest : public testing::Test
	{
	protected:
		void SetUp() override { FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31, 0, 0, 9)); }
		void TearDown() override { FHostClock::UseRealTime(); }
	};
} // namespace

TEST(ChatMessage, SenderNames)
{
	FChatMessage Message;
	const char* Names[] = { "You", "Velmora AI", "System", "Tool: ", "Tool Executions", "Unknown" };
	for (int32 Value = 0; Value < 6; ++Value)
	{
		Message.Type = static_cast<EChatMessageType>(Value);
		EXPECT_EQ(Utf8(Message.GetSenderName()), Names[Value]);
	}
	EXPECT_EQ(Utf8(FChatMessage::CreateToolMessage(TEXT("ls"), FString(), EToolStatus::Running)->GetSenderName()), "Tool: ls");
}

TEST(ChatMessage, TimesOfDay)
{
	FChatMessage Message;
	Message.Timestamp = FDateTime(2026, 1, 31, 0, 0, 9);
	EXPECT_EQ(Utf8(Message.GetFormattedTimestamp()), "00:00:09");
	Message.Timestamp = FDateTime(2026, 1, 31, 23, 59, 59, 999);
	EXPECT_EQ(Utf8(Message.GetFormattedTimestamp()), "23:59:59");
	Message.Timestamp = FDateTime(0);
	EXPECT_EQ(Utf8(Message.GetFormattedTimestamp()), "00:00:00");
}

TEST_F(FMessageBatcherTest, FirstMessageStartsTheClock)
{
	FMessageBatcher Batcher;
	FHostClock::Advance(5.0);
	EXPECT_FALSE(Batcher.ShouldFlush()) << "an empty batch is never due";
	Batcher.AddMessage(nullptr);
	EXPECT_EQ(Batcher.GetPendingCount(), 0);
	Batcher.AddMessage(FChatMessage::CreateUserMessage(TEXT("a")));
	EXPECT_FALSE(Batcher.ShouldFlush());
	FHostClock::Advance(0.09);
	Batcher.AddMessage(FChatMessage::CreateUserMessage(TEXT("b")));
	EXPECT_FALSE(Batcher.ShouldFlush());
	FHostClock::Advance(0.02);
	EXPECT_TRUE(Batcher.ShouldFlush());
	const TArray<TSharedPtr<FChatMessage>> Batch = Batcher.Flush();
	ASSERT_EQ(Batch.Num(), 2);
	EXPECT_EQ(Utf8(Batch[1]->Content), "b");
	EXPECT_EQ(Batcher.GetPendingCount(), 0);
	EXPECT_EQ(Batcher.Flush().Num(), 0);
}

TEST_F(FMessageBatcherTest, TenthMessageMakesItDue)
{
	FMessageBatcher Batcher;
	for (int32 Index = 0; Index < 9; ++Index)
	{
		Batcher.AddMessage(FChatMessage::CreateUserMessage(TEXT("a")));
	}
	EXPECT_FALSE(Batcher.ShouldFlush());
	Batcher.AddMessage(FChatMessage::CreateUserMessage(TEXT("a")));
	EXPECT_TRUE(Batcher.ShouldFlush());
}

TEST_F(FMessageBatcherTest, LimitsAreTakenAsTheyAre)
{
	FMessageBatcher Batcher;
	Batcher.SetBatchSize(0);
	EXPECT_FALSE(Batcher.ShouldFlush());
	Batcher.AddMessage(FChatMessage::CreateUserMessage(TEXT("a")));
	EXPECT_TRUE(Batcher.ShouldFlush());
	Batcher.SetBatchSize(100);
	Batcher.SetBatchTime(2.0f);
	FHostClock::Advance(1.5);
	EXPECT_FALSE(Batcher.ShouldFlush());
	FHostClock::Advance(0.6);
	EXPECT_TRUE(Batcher.ShouldFlush());
	const FMessageBatcher Copy = Batcher;
	Batcher.Clear();
	EXPECT_EQ(Copy.GetPendingCount(), 1);
	EXPECT_EQ(Batcher.GetPendingCount(), 0);
}
