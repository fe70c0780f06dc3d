#include "History/FileHistoryTracker.h"

FFileHistoryTracker& FFileHistoryTracker::Get()
{
	static FFileHistoryTracker Instance;
	return Instance;
}
