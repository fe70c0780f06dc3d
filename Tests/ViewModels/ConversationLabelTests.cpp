#include "ViewModels/ConversationLabel.h"

#include "Support/TestAgent.h"

#include <gtest/gtest.h>

using Velmora::EConversationRole;
using Velmora::FConversationMetadata;

namespace
{

	std::string TitleOf(const FString& FirstMessage)
	{
		FConversationMetadata Conversation;
		Conversation.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, FirstMessage));
		return Utf8(FConversationLabel::MakeTitle(Conversation));
	}

	FString Repeat(const TCHAR* Text, int32 Count)
	{
		FString Result;
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Result += Text;
		}
		return Result;
	}

} // namespace

TEST(ConversationLabel, TheTitleIsOneShortLine)
{
	const std::string Fifty(50, 'a');
	const std::pair<FString, std::string> Cases[] = {
		{ TEXT("Add a dash"), "Add a dash" },
		{ TEXT(" \t\r\n Add a dash \n\n"), "Add a dash" },
		{ TEXT("one\r\ntwo\nthree\rfour\n\rfive\r\r\nsix"), "one two three four  five  six" },
		{ TEXT("tab\tstays"), "tab\tstays" },
		{ TEXT(" \r\n\t "), "" },
		{ Repeat(TEXT("a"), 50), Fifty },
		{ Repeat(TEXT("a"), 51), Fifty + "..." },
		{ Repeat(TEXT("a"), 50) + TEXT(" \r\n "), Fifty },
		{ Repeat(TEXT("a"), 50) + TEXT(" b"), Fifty + "..." },
		{ TEXT("  ") + Repeat(TEXT("a"), 50), Fifty },
		{ Repeat(TEXT("a"), 49) + TEXT("\r\nb"), std::string(49, 'a') + " ..." },
		{ Repeat(TEXT("a"), 49) + TEXT("\r\n"), std::string(49, 'a') },
		{ Repeat(TEXT("é"), 60), Utf8(Repeat(TEXT("é"), 50)) + "..." },
	};
	for (const auto& [Message, Title] : Cases)
	{
		EXPECT_EQ(TitleOf(Message), Title) << Utf8(Message);
	}
}

TEST(ConversationLabel, TheFirstWordsOfTheUserAreTheTitle)
{
	FConversationMetadata Conversation;
	EXPECT_EQ(Utf8(FConversationLabel::MakeTitle(Conversation)), "New Conversation");
	Conversation.Messages.Add(FTestAgent::MakeStored(EConversationRole::Tool, TEXT("traffic")));
	Conversation.Messages.Add(FTestAgent::MakeStored(EConversationRole::Assistant, TEXT("welcome")));
	Conversation.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, FString()));
	EXPECT_EQ(Utf8(FConversationLabel::MakeTitle(Conversation)), "New Conversation");
	Conversation.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, TEXT("first")));
	Conversation.Messages.Add(FTestAgent::MakeStored(EConversationRole::User, TEXT("second")));
	EXPECT_EQ(Utf8(FConversationLabel::MakeTitle(Conversation)), "first");
}

TEST(ConversationLabel, AgesByTable)
{
	constexpr int32 Minute = 60;
	constexpr int32 Hour = 60 * Minute;
	constexpr int32 Day = 24 * Hour;
	const std::pair<int64, const char*> Cases[] = {
		{ -3 * Day, "just now" },
		{ 0, "just now" },
		{ 59, "just now" },
		{ 60, "1 min ago" },
		{ 119, "1 min ago" },
		{ 120, "2 mins ago" },
		{ 59 * Minute + 59, "59 mins ago" },
		{ Hour, "1 hr ago" },
		{ 2 * Hour - 1, "1 hr ago" },
		{ 23 * Hour + 59 * Minute, "23 hrs ago" },
		{ Day, "1 day ago" },
		{ 29 * Day, "29 days ago" },
		{ 30 * Day - 1, "29 days ago" },
		{ 30 * Day, "1 month ago" },
		{ 59 * Day, "1 month ago" },
		{ 60 * Day, "2 months ago" },
		{ int64(400) * Day, "13 months ago" },
	};
	const FDateTime Now(2026, 1, 31, 12, 0, 0);
	for (const auto& [Seconds, Age] : Cases)
	{
		EXPECT_EQ(Utf8(FConversationLabel::MakeAge(Now - FTimespan::FromSeconds(Seconds), Now)), Age) << Seconds;
	}
}

TEST(ConversationLabel, IdsAreShortAndIgnoreCase)
{
	FConversationMetadata A;
	FConversationMetadata B;
	for (const auto& [Id, Short] : { std::pair(TEXT("7f3a9cdd"), "7f3a9c"), std::pair(TEXT("ab"), "ab"), std::pair(TEXT(""), "") })
	{
		A.Id = Id;
		EXPECT_EQ(Utf8(FConversationLabel::MakeShortId(A)), Short);
	}
	A.Id = TEXT("AbC");
	B.Id = TEXT("aBc");
	EXPECT_TRUE(FConversationLabel::IsSame(A, B));
	B.Id = TEXT("abcd");
	EXPECT_FALSE(FConversationLabel::IsSame(A, B));
}
