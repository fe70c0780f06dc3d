#include "History/AssetHistoryTracker.h"

FAssetHistoryTracker& FAssetHistoryTracker::Get()
{
	static FAssetHistoryTracker Instance;
	return Instance;
}

void FAssetHistoryTracker::AddOperation(const FString& ConversationId, const FString& Group, const FAssetOperation& Operation)
{
	Operations.FindOrAdd(ConversationId).FindOrAdd(Group).Add(Operation);
}

void FAssetHistoryTracker::RemoveGroup(const FString& ConversationId, const FString& Group)
{
	if (TMap<FString, TArray<FAssetOperation>>* const Groups = Operations.Find(ConversationId))
	{
		Groups->Remove(Group);
		if (Groups->Num() == 0)
		{
			Operations.Remove(ConversationId);
		}
	}
}
