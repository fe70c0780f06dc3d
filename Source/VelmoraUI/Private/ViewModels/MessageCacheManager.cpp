#include "ViewModels/MessageCacheManager.h"

#include "HAL/PlatformTime.h"
#include "Math/UnrealMathUtility.h"
#include "ViewModels/ChatMessage.h"

const double FMessageCacheManager::MaintenanceInterval = 60.0;
TUniquePtr<FMessageCacheManager> FMessageCacheManager::Instance;

FMessageCacheManager::FMessageCacheManager()
	: LastMaintenanceTime(FPlatformTime::Seconds())
{
}

FMessageCacheManager& FMessageCacheManager::Get()
{
	if (!Instance.IsValid())
	{
		Instance.Reset(new FMessageCacheManager());
	}
	return *Instance;
}

void FMessageCacheManager::SetMaxCacheSize(int32 Size)
{
	MaxCacheSize = FMath::Max(Size, 1);
}

void FMessageCacheManager::InvalidateMessageCache(TSharedPtr<FChatMessage> Message)
{
	if (Message.IsValid() && Message->CachedLayout.IsValid())
	{
		Message->InvalidateLayout();
		Stats.CachedLayouts = FMath::Max(Stats.CachedLayouts - 1, 0);
	}
}

void FMessageCacheManager::ClearAllCaches()
{
	Stats.CachedLayouts = 0;
	Stats.CachedWidgets = 0;
}

void FMessageCacheManager::ResetStats()
{
	Stats.CacheHits = 0;
	Stats.CacheMisses = 0;
}

int32 FMessageCacheManager::PruneOldMessages(TArray<TSharedPtr<FChatMessage>>& Messages, int32 MaxToKeep)
{
	// A negative bound keeps none.
	const int32 RemovedCount = Messages.Num() - FMath::Max(MaxToKeep, 0);
	if (RemovedCount <= 0)
	{
		return 0;
	}
	Messages.RemoveAt(0, RemovedCount);
	Messages.Shrink();
	return RemovedCount;
}

void FMessageCacheManager::PerformMaintenance()
{
	const double Now = FPlatformTime::Seconds();
	if (Now - LastMaintenanceTime >= MaintenanceInterval)
	{
		LastMaintenanceTime = Now; // Nothing is to be done at this rhythm so far.
	}
}
