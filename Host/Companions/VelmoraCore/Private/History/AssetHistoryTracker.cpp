#include "History/AssetHistoryTracker.h"

FAssetHistoryTracker& FAssetHistoryTracker::Get()
{
	static FAssetHistoryTracker Instance;
	return Instance;
}
