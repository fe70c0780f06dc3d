#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"
#include "Templates/UniquePtr.h"

class FChatMessage;

/** What FMessageCacheManager has counted. */
struct FCacheStats
{
	/** Messages that hold a layout. */
	int32 CachedLayouts = 0;
	int32 CachedWidgets = 0;
	int32 CacheHits = 0;
	int32 CacheMisses = 0;
};

/**
 * Keeps the memory of a long conversation within bounds for those who ask it to: cuts arrays of messages and drops
 * layouts that messages keep. Nothing is counted or cut unasked. Game thread.
 */
class VELMORAUI_API FMessageCacheManager
{
public:
	/** Made on first use. */
	static FMessageCacheManager& Get();

	/** Messages that a caller should keep at most. */
	int32 GetMaxCacheSize() const { return MaxCacheSize; }
	/** At least 1 is kept, whatever is asked. */
	void SetMaxCacheSize(int32 Size);

	/** Drops the layout that the message keeps, if there is one. */
	void InvalidateMessageCache(TSharedPtr<FChatMessage> Message);

	/** Counts what is cached from zero again. Messages keep their layouts. */
	void ClearAllCaches();
	/** Counts the uses from zero again. */
	void ResetStats();
	FCacheStats GetCacheStats() const { return Stats; }

	/** Takes the oldest messages away until so many remain. Returns how many went. */
	int32 PruneOldMessages(TArray<TSharedPtr<FChatMessage>>& Messages, int32 MaxToKeep);

	/** To be called as often as one likes; acts once a minute. */
	void PerformMaintenance();

private:
	FMessageCacheManager();

	/** Seconds. */
	static const double MaintenanceInterval;
	static TUniquePtr<FMessageCacheManager> Instance;

	int32 MaxCacheSize = 100;
	FCacheStats Stats;
	double LastMaintenanceTime;
};
