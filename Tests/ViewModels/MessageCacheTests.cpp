#include "ViewModels/MessageCacheManager.h"

#include "Support/Base/Printers.h"
#include "ViewModels/ChatMessage.h"

#include <string>

TEST(MessageCache, IsOneForAllAndBounded)
{
	FMessageCacheManager& Manager = FMessageCacheManager::Get();
	EXPECT_EQ(&Manager, &FMessageCacheManager::Get());
	EXPECT_EQ(Manager.GetMaxCacheSize(), 100);
	for (const auto& [Asked, Kept] : { std::pair(7, 7), std::pair(1, 1), std::pair(0, 1), std::pair(-5, 1), std::pair(100, 100) })
	{
		Manager.SetMaxCacheSize(Asked);
		EXPECT_EQ(Manager.GetMaxCacheSize(), Kept) << Asked;
	}
}

TEST(MessageCache, LayoutsAreDropped)
{
	FMessageCacheManager& Manager = FMessageCacheManager::Get();
	const TSharedPtr<FChatMessage> Message = FChatMessage::CreateUserMessage(TEXT("a"));
	Manager.InvalidateMessageCache(nullptr);
	Manager.InvalidateMessageCache(Message);
	Message->CachedLayout = MakeShared<FChatMessageLayout>();
	Manager.InvalidateMessageCache(Message);
	EXPECT_FALSE(Message->CachedLayout.IsValid());
	EXPECT_EQ(Manager.GetCacheStats().CachedLayouts, 0) << "never below zero";
}

TEST(MessageCache, TheOldestMessagesGo)
{
	struct FCase
	{
		int32 Count;
		int32 MaxToKeep;
		int32 Removed;
	};
	for (const FCase& Case :
		{ FCase{ 150, 100, 50 }, FCase{ 100, 100, 0 }, FCase{ 3, 100, 0 }, FCase{ 3, 0, 3 }, FCase{ 3, -1, 3 }, FCase{ 0, 0, 0 } })
	{
		TArray<TSharedPtr<FChatMessage>> Messages;
		for (int32 Index = 0; Index < Case.Count; ++Index)
		{
			Messages.Add(FChatMessage::CreateUserMessage(FString::Printf(TEXT("%d"), Index)));
		}
		EXPECT_EQ(FMessageCacheManager::Get().PruneOldMessages(Messages, Case.MaxToKeep), Case.Removed);
		ASSERT_EQ(Messages.Num(), Case.Count - Case.Removed);
		for (int32 Index = 0; Index < Messages.Num(); ++Index)
		{
			EXPECT_EQ(Utf8(Messages[Index]->Content), std::to_string(Case.Removed + Index));
		}
	}
}
