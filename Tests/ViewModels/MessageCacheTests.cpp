#include "ViewModels/MessageCacheManager.h"

#include "Host/HostClock.h"
#include "Support/Base/Printers.h"
#include "ViewModels/ChatMessage.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

	std::string DumpStats(const FMessageCacheManager& Manager)
	{
		const FCacheStats Stats = Manager.GetCacheStats();
		return std::to_string(Stats.CachedLayouts) + " " + std::to_string(Stats.CachedWidgets) + " " + std::to_string(Stats.CacheHits) +
			" " + std::to_string(Stats.CacheMisses);
	}

} // namespace

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

TEST(MessageCache, LayoutsAreDroppedAndCountedDownToZero)
{
	FMessageCacheManager Manager;
	Manager.Stats = { 1, 2, 3, 4 };
	const TSharedPtr<FChatMessage> Message = FChatMessage::CreateUserMessage(TEXT("a"));
	Manager.InvalidateMessageCache(nullptr);
	Manager.InvalidateMessageCache(Message);
	EXPECT_EQ(DumpStats(Manager), "1 2 3 4") << "there was nothing to drop";
	for (const char* Expected : { "0 2 3 4", "0 2 3 4" })
	{
		Message->CachedLayout = MakeShared<FChatMessageLayout>();
		Manager.InvalidateMessageCache(Message);
		EXPECT_FALSE(Message->CachedLayout.IsValid());
		EXPECT_EQ(DumpStats(Manager), Expected);
	}
	Manager.Stats = { 1, 2, 3, 4 };
	Manager.ClearAllCaches();
	EXPECT_EQ(DumpStats(Manager), "0 0 3 4");
	Manager.ResetStats();
	EXPECT_EQ(DumpStats(Manager), "0 0 0 0");
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
		FMessageCacheManager Manager;
		EXPECT_EQ(Manager.PruneOldMessages(Messages, Case.MaxToKeep), Case.Removed);
		ASSERT_EQ(Messages.Num(), Case.Count - Case.Removed);
		for (int32 Index = 0; Index < Messages.Num(); ++Index)
		{
			EXPECT_EQ(Utf8(Messages[Index]->Content), std::to_string(Case.Removed + Index));
		}
	}
}

TEST(MessageCache, MaintenanceIsDueOnceAMinute)
{
	FHostClock::UseSimulatedTime(FDateTime(2026, 1, 31, 12, 0, 0));
	FMessageCacheManager Manager;
	const double Start = Manager.LastMaintenanceTime;
	FHostClock::Advance(59.0);
	Manager.PerformMaintenance();
	EXPECT_EQ(Manager.LastMaintenanceTime, Start);
	FHostClock::Advance(1.0);
	Manager.PerformMaintenance();
	EXPECT_EQ(Manager.LastMaintenanceTime, Start + 60.0);
	FHostClock::UseRealTime();
}
